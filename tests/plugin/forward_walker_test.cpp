// The forward walkers: dispatch, keys, replace, fills, skipped nodes, and what each failure leaves behind.
#include <algorithm>
#include <map>

#include "support.h"

extern "C" {
rcode ymap_ot_oc_macsec_openconfigmacsec_lvla_macsec_policy_config(tqm_map_ctx, const rdl_tqm_datatree *,
                                                                   rdl_tqm_datatree *);
rcode ymap_ot_oc_macsec_openconfigmacsec_lvla_macsec_policies_policy(tqm_map_ctx, const rdl_tqm_datatree *,
                                                                     rdl_tqm_datatree *);
rcode ymap_ot_oc_macsec_openconfigmacsec_lvla_macsec_scsatx_scsatx(tqm_map_ctx, const rdl_tqm_datatree *,
                                                                   rdl_tqm_datatree *);
rcode ymap_ot_oc_macsec_openconfigmacsec_lvla_macsec_config_name(tqm_map_ctx, const rdl_tqm_datatree *,
                                                                 rdl_tqm_datatree *);
rcode ymap_ot_oc_macsec_openconfigmacsec_lvla_macsec_mka_parse_augments(tqm_map_ctx, const rdl_tqm_datatree *,
                                                                        rdl_tqm_datatree *);
}

using namespace test;

