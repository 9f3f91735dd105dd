// What a client is told of its edits: refusals in its own terms and as records, and what an edit would do.
#include <algorithm>
#include <regex>

#include "support.h"

using namespace test;

namespace
{

using ClientView = ToolTest;

const char *const config_open = "<config xmlns:nc='urn:ietf:params:xml:ns:netconf:base:1.0'>"
                                "<macsec xmlns='http://openconfig.net/yang/macsec'>";

std::string in_key(std::string_view leaves)
{
    return "<mka><key-chains><key-chain><name>K</name><mka-keys><mka-key><id>01</id><config><id>01</id>" +
           std::string(leaves) + "</config></mka-key></mka-keys></key-chain></key-chains></mka>";
}

std::string in_interface(std::string_view children)
{
    return "<interfaces><interface><name>I</name><config><name>I</name></config>" + std::string(children) +
           "</interface></interfaces>";
}

const std::string key_path = "/macsec/mka/key-chains/key-chain[name='K']/mka-keys/mka-key[id='01']/config/";

TEST_F(ClientView, RefusalsAreToldInTheClientsTerms)
{
    ASSERT_EQ(edit(in_key("<key-clear-text>00112233</key-clear-text>")).err, "");
    ASSERT_EQ(edit(in_policies(policy("P", "<macsec-cipher-suite>GCM_AES_128</macsec-cipher-suite>"))).err, "");
    const std::string before = store_file();
    const std::string policy_path = "/macsec/mka/policies/policy[name='P']";
    const struct {
        std::string inside;
        std::string parameters;
        std::string told;
    } cases[] = {
        {in_policies(policy("P", "", "create")), "", policy_path + ": it is there already\n  error-tag: data-exists\n"},
        {in_policies("<policy><name>Q</name><config nc:operation='delete'/></policy>"), "",
         "[name='Q']/config: there is nothing to delete\n  error-tag: data-missing\n"},
        {in_policies("<policy><name>P</name><config nc:operation='create'/></policy>"), "",
         policy_path + "/config: it is there already\n  error-tag: data-exists\n"},
        {in_policies(policy("P", "<delay-protection>true</delay-protection>")),
         "<default-operation>none</default-operation>",
         policy_path + "/config/delay-protection: there is no such node\n  error-tag: data-missing\n"},
        {in_policies(policy("P", "<macsec-cipher-suite nc:operation='delete'>GCM_AES_256</macsec-cipher-suite>")), "",
         "macsec-cipher-suite[.='GCM_AES_256']: there is nothing to delete\n  error-tag: data-missing\n"},
        {in_policies(policy("P", "<macsec-cipher-suite nc:operation='create'>GCM_AES_256</macsec-cipher-suite>")), "",
         "error-tag: operation-failed\n  error-app-tag: too-many-elements\n"},
        {in_policies("<policy><name>P</name><config><name nc:operation='remove'/></config></policy>"), "",
         policy_path + "/config/name: it repeats the key of its entry and goes with it: delete the entry\n"
                       "  error-tag: operation-not-supported\n"},
        {in_key("<key-clear-text nc:operation='delete'/>"), "",
         key_path + "key-clear-text: a secret is not taken away alone: replace its entry, or delete it\n"
                    "  error-tag: operation-not-supported\n"},
        {in_interface("<mka nc:operation='delete'/>"), "",
         "/macsec/interfaces/interface[name='I']/mka: there is nothing to delete\n  error-tag: data-missing\n"},
        // Under none also what says nothing is looked at.
        {in_policies(policy("P", "<colour/>")), "<default-operation>none</default-operation>", "config/colour: there"},
        {in_policies(policy("P", "<use-updated-eth-header>true</use-updated-eth-header>")),
         "<default-operation>none</default-operation>", "this router does not support it"},
        {in_policies(policy("P", "<delay-protection>False</delay-protection>")),
         "<default-operation>none</default-operation>", "delay-protection: 'False' must be true or false"},
        {in_policies(policy("P", "<confidentiality-offset>conf-off-set-30</confidentiality-offset>")), "",
         "'conf-off-set-30' must be one of 0_BYTES, 30_BYTES, 50_BYTES\n  error-tag: invalid-value\n"},
        {in_policies(policy("P", "<delay-protection/>")), "", "it has no value, and must be true or false"},
        {in_policies(policy("P", "").replace(policy("P", "").find("<config><name>P"), 15, "<config><name>Q")),
         "<default-operation>none</default-operation>", "config/name: 'Q' must be 'P', the key of its entry\n"},
        // What stands twice has no one meaning.
        {in_policies(policy("Q", "") + "<policy nc:operation='delete'><name>Q</name></policy>"), "",
         "policy[name='Q']: it stands twice\n  error-tag: bad-element\n"},
        {in_policies(policy("Q", "<macsec-cipher-suite>GCM_AES_128</macsec-cipher-suite>"
                                 "<macsec-cipher-suite nc:operation='remove'>GCM_AES_128</macsec-cipher-suite>")),
         "", "macsec-cipher-suite[.='GCM_AES_128']: it stands twice\n"},
        // What the router refuses, too.
        {in_interface("<mka><config><mka-policy></mka-policy></config></mka>"), "",
         "/macsec/interfaces/interface[name='I']/mka/config/mka-policy: "},
        {in_key("<valid-date-time>1960-01-01T00:00:00</valid-date-time>"), "",
         key_path +
             "valid-date-time: '1960-01-01T00:00:00' is refused by the router\n"
             "  error-tag: invalid-value\n  path: " +
             key_path +
             "valid-date-time\n"
             "  native: /keychains/keychain[chain-name='K']/macsec-keychain/macsec-keys/macsec-key[key-id='01']/"
             "macsec-lifetime/start-year: '1960' must be a number in 1970..9999\n"},
    };
    for (const auto &one : cases) {
        const Outcome refused = edit(one.inside, one.parameters);
        EXPECT_EQ(refused.status, 1) << one.inside;
        EXPECT_TRUE(refused.err.starts_with("error: /macsec/")) << refused.err;
        EXPECT_NE(refused.err.find(one.told), std::string::npos) << one.told << "\n" << refused.err;
        EXPECT_EQ(store_file(), before);
    }
    // White space around what is no text is no part of it.
    EXPECT_EQ(edit(in_key("<valid-date-time> VALID_IMMEDIATELY </valid-date-time>")).err, "");
    EXPECT_EQ(edit(in_policies(policy("P", "<delay-protection>\n true </delay-protection>"))).err, "");
}

TEST_F(ClientView, AnErrorIsARecordInJson)
{
    const std::string document = config_open + in_policies(policy("it's", "<colour>1</colour>")) + "</macsec></config>";
    const Outcome refused = ocmap({"edit", "-", "--store", store(), "--json"}, document);
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(compact(refused.err), R"({
  "ietf-restconf:errors": {
    "error": [
      {
        "error-type": "application",
        "error-tag": "unknown-element",
        "error-path": "/openconfig-macsec:macsec/mka/policies/policy[name=\"it's\"]/config/colour",
        "error-message": "/macsec/mka/policies/policy[name=\"it's\"]/config/colour: there is no such node",
        "error-info": {
          "ietf-netconf:bad-element": "colour"
        }
      }
    ]
  }
}
)");
    EXPECT_FALSE(std::filesystem::exists(store()));
}

