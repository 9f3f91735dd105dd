// Interfaces, OpenConfig to native: the router's interface list, whose entries are not OpenConfig's to delete, and the
// MACsec settings that another module keeps in them.
#include <regex>

#include "support.h"

extern "C" rcode ymap_ot_ocmacsce_intconfig_list_fwd(tqm_map_ctx, const rdl_tqm_datatree *, rdl_tqm_datatree *);

using namespace test;

namespace
{

const std::string list = "/interface-configurations/interface-configuration";
const std::string psk = list + "/macsec/psk-key-chain";
constexpr rcode failure = 0x12345678;
constexpr const char *add_operation = "tqm_map_datatree_add_path_flagged";

/// Interface e0 with `inside`, or without a key where `key` is empty.
std::string interface(std::string_view inside, std::string_view operation = "",
                      std::string_view key = "<name>e0</name>")
{
    const std::string attribute = operation.empty() ? "" : " nc:operation='" + std::string(operation) + "'";
    return "<interfaces><interface" + attribute + ">" + std::string(key) + std::string(inside) +
           "</interface></interfaces>";
}

/// The journal's line of an add in the interface list, and of one in the module of the MACsec settings.
std::string to_list(const std::string &path, const std::string &value, const std::string &source = "null")
{
    return "(\"" + list + path + "\", ns=Tarvex-ifmgr-cfg, value=" + value + ", source=" + source +
           ", list_entry=1, flags=0) = 0";
}
std::string to_macsec(const std::string &path, const std::string &value, const std::string &source = "null")
{
    return "(\"" + psk + path + "\", ns=Tarvex-crypto-macsec-mka-if-cfg, value=" + value + ", source=" + source +
           ", list_entry=0, flags=1) = 0";
}

/// What a delete of the entry adds first, what other edits do, and what reads do, with a key and without.
const Lines name_alone = {to_list("/interface-name", "\"e0\"", "name")};
const Lines entry = {to_list("", "null"), to_list("/active", "\"act\""), name_alone.front()};
const Lines read_any = {to_list("", "null"), to_list("/interface-name", "null"), to_list("/active", "\"act\"")};
const Lines read_entry = {to_list("", "null"), to_list("/interface-name", "\"e0\""), to_list("/active", "\"act\"")};

/// The psk-key-chain and its leaves in the order of a fill.
Lines whole_macsec(const std::string &source, const std::string &leaf_source)
{
    return {to_macsec("", "null", source), to_macsec("/policy-name", "null", leaf_source),
            to_macsec("/key-chain-name", "null", leaf_source)};
}

Lines operator+(Lines left, const Lines &right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

TEST(InterfaceForward, EditsAddWhatTheyNameAndDeletesSpareTheInterface)
{
    const std::string leaves = "<mka><config><key-chain>C1</key-chain><mka-policy>P1</mka-policy></config></mka>";
    const Lines both = {to_macsec("/key-chain-name", "\"C1\"", "key-chain"),
                        to_macsec("/policy-name", "\"P1\"", "mka-policy")};
    const std::string policy_leaf = "<config><mka-policy>P2</mka-policy></config>";
    const std::string added_policy = to_macsec("/policy-name", "\"P2\"", "mka-policy");
    const struct {
        std::string inside;
        Lines adds;
    } cases[] = {
        {interface(leaves), entry + both},
        {interface("<config><name>e0</name></config>"), entry}, // the key leaf carries the name
        {interface("<mka/>"), entry + Lines{to_macsec("", "null", "mka")}},
        {interface("<mka><config><key-chain nc:operation='delete'/></config></mka>"),
         entry + Lines{to_macsec("/key-chain-name", "null", "key-chain:delete")}},
        {interface("<mka><config><key-chain nc:operation='replace'>C2</key-chain></config></mka>"),
         entry + Lines{to_macsec("/key-chain-name", "\"C2\"", "key-chain:replace")}},
        {interface("<mka nc:operation='delete'/>"), entry + whole_macsec("mka:delete", "mka:remove")},
        {interface("<mka nc:operation='remove'/>"), entry + whole_macsec("mka:remove", "mka:remove")},
        {interface("<mka nc:operation='replace'>" + policy_leaf + "</mka>"),
         entry + whole_macsec("mka:remove", "mka:remove") + Lines{added_policy}},
        {interface("", "delete"), name_alone + whole_macsec("interface:remove", "interface:remove")},
        {interface("", "remove"), name_alone + whole_macsec("interface:remove", "interface:remove")},
        {interface("<mka>" + policy_leaf + "</mka>", "replace"),
         name_alone + whole_macsec("interface:remove", "interface:remove") + entry + Lines{added_policy}},
        {"<interfaces nc:operation='delete'/>", whole_macsec("interfaces:remove", "interfaces:remove")},
    };
    for (const auto &one : cases) {
        Walk walk = edit().forward(one.inside);
        EXPECT_EQ(walk.rc, 0u) << one.inside;
        EXPECT_EQ(walk.lines_of(add_operation), one.adds) << one.inside;
        EXPECT_EQ(walk.lines_of("tqm_map_datatree_add_path"), Lines{});
        EXPECT_EQ(walk.request().record().delete_mode, 0u);
        EXPECT_EQ(walk.request().record().replace_active, 0u);
    }
    Walk refused = edit().forward(interface("<mka nc:operation='delete'>" + policy_leaf + "</mka>"));
    EXPECT_EQ(refused.rc, TQM_ERR_BAD_ARGS);
    EXPECT_EQ(refused.lines_of(add_operation), entry);
}

TEST(InterfaceForward, TheNativeEntryIsNeverCreatedNorDeleted)
{
    const std::string name = list + "/interface-name=e0";
    const Lines removed = {psk + "/policy-name:remove", psk + "/key-chain-name:remove"};
    const std::string chain = "<mka><config><key-chain>C2</key-chain></config></mka>";
    const struct {
        std::string inside;
        Lines built;
    } cases[] = {
        {interface("", "delete"), Lines{list + ":none", name} + removed},
        {"<interfaces nc:operation='delete'/>", Lines{list} + removed},
        {interface("<mka nc:operation='delete'/>"), Lines{list, list + "/active=act", name} + removed},
        {interface(chain, "replace"),
         {list, name, psk + "/policy-name:remove", psk + "/key-chain-name=C2", list + "/active=act"}},
        {interface(chain, "create"), {list, list + "/active=act", name, psk + "/key-chain-name=C2:create"}},
    };
    for (const auto &one : cases) {
        EXPECT_EQ(edit().forward(one.inside).built(), one.built) << one.inside;
    }
}

TEST(InterfaceForward, Reads)
{
    const std::string read_policy = to_macsec("/policy-name", "null");
    const std::string read_chain = to_macsec("/key-chain-name", "null");
    const struct {
        std::string inside;
        Lines adds;
        const char *tag; // of the unsupported leaves that a fill has passed over
    } cases[] = {
        {interface(""), read_entry + whole_macsec("interface", "null"), "interface"},
        {interface("", "", ""), read_any + whole_macsec("interface", "null"), "interface"},
        {"<interfaces/>", read_any + whole_macsec("interfaces", "null"), "interfaces"},
        {interface("<config/>"), read_entry, "config"},
        {interface("<mka><config/></mka>"), read_entry + Lines{read_policy, read_chain}, ""},
        {interface("<mka><config><key-chain/></config></mka>"), read_entry + Lines{read_chain}, ""},
        // A content match alone asks for its siblings.
        {interface("<mka><config><key-chain>C1</key-chain></config></mka>"),
         read_entry + Lines{to_macsec("/key-chain-name", "\"C1\""), read_policy, read_chain}, ""},
    };
    for (const auto &one : cases) {
        for (Walk walk : {get_config(), get_config().without_configuration()}) {
            walk.forward(one.inside);
            EXPECT_EQ(walk.rc, 0u) << one.inside;
            EXPECT_EQ(walk.lines_of(add_operation), one.adds) << one.inside;
            EXPECT_EQ(walk.lines_of("tqm_map_add_leaf_from_xpath"), Lines{});
            EXPECT_EQ(walk.tag(), one.tag) << one.inside;
        }
        // With state nothing else is added to the configuration's trees.
        Walk with_state = get().forward(one.inside);
        EXPECT_EQ(with_state.rc, 0u);
        EXPECT_EQ(with_state.lines_of(add_operation), one.adds) << one.inside;
    }
}

TEST(InterfaceForward, EnableAndReplayProtectionAreRefusedByName)
{
    for (const char *leaf : {"enable", "replay-protection"}) {
        const std::string tag = leaf;
        const auto refused = [&](Walk walk, const std::string &element) {
            walk.forward(interface("<config>" + element + "<name/></config><mka/>"));
            EXPECT_EQ(walk.rc, TQM_ERR_UNSUPPORTED) << element;
            EXPECT_EQ(walk.tag(), tag);
            EXPECT_EQ(walk.error_path(), "/macsec/interfaces/interface[name='e0']/config");
            EXPECT_EQ(walk.lines_of(add_operation).size(), 3u); // the walk ends there
        };
        refused(edit(), "<" + tag + ">true</" + tag + ">");
        refused(edit(), "<" + tag + " nc:operation='delete'/>");
        refused(get(), "<" + tag + "/>");
        refused(get_config(), "<" + tag + "/>");
    }
}

TEST(InterfaceForward, TheListMapperHasItsOwnAnswerToNullArguments)
{
    const rdl_tqm_datatree node{};
    for (const bool no_node : {true, false}) {
        Walk walk = edit().trace();
        EXPECT_EQ(ymap_ot_ocmacsce_intconfig_list_fwd(walk.request().ctx(), no_node ? nullptr : &node,
                                                      no_node ? walk.request().out() : nullptr),
                  TQM_ERR_NO_SUBTREE);
        EXPECT_EQ(walk.calls, Lines{}); // no error path
        ASSERT_EQ(walk.traces.size(), 2u);
        EXPECT_TRUE(std::regex_match(walk.traces[0],
                                     std::regex(R"(#\d+: ERR: (\w+):\d+ ctx=\S+?,\1:\d+, NULL arguments passed)")));
        EXPECT_EQ(walk.texts()[1], "ymap_ot_ocmacsce_intconfig_list_fwd: End");
    }
}

TEST(InterfaceForward, LinesOfTheMappers)
{
    const std::string list_mapper = "ymap_ot_ocmacsce_intconfig_list_fwd";
    const std::string mka_mapper = "ymap_ot_ifmgr_interfaceconfigurations_interfaceconfiguration_macsec_fwd";
    const struct {
        std::string inside;
        std::string mapper;
        const char *text; // behind the mapper's name and line
    } cases[] = {
        {interface(""), list_mapper, R"((\w+):\d+ TQM_MAP_IS_EDIT operation - rc 0:success)"},
        {interface("", "delete"), list_mapper, R"((\w+): \d+: TQM_MAP_IS_REQUEST_DELETE operation - rc 0:success)"},
        {interface("<mka><config/></mka>"), mka_mapper, R"((\w+):\d+, No mapping done for this node)"},
        {interface("<mka/>"), mka_mapper, "()No subtrees"},
    };
    for (const auto &one : cases) {
        Walk walk = edit().trace().log().forward(one.inside);
        const Lines texts = walk.texts_of(one.mapper);
        ASSERT_EQ(texts.size(), 3u) << one.text;
        EXPECT_EQ(texts[0], "Start");
        std::smatch match;
        ASSERT_TRUE(std::regex_match(texts[1], match, std::regex(one.text))) << texts[1];
        EXPECT_TRUE(match[1] == "" || match[1] == one.mapper);
        EXPECT_EQ(texts[2], "End");
        int logged = 0;
        for (const std::string &line : walk.logs) {
            logged += line.starts_with("TRC: TQM: ctx=") && line.ends_with("," + texts[1]);
        }
        EXPECT_EQ(logged, 1) << texts[1];
    }
    // The leaves of the MACsec settings return at once.
    Walk leaf = edit().trace().forward(interface("<mka><config><key-chain>C1</key-chain></config></mka>"));
    EXPECT_EQ(leaf.texts_of("ymap_ot_oc_macsec_openconfigmacsec_leaf_lvla_macsec_config_keychain"), Lines{"Start"});
}

TEST(InterfaceForward, OfTwoAddsTheLastOneCounts)
{
    const std::string inside = interface("<mka><config><key-chain>C1</key-chain><mka-policy/></config></mka>");
    const struct {
        bool read;
        unsigned int nth;
        rcode rc;
        size_t adds;
    } cases[] = {
        {false, 1, 0, 5},       // the entry
        {false, 2, failure, 2}, // "active"
        {false, 3, failure, 3}, // the name
        {false, 4, failure, 4}, // the key chain
        {true, 1, failure, 1},  // the entry
        {true, 2, 0, 5},        // the name
        {true, 3, failure, 3},  // "active"
        {true, 5, failure, 5},  // the policy
    };
    for (const auto &one : cases) {
        Walk walk = one.read ? get_config() : edit();
        walk.trace().fault({add_operation, one.nth, failure}).forward(inside);
        EXPECT_EQ(walk.rc, one.rc) << one.nth;
        EXPECT_EQ(walk.adds().size(), one.adds) << one.nth;
        EXPECT_EQ(walk.lines_of("tqm_map_add_to_node_hierarchy").size(),
                  walk.lines_of("tqm_map_remove_from_node_hierarchy").size());
        if (!one.read && one.nth == 2) {
            EXPECT_TRUE(walk.texts_of("ymap_ot_ocmacsce_intconfig_list_fwd")[1].ends_with(
                " TQM_MAP_IS_EDIT operation - rc 305419896:error 0x12345678"));
        }
    }
}

} // namespace
