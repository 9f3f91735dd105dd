// The reverse walkers: dispatch, keys, skipped entries, hooks, and what the modules log differently.
#include <algorithm>

#include "support.h"

extern "C" {
rcode ymap_to_oc_macsec_tarvexcryptomacsecmkacfg_lvla_macsec_policynames_policyname(tqm_map_ctx,
                                                                                    const rdl_tqm_datatree *,
                                                                                    rdl_tqm_datatree *);
rcode ymap_to_oc_macsec_tarvexcryptomacsecmkacfg_lvla_macsec_parse_augments(tqm_map_ctx, const rdl_tqm_datatree *,
                                                                            rdl_tqm_datatree *);
rcode ymap_to_oc_macsec_tarvexlibkeychaincfg_lvla_keychains(tqm_map_ctx, const rdl_tqm_datatree *, rdl_tqm_datatree *);
rcode ymap_to_oc_macsec_tarvexlibkeychaincfg_lvla_keychains_parse_augments(tqm_map_ctx, const rdl_tqm_datatree *,
                                                                           rdl_tqm_datatree *);
rcode ymap_to_oc_macsec_tarvexifmgrcfg_lvla_interfaceconfigurations(tqm_map_ctx, const rdl_tqm_datatree *,
                                                                    rdl_tqm_datatree *);
rcode ymap_to_oc_macsec_tarvexprivateocmacsecoper_lvla_ocmacsec(tqm_map_ctx, const rdl_tqm_datatree *,
                                                                rdl_tqm_datatree *);
}

using namespace test;

