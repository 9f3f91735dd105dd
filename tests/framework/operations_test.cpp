// The operations one by one: what the journal shows, where faults strike, what clients are told, and arguments that no
// walker gives.
#include <array>
#include <cstring>

#include <gtest/gtest.h>

#include "support.h"

namespace
{

using namespace test;
using tqm::Direction;
using tqm::Request;

class Operations : public ::testing::Test
{
protected:
    tqm::Watch watch()
    {
        tqm::Watch watch;
        watch.journal = &journal;
        watch.faults = &faults;
        watch.log = [this](uint32_t level, std::string_view line) {
            logs.push_back(std::to_string(level) + " " + std::string(line));
        };
        watch.trace = [this](std::string_view line) { traces.emplace_back(line); };
        watch.log_errors = true;
        return watch;
    }

    std::vector<std::string> lines, logs, traces;
    tqm::Journal journal{[this](std::string_view line) { lines.emplace_back(line); }};
    tqm::Faults faults;
    const tqm::Schema models = schema();
    const std::vector<tqm_map_reg_info> maps = registrations();
    Request request{models, maps, TQM_REQ_EDIT, Direction::forward, watch()};
    tqm_map_ctx ctx = request.ctx();
};

TEST_F(Operations, the_journal_shows_calls_and_masks_key_texts)
{
    rdl_tqm_datatree &tree =
        load(request, node("config", {leaf("key-clear-text", "hunter2"), leaf("id", "1")}, TQM_OP_CREATE));
    const char *value = nullptr;
    tqm_map_add_to_node_hierarchy(ctx, &tree, TQM_HIER_CONTAINER);
    tqm_map_get_node_info(ctx, "/config", "key-clear-text", &value);
    EXPECT_STREQ(value, "hunter2");
    tqm_map_get_node_info(ctx, "/config", "id", &value);
    add(request, "/kc/c/m/k/s/string", {.value = "!hunter2", .source = &tree});
    add(request, "/kc/c", {.list_entry = 1});
    tqm_map_do_these_match("hunter2", "x");
    plat_named_free(tqm_strdup("tag", "TQM MAP"));
    tqm_oc_error_path(ctx);
    EXPECT_EQ(lines,
              (std::vector<std::string>{
                  "tqm_map_add_to_node_hierarchy(config, level_kind=1) = 0",
                  "tqm_map_get_node_info(\"/config\", \"key-clear-text\") = 0, value=***",
                  "tqm_map_get_node_info(\"/config\", \"id\") = 0, value=\"1\"",
                  "tqm_map_datatree_add_path_flagged(\"/kc/c/m/k/s/string\", ns=native, value=***, "
                  "source=config:create, list_entry=0, flags=0) = 0",
                  "tqm_map_datatree_add_path_flagged(\"/kc/c\", ns=native, value=null, source=null, list_entry=1, "
                  "flags=0) = 0",
                  "tqm_strdup(\"tag\", owner=\"TQM MAP\") = \"tag\"",
                  "plat_named_free(\"tag\")",
                  "tqm_oc_error_path() = \"/config\"",
              }));
}

TEST(Journal, hides_values_of_secrets_and_of_nodes_that_no_model_knows)
{
    tqm::Schema models;
    models.add({.path = "/n/entry", .kind = tqm::NodeKind::list, .keys = {"name"}});
    models.add({.path = "/n/entry/name", .kind = tqm::NodeKind::leaf});
    models.add({.path = "/n/entry/colour", .kind = tqm::NodeKind::leaf});
    models.add({.path = "/n/entry/key", .kind = tqm::NodeKind::leaf, .secret = true});
    models.add({.path = "/n/entry/suite", .kind = tqm::NodeKind::leaf_list});
    models.add({.path = "/n/entry/box", .kind = tqm::NodeKind::container});
    std::vector<std::string> lines;
    tqm::Journal journal{[&](std::string_view line) { lines.emplace_back(line); }};
    tqm::Watch watch;
    watch.journal = &journal;
    const std::vector<tqm_map_reg_info> maps = registrations();
    Request request{models, maps, TQM_REQ_EDIT, Direction::forward, watch};
    const std::pair<const char *, bool> cases[] = {
        {"/n/entry/name", false}, {"n/entry/colour", false}, {"/n/entry/suite", false}, {"/n/entry/key", true},
        {"n/entry/key", true},    {"/n/entry/kee", true},    {"/n/entry/box", true},
    };
    for (const auto &[path, hidden] : cases) {
        lines.clear();
        add(request, path, {.value = "hunter2"});
        ASSERT_EQ(lines.size(), 1u);
        EXPECT_NE(lines[0].find(hidden ? "value=***" : "value=\"hunter2\""), std::string::npos) << lines[0];
    }
}

TEST_F(Operations, a_fault_strikes_the_call_it_is_meant_for)
{
    faults.fail("tqm_map_datatree_add_path_flagged", 2, TQM_ERR_INVALID_REQUEST);
    faults.fail("tqm_strdup", 1, TQM_ERR_BAD_ARGS);
    EXPECT_EQ(add(request, "/pol/p/a"), 0u);
    EXPECT_EQ(add(request, "/pol/p/b"), TQM_ERR_INVALID_REQUEST);
    EXPECT_EQ(add(request, "/pol/p/c"), 0u);
    EXPECT_EQ(tqm_strdup("a", "o"), nullptr);
    EXPECT_EQ(dump(request), "pol{p{a:merge c:merge}}");
}

TEST_F(Operations, hidden_children_still_answer)
{
    rdl_tqm_datatree &tree = load(request, node("policy", {leaf("name", "P"), node("x", {})}));
    tqm_map_add_to_node_hierarchy(ctx, &tree, TQM_HIER_LIST);
    tqm_map_update_current_list_node(ctx, "/oc/policy");
    tree.present &= static_cast<uint16_t>(~TQM_PRESENT_SUBTREE);
    const char *value = "untouched";
    for (const char *leaf : {"none", "x"}) {
        EXPECT_EQ(tqm_map_get_node_info(ctx, "/oc/policy", leaf, &value), 0u);
        EXPECT_STREQ(value, "untouched");
    }
    EXPECT_EQ(tqm_map_get_node_info(ctx, "/policy", "name", &value), 0u);
    EXPECT_STREQ(value, "untouched");
    tqm_map_get_node_info(ctx, "/oc/policy", "name", &value);
    EXPECT_STREQ(value, "P");
    // In a fill nothing was pushed for the list that says its path: the entry on top keeps its own.
    request.record().fill_mode = 1;
    EXPECT_EQ(tqm_map_update_current_list_node(ctx, "/oc/chain/keys/key"), 0u);
    tqm_oc_error_path(ctx);
    EXPECT_EQ(request.error_path(), "/policy[name='P']");
}

TEST_F(Operations, a_key_that_differs_from_its_leaf_under_config_is_refused)
{
    const auto check = [&](const Node &entry) {
        rdl_tqm_datatree &tree = load(request, entry);
        tqm_map_add_to_node_hierarchy(ctx, &tree, TQM_HIER_LIST);
        tqm_map_update_current_list_node(ctx, "/oc/policy");
        const rcode rc = tqm_map_check_oc_leafref(ctx, "/oc/policy", "config", "name", &tree);
        tqm_map_remove_from_node_hierarchy(ctx, &tree);
        return rc;
    };
    EXPECT_EQ(check(node("policy", {leaf("name", "P")})), 0u);
    EXPECT_EQ(check(node("policy", {leaf("name", "P"), node("config", {leaf("a", "Q")})})), 0u);
    EXPECT_EQ(check(node("policy", {node("config", {leaf("name", "P")}), leaf("name", "P")})), 0u);
    ASSERT_EQ(check(node("policy", {leaf("name", "it's"), node("config", {leaf("name", "Q")})})),
              TQM_ERR_INVALID_REQUEST);
    const tqm::Error error = request.error(TQM_ERR_INVALID_REQUEST);
    EXPECT_EQ(error.text, "Invalid request : name of the entry of /oc/policy is 'it's', but its config/name is 'Q'");
    EXPECT_EQ(error.path, "/policy[name=\"it's\"]");
}

TEST_F(Operations, what_a_fill_left_behind_is_not_reported)
{
    rdl_tqm_datatree &tree = load(request, node("oc", {}));
    tqm_map_request &record = request.record();
    const auto leave = [&](const char *tag) {
        plat_named_free(record.error_tag);
        record.error_tag = tqm_strdup(tag, "TQM MAP");
        tqm_oc_error_path(ctx);
    };
    tqm_map_add_to_node_hierarchy(ctx, &tree, TQM_HIER_CONTAINER);
    record.fill_mode = 1;
    leave("filled");
    record.fill_mode = 0;
    tqm::Error error = request.error(TQM_ERR_LIST_KEY);
    EXPECT_EQ(error.tag + "|" + error.path, "|");
    EXPECT_EQ(error.text, rcode_strerror(TQM_ERR_LIST_KEY));
    leave("named");
    record.error_msg = tqm_strdup("why", "TQM MAP");
    error = request.error(TQM_ERR_INVALID_REQUEST);
    EXPECT_EQ(error.text + "|" + error.tag + "|" + error.path, "why|named|/oc");
    EXPECT_STREQ(rcode_strerror(0x12345678), "error 0x12345678");
}

TEST_F(Operations, log_lines_go_where_they_are_wanted)
{
    uint32_t site = 0xffffffff;
    const auto log = [&](uint32_t level, tqm_log_handle handle, const char *text) {
        if (tqm_debug_should_log(&ctx->debug, level) != 0) {
            _plat_dt_log_filter_adv(handle, 0, 0, 0, 0, 0, &site, "%s", text);
        }
        if (ctx->trace_on != 0) {
            _rbtrace(ctx->trace_buf, TQM_TRACE_FLAGS, text);
        }
    };
    log(TQM_LOG_ERROR, ctx->err_log, "bad");
    log(TQM_LOG_TRACE, ctx->trc_log, "Start");
    EXPECT_EQ(logs, std::vector<std::string>{"0 bad"});
    EXPECT_TRUE(traces.empty());
    ctx->trace_on = 1;
    log(TQM_LOG_TRACE, ctx->trc_log, "End");
    EXPECT_EQ(traces, std::vector<std::string>{"End"});
    const uint32_t index = ret_nc_tqm_trace_index_incr();
    EXPECT_EQ(ret_nc_tqm_trace_index_incr(), index + 1);
}

TEST_F(Operations, bounded_copies_refuse_what_does_not_fit)
{
    char dest[4] = "old";
    EXPECT_EQ(tqm_strcpy_s("o", dest, sizeof dest, "four"), TQM_ERR_BAD_ARGS);
    EXPECT_STREQ(dest, "");
    EXPECT_EQ(tqm_strcpy_s("o", dest, sizeof dest, "abc"), 0u);
    EXPECT_EQ(tqm_strncpy_s("o", dest, sizeof dest, "wxyz", 2), 0u);
    EXPECT_STREQ(dest, "wx");
    EXPECT_EQ(tqm_strncpy_s("o", dest, sizeof dest, "wxyz", 4), TQM_ERR_BAD_ARGS);
    EXPECT_EQ(tqm_strcpy_s("o", dest, sizeof dest, nullptr), TQM_ERR_BAD_ARGS);
}

TEST_F(Operations, a_lookup_by_relative_path_gives_the_text)
{
    rdl_tqm_datatree &tree = load(request, node("if", {node("macsec", {leaf("psk", std::string(400, 'x'))})}));
    tqm_map_xpath_ops ops{};
    ops.tree = &tree;
    ops.operation = TQM_XPATH_OP_LOOKUP;
    ops.mode = TQM_XPATH_MODE_LOOKUP;
    for (const auto &[path, rc, length] : {std::tuple{"macsec/psk", rcode{0}, 299u},
                                           {"macsec", rcode{0}, 0u},
                                           {"macsec/eap", TQM_ERR_NOT_FOUND, 0u},
                                           {"", TQM_ERR_BAD_ARGS, 0u}}) {
        std::strcpy(ops.path, path);
        EXPECT_EQ(tqm_map_tree_xpath_operations(ctx, &ops), rc) << path;
        EXPECT_EQ(std::strlen(ops.data), length) << path;
    }
}

TEST_F(Operations, nothing_is_added_below_a_leaf_or_leaf_list)
{
    tqm::Schema leaves = schema();
    leaves.add({.path = "/pol/p/leaf", .kind = tqm::NodeKind::leaf});
    for (const Direction direction : {Direction::forward, Direction::reverse}) {
        Request own{leaves, maps, TQM_REQ_GET, direction, watch()};
        rdl_tqm_datatree *value = nullptr;
        ASSERT_EQ(add(own, "/pol/p/suite", {.value = "v", .out_node = &value}), 0u);
        for (const char *path : {"/pol/p/suite/x", "/pol/p/suite/x/y", "/pol/p/leaf/x"}) {
            const std::array<const char *, 1> components{path};
            EXPECT_EQ(add(own, path), TQM_ERR_BAD_ARGS) << path;
            EXPECT_EQ(tqm_map_datatree_add_path(own.ctx(), value, path, native_ns, "v", nullptr, nullptr, 1),
                      TQM_ERR_BAD_ARGS)
                << path;
            EXPECT_EQ(tqm_map_add_leaf_from_xpath(own.ctx(), value, own.out(), "/pol", native_ns, components.data(), 1),
                      TQM_ERR_BAD_ARGS)
                << path;
        }
        EXPECT_EQ(dump(own), "pol{p{suite=v}}");
    }
}

TEST_F(Operations, arguments_that_make_no_sense_are_refused)
{
    rdl_tqm_datatree &tree = load(request, node("oc", {}));
    rdl_tqm_datatree *found = nullptr;
    rdl_tqm_datatree *out = request.out();
    tqm_map_itree *element = nullptr;
    tqm_map_xpath_ops ops{};
    const std::array<const char *, 2> holes{"/op", nullptr};
    const char *value = nullptr;
    const std::vector<rcode> refused{
        tqm_map_datatree_add_path(nullptr, out, "/a", "", nullptr, nullptr, nullptr, 0),
        tqm_map_datatree_add_path(ctx, nullptr, "/a", "", nullptr, nullptr, nullptr, 0),
        tqm_map_datatree_add_path(ctx, out, nullptr, "", nullptr, nullptr, nullptr, 0),
        tqm_map_datatree_add_path(ctx, out, "/a", "", nullptr, nullptr, nullptr, 2),
        tqm_map_datatree_add_path(ctx, out, "/a//b", "", nullptr, nullptr, nullptr, 0),
        tqm_map_datatree_add_path(ctx, out, "/", "", nullptr, nullptr, nullptr, 0),
        tqm_map_datatree_add_path_flagged(ctx, out, "/a", "", nullptr, nullptr, nullptr, 0, 2),
        tqm_map_add_leaf_from_xpath(ctx, &tree, out, "/op", native_ns, holes.data(), 2),
        tqm_map_add_leaf_from_xpath(ctx, &tree, out, "/other", native_ns, holes.data(), 1),
        tqm_map_auto_stitch_list_to_list(ctx, &tree, out, oc_ns, nullptr, 3),
        tqm_map_search_list(ctx, out, &found, "/oc/policy", nullptr, "name", oc_ns),
        tqm_map_search_or_add_list(ctx, nullptr, &found, "/oc/policy", "P", "name", oc_ns),
        tqm_map_stitch_list_to_list(ctx, &ops),
        tqm_map_stitch_list_to_list(ctx, nullptr),
        tqm_map_tree_xpath_operations(ctx, nullptr),
        tqm_map_copy_trim_path_list_ctx(ctx, nullptr),
        tqm_map_add_to_node_hierarchy(ctx, &tree, 3),
        tqm_map_add_to_node_hierarchy(ctx, nullptr, TQM_HIER_LIST),
        tqm_map_remove_from_node_hierarchy(ctx, &tree),
        tqm_map_update_current_list_node(ctx, nullptr),
        tqm_map_get_node_info(ctx, nullptr, "a", &value),
        tqm_map_get_node_info(ctx, "/a", "a", nullptr),
        tqm_map_check_oc_leafref(ctx, "/oc/policy", "config", "name", nullptr),
        tqm_map_util_itree_stack_push(ctx, nullptr, 1, nullptr),
        tqm_map_util_itree_stack_pop(ctx),
        tqm_map_util_itree_stack_peak(ctx, &element),
        tqm_add_to_output_list_ctx(ctx, nullptr, out),
        tqm_strcpy_s("o", nullptr, 1, "a"),
    };
    for (std::size_t i = 0; i < refused.size(); ++i) {
        EXPECT_EQ(refused[i], TQM_ERR_BAD_ARGS) << i;
    }
    EXPECT_EQ(tqm_map_is_request_delete(nullptr) + tqm_map_is_request_add(nullptr) +
                  tqm_map_do_these_match(nullptr, nullptr) + tqm_debug_should_log(nullptr, 0),
              0);
    tqm_oc_error_path(nullptr);
    _rbtrace(0, 0, nullptr);
    plat_named_free(tqm_strdup(nullptr, nullptr));
    EXPECT_EQ(dump(request), "");
}

} // namespace
