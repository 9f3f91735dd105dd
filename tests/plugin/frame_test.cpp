// The frame of exported functions: the two sinks of log lines, the assertion, unsupported leaves.
#include <algorithm>
#include <utility>

#include "support.h"

extern "C" {
rcode ymap_ot_oc_macsec_openconfigmacsec_cont_lvla_macsec(tqm_map_ctx, const rdl_tqm_datatree *, unsigned int,
                                                          rdl_tqm_datatree *);
rcode ymap_ot_oc_macsec_openconfigmacsec_leaf_lvla_macsec_config_useupdatedethheader(tqm_map_ctx,
                                                                                     const rdl_tqm_datatree *,
                                                                                     rdl_tqm_datatree *);
rcode ymap_ot_oc_macsec_openconfigmacsec_leaf_lvla_macsec_state_keycleartext(tqm_map_ctx, const rdl_tqm_datatree *,
                                                                             rdl_tqm_datatree *);
rcode ymap_ot_oc_macsec_openconfigmacsec_leaf_lvla_macsec_config_delayprotection(tqm_map_ctx, const rdl_tqm_datatree *,
                                                                                 rdl_tqm_datatree *);
rcode ymap_ot_ocmacsec_policyname_name_fwd(tqm_map_ctx, const rdl_tqm_datatree *, rdl_tqm_datatree *);
}

using namespace test;

namespace
{

TEST(Frame, TheTwoSinksAreSwitchedOnTheirOwn)
{
    const std::string inside = "<mka/>";
    Walk off = edit().questions().forward(inside);
    EXPECT_GT(off.lines_of("tqm_debug_should_log").size(), 0u);
    EXPECT_EQ(off.lines_of("_plat_dt_log_filter_adv").size(), 0u);
    EXPECT_EQ(off.lines_of("_rbtrace").size(), 0u);
    EXPECT_EQ(off.lines_of("ret_nc_tqm_trace_index_incr").size(), 0u);

    Walk log = edit().log().forward(inside);
    EXPECT_TRUE(log.logs.front().starts_with("TRC: TQM: ctx=0x"));
    EXPECT_TRUE(log.logs.front().ends_with(",Start"));
    EXPECT_EQ(log.traces, Lines{});

    Walk trace = edit().trace().forward(inside);
    EXPECT_TRUE(trace.traces.front().starts_with("#1: TRC: ymap_ot_oc_macsec_openconfigmacsec_lvla_macsec:"));
    EXPECT_TRUE(trace.traces[1].starts_with("#2: "));
    EXPECT_EQ(trace.logs, Lines{});

    Walk both = edit().log().trace().forward("<mka><nonsense/></mka>");
    EXPECT_EQ(both.logs.size(), both.traces.size());
    const auto error = [](const std::string &line) { return line.find("ERR: ") != std::string::npos; };
    EXPECT_EQ(std::ranges::count_if(both.logs, error), 1);
    EXPECT_EQ(std::ranges::count_if(both.traces, error), 1);
}

TEST(Frame, LongLinesAreCutInTheTraceBufferAlone)
{
    const std::string name(300, 'n');
    Walk walk = edit().log().trace().forward("<mka><key-chains><key-chain><name>" + name + "</name><config><name>" +
                                             name + "</name></config></key-chain></key-chains></mka>");
    EXPECT_EQ(walk.rc, 0u);
    const auto longest = [](const Lines &lines) { return std::ranges::max(lines, {}, &std::string::size).size(); };
    EXPECT_EQ(longest(walk.traces), 249u);
    EXPECT_GT(longest(walk.logs), 300u);
}

using FrameDeathTest = testing::Test;

TEST(FrameDeathTest, ANullContextEndsTheProcessWithTheSignature)
{
    rdl_tqm_datatree node{};
    EXPECT_DEATH(
        ymap_ot_oc_macsec_openconfigmacsec_cont_lvla_macsec(nullptr, &node, 0, &node),
        "ymap_oc_macsec_openconfig_macsec_auto.cpp:[0-9]+: rcode "
        "ymap_ot_oc_macsec_openconfigmacsec_cont_lvla_macsec\\(tqm_map_ctx, const struct rdl_tqm_datatree \\*, "
        "unsigned int, struct rdl_tqm_datatree \\*\\): Assertion `NULL != ctx' failed");
    EXPECT_DEATH(ymap_ot_ocmacsec_policyname_name_fwd(nullptr, &node, &node),
                 "rcode ymap_ot_ocmacsec_policyname_name_fwd\\(tqm_map_ctx, const struct rdl_tqm_datatree \\*, struct "
                 "rdl_tqm_datatree \\*\\): Assertion `NULL != ctx' failed");
    // A node function that only hands a leaf on asserts on its way to the argument error.
    EXPECT_DEATH(ymap_ot_oc_macsec_openconfigmacsec_leaf_lvla_macsec_config_delayprotection(nullptr, nullptr, &node),
                 "leaf_lvla_macsec_config_delayprotection\\(tqm_map_ctx");
}

TEST(Frame, AnEmptyContainerTakesAnyChildCount)
{
    const rdl_tqm_datatree node{};
    for (const unsigned int count : {0u, 1u, 4000000000u}) {
        Walk walk = edit().trace();
        EXPECT_EQ(ymap_ot_oc_macsec_openconfigmacsec_cont_lvla_macsec(walk.request().ctx(), &node, count,
                                                                      walk.request().out()),
                  0u);
        EXPECT_EQ(walk.texts(), (Lines{"ymap_ot_oc_macsec_openconfigmacsec_cont_lvla_macsec: Start"}));
    }
}

TEST(Frame, UnsupportedLeavesNeedNoRequestAndLogNothing)
{
    rdl_tqm_datatree node{};
    node.tag = "leaf";
    const auto refuse = ymap_ot_oc_macsec_openconfigmacsec_leaf_lvla_macsec_config_useupdatedethheader;
    EXPECT_EQ(refuse(nullptr, &node, nullptr), TQM_ERR_UNSUPPORTED);
    Walk without_request = edit();
    const tqm_map_ctx ctx = without_request.request().ctx();
    tqm_map_request *const request = std::exchange(ctx->request, nullptr);
    EXPECT_EQ(refuse(ctx, &node, nullptr), TQM_ERR_UNSUPPORTED);
    ctx->request = request;
    EXPECT_EQ(without_request.calls.size(), 1u);

    Walk walk = edit().trace();
    walk.request();
    EXPECT_EQ(walk.run(refuse, &node).rc, TQM_ERR_UNSUPPORTED);
    EXPECT_EQ(walk.run(refuse, &node).rc, TQM_ERR_UNSUPPORTED);
    EXPECT_EQ(walk.tag(), "leaf");
    EXPECT_EQ(walk.traces, Lines{});
    Lines order;
    for (const std::string &call : walk.calls) {
        order.push_back(call.substr(0, call.find('(')));
    }
    EXPECT_EQ(order, (Lines{"tqm_oc_error_path", "tqm_strdup", "tqm_oc_error_path", "plat_named_free", "tqm_strdup"}));

    // One of them tests its arguments first.
    Walk tested = edit().trace();
    tested.run(ymap_ot_oc_macsec_openconfigmacsec_leaf_lvla_macsec_state_keycleartext, nullptr);
    EXPECT_EQ(tested.rc, TQM_ERR_BAD_ARGS);
    EXPECT_EQ(tested.tag(), "");
    EXPECT_EQ(tested.texts().size(), 1u);
}

} // namespace