namespace
{

constexpr tqm_map_function policies = ymap_to_oc_macsec_tarvexcryptomacsecmkacfg_lvla_macsec;
constexpr tqm_map_function policy_entry = ymap_to_oc_macsec_tarvexcryptomacsecmkacfg_lvla_macsec_policynames_policyname;
constexpr tqm_map_function key_chains = ymap_to_oc_macsec_tarvexlibkeychaincfg_lvla_keychains;
constexpr tqm_map_function interfaces = ymap_to_oc_macsec_tarvexifmgrcfg_lvla_interfaceconfigurations;
constexpr tqm_map_function operational = ymap_to_oc_macsec_tarvexprivateocmacsecoper_lvla_ocmacsec;

const std::string list = "/macsec/mka/policies/policy";

TEST(ReverseWalker, AnEntryWithoutChildrenIsLoggedAndStillMapped)
{
    rdl_tqm_datatree node{};
    node.tag = "policy-name";
    node.ns = mka_ns;
    node.subtree_count = 3; // without the presence bit this means nothing
    Walk walk = answer().trace().run(policy_entry, &node);
    EXPECT_EQ(walk.rc, 0u);
    EXPECT_EQ(walk.texts()[1], "ymap_to_oc_macsec_tarvexcryptomacsecmkacfg_lvla_macsec_policynames_policyname: No keys "
                               "specified with a list node.");
    Lines order;
    for (const std::string &call : walk.calls) {
        order.push_back(call.substr(0, call.find('(')));
    }
    EXPECT_EQ(order, (Lines{"tqm_map_add_to_node_hierarchy", "tqm_map_update_current_list_node",
                            "tqm_map_get_node_info", "tqm_map_datatree_add_path_flagged", "tqm_add_to_output_list_ctx",
                            "tqm_map_remove_from_node_hierarchy", "tqm_remove_from_output_list_ctx"}));
    node.present = TQM_PRESENT_SUBTREE;
    EXPECT_EQ(answer().run(policy_entry, &node).rc, TQM_ERR_NO_SUBTREE);
    EXPECT_EQ(answer().run(policy_entry, nullptr).rc, TQM_ERR_BAD_ARGS);
}

TEST(ReverseWalker, AFailureToSetTheCurrentListLeavesTheEntryOut)
{
    Walk walk = answer();
    walk.fault({"tqm_map_update_current_list_node", 1, 0x55})
        .reverse(native_policies("<policy-name><name>P1</name></policy-name>"), policies);
    EXPECT_EQ(walk.rc, 0x55u);
    EXPECT_EQ(walk.adds(), Lines{});
    EXPECT_EQ(walk.lines_of("tqm_add_to_output_list_ctx").size(), 1u);
    EXPECT_EQ(walk.lines_of("tqm_remove_from_output_list_ctx").size(), 0u); // the depth did not rise
    const rdl_tqm_datatree &entry = walk.request().tree()->subtree[0].subtree[0];
    EXPECT_EQ(entry.subtree[0].is_key, 0);
}

TEST(ReverseWalker, UnknownTagsAreIgnoredAndAMissingTagStops)
{
    Walk walk = answer().trace().reverse(
        native_policies("<policy-name><name>P1</name><window-size>1</window-size>"
                        "<other xmlns='http://example.com/x'/><delay-protection/></policy-name>"),
        policies);
    EXPECT_EQ(walk.rc, 0u);
    const Lines texts = walk.texts();
    EXPECT_EQ(std::ranges::count_if(
                  texts, [](const std::string &text) { return text.ends_with(": Unsupported tag. Ignoring."); }),
              1);
    EXPECT_EQ(walk.built().back(), list + "/config/delay-protection=true");

    rdl_tqm_datatree children[3] = {};
    for (rdl_tqm_datatree &child : children) {
        child.ns = mka_ns;
        child.value = "5";
        child.present = TQM_PRESENT_VALUE;
    }
    children[0].tag = "name";
    children[1].tag = "key-server-priority";
    rdl_tqm_datatree node{};
    node.tag = "policy-name";
    node.ns = mka_ns;
    node.subtree = children;
    node.subtree_count = 3;
    node.present = TQM_PRESENT_SUBTREE;
    Walk stopped = answer().run(policy_entry, &node);
    EXPECT_EQ(stopped.rc, TQM_ERR_NO_SUBTREE);
    EXPECT_EQ(stopped.built(),
              (Lines{list, list + "/name=5", list + "/config/name=5", list + "/config/key-server-priority=5"}));
    EXPECT_EQ(stopped.lines_of("tqm_remove_from_output_list_ctx").size(), 1u);
    EXPECT_EQ(children[0].is_key, 1);
    EXPECT_NE(children[0].present & TQM_PRESENT_IS_KEY, 0);
}

TEST(ReverseWalker, ASkippedEntryDoesNotDisturbItsSiblings)
{
    Walk walk = answer().trace();
    walk.fault({"tqm_map_datatree_add_path_flagged", 4, TQM_ERR_SKIP_NODE}); // the second entry's list add
    walk.reverse(native_policies("<policy-name><name>P1</name></policy-name><policy-name><name>P2</name></policy-name>"
                                 "<policy-name><name>P3</name></policy-name>"),
                 policies);
    EXPECT_EQ(walk.rc, 0u);
    EXPECT_EQ(walk.built(), (Lines{list, list + "/name=P1", list + "/config/name=P1", list, list + "/name=P3",
                                   list + "/config/name=P3"}));
    EXPECT_EQ(walk.lines_of("tqm_add_to_output_list_ctx").size(), 2u);
    EXPECT_EQ(walk.lines_of("tqm_map_add_to_node_hierarchy").size(),
              walk.lines_of("tqm_map_remove_from_node_hierarchy").size());
}

TEST(ReverseWalker, AnXpathErrorNodeIsNotedAndMapped)
{
    Walk walk = answer().trace();
    walk.request();
    rdl_tqm_datatree leaf{};
    leaf.tag = "key-server-priority";
    leaf.ns = mka_ns;
    leaf.value = "1";
    leaf.error_kind = TQM_NODE_ERROR_XPATH;
    leaf.present = TQM_PRESENT_VALUE | TQM_PRESENT_ERROR_KIND;
    rdl_tqm_datatree node{};
    node.tag = "policy-name";
    node.ns = mka_ns;
    node.subtree = &leaf;
    node.subtree_count = 1;
    node.present = TQM_PRESENT_SUBTREE;
    walk.run(policy_entry, &node);
    EXPECT_EQ(walk.request().record().walk_flags, TQM_WALK_XPATH_ERROR);
    const Lines texts = walk.texts();
    EXPECT_NE(std::ranges::find(texts, "ymap_to_oc_macsec_tarvexcryptomacsecmkacfg_lvla_macsec_policyname_"
                                       "keyserverpriority: got xpath error node "),
              texts.end());
    EXPECT_EQ(walk.built().back(), list + "/config/key-server-priority=1");
}

TEST(ReverseWalker, ModulesDifferInWhatTheyLog)
{
    Walk policy_walk = answer().trace().reverse(
        native_policies("<policy-name><name>P1</name><delay-protection/><allow/></policy-name>"), policies);
    const std::string mka = "ymap_to_oc_macsec_tarvexcryptomacsecmkacfg_";
    EXPECT_EQ(policy_walk.texts_of(mka + "cont_lvla_macsec"), (Lines{"Start"}));
    EXPECT_EQ(policy_walk.texts_of(mka + "list_lvla_macsec_policynames_policyname"), (Lines{"Start"}));
    EXPECT_EQ(policy_walk.texts_of(mka + "leaf_lvla_macsec_policyname_delayprotection"), Lines{});

    const std::string chain_text = "<keychains xmlns='http://tarvex.example/ns/yang/Tarvex-lib-keychain-cfg'><keychain>"
                                   "<chain-name>C</chain-name><accept-tolerance/></keychain></keychains>";
    Walk chain_walk = answer().trace().reverse(chain_text, key_chains);
    const std::string keychain = "ymap_to_oc_macsec_tarvexlibkeychaincfg_";
    EXPECT_EQ(chain_walk.texts_of(keychain + "cont_lvla_keychains"), (Lines{"Start", "End"}));
    EXPECT_EQ(chain_walk.texts_of(keychain + "list_lvla_keychains_keychain"), (Lines{"Start", "End"}));
    EXPECT_EQ(chain_walk.texts_of(keychain + "leaf_lvla_keychains_keychain_chainname"), (Lines{"Start", "End"}));
    EXPECT_EQ(chain_walk.texts_of(keychain + "duck_map_container"), Lines{});
    EXPECT_EQ(chain_walk.texts_of(keychain + "lvla_keychains_keychain_accepttolerance"), (Lines{"Start", "End"}));

    // Hooks: a bare return in one module, the frame in the others.
    const rdl_tqm_datatree node{};
    EXPECT_EQ(answer().trace().run(ymap_to_oc_macsec_tarvexcryptomacsecmkacfg_lvla_macsec_parse_augments, &node).traces,
              Lines{});
    Walk framed = answer().trace();
    framed.run(ymap_to_oc_macsec_tarvexlibkeychaincfg_lvla_keychains_parse_augments, &node);
    EXPECT_EQ(framed.traces.size(), 2u);
    EXPECT_EQ(framed.run(ymap_to_oc_macsec_tarvexlibkeychaincfg_lvla_keychains_parse_augments, nullptr).rc,
              TQM_ERR_BAD_ARGS);
}

TEST(ReverseWalker, TheHookOfTheInterfaceListLetsOneModuleIn)
{
    const std::string ifmgr = "http://tarvex.example/ns/yang/Tarvex-ifmgr-cfg";
    const auto text = [&](const std::string &inside) {
        return "<interface-configurations xmlns='" + ifmgr +
               "'><interface-configuration><active>act</active>"
               "<interface-name>e0</interface-name>" +
               inside + "</interface-configuration></interface-configurations>";
    };
    const auto processed = [](const Walk &walk) {
        return std::ranges::count_if(
            walk.texts(), [](const std::string &line) { return line.find(": Processing tag '") != std::string::npos; });
    };
    const std::string macsec_ns = "http://tarvex.example/ns/yang/Tarvex-crypto-macsec-mka-if-cfg";
    Walk walked = answer().trace().reverse(text("<macsec xmlns='" + macsec_ns + "'><eap/></macsec>"), interfaces);
    EXPECT_EQ(walked.rc, 0u);
    EXPECT_EQ(processed(walked), 1);
    Walk unknown = answer().trace().reverse(text("<other xmlns='" + macsec_ns + "'/>"), interfaces);
    EXPECT_EQ(unknown.rc, 0u);
    EXPECT_EQ(processed(unknown), 1);
    Walk foreign = answer().trace().reverse(text("<macsec xmlns='http://example.com/x'/>"), interfaces);
    EXPECT_EQ(foreign.rc, 0u);
    EXPECT_EQ(processed(foreign), 0);
    // Both keys are marked, though only one of them has a walker.
    const rdl_tqm_datatree &entry = walked.request().tree()->subtree[0];
    EXPECT_EQ(entry.subtree[0].is_key, 1);
    EXPECT_EQ(entry.subtree[1].is_key, 1);
}

TEST(ReverseWalker, TheOperationalModelIsWalkedInReadsOfStateAlone)
{
    const std::string text = "<oc-macsec xmlns='http://tarvex.example/ns/yang/Tarvex-PRIVATE-oc-macsec-oper'><macsec>"
                             "<mka><mka-state><counters><sak-hash-errors>3</sak-hash-errors></counters></mka-state>"
                             "</mka></macsec></oc-macsec>";
    EXPECT_EQ(answer(TQM_REQ_GET).reverse(text, operational).built(),
              (Lines{"/macsec/mka/state/counters/sak-hash-errors=3"}));
    Walk config = answer(TQM_REQ_GET_CONFIG).reverse(text, operational);
    EXPECT_EQ(config.rc, 0u);
    EXPECT_EQ(config.built(), Lines{});
}

} // namespace