TEST_F(ClientView, ADryRunTellsWhatAnEditWouldDoAndDoesNothing)
{
    const std::string key = in_key("<key-clear-text>00112233</key-clear-text>"
                                   "<valid-date-time>2030-01-02T03:04:05.5Z+02:00</valid-date-time>");
    const auto dry_run = [&](const std::string &inside, std::vector<std::string> more = {}) {
        std::vector<std::string> arguments = {"edit", "-", "--store", store(), "--dry-run"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return ocmap(arguments, config_open + inside + "</macsec></config>");
    };
    const Outcome first = dry_run(key);
    EXPECT_NE(first.out.find("would set /keychains/keychain[chain-name='K']/macsec-keychain/macsec-keys/"
                             "macsec-key[key-id='01']/macsec-key-string/string\n"),
              std::string::npos)
        << first.out << first.err;
    EXPECT_NE(first.out.find("note: " + key_path + "valid-date-time: of '2030-01-02T03:04:05.5Z+02:00' the fraction"),
              std::string::npos)
        << first.out;
    EXPECT_EQ(first.out.find("00112233"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(store()));

    ASSERT_EQ(edit(in_policies(policy("P", "<key-server-priority>1</key-server-priority>"))).status, 0);
    const std::string before = store_file();
    const std::string place = "/macsec/policy-names/policy-name[name='P']";
    EXPECT_EQ(dry_run(in_policies(policy("P", "<key-server-priority>2</key-server-priority>"
                                              "<delay-protection>true</delay-protection>")))
                  .out,
              "would change " + place + "/key-server-priority: 1 -> 2\nwould set " + place + "/delay-protection\n");
    EXPECT_EQ(dry_run("<mka><policies nc:operation='delete'/></mka>").out, "would remove " + place + "\n");
    EXPECT_EQ(dry_run(in_policies(policy("P", ""))).out, "would change nothing\n");
    const Outcome in_json = dry_run(in_policies(policy("P", "<key-server-priority nc:operation='remove'/>"
                                                            "<delay-protection>true</delay-protection>"
                                                            "<macsec-cipher-suite>GCM_AES_128</macsec-cipher-suite>")),
                                    {"--json"});
    const auto told = [&](const char *would, const std::string &leaf, const std::string &value) {
        return "{ \"would\": \"" + std::string(would) + "\", \"path\": \"" + place + leaf + "\"" + value + " }";
    };
    EXPECT_EQ(std::regex_replace(in_json.out, std::regex("\\s+"), " "),
              "{ \"changes\": [ " + told("remove", "/key-server-priority", "") + ", " +
                  told("set", "/delay-protection", ", \"value\": \"\"") + ", " +
                  told("set", "/cipher-suite", ", \"value\": \"gcm-aes-128\"") + " ], \"notes\": [] } ");
    EXPECT_NE(dry_run(in_policies(policy("P", "<key-server-priority>2</key-server-priority>")), {"--json"})
                  .out.find("\"before\": \"1\",\n      \"value\": \"2\""),
              std::string::npos);
    const Outcome refused = dry_run(in_policies(policy("P", "", "create")));
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.err.find("error-tag: data-exists"), std::string::npos);
    EXPECT_EQ(store_file(), before);
}

// What the router keeps in forms that OpenConfig's edits never make.
TEST_F(ClientView, SettingsOfTheRouterAreReadAndEditedByWhatAClientSees)
{
    std::filesystem::create_directory(store());
    const std::string start =
        "<start-hour>0</start-hour><start-minutes>0</start-minutes><start-seconds>0</start-seconds>"
        "<start-date>1</start-date><start-month>jan</start-month><start-year>2024</start-year>";
    const auto interface = [](const std::string &active, const std::string &name) {
        return "<interface-configuration><active>" + active + "</active><interface-name>" + name +
               "</interface-name><macsec xmlns='http://tarvex.example/ns/yang/Tarvex-crypto-macsec-mka-if-cfg'>"
               "<psk-key-chain><key-chain-name>K</key-chain-name></psk-key-chain></macsec></interface-configuration>";
    };
    write_file(
        path("store") / "native.xml",
        "<config><keychains xmlns='http://tarvex.example/ns/yang/Tarvex-lib-keychain-cfg'><keychain><chain-name>K"
        "</chain-name><macsec-keychain><macsec-keys><macsec-key><key-id>01</key-id><macsec-lifetime>" +
            start +
            "<life-time>3600</life-time></macsec-lifetime></macsec-key></macsec-keys></macsec-keychain>"
            "</keychain></keychains><interface-configurations "
            "xmlns='http://tarvex.example/ns/yang/Tarvex-ifmgr-cfg'>" +
            interface("act", "I") + interface("pre", "I") + interface("pre", "J") +
            "</interface-configurations></config>");
    // An end that is kept as a duration is told from the start, also where it alone is asked for.
    const std::string in_leaf = "<mka><key-chains><key-chain><name>K</name><mka-keys><mka-key><id>01</id><config>";
    const std::string out_of_leaf = "</config></mka-key></mka-keys></key-chain></key-chains></mka>";
    EXPECT_EQ(inside(get_config(in_leaf + "<expiration-date-time/>" + out_of_leaf), "config"),
              "<expiration-date-time>2024-01-01T01:00:00</expiration-date-time>");
    EXPECT_EQ(edit(in_key("<expiration-date-time nc:operation='create'>NO_EXPIRATION</expiration-date-time>")).status,
              1);
    EXPECT_EQ(edit(in_key("<expiration-date-time nc:operation='delete'/>")).err, "");
    EXPECT_EQ(store_file().find("life-time>"), std::string::npos);
    // Interfaces that are not in use are not shown, and not touched.
    EXPECT_EQ(inside(get_config("<interfaces><interface><mka/></interface></interfaces>"), "interfaces"),
              "<interface><name>I</name><mka><config><key-chain>K</key-chain></config></mka></interface>");
    EXPECT_EQ(edit("<interfaces nc:operation='delete'/>").err, "");
    EXPECT_EQ(edit("<interfaces><interface nc:operation='remove'><name>J</name></interface></interfaces>").err, "");
    const std::string kept = store_file();
    EXPECT_EQ(std::count(kept.begin(), kept.end(), 'K'), 3) << kept;
}

// Forward maps as the walkers do, without a judgement; with one on request.
TEST_F(ClientView, ForwardChecksWhenItIsTold)
{
    const std::string document =
        config_open + in_policies(policy("P", "<key-server-priority>300</key-server-priority>")) + "</macsec></config>";
    EXPECT_EQ(ocmap({"forward", "-"}, document).status, 0);
    const Outcome checked = ocmap({"forward", "-", "--check"}, document);
    EXPECT_EQ(checked.status, 1);
    EXPECT_NE(checked.err.find("'300' must be a number"), std::string::npos) << checked.err;
}

// What is read before an edit stands under a heading of its own, before the edit's own walk.
TEST_F(ClientView, TheJournalTellsTheLookBeforeTheEditFromTheEdit)
{
    ASSERT_EQ(edit(in_policies(policy("P", ""))).status, 0);
    const std::string document =
        config_open + in_policies("<policy nc:operation='delete'><name>P</name></policy>") + "</macsec></config>";
    const Outcome done = ocmap({"edit", "-", "--store", store(), "--journal"}, document);
    const std::size_t look = done.err.find("---- before the edit");
    const std::size_t own = done.err.find("\n---- the edit ----\n");
    ASSERT_LT(look, own) << done.err;
    const std::string walk = done.err.substr(own + sizeof "\n---- the edit ----");
    EXPECT_EQ(walk, ocmap({"forward", "-", "--journal"}, document).err);
    EXPECT_EQ(done.err.substr(0, look), "");
}

} // namespace
