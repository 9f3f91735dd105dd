#include "support.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <regex>

namespace test
{
namespace
{

const char *const oc_ns = "http://openconfig.net/yang/macsec";
const char *const base_ns = "urn:ietf:params:xml:ns:netconf:base:1.0";

std::vector<char *> pointers(std::vector<std::string> &texts)
{
    std::vector<char *> found;
    for (std::string &text : texts) {
        found.push_back(text.data());
    }
    found.push_back(nullptr);
    return found;
}

// `environment`, and of this process's own what is not in it. What is preloaded here is preloaded there, too.
std::vector<std::string> with_inherited(std::vector<std::string> environment)
{
    const std::size_t given = environment.size();
    for (char **variable = environ; *variable != nullptr; ++variable) {
        const std::string_view inherited = *variable;
        const std::string_view name = inherited.substr(0, inherited.find('=') + 1);
        const auto end = environment.begin() + static_cast<std::ptrdiff_t>(given);
        const auto same =
            std::find_if(environment.begin(), end, [name](const std::string &text) { return text.starts_with(name); });
        if (same == end) {
            environment.emplace_back(inherited);
        } else if (name == "LD_PRELOAD=") {
            *same += ':';
            *same += inherited.substr(name.size());
        }
    }
    return environment;
}

} // namespace

Outcome ocmap(std::vector<std::string> arguments, std::string_view input, const std::vector<std::string> &environment)
{
    const std::filesystem::path work =
        std::filesystem::path(testing::TempDir()) / ("ocmap." + std::to_string(getpid()));
    std::filesystem::create_directories(work);
    write_file(work / "in", input);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    const std::string in = work / "in";
    const std::string out = work / "out";
    const std::string err = work / "err";
    posix_spawn_file_actions_addopen(&actions, 0, in.c_str(), O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_addopen(&actions, 2, err.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);

    arguments.insert(arguments.begin(), OCMAP);
    std::vector<std::string> variables = with_inherited(environment);
    Outcome outcome;
    pid_t child = 0;
    if (posix_spawn(&child, OCMAP, &actions, nullptr, pointers(arguments).data(), pointers(variables).data()) == 0) {
        int status = 0;
        waitpid(child, &status, 0);
        outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    posix_spawn_file_actions_destroy(&actions);
    outcome.out = read_file(out);
    outcome.err = read_file(err);
    std::filesystem::remove_all(work);
    return outcome;
}

std::string read_file(const std::filesystem::path &path)
{
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void write_file(const std::filesystem::path &path, std::string_view text)
{
    std::ofstream(path, std::ios::binary) << text;
}

void ToolTest::SetUp()
{
    std::string pattern = testing::TempDir() + "/store.XXXXXX";
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    directory_ = pattern;
}

void ToolTest::TearDown()
{
    std::filesystem::remove_all(directory_);
}

Outcome ToolTest::edit(std::string_view inside, std::string_view parameters) const
{
    const std::string document = std::string("<rpc message-id='1' xmlns='") + base_ns + "' xmlns:nc='" + base_ns +
                                 "'><edit-config><target><running/></target>" + std::string(parameters) +
                                 "<config><macsec xmlns='" + oc_ns + "'>" + std::string(inside) +
                                 "</macsec></config></edit-config></rpc>";
    return ocmap({"edit", "-", "--store", store()}, document);
}

Outcome ToolTest::get_config(std::string_view inside_filter) const
{
    return ocmap({"get-config", "-", "--store", store()}, "<filter><macsec xmlns='" + std::string(oc_ns) + "'>" +
                                                              std::string(inside_filter) + "</macsec></filter>");
}

std::string ToolTest::policies() const
{
    return inside(get_config("<mka><policies/></mka>"), "policies");
}

std::string policy(std::string_view name, std::string_view leaves, std::string_view operation)
{
    const std::string attribute = operation.empty() ? "" : " nc:operation='" + std::string(operation) + "'";
    const std::string key = "<name>" + std::string(name) + "</name>";
    return "<policy" + attribute + ">" + key + "<config>" + key + std::string(leaves) + "</config></policy>";
}

std::string in_policies(std::string_view entries)
{
    return "<mka><policies>" + std::string(entries) + "</policies></mka>";
}

std::string compact(std::string_view text)
{
    return std::regex_replace(std::string(text), std::regex(">\\s+<"), "><");
}

std::string inside(const Outcome &read, std::string_view tag)
{
    EXPECT_EQ(read.status, 0) << read.err;
    const std::string name(tag);
    const std::string text = compact(read.out);
    std::smatch found;
    const std::regex open("<" + name + "( [^>]*)?>");
    if (!std::regex_search(text, found, open)) {
        return "";
    }
    const auto begin = static_cast<std::size_t>(found.position() + found.length());
    return text.substr(begin, text.find("</" + name + ">") - begin);
}

} // namespace test
