// Where forward adds land and with which operation, when the operations come in the order of the walkers.
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
    // The list mapper names the entry in an edit and in a delete, not in a remove; a deleted key still names it.
    ListModel policies()
    {
        return {"/oc/policy",
                "name",
                [this](const rdl_tqm_datatree &entry) {
                    if (tqm_map_is_request_delete(&entry) == 0) {
                        add(request, "/pol/p", {.list_entry = 1});
                    } else if (entry.operation == TQM_OP_DELETE) {
                        add(request, "/pol/p", {.source = &entry, .list_entry = 1});
                    }
                },
                [this](const rdl_tqm_datatree &key) {
                    add(request, "/pol/p/name", {.value = key.value, .source = &key});
                    if (tqm_map_is_request_delete(&key) == 0) {
                        add(request, "/pol/p/created");
                    }
                },
                [this](const rdl_tqm_datatree &from) {
                    add(request, "/pol/p/a", {.source = &from});
                    add(request, "/pol/p/b", {.source = &from});
                },
                [this](const rdl_tqm_datatree &given) {
                    const std::string path = std::string("/pol/p/") + given.tag;
                    add(request, path.c_str(), {.value = given.value, .source = &given});
                }};
    }
    ListModel keys()
    {
        return {"/oc/chain/keys/key",
                "id",
                [this](const rdl_tqm_datatree &entry) {
                    add(request, "/kc/c/m/k",
                        {.source = tqm_map_is_request_delete(&entry) != 0 ? &entry : nullptr, .list_entry = 1});
                },
                [this](const rdl_tqm_datatree &key) {
                    add(request, "/kc/c/m/k/key-id", {.value = key.value, .source = &key});
                },
                [this](const rdl_tqm_datatree &from) { add(request, "/kc/c/m/k/s/alg", {.source = &from}); },
                [this](const rdl_tqm_datatree &given) {
                    add(request, "/kc/c/m/k/s/alg", {.value = given.value, .source = &given});
                }};
    }
    ListModel chains()
    {
        return {"/oc/chain",
                "name",
                [this](const rdl_tqm_datatree &entry) {
                    add(request, "/kc/c",
                        {.source = tqm_map_is_request_delete(&entry) != 0 ? &entry : nullptr, .list_entry = 1});
                },
                [this](const rdl_tqm_datatree &key) {
                    add(request, "/kc/c/chain-name", {.value = key.value, .source = &key});
                },
                [this](const rdl_tqm_datatree &from) {
                    add(request, "/kc/c/chain-name", {.source = &from});
                    keys().list_function(from);
                    keys().key_function(from);
                    keys().fill(from);
                },
                [this](const rdl_tqm_datatree &given) {
                    walk_container(request, const_cast<rdl_tqm_datatree &>(given),
                                   [this](rdl_tqm_datatree &key) { walk_entry(request, key, keys()); });
                }};
    }
    ListModel interfaces()
    {
        const auto leaf_of_other_module = [this](const rdl_tqm_datatree &node) {
            add(request, "/ifs/if/macsec/psk/chain",
                {.value = node.value, .source = &node, .flags = TQM_ADD_OTHER_MODULE, .ns = other_ns});
        };
        return {"/oc/interface",
                "name",
                [this](const rdl_tqm_datatree &entry) {
                    if (tqm_map_is_request_delete(&entry) != 0) {
                        return;
                    }
                    add(request, "/ifs/if", {.list_entry = 1});
                    add(request, "/ifs/if/active", {.value = "act", .list_entry = 1});
                },
                [this](const rdl_tqm_datatree &key) {
                    add(request, "/ifs/if/interface-name", {.value = key.value, .source = &key, .list_entry = 1});
                },
                leaf_of_other_module,
                leaf_of_other_module};
    }
    std::string walk(const Node &tree, const ListModel &model)
    {
        walk_container(request, load(request, tree),
                       [&](rdl_tqm_datatree &entry) { walk_entry(request, entry, model); });
        return dump(request);
    }

    const tqm::Schema models = schema();
    const std::vector<tqm_map_reg_info> maps = registrations();
    Request request{models, maps, TQM_REQ_EDIT, Direction::forward};
};

