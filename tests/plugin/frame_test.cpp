// The frame of exported functions: the two sinks of log lines, the assertion, and null arguments.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <csetjmp>
#include <fstream>
#include <regex>
#include <utility>

#include "support/walk.h"

namespace
{

bool catches_assertions = false;
std::jmp_buf caught;
std::string assertion; // file: function signature: expression

void note_assertion(const char *expression, const std::string &file, const char *function)
{
    assertion = file.substr(file.rfind('/') + 1) + ": " + function + ": " + expression;
}

} // namespace

// Stands before libc's: a caught assertion does not end the process.
extern "C" [[noreturn]] void __assert_fail(const char *expression, const char *file, unsigned int line,
                                           const char *function) noexcept
{
    if (catches_assertions) {
        note_assertion(expression, file, function);
        std::longjmp(caught, 1); // nothing in the frames up to there has a destructor
    }
    reinterpret_cast<decltype(&__assert_fail)>(dlsym(RTLD_NEXT, "__assert_fail"))(expression, file, line, function);
    std::abort();
}

namespace
{

using namespace test;

const std::string root = "ymap_ot_oc_macsec_openconfigmacsec_lvla_macsec";

Walk walked(bool log, bool trace, const std::string &inside, bool questions = false)
{
    Walk walk(TQM_REQ_EDIT, Direction::forward);
    if (questions) {
        walk.questions();
    }
    walk.sinks(log, trace).load(document(TQM_REQ_EDIT, Direction::forward, inside)).run();
    return walk;
}

TEST(Frame, TheTwoSinksAreSwitchedOnTheirOwn)
{
    const Walk off = walked(false, false, "<mka/>", true);
    EXPECT_EQ(off.calls_of("tqm_debug_should_log").size(), 6u); // a question for each line that is not written
    for (const char *operation : {"_plat_dt_log_filter_adv", "_rbtrace", "ret_nc_tqm_trace_index_incr"}) {
        EXPECT_EQ(off.calls_of(operation), Lines{});
    }
    EXPECT_EQ(walked(true, false, "<mka/>").traced(), Lines{});
    EXPECT_EQ(walked(true, false, "<mka/>").logged().size(), 6u);
    EXPECT_EQ(walked(false, true, "<mka/>").logged(), Lines{});
    const Lines traced = walked(false, true, "<mka/>").traced();
    ASSERT_EQ(traced.size(), 6u);
    EXPECT_TRUE(traced[0].starts_with("#1: TRC: " + root + ":"));
    EXPECT_TRUE(traced[5].starts_with("#6: TRC: "));
    // An error asks for its own level.
    const Lines asked = walked(true, true, "<nonsense/>", true).calls_of("tqm_debug_should_log");
    EXPECT_EQ(std::ranges::count(asked, "tqm_debug_should_log(level=0) = 1"), 1);
}

TEST(Frame, LongLinesAreCutInTheTraceBufferAlone)
{
    const std::string name(300, 'n');
    const Walk walk = walked(true, true, wrap("mka/key-chains/key-chain[name=" + name + "]/config/name", name));
    const auto longest = [](const Lines &lines) { return std::ranges::max(lines, {}, &std::string::size).size(); };
    EXPECT_EQ(longest(walk.traced()), 249u);
    EXPECT_GT(longest(walk.logged()), 300u);
}

TEST(FrameDeathTest, ANullContextEndsTheProcessWithTheSignature)
{
    rdl_tqm_datatree node{};
    EXPECT_DEATH(
        (void)call("ymap_ot_oc_macsec_openconfigmacsec_cont_lvla_macsec", nullptr, &node, &node),
        "ymap_oc_macsec_openconfig_macsec_auto.cpp:[0-9]+: rcode "
        "ymap_ot_oc_macsec_openconfigmacsec_cont_lvla_macsec\\(tqm_map_ctx, const struct rdl_tqm_datatree \\*, "
        "unsigned int, struct rdl_tqm_datatree \\*\\): Assertion `NULL != ctx' failed");
}

// ---- Null arguments ------------------------------------------------------------------------------------------------

/// What a function answers without a context, without a node and without an output tree.
std::string without_context(const std::string &name)
{
    catches_assertions = true;
    std::string answer;
    if (setjmp(caught) == 0) {
        answer = code_name(call(name, nullptr, nullptr, nullptr));
    } else {
        const char *const last = is_container_function(name) ? "unsigned int, struct" : "struct";
        const std::string signature =
            "rcode " + name + "(tqm_map_ctx, const struct rdl_tqm_datatree *, " + last + " rdl_tqm_datatree *)";
        const bool whole = assertion.ends_with(".cpp: " + signature + ": NULL != ctx");
        const std::string file = assertion.substr(0, assertion.find(".cpp"));
        answer = whole ? file.substr(std::string("ymap_oc_macsec_").size()) : assertion;
    }
    catches_assertions = false;
    return answer;
}

std::string without(const std::string &name, bool node, bool out)
{
    static rdl_tqm_datatree leaf{};
    leaf.tag = "leaf";
    Walk walk(TQM_REQ_EDIT, Direction::forward);
    const rcode rc = call(name, walk.ctx(), node ? nullptr : &leaf, out ? nullptr : walk.out());
    std::string text = code_name(rc);
    for (const Event &event : walk.events()) {
        const std::size_t begin = event.of == Event::Of::line ? event.text.find(": ") + 2 : 0;
        const std::string shown = event.text.substr(begin);
        text += event.of == Event::Of::line && !event.text.starts_with(name) ? ", elsewhere" : ", " + shown;
    }
    const std::string refusal = ", ERR Invalid arguments passed!, tqm_oc_error_path() = \"\"";
    return text == "BAD_ARGS, Start" + refusal ? "refused"
           : text == "BAD_ARGS" + refusal      ? "refused without Start"
                                               : text;
}

TEST(Frame, NullArgumentsAreRefusedByEveryExportedFunction)
{
    std::vector<std::pair<std::regex, std::string>> rules; // the first that a name matches counts
    std::ifstream table(NULL_ARGUMENTS);
    for (std::string line; std::getline(table, line);) {
        const std::size_t arrow = line.find(" => ");
        if (arrow != std::string::npos && !line.starts_with('#')) {
            rules.emplace_back(line.substr(0, arrow), line.substr(arrow + 4));
        }
    }
    std::ifstream names(EXPORTED_SYMBOLS);
    for (std::string name; std::getline(names, name);) {
        if (!name.starts_with("ymap_") || name.find("policy_sak_rekey_interval") != std::string::npos) {
            continue; // row selections have arguments of their own
        }
        std::string answer = without_context(name) + " | " + without(name, true, false);
        const std::string without_out = without(name, false, true);
        answer += answer.ends_with(" | " + without_out) ? "" : " | " + without_out;
        const auto rule =
            std::ranges::find_if(rules, [&](const auto &one) { return std::regex_search(name, one.first); });
        EXPECT_EQ(answer, rule == rules.end() ? "no rule" : rule->second) << name;
    }
}

TEST(Frame, RowSelectionsRefuseAMissingTable)
{
    using Selection = rcode (*)(tqm_map_ctx, int, xpath_list_type_t *);
    for (const char *name :
         {"ymap_ot_ocmacsec_policy_sak_rekey_interval_fwd", "ymap_to_ocmacsec_policy_sak_rekey_interval_rev"}) {
        Walk walk(TQM_REQ_EDIT, Direction::forward);
        EXPECT_EQ(reinterpret_cast<Selection>(symbol(name))(walk.ctx(), 0, nullptr), TQM_ERR_BAD_ARGS);
        EXPECT_EQ(walk.lines_of(name), (Lines{"Start", "ERR Invalid arguments passed!"}));
        EXPECT_EQ(walk.calls_of("tqm_oc_error_path").size(), 1u);
        EXPECT_DEATH(reinterpret_cast<Selection>(symbol(name))(nullptr, 0, nullptr), "tqm_map_ctx, int, ");
    }
}

TEST(Frame, AnUnsupportedLeafNeedsNoRequest)
{
    const std::string refuse = "ymap_ot_oc_macsec_openconfigmacsec_leaf_lvla_macsec_config_useupdatedethheader";
    rdl_tqm_datatree node{};
    node.tag = "leaf";
    EXPECT_EQ(call(refuse, nullptr, &node, nullptr), TQM_ERR_UNSUPPORTED);
    Walk walk(TQM_REQ_EDIT, Direction::forward);
    const tqm_map_ctx ctx = walk.ctx();
    tqm_map_request *const request = std::exchange(ctx->request, nullptr);
    EXPECT_EQ(call(refuse, ctx, &node, nullptr), TQM_ERR_UNSUPPORTED);
    EXPECT_EQ(call("ymap_to_ocmacsec_interfaces_list_rev", ctx, &node, &node), TQM_ERR_NO_SUBTREE);
    ctx->request = request;
    // A second refusal takes the place of the first, whose tag is freed.
    walk.run(refuse, &node).run(refuse, &node);
    EXPECT_EQ(walk.outcome(), "UNSUPPORTED, tag leaf");
    EXPECT_EQ(walk.calls_of("plat_named_free"), Lines{"plat_named_free(\"leaf\")"});
    EXPECT_EQ(walk.calls_of("tqm_strdup").back(), "tqm_strdup(\"leaf\", owner=\"leaf\") = \"leaf\"");
}

TEST(Frame, AnEmptyContainerTakesAnyChildCount)
{
    const auto container =
        reinterpret_cast<tqm_map_container_function>(symbol("ymap_ot_oc_macsec_openconfigmacsec_cont_lvla_macsec"));
    const rdl_tqm_datatree node{};
    const Walk walk(TQM_REQ_EDIT, Direction::forward);
    EXPECT_EQ(container(walk.ctx(), &node, 4000000000u, walk.out()), 0u);
    EXPECT_EQ(walk.lines().size(), 1u);
}

} // namespace