namespace
{

constexpr tqm_map_function container = ymap_ot_oc_macsec_openconfigmacsec_lvla_macsec_policy_config;
constexpr tqm_map_function keyed_list = ymap_ot_oc_macsec_openconfigmacsec_lvla_macsec_policies_policy;
constexpr tqm_map_function state_list = ymap_ot_oc_macsec_openconfigmacsec_lvla_macsec_scsatx_scsatx;
constexpr tqm_map_function leaf = ymap_ot_oc_macsec_openconfigmacsec_lvla_macsec_config_name;
constexpr tqm_map_function augments = ymap_ot_oc_macsec_openconfigmacsec_lvla_macsec_mka_parse_augments;

rdl_tqm_datatree node_of(const char *tag)
{
    rdl_tqm_datatree node{};
    node.tag = tag;
    node.ns = oc_ns;
    return node;
}

TEST(ForwardWalker, NullArgumentsAreRefusedByEveryFamily)
{
    const rdl_tqm_datatree node = node_of("x");
    for (const tqm_map_function function : {container, keyed_list, state_list, leaf, augments}) {
        Walk no_node = edit().trace().run(function, nullptr);
        EXPECT_EQ(no_node.rc, TQM_ERR_BAD_ARGS);
        const Lines texts = no_node.texts();
        EXPECT_TRUE(texts.back().ends_with(": Invalid arguments passed!"));
        EXPECT_EQ(texts.size(), function == augments ? 1u : 2u); // no "End", and "Start" in walkers alone
        EXPECT_EQ(no_node.calls.size(), 1u);
        EXPECT_TRUE(no_node.calls.front().starts_with("tqm_oc_error_path"));

        Walk no_out = edit();
        EXPECT_EQ(function(no_out.request().ctx(), &node, nullptr), TQM_ERR_BAD_ARGS);
    }
}

TEST(ForwardWalker, AMissingChildArrayIsReportedBeforeAnythingIsPushed)
{
    rdl_tqm_datatree node = node_of("x");
    node.present = TQM_PRESENT_SUBTREE;
    node.subtree_count = 2;
    for (const tqm_map_function function : {container, keyed_list, state_list}) {
        Walk walk = edit().trace().run(function, &node);
        EXPECT_EQ(walk.rc, TQM_ERR_NO_SUBTREE);
        EXPECT_EQ(walk.calls, Lines{});
        const Lines texts = walk.texts();
        ASSERT_EQ(texts.size(), 3u);
        EXPECT_TRUE(texts[1].ends_with(": Failed to get subtrees!"));
        EXPECT_TRUE(texts[2].ends_with(": End"));
    }
    // In a read a state list takes it for an empty one.
    EXPECT_EQ(get().run(state_list, &node).rc, 0u);
    // Without the presence bit the fields mean nothing.
    node.present = 0;
    EXPECT_EQ(edit().run(container, &node).rc, 0u);
}

TEST(ForwardWalker, UnknownTagsFailEditsAndPassReads)
{
    const std::string inside = policy("<config><key-server-priority/><nonsense/></config>");
    Walk failed = edit().trace().forward(inside);
    EXPECT_EQ(failed.rc, TQM_ERR_UNSUPPORTED);
    EXPECT_EQ(failed.tag(), "nonsense");
    EXPECT_EQ(failed.error_path(), "/macsec/mka/policies/policy[name='P1']/config");
    EXPECT_EQ(failed.texts_of("ymap_ot_oc_macsec_openconfigmacsec_lvla_macsec_policy_config"),
              (Lines{"Start", "Unsupported tag is specified in the request.", "End"}));
    EXPECT_EQ(failed.lines_of("tqm_map_add_to_node_hierarchy").size(),
              failed.lines_of("tqm_map_remove_from_node_hierarchy").size());

    Walk passed = get_config().trace().forward(inside);
    EXPECT_EQ(passed.rc, 0u);
    EXPECT_EQ(passed.tag(), "");
    EXPECT_EQ(passed.texts_of("ymap_ot_oc_macsec_openconfigmacsec_lvla_macsec_policy_config"),
              (Lines{"Start", "Unsupported tag is specified in the request.", "End"}));
}

TEST(ForwardWalker, StateIsWalkedInReadsOfStateAlone)
{
    const std::string inside = policy("<state><name/></state>");
    EXPECT_EQ(get().forward(inside).lines_of("tqm_map_add_leaf_from_xpath").size(), 1u);
    Walk config = get_config().forward(inside);
    EXPECT_EQ(config.rc, 0u);
    EXPECT_EQ(config.lines_of("tqm_map_add_leaf_from_xpath").size(), 0u);
    Walk failed = edit().forward(inside);
    EXPECT_EQ(failed.rc, TQM_ERR_UNSUPPORTED);
    EXPECT_EQ(failed.tag(), "state");
}

TEST(ForwardWalker, ForeignChildrenFailRequestsThatAddData)
{
    const std::string inside = "<mka><extra xmlns='http://example.com/other'/></mka>";
    Walk failed = edit().trace().forward(inside);
    EXPECT_EQ(failed.rc, TQM_ERR_AUGMENT);
    EXPECT_EQ(failed.tag(), "extra");
    EXPECT_EQ(failed.error_path(), "/macsec/mka");
    EXPECT_EQ(failed.texts_of("ymap_ot_oc_macsec_openconfigmacsec_lvla_macsec_mka_parse_augments"), Lines{});
    EXPECT_EQ(get().forward(inside).rc, 0u);
}

TEST(ForwardWalker, AChildWithoutATagStopsTheDispatch)
{
    rdl_tqm_datatree children[2] = {node_of("key-server-priority"), node_of(nullptr)};
    rdl_tqm_datatree node = node_of("config");
    node.subtree = children;
    node.subtree_count = 2;
    node.present = TQM_PRESENT_SUBTREE;
    Walk walk = edit().trace().run(container, &node);
    EXPECT_EQ(walk.rc, TQM_ERR_NO_SUBTREE);
    EXPECT_EQ(walk.adds().size(), 1u);
    EXPECT_EQ(walk.tag(), "");
    EXPECT_EQ(walk.lines_of("tqm_map_remove_from_node_hierarchy").size(), 1u);
    EXPECT_EQ(walk.texts_of("ymap_ot_oc_macsec_openconfigmacsec_lvla_macsec_policy_config"),
              (Lines{"Start", "Tag name is not available!", "End"}));
}

TEST(ForwardWalker, DeletesWithChildrenAreRefused)
{
    Walk walk = edit().trace().forward(policy("<config nc:operation='delete'><delay-protection/></config>"));
    EXPECT_EQ(walk.rc, TQM_ERR_BAD_ARGS);
    EXPECT_EQ(walk.texts_of("ymap_ot_oc_macsec_openconfigmacsec_lvla_macsec_policy_config"),
              (Lines{"Start", "Delete request with subtree present", "End"}));
    EXPECT_EQ(edit().forward("<mka nc:operation='delete'/>").rc, 0u);
}

TEST(ForwardWalker, KeysAreTestedInEdits)
{
    const std::string no_keys = "<mka><policies><policy/></policies></mka>";
    const std::string only_config = "<mka><policies><policy><config/></policy></policies></mka>";
    const std::string empty = "<mka><policies><policy><name/></policy></policies></mka>";
    const std::string twice = policy("<name>P2</name>");
    const std::string deleted =
        "<mka><policies><policy><name nc:operation='delete'>P1</name></policy></policies></mka>";
    const std::string mismatch = policy("<config><name>P2</name></config>");
    const struct {
        const char *what;
        const std::string &inside;
        rcode rc;
        const char *tag;
        const char *path;
        Lines texts;
    } cases[] = {
        {"none",
         no_keys,
         TQM_ERR_NO_SUBTREE,
         "",
         "",
         {"Start", "No keys specified with a list node.", "No keys specified with a list node.", "End"}},
        {"no key",
         only_config,
         TQM_ERR_LIST_KEY,
         "name",
         "/macsec/mka/policies/policy",
         {"Start", "List key node error.", "End"}},
        {"empty",
         empty,
         TQM_ERR_LIST_KEY,
         "name",
         "/macsec/mka/policies/policy",
         {"Start", "List key node error.", "End"}},
        {"two",
         twice,
         TQM_ERR_LIST_KEY,
         "name",
         "/macsec/mka/policies/policy[name='P1']",
         {"Start", "List key node error.", "End"}},
        {"deleted",
         deleted,
         TQM_ERR_KEY_DELETE,
         "",
         "/macsec/mka/policies/policy[name='P1']",
         {"Start", "The key node should not have delete operation.", "End"}},
        {"mismatch",
         mismatch,
         TQM_ERR_INVALID_REQUEST,
         "",
         "/macsec/mka/policies/policy[name='P1']",
         {"Start", "leafref value check fail", "End"}},
    };
    for (const auto &one : cases) {
        Walk walk = edit().trace().forward(one.inside);
        EXPECT_EQ(walk.rc, one.rc) << one.what;
        EXPECT_EQ(walk.tag(), one.tag) << one.what;
        EXPECT_EQ(walk.error_path(), one.path) << one.what;
        EXPECT_EQ(walk.texts_of("ymap_ot_oc_macsec_openconfigmacsec_lvla_macsec_policies_policy"), one.texts)
            << one.what;
    }
    // Reads may do without a key, but not name two.
    EXPECT_EQ(get().forward(no_keys).rc, 0u);
    EXPECT_EQ(get().forward(empty).rc, 0u);
    EXPECT_EQ(get().forward(only_config).rc, 0u);
    EXPECT_EQ(get().forward(twice).rc, TQM_ERR_LIST_KEY);
    // Kinds that are no read and not 1, 8 or 15 are edits without these tests.
    EXPECT_EQ((Walk{2, tqm::Direction::forward}.forward(empty).rc), 0u);
    EXPECT_EQ((Walk{8, tqm::Direction::forward}.forward(empty).rc), TQM_ERR_LIST_KEY);
}

TEST(ForwardWalker, AnEmptyKeyIsFoundInTheDispatchWhereTheCountIsRight)
{
    // One key with a value and one without: the count is wrong first, so the dispatch is not reached. The empty key is
    // met where the walk is inside a delete, which does not count.
    rdl_tqm_datatree key = node_of("name");
    rdl_tqm_datatree node = node_of("policy");
    node.subtree = &key;
    node.subtree_count = 1;
    node.present = TQM_PRESENT_SUBTREE;
    Walk walk = edit().trace();
    walk.request().record().delete_mode = 1;
    walk.run(keyed_list, &node);
    EXPECT_EQ(walk.rc, TQM_ERR_LIST_KEY);
    EXPECT_EQ(walk.tag(), "name");
    EXPECT_EQ(walk.texts_of("ymap_ot_oc_macsec_openconfigmacsec_lvla_macsec_policies_policy"),
              (Lines{"Start", "Empty list key specified.", "End"}));
}

TEST(ForwardWalker, ListsWithoutKeysLogOnceInReadsAndInFills)
{
    Walk walk = get_config().trace().forward("<mka><policies/></mka>");
    EXPECT_EQ(walk.texts_of("ymap_ot_oc_macsec_openconfigmacsec_lvla_macsec_policies_policy"),
              (Lines{"Start", "No keys specified with a list node.", "End"}));
    // State lists log it in edits alone.
    Walk state = get().trace().forward("<interfaces><interface><name>e0</name><scsa-tx/></interface></interfaces>");
    EXPECT_EQ(state.texts_of("ymap_ot_oc_macsec_openconfigmacsec_lvla_macsec_scsatx_scsatx"), (Lines{"Start", "End"}));
    Walk edited = edit().trace();
    const rdl_tqm_datatree node = node_of("scsa-tx");
    edited.run(state_list, &node);
    EXPECT_EQ(edited.rc, TQM_ERR_NO_SUBTREE);
    EXPECT_EQ(edited.texts_of("ymap_ot_oc_macsec_openconfigmacsec_lvla_macsec_scsatx_scsatx"),
              (Lines{"Start", "No keys specified with a list node.", "End"}));
}

// Which leaf and list walkers a fill reached, by the paths of their reads.
TEST(ForwardWalker, AFillFromTheRootReachesEverySchemaNodeOnce)
{
    for (const uint32_t kind : {TQM_REQ_GET, TQM_REQ_GET_CONFIG}) {
        Walk walk = Walk{kind, tqm::Direction::forward};
        walk.trace().forward("");
        EXPECT_EQ(walk.rc, 0u);
        std::map<std::string, int> starts;
        for (const std::string &text : walk.texts()) {
            const std::size_t colon = text.find(": ");
            if (text.substr(colon + 2) == "Start" && text.starts_with("ymap_ot_oc_macsec_openconfigmacsec_lvl")) {
                ++starts[text.substr(0, colon)];
            }
        }
        EXPECT_EQ(starts.size(), kind == TQM_REQ_GET ? 110u : 40u);
        for (const auto &[walker, count] : starts) {
            EXPECT_EQ(count, 1) << walker;
        }
        EXPECT_EQ(walk.lines_of("tqm_map_add_to_node_hierarchy").size(), 1u); // of the root; a fill pushes nothing
    }
}

TEST(ForwardWalker, FillsWalkTheConfigurationSideFirst)
{
    const auto children = [](Walk &walk) {
        Lines found;
        for (const std::string &text : walk.texts()) {
            for (const char *name : {"interface_name", "interface_config", "interface_mka", "interface_state",
                                     "interface_scsatx", "interface_scsarx"}) {
                if (text == std::string("ymap_ot_oc_macsec_openconfigmacsec_lvla_macsec_") + name + ": Start") {
                    found.emplace_back(name);
                }
            }
        }
        return found;
    };
    Walk own = get().trace().forward("<interfaces><interface/></interfaces>");
    EXPECT_EQ(children(own), (Lines{"interface_name", "interface_config", "interface_mka", "interface_state",
                                    "interface_scsatx", "interface_scsarx"}));
    Walk by_key = get().trace().forward("<interfaces><interface><name>e0</name></interface></interfaces>");
    EXPECT_EQ(children(by_key), (Lines{"interface_name", "interface_config", "interface_state", "interface_scsatx",
                                       "interface_scsarx", "interface_mka"}));
}

TEST(ForwardWalker, ReplaceOfAContainerRunsTwoPasses)
{
    Walk walk = edit().trace().forward(
        policy("<config nc:operation='replace'><key-server-priority>1</key-server-priority></config>"));
    EXPECT_EQ(walk.rc, 0u);
    EXPECT_EQ(walk.texts_of("ymap_ot_oc_macsec_openconfigmacsec_cont_lvla_macsec_policy_config"),
              (Lines{"Start", "Start"})); // "Start" without "End", once a pass
    const Lines adds = walk.adds();
    EXPECT_EQ(adds[3], "/macsec/policy-names/policy-name/key-server-priority=null from config:remove");
    EXPECT_EQ(adds.back(), "/macsec/policy-names/policy-name/key-server-priority=\"1\" from key-server-priority");
    EXPECT_EQ(adds.size(), 3 + 6 + 1u);
    const tqm_map_request &record = walk.request().record();
    EXPECT_EQ(record.walk_flags, 0u);
    EXPECT_EQ(record.replace_active, 0u);
    const rdl_tqm_datatree &config = walk.request().tree()->subtree[0].subtree[0].subtree[0].subtree[1];
    EXPECT_EQ(config.operation, TQM_OP_MERGE);
    EXPECT_EQ(config.subtree_count, 1u);
}

TEST(ForwardWalker, ReplaceOfAListEntryLooksAtTheKeysAloneInItsRemovePass)
{
    Walk walk = edit().forward(policy("<config><delay-protection>true</delay-protection></config>", "replace"));
    const std::string list = "/macsec/policy-names/policy-name";
    EXPECT_EQ(
        walk.adds(),
        (Lines{list + "/name=\"P1\" from name", list + "/created=null",
               list + "/key-server-priority=null from policy:remove", list + "/cipher-suite=null from policy:remove",
               list + "/conf-offset=null from policy:remove", list + "/delay-protection=null from policy:remove",
               list + "/include-icv-indicator=null from policy:remove",
               list + "/sak-rekey-interval-sec=null from policy:remove", list + "=null entry",
               list + "/name=\"P1\" from name", list + "/created=null",
               list + "/delay-protection=\"\" from delay-protection"}));
    EXPECT_EQ(walk.request().record().walk_flags, 0u);
}

TEST(ForwardWalker, AFailedRemovePassEndsTheReplaceWithItsCode)
{
    constexpr rcode failure = 0x77;
    Walk walk = edit();
    walk.fault({"tqm_map_datatree_add_path_flagged", 1, failure}); // the key leaf's add is followed by "created"
    walk.fault({"tqm_map_datatree_add_path_flagged", 2, failure});
    walk.forward(policy("<config><delay-protection>true</delay-protection></config>", "replace"));
    EXPECT_EQ(walk.rc, failure);
    EXPECT_EQ(walk.adds().size(), 2u);
    EXPECT_EQ(walk.request().record().walk_flags, 0u);
    EXPECT_EQ(walk.request().record().replace_active, 0u);
}

TEST(ForwardWalker, SkippedNodesEndWithoutAFailure)
{
    // A list: the entry is popped, "End" is logged, its children are not walked.
    Walk list = edit().trace();
    list.fault({"tqm_map_datatree_add_path_flagged", 1, TQM_ERR_SKIP_NODE});
    list.forward(policy("<config><delay-protection>true</delay-protection></config>"));
    EXPECT_EQ(list.rc, 0u);
    EXPECT_EQ(list.adds().size(), 1u);
    EXPECT_EQ(list.texts_of("ymap_ot_oc_macsec_openconfigmacsec_lvla_macsec_policies_policy"), (Lines{"Start", "End"}));

    // A container: popped, without an "End" line.
    Walk skipped = edit().trace();
    const std::string inside = "<interfaces><interface><name>e0</name><mka/></interface></interfaces>";
    skipped.fault({"tqm_map_datatree_add_path_flagged", 4, TQM_ERR_SKIP_NODE});
    skipped.forward(inside);
    EXPECT_EQ(skipped.rc, 0u);
    EXPECT_EQ(skipped.texts_of("ymap_ot_oc_macsec_openconfigmacsec_lvla_macsec_interface_mka"), (Lines{"Start"}));
    EXPECT_EQ(skipped.lines_of("tqm_map_add_to_node_hierarchy").size(),
              skipped.lines_of("tqm_map_remove_from_node_hierarchy").size());

    // In the remove pass of a replace the walker goes on to the merge pass.
    Walk replaced = edit().trace();
    replaced.fault({"tqm_map_datatree_add_path_flagged", 4, TQM_ERR_SKIP_NODE});
    replaced.forward("<interfaces><interface><name>e0</name><mka nc:operation='replace'><config>"
                     "<mka-policy>P1</mka-policy></config></mka></interface></interfaces>");
    EXPECT_EQ(replaced.rc, 0u);
    EXPECT_EQ(replaced.texts_of("ymap_ot_oc_macsec_openconfigmacsec_lvla_macsec_interface_mka"),
              (Lines{"Start", "End"}));
    EXPECT_EQ(replaced.adds().back(),
              "/interface-configurations/interface-configuration/macsec/psk-key-chain/policy-name=\"P1\" from "
              "mka-policy");
}

TEST(ForwardWalker, AFailureToSetTheCurrentListIsTheResultWhereTheKeysAreRight)
{
    Walk walk = get();
    walk.fault({"tqm_map_update_current_list_node", 1, 0x99});
    walk.forward(policy(""));
    EXPECT_EQ(walk.rc, 0x99u);
    EXPECT_EQ(walk.adds(), Lines{});
    EXPECT_EQ(walk.lines_of("tqm_map_util_itree_stack_push").size(), 0u);
}

TEST(ForwardWalker, LeavesAreMarkedForTheFramework)
{
    Walk walk = get().forward(policy("<config><key-server-priority>1</key-server-priority><delay-protection/>"
                                     "<macsec-cipher-suite>X</macsec-cipher-suite></config>"));
    const rdl_tqm_datatree &entry = walk.request().tree()->subtree[0].subtree[0].subtree[0];
    EXPECT_EQ(entry.node_role, TQM_ROLE_LIST);
    EXPECT_EQ(entry.subtree[0].node_role, TQM_ROLE_LEAF);
    EXPECT_EQ(entry.subtree[0].is_key, 1);
    const rdl_tqm_datatree &config = entry.subtree[1];
    EXPECT_EQ(config.node_role, TQM_ROLE_CONTAINER);
    EXPECT_EQ(config.subtree[0].node_role, TQM_ROLE_MATCH_LEAF);
    EXPECT_EQ(config.subtree[1].node_role, TQM_ROLE_LEAF);
    EXPECT_EQ(config.subtree[2].node_role, TQM_ROLE_LEAF_LIST);
    EXPECT_EQ(config.subtree[2].role_present, TQM_ROLE_PRESENT);
}

} // namespace
