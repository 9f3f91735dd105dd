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
    /// A configuration entry: stitched if it is there, else added, as the list mappers do.
    void config_entry(const char *list, const char *key, const char *key_path, const char *leaf_path, const char *value)
    {
        if (search(list, key) != nullptr) {
            EXPECT_EQ(stitch(list, std::string(list) + "[name=" + key + "]/"), 0u);
        } else {
            add(request, list, {.list_entry = 1, .ns = oc_ns});
        }
        add(request, key_path, {.value = key, .ns = oc_ns});
        add(request, leaf_path, {.value = value, .ns = oc_ns});
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

TEST_F(ReversePlacing, an_entry_stands_once_whichever_tree_comes_first)
{
    const Node p1 = node("p", {leaf("name", "P1")});
    const Node p2 = node("p", {leaf("name", "P2")});
    const auto state = [&](const rdl_tqm_datatree &entry) {
        EXPECT_EQ(auto_stitch(entry, {"/oc", "/policy"}), 0u);
        add(request, "/oc/policy/state/x", {.value = "s", .ns = oc_ns});
    };
    const auto config = [&](const rdl_tqm_datatree &entry) {
        config_entry("/oc/policy", entry.subtree->value, "/oc/policy/name", "/oc/policy/config/a", "c");
    };
    in_entry(p1, state);
    in_entry(p2, config);
    in_entry(p1, config);
    in_entry(p2, state);
    EXPECT_EQ(answer(), "oc{policy{name=P1 state{x=s} config{a=c}} policy{name=P2 config{a=c} state{x=s}}}");
    EXPECT_EQ(depths, (std::vector<int>{1, 1, 1, 1}));
}

TEST_F(ReversePlacing, a_nested_list_is_searched_below_the_outer_entry_alone)
{
    for (const char *chain : {"A", "B"}) {
        in_entry(node("c", {leaf("name", chain)}), [&](const rdl_tqm_datatree &outer) {
            EXPECT_EQ(auto_stitch(outer, {"/oc", "/chain"}), 0u);
            in_entry(node("k", {leaf("id", "1")}), [&](const rdl_tqm_datatree &inner) {
                EXPECT_EQ(search("/oc/chain/keys/key", "1", "key-id"), nullptr);
                EXPECT_EQ(auto_stitch(inner, {"/oc", "/chain", "/keys", "/key"}), 0u);
                EXPECT_NE(search("/oc/chain/keys/key", "1", "key-id"), nullptr);
            });
        });
    }
    EXPECT_EQ(answer(), "oc{chain{name=A keys{key{id=1}}} chain{name=B keys{key{id=1}}}}");
    EXPECT_EQ(search("/oc/chain/keys/key", "1"), nullptr);
}

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

TEST_F(ReversePlacing, a_handed_out_entry_takes_paths_that_begin_with_its_own)
{
    tqm_map_request &record = request.record();
    tqm_map_search_or_add_list(request.ctx(), request.out(), &record.current_list, "/oc/interface", "I", "name", oc_ns);
    rdl_tqm_datatree *first = record.current_list;
    tqm_map_search_or_add_list(request.ctx(), request.out(), &record.current_list, "/oc/interface", "J", "name", oc_ns);
    EXPECT_EQ(tqm_map_datatree_add_path_flagged(request.ctx(), first, "/oc/interface/config/name", oc_ns, "I", nullptr,
                                                nullptr, 0, TQM_ADD_ENTRY_NAME),
              0u);
    add(request, "/oc/interface/mka/chain", {.value = "K", .ns = oc_ns});
    EXPECT_EQ(answer(), "oc{interface{name=I config{name=I}} interface{name=J mka{chain=K}}}");
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

TEST_F(ReversePlacing, native_and_mapped_text_of_a_leaf_list_are_one_value)
{
    rdl_tqm_datatree *added = nullptr;
    for (const auto &[native, mapped] : {std::pair{"gcm-1", "GCM_1"}, std::pair{"gcm-2", "GCM_2"}}) {
        add(request, "/oc/policy/config/suite", {.value = native, .ns = oc_ns});
        add(request, "/oc/policy/config/suite", {.value = mapped, .ns = oc_ns, .out_node = &added});
    }
    EXPECT_EQ(dump(request), "oc{policy{config{suite=GCM_1 suite=GCM_2}}}");
}

} // namespace
