// MKA policies, OpenConfig to native: what an edit, a delete, a replace and a read of them become.
#include <algorithm>

#include "support.h"

using namespace test;

namespace
{

const std::string list = "/macsec/policy-names/policy-name";

const std::string seven_leaves = "<config><name>P1</name><key-server-priority>10</key-server-priority>"
                                 "<macsec-cipher-suite>GCM_AES_128</macsec-cipher-suite>"
                                 "<confidentiality-offset>30_BYTES</confidentiality-offset>"
                                 "<delay-protection>true</delay-protection>"
                                 "<include-icv-indicator>false</include-icv-indicator>"
                                 "<sak-rekey-interval>3600</sak-rekey-interval></config>";

TEST(PolicyForward, MergeOfAllLeavesCallsTheFrameworkInOrder)
{
    Walk walk = edit().forward(policy(seven_leaves));
    EXPECT_EQ(walk.rc, 0u);
    EXPECT_EQ(walk.adds(), (Lines{
                               list + "=null entry",
                               list + "/name=\"P1\" from name",
                               list + "/created=null",
                               list + "/key-server-priority=\"10\" from key-server-priority",
                               list + "/cipher-suite=\"gcm-aes-128\" from macsec-cipher-suite",
                               list + "/conf-offset=\"conf-off-set-30\" from confidentiality-offset",
                               list + "/delay-protection=\"\" from delay-protection",
                               list + "/include-icv-indicator=\"false\" from include-icv-indicator",
                               list + "/sak-rekey-interval-sec=\"3600\"",
                           }));
    // The walk around the adds: pushes and pops are balanced, the key is checked before the list node function looks
    // it up.
    Lines others;
    for (const std::string &call : walk.calls) {
        if (!call.starts_with("tqm_map_datatree_add_path")) {
            others.push_back(call.substr(0, call.find('(')));
        }
    }
    EXPECT_EQ(others,
              (Lines{"tqm_map_add_to_node_hierarchy", "tqm_map_add_to_node_hierarchy", "tqm_map_add_to_node_hierarchy",
                     "tqm_map_add_to_node_hierarchy", "tqm_map_update_current_list_node", "tqm_map_check_oc_leafref",
                     "tqm_map_util_itree_stack_size", "tqm_map_get_node_info", "tqm_map_util_itree_stack_size",
                     "tqm_map_add_to_node_hierarchy", "tqm_map_remove_from_node_hierarchy",
                     "tqm_map_remove_from_node_hierarchy", "tqm_map_remove_from_node_hierarchy",
                     "tqm_map_remove_from_node_hierarchy", "tqm_map_remove_from_node_hierarchy"}));
    EXPECT_EQ(walk.request().ctx()->list_operation, TQM_OP_MERGE);
}

TEST(PolicyForward, ValuesOfAnEdit)
{
    const struct {
        const char *leaf;
        const char *value; // null: an empty element
        const char *added; // null: nothing is added
    } cases[] = {
        {"macsec-cipher-suite", "GCM_AES_128", "/cipher-suite=\"gcm-aes-128\""},
        {"macsec-cipher-suite", "GCM_AES_256", "/cipher-suite=\"gcm-aes-256\""},
        {"macsec-cipher-suite", "GCM_AES_XPN_128", "/cipher-suite=\"gcm-aes-xpn-128\""},
        {"macsec-cipher-suite", "GCM_AES_XPN_256", "/cipher-suite=\"gcm-aes-xpn-256\""},
        {"macsec-cipher-suite", "gcm_aes_128", "/cipher-suite=\"gcm_aes_128\""},
        {"macsec-cipher-suite", "GCM_AES_128_AND_A_TEXT_LONGER_THAN_THE_LIMIT",
         "/cipher-suite=\"GCM_AES_128_AND_A_TEXT_LONGER_THAN_THE_LIMIT\""},
        {"macsec-cipher-suite", nullptr, nullptr},
        {"confidentiality-offset", "0_BYTES", "/conf-offset=\"conf-off-set-0\""},
        {"confidentiality-offset", "30_BYTES", "/conf-offset=\"conf-off-set-30\""},
        {"confidentiality-offset", "50_BYTES", "/conf-offset=\"conf-off-set-50\""},
        {"confidentiality-offset", "10_BYTES", "/conf-offset=\"10_BYTES\""},
        {"confidentiality-offset", nullptr, nullptr},
        {"delay-protection", "true", "/delay-protection=\"\""},
        {"delay-protection", "trueish", "/delay-protection=\"trueish\""},
        {"delay-protection", "false", "/delay-protection=\"false\""},
        {"delay-protection", nullptr, "/delay-protection=\"False\""},
        {"include-icv-indicator", "true", "/include-icv-indicator=\"\""},
        {"include-icv-indicator", nullptr, "/include-icv-indicator=\"False\""},
        {"key-server-priority", nullptr, "/key-server-priority=null"},
    };
    for (const auto &one : cases) {
        const std::string leaf = one.leaf;
        const std::string element =
            one.value == nullptr ? "<" + leaf + "/>" : "<" + leaf + ">" + one.value + "</" + leaf + ">";
        Walk walk = edit().forward(policy("<config>" + element + "</config>"));
        EXPECT_EQ(walk.rc, 0u);
        Lines adds = walk.adds();
        adds.erase(adds.begin(), adds.begin() + 3); // the entry, its key and "created"
        const Lines expected = one.added == nullptr ? Lines{} : Lines{list + one.added + " from " + leaf};
        EXPECT_EQ(adds, expected) << element;
    }
}

TEST(PolicyForward, OperationsReachTheNativeTree)
{
    const struct {
        const char *operation;
        const char *inside;
        Lines built;
    } cases[] = {
        {"create",
         "<config><key-server-priority>1</key-server-priority></config>",
         {list + ":create", list + "/name=P1", list + "/created", list + "/key-server-priority=1:create"}},
        {"delete",
         "",
         {list + ":delete", list + "/name=P1", list + "/created", list + "/key-server-priority:remove",
          list + "/cipher-suite:remove", list + "/conf-offset:remove", list + "/delay-protection:remove",
          list + "/include-icv-indicator:remove", list + "/sak-rekey-interval-sec:remove"}},
        {"remove",
         "",
         {list + ":remove", list + "/name=P1", list + "/created", list + "/key-server-priority:remove",
          list + "/cipher-suite:remove", list + "/conf-offset:remove", list + "/delay-protection:remove",
          list + "/include-icv-indicator:remove", list + "/sak-rekey-interval-sec:remove"}},
        // The remove pass takes all leaves away, and the merge pass puts those back that the request names.
        {"replace", "<config><conf/></config>", {}},
        {"replace",
         "<config><key-server-priority>1</key-server-priority></config>",
         {list, list + "/name=P1", list + "/created", list + "/key-server-priority=1", list + "/cipher-suite:remove",
          list + "/conf-offset:remove", list + "/delay-protection:remove", list + "/include-icv-indicator:remove",
          list + "/sak-rekey-interval-sec:remove"}},
    };
    for (const auto &one : cases) {
        Walk walk = edit().forward(policy(one.inside, one.operation));
        if (one.built.empty()) {
            EXPECT_EQ(walk.rc, TQM_ERR_UNSUPPORTED);
            EXPECT_EQ(walk.tag(), "conf");
        } else {
            EXPECT_EQ(walk.rc, 0u) << one.operation;
            EXPECT_EQ(walk.built(), one.built) << one.operation;
        }
    }
}

TEST(PolicyForward, DeleteByKeyMarksTheEntryForItsNodeFunctionAlone)
{
    Walk walk = edit().forward(policy("", "delete"));
    const rdl_tqm_datatree &entry = walk.request().tree()->subtree[0].subtree[0].subtree[0];
    EXPECT_EQ(entry.operation, TQM_OP_REMOVE); // the key fill leaves the lowered operation on the entry
    EXPECT_EQ(entry.subtree_count, 1u);
    EXPECT_EQ(walk.request().record().delete_mode, 0u);
    EXPECT_EQ(walk.request().record().fill_mode, 0u);
    EXPECT_EQ(walk.adds().front(), list + "=null from policy:delete entry");
    EXPECT_EQ(walk.adds()[3], list + "/key-server-priority=null from policy:remove");
}

TEST(PolicyForward, DeleteOfAllPoliciesRemovesThemWithoutNamingOne)
{
    Walk walk = edit().forward("<mka><policies nc:operation='delete'/></mka>");
    EXPECT_EQ(walk.rc, 0u);
    EXPECT_EQ(walk.adds().front(), list + "/name=null from policies:remove");
    EXPECT_EQ(walk.built().front(), list + ":remove");
    EXPECT_EQ(walk.built()[1], list + "/name:remove");
    // The operation is lowered for the descent alone.
    EXPECT_EQ(walk.request().tree()->subtree[0].subtree[0].operation, TQM_OP_DELETE);
}

TEST(PolicyForward, RefusesToCreateTheDefaultPolicy)
{
    for (const char *name : {"default", "DEFAULT", "Default"}) {
        Walk walk = edit().trace().forward(policy("", "create", name));
        EXPECT_EQ(walk.rc, TQM_ERR_INVALID_REQUEST);
        EXPECT_EQ(walk.message(), "Invalid request : default policy can not be created");
        EXPECT_EQ(walk.adds(), Lines{});
        EXPECT_EQ(walk.error_path(), "");
        const Lines texts = walk.texts();
        const auto refusal = std::ranges::find(
            texts, "ymap_ot_ocmacsec_policyname_fwd: Invalid request :  default policy can not be created");
        ASSERT_NE(refusal, texts.end());
        EXPECT_EQ(*(refusal + 1), "ymap_ot_ocmacsec_policyname_fwd: End");
    }
    EXPECT_EQ(edit().forward(policy("", "create", "default2")).rc, 0u);
    EXPECT_EQ(edit().forward(policy("", "", "default")).rc, 0u);
    EXPECT_EQ(edit().forward(policy("", "delete", "default")).rc, 0u);
}

TEST(PolicyForward, ReadOfAnEntryByItsKey)
{
    const Lines config = {list + "/key-server-priority=null",     list + "/cipher-suite=null from policy",
                          list + "/conf-offset=null from policy", list + "/delay-protection=null",
                          list + "/include-icv-indicator=null",   list + "/sak-rekey-interval=null",
                          list + "/sak-rekey-interval-sec=null"};
    Walk config_read = get_config().forward(policy(""));
    Lines expected = {list + "=null entry", list + "/name=\"P1\""};
    expected.insert(expected.end(), config.begin(), config.end());
    EXPECT_EQ(config_read.rc, 0u);
    EXPECT_EQ(config_read.adds(), expected);

    // A read of state adds the entry and its key once more, and reads each mapped state leaf.
    Walk read = get().forward(policy(""));
    expected = {list + "=null entry", list + "=null entry", list + "/name=\"P1\"", list + "/name=\"P1\""};
    expected.insert(expected.end(), config.begin(), config.end());
    expected.push_back("oc-macsec/macsec/mka/policies/policy/state/macsec-cipher-suite=null from policy");
    expected.push_back("oc-macsec/macsec/mka/policies/policy/state/confidentiality-offset=null from policy");
    EXPECT_EQ(read.adds(), expected);
    EXPECT_EQ(read.lines_of("tqm_map_add_leaf_from_xpath").size(), 5u);
    // A fill drops what unsupported leaves answer, but not the tag that they leave: that of the node they were given.
    EXPECT_EQ(read.tag(), "policy");
}

TEST(PolicyForward, ReadOfOneLeafAndContentMatch)
{
    Walk leaf = get_config().forward(policy("<config><delay-protection/></config>"));
    EXPECT_EQ(leaf.adds(), (Lines{list + "=null entry", list + "/name=\"P1\"", list + "/delay-protection=null"}));

    // A content match alone selects all its siblings; beside a selection it selects nothing more.
    Walk match = get_config().forward("<mka><policies><policy><config><key-server-priority>20</key-server-priority>"
                                      "</config></policy></policies></mka>");
    EXPECT_EQ(match.adds(),
              (Lines{list + "=null entry", list + "/key-server-priority=\"20\"", list + "/key-server-priority=null",
                     list + "/cipher-suite=null from config", list + "/conf-offset=null from config",
                     list + "/delay-protection=null", list + "/include-icv-indicator=null",
                     list + "/sak-rekey-interval=null", list + "/sak-rekey-interval-sec=null", "name=null"}));
    EXPECT_NE(match.request().record().filter_flags & TQM_FILTER_MATCH_IN_REQUEST, 0u);
    const rdl_tqm_datatree &entry = match.request().tree()->subtree[0].subtree[0].subtree[0];
    ASSERT_EQ(entry.subtree_count, 2u); // the filter has got the key leaf that it did not name
    EXPECT_STREQ(entry.subtree[1].tag, "name");
    EXPECT_EQ(entry.subtree[1].is_key, 1);

    Walk both = get_config().forward(
        policy("<config><key-server-priority>20</key-server-priority><delay-protection/></config>"));
    EXPECT_EQ(both.adds(), (Lines{list + "=null entry", list + "/name=\"P1\"", list + "/key-server-priority=\"20\"",
                                  list + "/delay-protection=null"}));
}

TEST(PolicyForward, ReadsWithoutConfigurationKeepTheStateSide)
{
    Walk config = get_config().without_configuration().forward(policy("<config><delay-protection/></config>"));
    EXPECT_EQ(config.adds(), (Lines{list + "/delay-protection=null"}));
    Walk state = get().without_configuration().forward(policy("<state><name/></state>"));
    EXPECT_EQ(state.adds(), (Lines{list + "=null entry", list + "/name=\"P1\""}));
    EXPECT_EQ(state.lines_of("tqm_map_add_leaf_from_xpath").size(), 1u);

    // The selector means nothing while no option is set.
    Walk plain = get_config();
    plain.request().header().data_selector = TQM_DATA_SELECTOR_NO_CONFIG;
    plain.forward(policy("<config><delay-protection/></config>"));
    EXPECT_EQ(plain.adds().size(), 3u);
    // Group 9 has its option in the sign bit.
    Walk negative = get_config();
    negative.request().header().data_selector = TQM_DATA_SELECTOR_NO_CONFIG;
    negative.request().header().option_group_9 = -1;
    negative.forward(policy("<config><delay-protection/></config>"));
    EXPECT_EQ(negative.adds().size(), 1u);
}

TEST(PolicyForward, NamedUnsupportedLeavesFailTheRequest)
{
    for (const char *leaf : {"sak-rekey-on-live-peer-loss", "use-updated-eth-header"}) {
        const std::string inside = std::string("<config><") + leaf + "/></config>";
        for (Walk walk : {edit(), get(), get_config()}) {
            walk.forward(policy(inside));
            EXPECT_EQ(walk.rc, TQM_ERR_UNSUPPORTED);
            EXPECT_EQ(walk.tag(), leaf);
            EXPECT_EQ(walk.error_path(), "/macsec/mka/policies/policy[name='P1']/config");
            const std::string owner = std::string("owner=\"") + leaf + "\"";
            EXPECT_NE(walk.lines_of("tqm_strdup").back().find(owner), std::string::npos);
        }
    }
}

TEST(PolicyForward, FailedAddsAreReturnedAndSomeAreLogged)
{
    constexpr rcode failure = 0x12345678;
    const struct {
        const char *inside;
        const char *operation; // of the framework
        unsigned int nth;
        rcode rc;
        const char *text; // null: nothing is logged
    } cases[] = {
        {"<macsec-cipher-suite>X</macsec-cipher-suite>", "tqm_map_datatree_add_path", 1, failure,
         "ymap_ot_ocmacsec_policyname_ciper_suite_fwd: rc = 305419896, error 0x12345678"},
        {"<confidentiality-offset>X</confidentiality-offset>", "tqm_map_datatree_add_path", 1, failure, nullptr},
        {"<delay-protection>true</delay-protection>", "tqm_map_datatree_add_path_flagged", 4, failure,
         "ymap_ot_ocmacsec_delay_protection_fwd: rc = 305419896, error 0x12345678"},
        {"<include-icv-indicator nc:operation='delete'/>", "tqm_map_datatree_add_path_flagged", 4, failure, nullptr},
        {"<sak-rekey-interval>60</sak-rekey-interval>", "tqm_map_datatree_add_path", 1, failure,
         "ymap_ot_oc_macsec_openconfigmacsec_leaf_lvla_macsec_config_sakrekeyinterval: rc = 305419896 error "
         "0x12345678"},
        // A failed add of the name does not stop that of "created", whose result counts.
        {"<name>P1</name>", "tqm_map_datatree_add_path_flagged", 2, 0, nullptr},
        {"<name>P1</name>", "tqm_map_datatree_add_path_flagged", 1, failure, nullptr},
    };
    for (const auto &one : cases) {
        Walk walk = edit();
        walk.fault({one.operation, one.nth, failure}).trace();
        walk.forward(policy(std::string("<config>") + one.inside + "</config>"));
        EXPECT_EQ(walk.rc, one.rc) << one.inside;
        Lines logged;
        for (const std::string &text : walk.texts()) {
            if (text.find("rc = ") != std::string::npos) {
                logged.push_back(text);
            }
        }
        EXPECT_EQ(logged, one.text == nullptr ? Lines{} : Lines{one.text}) << one.inside;
    }
    // In a read it is the offset's add that is logged.
    Walk read = get_config();
    read.fault({"tqm_map_datatree_add_path", 1, failure}).trace();
    read.forward(policy("<config><confidentiality-offset/></config>"));
    EXPECT_EQ(read.rc, failure);
    const Lines texts = read.texts();
    EXPECT_NE(std::ranges::find(texts, "ymap_ot_ocmacsec_policyname_conf_offset_fwd: rc = 305419896, error 0x12345678"),
              texts.end());
}

} // namespace
