// MKA policies, native to OpenConfig.
#include <algorithm>

#include "support.h"

using namespace test;

namespace
{

const std::string list = "/macsec/mka/policies/policy";
const std::string interval = list + "/config/sak-rekey-interval";
constexpr tqm_map_function root = ymap_to_oc_macsec_tarvexcryptomacsecmkacfg_lvla_macsec;

std::string entry(const std::string &leaves, const std::string &name = "P1")
{
    return native_policies("<policy-name><name>" + name + "</name>" + leaves + "</policy-name>");
}

TEST(PolicyReverse, AnEntryBecomesOpenConfig)
{
    Walk walk =
        answer(TQM_REQ_GET_CONFIG)
            .reverse(entry("<created/><key-server-priority>10</key-server-priority>"
                           "<cipher-suite>gcm-aes-xpn-128</cipher-suite><conf-offset>conf-off-set-50</conf-offset>"
                           "<delay-protection/><include-icv-indicator/>"
                           "<sak-rekey-interval-sec>1800</sak-rekey-interval-sec>"
                           "<window-size>64</window-size><allow><lacp-in-clear/></allow>"),
                     root);
    EXPECT_EQ(walk.rc, 0u);
    walk.request().drop_unanswered();
    EXPECT_EQ(walk.built(),
              (Lines{list, list + "/name=P1", list + "/config/name=P1", list + "/config/key-server-priority=10",
                     list + "/config/macsec-cipher-suite=GCM_AES_XPN_128",
                     list + "/config/confidentiality-offset=50_BYTES", list + "/config/delay-protection=true",
                     list + "/config/include-icv-indicator=true", interval + "=1800"}));
}

TEST(PolicyReverse, TwoStepLeavesAddTheNativeTextAndThenTheirOwn)
{
    const struct {
        const char *leaf;
        const char *path;
        Lines values; // of the adds, in order; an exclamation mark stands for one without value
    } cases[] = {
        {"<conf-offset>conf-off-set-0</conf-offset>", "confidentiality-offset", {"\"conf-off-set-0\"", "\"0_BYTES\""}},
        {"<conf-offset>elsewhere</conf-offset>", "confidentiality-offset", {"\"elsewhere\"", "null"}},
        {"<cipher-suite>gcm-aes-256</cipher-suite>", "macsec-cipher-suite", {"\"gcm-aes-256\"", "\"GCM_AES_256\""}},
        {"<cipher-suite>other</cipher-suite>", "macsec-cipher-suite", {"\"other\"", "\"other\""}},
        {"<delay-protection>false</delay-protection>", "delay-protection", {"\"false\""}},
        {"<include-icv-indicator>False</include-icv-indicator>", "include-icv-indicator", {"\"False\""}},
    };
    for (const auto &one : cases) {
        Walk walk = answer().reverse(entry(one.leaf), root);
        Lines adds = walk.adds();
        ASSERT_GT(adds.size(), 3u) << one.leaf;
        adds.erase(adds.begin(), adds.begin() + 3); // the entry and its name, twice
        Lines expected;
        for (const std::string &value : one.values) {
            expected.push_back(list + "/config/" + one.path + "=" + value);
        }
        EXPECT_EQ(adds, expected) << one.leaf;
    }
}

TEST(PolicyReverse, TheRekeyIntervalIsInSeconds)
{
    const struct {
        uint32_t kind;
        const char *leaf;
        const char *added;
    } cases[] = {
        {TQM_REQ_GET, "<sak-rekey-interval>30</sak-rekey-interval>", "=\"1800\""},
        {TQM_REQ_GET_CONFIG, "<sak-rekey-interval>30</sak-rekey-interval>", "=\"1800\""},
        {TQM_REQ_GET, "<sak-rekey-interval-sec>1800</sak-rekey-interval-sec>", "=\"1800\""},
        {TQM_REQ_GET, "<sak-rekey-interval>soon</sak-rekey-interval>", "=\"0\""},
        {TQM_REQ_GET, "<sak-rekey-interval>-1</sak-rekey-interval>", "=\"4294967236\""},
        {TQM_REQ_EDIT, "<sak-rekey-interval>30</sak-rekey-interval>", "=\"30\" from sak-rekey-interval"},
        {TQM_REQ_EDIT, "<sak-rekey-interval-sec>60</sak-rekey-interval-sec>", "=\"60\" from sak-rekey-interval-sec"},
        {TQM_REQ_EDIT,
         "<sak-rekey-interval xmlns:nc='urn:ietf:params:xml:ns:netconf:base:1.0' "
         "nc:operation='delete'>30</sak-rekey-interval>",
         "=null from sak-rekey-interval:delete"},
    };
    for (const auto &one : cases) {
        Walk walk = answer(one.kind).reverse(entry(one.leaf), root);
        EXPECT_EQ(walk.rc, 0u);
        EXPECT_EQ(walk.adds().back(), interval + one.added) << one.leaf;
    }
    // Both leaves: each is added, in the order of the tree, and the last one stays.
    Walk both = answer().reverse(
        entry("<sak-rekey-interval>1</sak-rekey-interval><sak-rekey-interval-sec>90</sak-rekey-interval-sec>"), root);
    EXPECT_EQ(both.built().back(), interval + "=90");
}

TEST(PolicyReverse, WithoutConfigurationOnlyTheUngatedAddsRun)
{
    Walk walk = answer().without_configuration();
    walk.reverse(entry("<key-server-priority>1</key-server-priority><conf-offset>conf-off-set-30</conf-offset>"
                       "<delay-protection/><cipher-suite>gcm-aes-128</cipher-suite>"),
                 root);
    EXPECT_EQ(
        walk.adds(),
        (Lines{list + "=null entry", list + "/name=\"P1\"", list + "/config/confidentiality-offset=\"30_BYTES\"",
               list + "/config/delay-protection=\"true\"", list + "/config/macsec-cipher-suite=\"GCM_AES_128\""}));
}

TEST(PolicyReverse, AnEntryThatStandsAlreadyIsContinued)
{
    Walk walk = answer().reverse(native_policies("<policy-name><name>P1</name><key-server-priority>1"
                                                 "</key-server-priority></policy-name><policy-name><name>P1</name>"
                                                 "<delay-protection/></policy-name>"),
                                 root);
    EXPECT_EQ(walk.rc, 0u);
    EXPECT_EQ(walk.lines_of("tqm_map_stitch_list_to_list").size(), 1u);
    EXPECT_EQ(std::ranges::count(walk.adds(), list + "=null entry"), 1);
    EXPECT_EQ(walk.built(), (Lines{list, list + "/name=P1", list + "/config/name=P1",
                                   list + "/config/key-server-priority=1", list + "/config/delay-protection=true"}));
}

TEST(PolicyReverse, FailuresOfTheFramework)
{
    constexpr rcode failure = 0x1234;
    const std::string leaves = "<delay-protection/><key-server-priority>1</key-server-priority>";
    // The lookup of the leaf's text (the second one; the first is of the name) ends the entry with its code.
    Walk lookup = answer();
    lookup.fault({"tqm_map_get_node_info", 2, failure}).reverse(entry(leaves), root);
    EXPECT_EQ(lookup.rc, failure);
    EXPECT_EQ(lookup.adds().back(), list + "/config/delay-protection=\"\"");
    // Failed adds of a two-step leaf are dropped.
    Walk dropped = answer();
    dropped.fault({"tqm_map_datatree_add_path_flagged", 4, failure});
    dropped.fault({"tqm_map_datatree_add_path_flagged", 5, failure}).reverse(entry(leaves), root);
    EXPECT_EQ(dropped.rc, 0u);
    // That of a rekey leaf is logged and returned.
    Walk rekey = answer().trace();
    rekey.fault({"tqm_map_datatree_add_path_flagged", 4, failure});
    rekey.reverse(entry("<sak-rekey-interval>1</sak-rekey-interval>"), root);
    EXPECT_EQ(rekey.rc, failure);
    const Lines texts = rekey.texts();
    EXPECT_NE(std::ranges::find(texts, "ymap_to_oc_macsec_tarvexcryptomacsecmkacfg_leaf_lvla_macsec_policyname_"
                                       "sakrekeyinterval: rc: 4660, error 0x00001234"),
              texts.end());
    // An entry without a name is added without a search.
    Walk nameless = answer().reverse(native_policies("<policy-name><delay-protection/></policy-name>"), root);
    EXPECT_EQ(nameless.lines_of("tqm_map_search_list").size(), 0u);
    EXPECT_EQ(nameless.adds().front(), list + "=null entry");
}

TEST(PolicyReverse, ADeletedEntryCarriesItsOperation)
{
    Walk walk =
        answer(TQM_REQ_EDIT)
            .reverse(
                native_policies("<policy-name xmlns:nc='urn:ietf:params:xml:ns:netconf:base:1.0' nc:operation='delete'>"
                                "<name>P1</name></policy-name>"),
                root);
    EXPECT_EQ(walk.adds().front(), list + "=null from policy-name:delete entry");
}

} // namespace
