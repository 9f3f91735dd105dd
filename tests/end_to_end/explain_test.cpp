// What `ocmap explain` says of a request, in its table.
#include "support.h"

#include <fcntl.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>

namespace
{

using namespace test;

/// A request and all that the tool prints of it. In the file a title, which may be followed by a line of options, the
/// document, and behind a line of dashes what standard output and standard error get.
struct Case {
    std::string title;
    std::vector<std::string> arguments = {"explain", "-"};
    std::string document;
    std::string printed;
};

std::vector<Case> cases()
{
    std::vector<Case> cases;
    std::string *part = nullptr;
    std::ifstream file(EXPLAINED);
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("==== ")) {
            cases.emplace_back().title = line.substr(5);
            part = &cases.back().document;
        } else if (line == "----") {
            part = &cases.back().printed;
        } else if (part == &cases.back().document && part->empty() && line.starts_with("--")) {
            std::istringstream words(line);
            cases.back().arguments.insert(cases.back().arguments.end(), std::istream_iterator<std::string>(words), {});
        } else {
            *part += line + "\n";
        }
    }
    return cases;
}

TEST(Explain, TellsWhatEachNodeBecame)
{
    EXPECT_FALSE(cases().empty());
    for (const Case &one : cases()) {
        const Outcome outcome = ocmap(one.arguments, one.document);
        EXPECT_EQ(outcome.out + outcome.err, one.printed) << one.title;
        EXPECT_EQ(outcome.status, outcome.err.empty() ? 0 : 1) << one.title;
    }
}

TEST(Explain, WritesAPageInsteadOfTheTable)
{
    const std::string document = "<config><macsec xmlns='http://openconfig.net/yang/macsec'>" +
                                 in_policies(policy("P1", "<use-updated-eth-header>true</use-updated-eth-header>")) +
                                 "</macsec></config>";
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

// Neither that of a client, nor a key of the router's own, nor one under a misspelt name; names of entries are shown.
TEST(Explain, ShowsNoKeyText)
{
    const auto in_chain = [](const std::string &key) {
        return "<keychains xmlns='http://tarvex.example/ns/yang/Tarvex-lib-keychain-cfg'><keychain><chain-name>KC1"
               "</chain-name><keys><key><key-id>01</key-id><key-string>" +
               key + "</key-string></key></keys></keychain></keychains>";
    };
    const Outcome shown[] = {ocmap({"explain", std::filesystem::path(EXAMPLES) / "key-chains/create.xml"}),
                             ocmap({"explain", "-", "--reverse"}, in_chain("<keystring>00aa</keystring>")),
                             ocmap({"explain", "-", "--reverse"}, in_chain("<keestring>00aa</keestring>")),
                             ocmap({"explain", "-"},
                                   "<macsec xmlns='http://openconfig.net/yang/macsec'><mka><key-chains><key-chain>"
                                   "<name>KC1</name><kee>00aa</kee></key-chain></key-chains></mka></macsec>")};
    for (const Outcome &one : shown) {
        EXPECT_NE(one.out.find("name = KC1"), std::string::npos) << one.out;
        EXPECT_NE(one.out.find(" = ***"), std::string::npos) << one.out;
        EXPECT_FALSE(std::regex_search(one.out, std::regex("00aa|[0-9a-f]{32}"))) << one.out;
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
