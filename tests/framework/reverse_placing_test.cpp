// How answers come together in one OpenConfig tree.
#include <cstring>

#include <gtest/gtest.h>

#include "support.h"

namespace
{

using namespace test;
using tqm::Direction;
using tqm::Request;

class ReversePlacing : public ::testing::Test
{
protected:
    rdl_tqm_datatree *search(const char *path, const char *key, const char *key_leaf = "name")
    {
        rdl_tqm_datatree *found = nullptr;
        const rcode rc = tqm_map_search_list(request.ctx(), request.out(), &found, path, key, key_leaf, oc_ns);
        EXPECT_EQ(rc == 0, found != nullptr);
        return found;
    }
    rcode stitch(const char *list, const std::string &keyed_path)
    {
        tqm_map_xpath_ops ops{};
        ops.tree = request.out();
        ops.operation = TQM_XPATH_OP_STITCH;
        ops.mode = TQM_XPATH_MODE_STITCH;
        std::snprintf(ops.path, sizeof ops.path, "%s", keyed_path.c_str());
        std::strcpy(ops.list_path, list);
        return tqm_map_stitch_list_to_list(request.ctx(), &ops);
    }
    std::string answer()
    {
        request.drop_unanswered();
        return dump(request);
    }
    /// Runs `body` with an entry on the hierarchy.
    template <class Body>
    void in_entry(const Node &entry, Body body)
    {
        tqm::TreeBuilder builder = request.builder();
        builder.open(native_ns, entry.tag);
        for (const Node &key : entry.children) {
            builder.leaf(native_ns, key.tag, key.value);
        }
        builder.close();
        rdl_tqm_datatree *tree = builder.finish().nodes;
        for (uint32_t i = 0; i < tree->subtree_count; ++i) {
            tree->subtree[i].is_key = 1;
            tree->subtree[i].present |= TQM_PRESENT_IS_KEY;
        }
        tqm_map_add_to_node_hierarchy(request.ctx(), tree, TQM_HIER_LIST);
        body(*tree);
        const uint8_t before = request.record().output_depth;
        tqm_add_to_output_list_ctx(request.ctx(), tree, request.out());
        depths.push_back(request.record().output_depth - before);
        tqm_map_remove_from_node_hierarchy(request.ctx(), tree);
        if (depths.back() != 0) {
            tqm_remove_from_output_list_ctx(request.ctx(), tree, request.out());
        }
        EXPECT_EQ(request.record().output_depth, before);
    }
    rcode auto_stitch(const rdl_tqm_datatree &entry, std::vector<const char *> path)
    {
        return tqm_map_auto_stitch_list_to_list(request.ctx(), &entry, request.out(), oc_ns, path.data(),
                                                static_cast<uint32_t>(path.size()));
    }

    const tqm::Schema models = schema();
    const std::vector<tqm_map_reg_info> maps = registrations();
    Request request{models, maps, TQM_REQ_GET, Direction::reverse};
    std::vector<int> depths;
};

TEST_F(ReversePlacing, keys_may_hold_any_character_and_be_longer_than_a_stitch_path)
{
    for (const std::string &key : {std::string("a]/[name='b=\"c"), std::string("]/"), std::string(1200, 'k')}) {
        rdl_tqm_datatree *entry = nullptr;
        ASSERT_EQ(
            tqm_map_search_or_add_list(request.ctx(), request.out(), &entry, "/oc/policy", key.c_str(), "name", oc_ns),
            0u);
        ASSERT_EQ(search("/oc/policy", key.c_str()), entry);
        EXPECT_EQ(stitch("/oc/policy", "/oc/policy[name=" + key + "]/"), 0u);
    }
    EXPECT_EQ(stitch("/oc/policy", "/oc/policy[name=none]/"), TQM_ERR_SKIP_NODE);
}

TEST_F(ReversePlacing, what_an_inner_frame_made_current_ends_with_it)
{
    in_entry(node("c", {leaf("name", "A")}), [&](const rdl_tqm_datatree &outer) {
        auto_stitch(outer, {"/oc", "/chain"});
        in_entry(node("c", {leaf("name", "B")}), [&](const rdl_tqm_datatree &inner) {
            auto_stitch(inner, {"/oc", "/chain"});
        });
        in_entry(node("c", {}), [&](const rdl_tqm_datatree &keyless) {
            EXPECT_EQ(auto_stitch(keyless, {"/oc", "/chain"}), TQM_ERR_SKIP_NODE);
        });
        add(request, "/oc/chain/state/x", {.value = "a", .ns = oc_ns});
    });
    EXPECT_EQ(answer(), "oc{chain{name=A state{x=a}} chain{name=B}}");
    EXPECT_EQ(depths, (std::vector<int>{1, 0, 1}));
}

TEST_F(ReversePlacing, an_entry_whose_key_comes_last_joins_the_one_that_has_it)
{
    for (const char *value : {"1", "2"}) {
        in_entry(node("p", {}), [&](const rdl_tqm_datatree &) {
            add(request, "/oc/policy", {.list_entry = 1, .ns = oc_ns});
            add(request, "/oc/policy/config/a", {.value = value, .ns = oc_ns});
            add(request, (std::string("/oc/policy/config/only-") + value).c_str(), {.value = value, .ns = oc_ns});
            add(request, "/oc/policy/name", {.value = "P", .ns = oc_ns});
            add(request, "/oc/policy/state/x", {.value = value, .ns = oc_ns});
        });
    }
    EXPECT_EQ(answer(), "oc{policy{config{a=2 only-1=1 only-2=2} name=P state{x=2}}}");
}

TEST_F(ReversePlacing, an_entry_is_found_by_the_key_that_it_has_now)
{
    add(request, "/oc/policy", {.list_entry = 1, .ns = oc_ns});
    add(request, "/oc/policy/name", {.value = "P", .ns = oc_ns});
    EXPECT_NE(search("/oc/policy", "P"), nullptr);
    add(request, "/oc/policy/name", {.value = "Q", .ns = oc_ns});
    EXPECT_EQ(search("/oc/policy", "P"), nullptr);
    EXPECT_NE(search("/oc/policy", "Q"), nullptr);
    EXPECT_EQ(answer(), "oc{policy{name=Q}}");
}

TEST_F(ReversePlacing, nothing_is_answered_with_nothing)
{
    add(request, "/oc/policy", {.list_entry = 1, .ns = oc_ns});
    add(request, "/oc/policy/config/offset", {.value = "native text", .ns = oc_ns});
    add(request, "/oc/policy/config/offset", {.ns = oc_ns});
    add(request, "/oc/chain", {.list_entry = 1, .ns = oc_ns});
    add(request, "/oc/chain/config/a", {.value = "no key", .ns = oc_ns});
    add(request, "/oc/empty", {.ns = oc_ns});
    EXPECT_EQ(answer(), "");
}

} // namespace