TEST_F(ForwardPlacing, an_entry_has_the_operation_that_its_walker_leaves)
{
    const auto policy = [](const char *name, std::optional<uint32_t> operation, bool with_leaf) {
        std::vector<Node> children{leaf("name", name)};
        if (with_leaf) {
            children.push_back({"a", "5", {}, operation == TQM_OP_CREATE ? operation : std::nullopt});
        }
        return node("policy", children, operation);
    };
    EXPECT_EQ(
        walk(node("oc", {policy("C", TQM_OP_CREATE, true), policy("M", {}, true), policy("D", TQM_OP_DELETE, false),
                         policy("R", TQM_OP_REMOVE, false), policy("X", TQM_OP_REPLACE, true)}),
             policies()),
        "pol{p:create{name=C:merge created:merge a=5:create} "
        "p:merge{name=M:merge created:merge a=5:merge} "
        "p:delete{name=D:merge created:merge a:remove b:remove} "
        "p:remove{name=R:merge created:merge a:remove b:remove} "
        "p:merge{name=X:merge created:merge a=5:merge b:remove}}");
}

TEST_F(ForwardPlacing, what_a_replace_removes_of_all_keys_comes_before_the_keys_that_it_adds)
{
    const Node chain =
        node("chain",
             {leaf("name", "K"),
              node("keys", {node("key", {leaf("id", "1"), leaf("alg", "x")}), node("key", {leaf("id", "2")})})},
             TQM_OP_REPLACE);
    EXPECT_EQ(walk(node("oc", {chain}), chains()),
              "kc{c:merge{chain-name=K:merge m{k:remove{key-id:remove s{alg:remove}} "
              "k:merge{key-id=1:merge s{alg=x:merge}} k:merge{key-id=2:merge}}}}");
}

TEST_F(ForwardPlacing, deleting_an_interface_leaves_the_native_one_standing)
{
    EXPECT_EQ(walk(node("oc", {node("interface", {leaf("name", "I")}, TQM_OP_DELETE)}), interfaces()),
              "ifs{if:none{interface-name=I:merge macsec{psk{chain:remove}}}}");
    const tqm::OutputNode &entry = *request.roots().at(0)->children().begin();
    const tqm::OutputNode &macsec = *++entry.children().begin();
    EXPECT_STREQ(entry.ns(), native_ns);
    EXPECT_STREQ(macsec.ns(), other_ns);
}

TEST_F(ForwardPlacing, a_created_interface_is_merged_and_gets_its_own_instance)
{
    const auto interface = [](const char *name) {
        return node("interface", {leaf("name", name), {"psk", "K", {}, TQM_OP_CREATE}}, TQM_OP_CREATE);
    };
    EXPECT_EQ(walk(node("oc", {interface("I"), interface("J")}), interfaces()),
              "ifs{if:merge{active=act:merge interface-name=I:merge macsec{psk{chain=K:create}}} "
              "if:merge{active=act:merge interface-name=J:merge macsec{psk{chain=K:create}}}}");
}

TEST_F(ForwardPlacing, a_fill_from_above_makes_one_instance_for_all_entries)
{
    rdl_tqm_datatree &tree = load(request, node("oc", {}, TQM_OP_REMOVE));
    tqm_map_add_to_node_hierarchy(request.ctx(), &tree, TQM_HIER_CONTAINER);
    request.record().fill_mode = 1;
    policies().list_function(tree);
    request.ctx()->list_operation = tree.operation;
    policies().key_function(tree);
    policies().fill(tree);
    interfaces().list_function(tree);
    interfaces().fill(tree);
    request.record().fill_mode = 0;
    tqm_map_remove_from_node_hierarchy(request.ctx(), &tree);
    // A native interface is no entry of its own making: only a key says that it goes.
    EXPECT_EQ(dump(request), "pol{p:remove{name:remove a:remove b:remove}} ifs{if{macsec{psk{chain:remove}}}}");
}

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
