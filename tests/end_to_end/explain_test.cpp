// What `ocmap explain` says of a request, in its table.
#include "support.h"

#include <fcntl.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <regex>

namespace
{

using namespace test;

const std::string top = "<macsec xmlns='http://openconfig.net/yang/macsec'>";

std::string config(std::string_view entries)
{
    return "<config xmlns:nc='urn:ietf:params:xml:ns:netconf:base:1.0'>" + top + in_policies(entries) +
           "</macsec></config>";
}

/// The table without the mappers' common beginning and with one blank between its columns.
std::string table(const Outcome &outcome)
{
    std::string text = std::regex_replace(outcome.out, std::regex("ymap_(ot|to)_(oc_macsec_)?"), "");
    text = std::regex_replace(text, std::regex("openconfigmacsec_"), "");
    return std::regex_replace(text, std::regex("(\\S) +"), "$1 ");
}

std::string table(std::string_view document, std::vector<std::string> options = {})
{
    options.insert(options.begin(), {"explain", "-"});
    const Outcome outcome = ocmap(options, document);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    return table(outcome);
}

/// The lines of the table that are about the node whose line begins with `left`.
std::string rows_of(const std::string &table, const std::string &left)
{
    std::smatch found;
    const std::regex rows("(^|\n) *(" + left + "[ \n][^\n]*(\n {30,}[^\n]*)*)");
    return std::regex_search(table, found, rows) ? std::regex_replace(found[2].str(), std::regex("\n +"), "\n") : "";
}

TEST(Explain, TellsWhatEachNodeBecame)
{
    EXPECT_EQ(table(config(policy("P1", "<key-server-priority>20</key-server-priority>"))),
              "request: edit mapper, and what it adds (native)\n"
              "macsec cont_lvla_macsec\n"
              "  mka cont_lvla_macsec_mka\n"
              "    policies cont_lvla_macsec_mka_policies\n"
              "      policy ocmacsec_policyname_fwd\n"
              "                                      #1 /macsec/policy-names/policy-name\n"
              "        name = P1 tv_policy_name_fwd\n"
              "                                      #2 /macsec/policy-names/policy-name/name = P1\n"
              "                                      #3 /macsec/policy-names/policy-name/created\n"
              "        config cont_lvla_macsec_policy_config\n"
              "          name = P1 ocmacsec_policyname_name_fwd\n"
              "          key-server-priority = 20 leaf_lvla_macsec_config_keyserverpriority\n"
              "                                      #4 /macsec/policy-names/policy-name/key-server-priority = 20\n"
              "\n"
              "8 nodes: 3 mapped, 5 passed; 4 adds\n");
}

TEST(Explain, TellsWhichOfTwoAddsToOneNodeWon)
{
    const std::string two =
        table(ocmap({"explain", "-"}, config(policy("P1", "<macsec-cipher-suite>GCM_AES_128</macsec-cipher-suite>"
                                                          "<macsec-cipher-suite>GCM_AES_256</macsec-cipher-suite>"))));
    EXPECT_EQ(rows_of(two, "macsec-cipher-suite = GCM_AES_128"),
              "macsec-cipher-suite = GCM_AES_128 ocmacsec_policyname_ciper_suite_fwd\n"
              "#4 /macsec/policy-names/policy-name/cipher-suite = gcm-aes-128, lost to #5\n"
              "dropped: what it added is replaced by #5, for "
              "/macsec/mka/policies/policy[name='P1']/config/macsec-cipher-suite");
    EXPECT_EQ(rows_of(two, "macsec-cipher-suite = GCM_AES_256"),
              "macsec-cipher-suite = GCM_AES_256 ocmacsec_policyname_ciper_suite_fwd\n"
              "#5 /macsec/policy-names/policy-name/cipher-suite = gcm-aes-256, wins over #4\n"
              "refused: the router keeps one value, and this is one more");

    // The remove pass of a replace stands where the merge pass has nothing to say.
    const std::string replaced = table(config("<policy><name>P1</name><config nc:operation='replace'><name>P1</name>"
                                              "<key-server-priority>20</key-server-priority></config></policy>"));
    EXPECT_NE(replaced.find("/key-server-priority (remove), lost to #"), std::string::npos) << replaced;
    EXPECT_NE(replaced.find("/key-server-priority = 20, wins over #"), std::string::npos) << replaced;
    EXPECT_NE(replaced.find("/conf-offset (remove)\n"), std::string::npos) << replaced;
}

TEST(Explain, ShowsARefusedRequestUpToTheRefusal)
{
    const Outcome outcome = ocmap({"explain", "-"}, config(policy("P1", "<use-updated-eth-header>true"
                                                                        "</use-updated-eth-header>"
                                                                        "<delay-protection>true</delay-protection>")));
    EXPECT_EQ(outcome.status, 1);
    const std::string path = "/macsec/mka/policies/policy[name='P1']/config/use-updated-eth-header";
    EXPECT_EQ(outcome.err, "error: " + path +
                               ": this router does not support it\n  error-tag: unknown-element\n  path: " + path +
                               "\n");
    const std::string text = table(outcome);
    EXPECT_EQ(rows_of(text, "use-updated-eth-header = true"),
              "use-updated-eth-header = true lvla_macsec_config_useupdatedethheader\n"
              "refused: this router does not support it");
    EXPECT_EQ(rows_of(text, "delay-protection = true"), "delay-protection = true not reached");
    EXPECT_TRUE(text.ends_with("9 nodes: 2 mapped, 5 passed, 1 refused, 1 not reached; 3 adds\n")) << text;
}

TEST(Explain, TellsWhatIsNotWalked)
{
    const std::string unknown =
        table("<filter>" + top + in_policies("<policy><name>P1</name><config><frobnicate/></config></policy>") +
              "</macsec></filter>");
    EXPECT_EQ(rows_of(unknown, "frobnicate"), "frobnicate dropped: no mapping takes it");

    const std::string edit = "<edit-config><target><running/></target><default-operation>none</default-operation>";
    const std::string idle = table("<rpc xmlns='urn:ietf:params:xml:ns:netconf:base:1.0'>" + edit +
                                   config(policy("P1", "<delay-protection nc:operation='merge'>true</delay-protection>"
                                                       "<key-server-priority>3</key-server-priority>")) +
                                   "</edit-config></rpc>");
    EXPECT_EQ(rows_of(idle, "key-server-priority = 3 \\(none\\)"),
              "key-server-priority = 3 (none) dropped: the default-operation is none, and it has no operation of its "
              "own");
}

TEST(Explain, ExplainsTheWayBack)
{
    const std::string text = table("<data><keychains xmlns='http://tarvex.example/ns/yang/Tarvex-lib-keychain-cfg'>"
                                   "<keychain><chain-name>KC1</chain-name><macsec-keychain><macsec-keys><macsec-key>"
                                   "<key-id>01</key-id><macsec-key-string><string>secret</string>"
                                   "<cryptographic-algorithm>aes-128-cmac</cryptographic-algorithm>"
                                   "</macsec-key-string></macsec-key></macsec-keys></macsec-keychain></keychain>"
                                   "</keychains></data>",
                                   {"--reverse"});
    EXPECT_EQ(rows_of(text, "key-id = 01"), "key-id = 01 tarvexlibkeychaincfg_man_leaf_lvla_keychains_macseckey_keyid\n"
                                            "#5 /macsec/mka/key-chains/key-chain/mka-keys/mka-key/id = 01\n"
                                            "#6 /macsec/mka/key-chains/key-chain/mka-keys/mka-key/config/id = 01");
    EXPECT_NE(text.find("/config/cryptographic-algorithm = AES_128_CMAC, wins over #"), std::string::npos) << text;
    EXPECT_EQ(rows_of(text, "cryptographic-algorithm = aes-128-cmac"),
              "cryptographic-algorithm = aes-128-cmac\nocmacsec_key_clear_text_rev\n"
              "read by the mapper of a node around it");
    EXPECT_EQ(rows_of(text, "string = \\*\\*\\*"), "string = *** dropped: no mapping takes it");
}

// Here the keys of the entries are added twice, at last with their operation.
TEST(Explain, ANodeWhoseValueIsRepeatedIsNotDropped)
{
    const std::string text = table(read_file(std::filesystem::path(EXAMPLES) / "key-chains/create.xml"));
    EXPECT_NE(text.find("/chain-name = KC1, lost to #"), std::string::npos) << text;
    EXPECT_EQ(text.find("dropped"), std::string::npos) << text;
}

TEST(Explain, DrivesNoTerminal)
{
    const std::string text = table(config(policy("a\xc2\x9b\xe2\x80\xae\t\xc3\xa9", "")));
    EXPECT_EQ(rows_of(text, "policy").find('\t'), std::string::npos);
    EXPECT_NE(text.find("name = a\\x9b\\u202e\\x09\xc3\xa9 "), std::string::npos) << text;
}

// Of several like it, and not the one around it.
TEST(Explain, MarksTheNodeThatIsRefused)
{
    const std::string good = policy("P1", "<key-server-priority>1</key-server-priority>");
    const std::string bad_delete = "<config nc:operation='delete'><delay-protection/></config>";
    const std::string suite = "<macsec-cipher-suite xmlns='urn:x'>2</macsec-cipher-suite>";
    const struct {
        std::string entries;
        const char *left; ///< of the row below which the refusal stands, in the second entry
    } cases[] = {
        {"<policy><config/></policy>", "policy "},
        {policy("P2", "<key-server-priority xmlns='urn:x'>1</key-server-priority>"), "key-server-priority = 1 "},
        {policy("P2", suite + "<macsec-cipher-suite>3</macsec-cipher-suite>"), "macsec-cipher-suite = 2 "},
        {"<policy><name>P2</name>" + bad_delete + "</policy>", "config (delete) "},
        {"<policy><name>P1</name><config/></policy>", "policy "},
        {policy("P2", "<use-updated-eth-header>true</use-updated-eth-header>"), "use-updated-eth-header = true "},
    };
    for (const auto &one : cases) {
        const std::string text = table(ocmap({"explain", "-"}, config(good + one.entries)));
        const std::size_t refusal = text.find("  refused: ");
        ASSERT_NE(refusal, std::string::npos) << text;
        const std::size_t row = text.rfind(std::string("  ") + one.left, refusal);
        EXPECT_LT(text.rfind("\n      policy "), row) << text;
        EXPECT_FALSE(std::regex_search(text.substr(row, refusal - row), std::regex("\n {0,29}\\S"))) << text;
    }
    const std::string mappers = table(
        ocmap({"explain", "-"}, "<config>" + top +
                                    "<mka><key-chains><key-chain><name>K</name><mka-keys><mka-key><id>01</id><config>"
                                    "<id>01</id><expiration-date-time>soon</expiration-date-time></config></mka-key>"
                                    "</mka-keys></key-chain></key-chains></mka></macsec></config>"));
    EXPECT_NE(rows_of(mappers, "expiration-date-time = soon").find("refused: 'soon' must be"), std::string::npos)
        << mappers;
}

TEST(Explain, WritesAPageInsteadOfTheTable)
{
    const std::string document = config(policy("P1", "<use-updated-eth-header>true</use-updated-eth-header>"));
    const Outcome page = ocmap({"explain", "-", "--html", "-"}, document);
    EXPECT_TRUE(page.out.starts_with("<!doctype html>\n")) << page.out;
    EXPECT_TRUE(page.out.ends_with("</html>\n"));
    EXPECT_NE(page.out.find("\"refusal\": {\"text\":\"this router does not support it\"}"), std::string::npos);
    EXPECT_EQ(page.status, 1);

    const Outcome nowhere = ocmap({"explain", "-", "--html", "/no/such/page.html"}, document);
    EXPECT_EQ(nowhere.err,
              "error: cannot write '/no/such/page.html': No such file or directory\n  error-tag: operation-failed\n");
    EXPECT_EQ(ocmap({"explain", "-", "--html", "/dev/full"}, document).err,
              "error: cannot write '/dev/full': No space left on device\n  error-tag: operation-failed\n");
}

TEST(Explain, ShowsNoKeyText)
{
    const std::string text = table(read_file(std::filesystem::path(EXAMPLES) / "key-chains/create.xml"));
    EXPECT_NE(text.find("key-clear-text = ***"), std::string::npos) << text;
    EXPECT_NE(text.find("/string = ***"), std::string::npos) << text;
    EXPECT_FALSE(std::regex_search(text, std::regex("[0-9a-f]{32}"))) << text;

    // Neither a key of the router's own nor one under a misspelt name; names of entries are shown.
    const auto in_chain = [](const std::string &key) {
        return "<keychains xmlns='http://tarvex.example/ns/yang/Tarvex-lib-keychain-cfg'><keychain><chain-name>KC1"
               "</chain-name><keys><key><key-id>01</key-id><key-string>" +
               key + "</key-string></key></keys></keychain></keychains>";
    };
    const std::string misspelt = "<macsec xmlns='http://openconfig.net/yang/macsec'><mka><key-chains><key-chain>"
                                 "<name>KC1</name><kee>s3cret</kee></key-chain></key-chains></mka></macsec>";
    const std::string tables[] = {table(in_chain("<keystring>s3cret</keystring>"), {"--reverse"}),
                                  table(in_chain("<keestring>s3cret</keestring>"), {"--reverse"}),
                                  ocmap({"explain", "-"}, misspelt).out};
    for (const std::string &shown : tables) {
        EXPECT_NE(shown.find("name = KC1"), std::string::npos) << shown;
        EXPECT_NE(shown.find(" = ***"), std::string::npos) << shown;
        EXPECT_EQ(shown.find("s3cret"), std::string::npos) << shown;
    }
}

/// What the tool prints when its standard output is a terminal.
std::string on_terminal(const std::vector<std::string> &environment)
{
    const std::string file = std::filesystem::path(EXAMPLES) / "policies/merge.xml";
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
    if (child == 0) {
        unsetenv("NO_COLOR");
        setenv("TERM", "xterm", 1);
        for (const std::string &variable : environment) {
            putenv(strdup(variable.c_str()));
        }
        execl(OCMAP, OCMAP, "explain", file.c_str(), nullptr);
        _exit(127);
    }
    std::string text;
    char piece[4096];
    for (ssize_t length = 0; (length = read(terminal, piece, sizeof piece)) > 0;) {
        text.append(piece, static_cast<std::size_t>(length));
    }
    close(terminal);
    waitpid(child, nullptr, 0);
    return text;
}

TEST(Explain, UsesColourOnATerminalOnly)
{
    EXPECT_NE(on_terminal({}).find("\033["), std::string::npos);
    EXPECT_NE(on_terminal({"NO_COLOR="}).find("\033["), std::string::npos);
    const std::string plain = on_terminal({"NO_COLOR=1"});
    EXPECT_NE(plain.find("policy-names"), std::string::npos);
    EXPECT_EQ(plain.find("\033["), std::string::npos);
    EXPECT_EQ(on_terminal({"TERM=dumb"}).find("\033["), std::string::npos);
    EXPECT_EQ(ocmap({"explain", std::filesystem::path(EXAMPLES) / "policies/merge.xml"}).out.find("\033["),
              std::string::npos);
}

} // namespace
