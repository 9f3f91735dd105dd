// What an add finds in its place, and where it gets what the mapper did not give. Where the adds of whole walks land
// is held by the cases of the plug-in.
#include <gtest/gtest.h>

#include "support.h"

namespace
{

using namespace test;
using tqm::Direction;
using tqm::Request;

class ForwardPlacing : public ::testing::Test
{
protected:
    const tqm::Schema models = schema();
    const std::vector<tqm_map_reg_info> maps = registrations();
    Request request{models, maps, TQM_REQ_EDIT, Direction::forward};
};

TEST_F(ForwardPlacing, the_last_value_and_operation_of_a_leaf_win_and_a_key_keeps_its_value)
{
    rdl_tqm_datatree &tree = load(request, node("policy", {leaf("name", "P")}, TQM_OP_REMOVE));
    tqm_map_add_to_node_hierarchy(request.ctx(), &tree, TQM_HIER_LIST);
    add(request, "pol/p", {.list_entry = 1});
    add(request, "/pol/p/name", {.value = "P"});
    add(request, "/pol/p/a", {.value = "1"});
    add(request, "/pol/p/b", {.value = ""});
    add(request, "/pol/p/a", {.source = &tree});
    add(request, "/pol/p/name", {.source = &tree});
    EXPECT_EQ(dump(request), "pol{p:merge{name=P:merge a:remove b=:merge}}");
}

TEST_F(ForwardPlacing, values_of_a_leaf_list_stand_once_and_an_out_node_overwrites_the_last)
{
    rdl_tqm_datatree *added = nullptr;
    for (const char *value : {"x", "y", "x"}) {
        add(request, "/pol/p/suite", {.value = value});
    }
    add(request, "/pol/p/suite", {.value = "z", .out_node = &added});
    add(request, "/pol/p/suite", {.value = "x"});
    EXPECT_EQ(dump(request), "pol{p{suite=z:merge suite=y:merge suite=x:merge}}");
    EXPECT_STREQ(added->value, "z");
}

TEST_F(ForwardPlacing, many_values_of_a_leaf_list_stand_once_too)
{
    std::string expected;
    for (int round = 0; round < 2; ++round) {
        for (const char *value : {"a", "b", "c", "d", "e", "f", "g", "h", "i"}) {
            add(request, "/pol/p/suite", {.value = value});
            expected += round == 0 ? std::string(" suite=") + value + ":merge" : "";
        }
    }
    add(request, "/pol/p/suite", {});
    EXPECT_EQ(dump(request), "pol{p{" + expected.substr(1) + " suite:merge}}");
}

TEST_F(ForwardPlacing, a_read_leaf_gets_the_keys_on_its_way_from_the_walk)
{
    Request read(models, maps, TQM_REQ_GET, Direction::forward);
    rdl_tqm_datatree &chain =
        load(read, node("chain", {leaf("name", "K"), node("keys", {node("key", {leaf("id", "1")})})}));
    rdl_tqm_datatree &holder = child(chain, "keys");
    const auto ask = [&](std::initializer_list<const char *> below) {
        std::vector<const char *> path{"/op", "/oc", "/chain"};
        path.insert(path.end(), below);
        return tqm_map_add_leaf_from_xpath(read.ctx(), &chain, read.out(), "/op", native_ns, path.data(),
                                           static_cast<uint32_t>(path.size()));
    };
    tqm_map_add_to_node_hierarchy(read.ctx(), &chain, TQM_HIER_LIST);
    tqm_map_update_current_list_node(read.ctx(), "/oc/chain");
    tqm_map_add_to_node_hierarchy(read.ctx(), &holder, TQM_HIER_CONTAINER);
    tqm_map_add_to_node_hierarchy(read.ctx(), holder.subtree, TQM_HIER_LIST);
    EXPECT_EQ(ask({"/keys", "/key", "/state", "/alg"}), 0u);
    tqm_map_remove_from_node_hierarchy(read.ctx(), holder.subtree);
    tqm_map_remove_from_node_hierarchy(read.ctx(), &holder);
    EXPECT_EQ(ask({"/state", "/x"}), 0u);
    EXPECT_EQ(ask({"/name"}), 0u);
    EXPECT_EQ(dump(read), "op{oc{chain{name=K keys{key{id=1 state{alg}}} state{x}}}}");
}

TEST_F(ForwardPlacing, a_leaf_added_to_a_request_node_leaves_the_old_children_readable)
{
    rdl_tqm_datatree &tree = load(request, node("policy", {leaf("a", "1")}));
    const rdl_tqm_datatree *before = tree.subtree;
    rdl_tqm_datatree *added = nullptr;
    tqm_map_add_to_node_hierarchy(request.ctx(), &tree, TQM_HIER_LIST);
    ASSERT_EQ(tqm_map_datatree_add_path_flagged(request.ctx(), &tree, "name", oc_ns, nullptr, nullptr, &added, 0, 0),
              0u);
    ASSERT_EQ(tree.subtree_count, 2u);
    EXPECT_EQ(added, tree.subtree + 1);
    EXPECT_STREQ(added->tag, "name");
    EXPECT_STREQ(before->value, "1");
    EXPECT_EQ(tqm_map_datatree_add_path_flagged(request.ctx(), &tree, "/a/b", oc_ns, nullptr, nullptr, nullptr, 0, 0),
              TQM_ERR_BAD_ARGS);
}

} // namespace
