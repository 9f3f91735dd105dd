// Interfaces, native to OpenConfig: only those of the router's interfaces that have macsec/psk-key-chain.
#include <algorithm>
#include <regex>

#include "support.h"

extern "C" {
rcode ymap_to_oc_macsec_tarvexifmgrcfg_lvla_interfaceconfigurations(tqm_map_ctx, const rdl_tqm_datatree *,
                                                                    rdl_tqm_datatree *);
rcode ymap_to_ocmacsec_interfaces_list_rev(tqm_map_ctx, const rdl_tqm_datatree *, rdl_tqm_datatree *);
}

using namespace test;

namespace
{

const std::string list = "/macsec/interfaces/interface";
const std::string list_mapper = "ymap_to_ocmacsec_interfaces_list_rev";
constexpr tqm_map_function root = ymap_to_oc_macsec_tarvexifmgrcfg_lvla_interfaceconfigurations;
constexpr rcode failure = 0x1234;

std::string native(const std::string &entries)
{
    return "<interface-configurations xmlns='http://tarvex.example/ns/yang/Tarvex-ifmgr-cfg' "
           "xmlns:nc='urn:ietf:params:xml:ns:netconf:base:1.0'>" +
           entries + "</interface-configurations>";
}

std::string entry(const std::string &name, const std::string &inside, const std::string &active = "act")
{
    return "<interface-configuration><active>" + active + "</active><interface-name>" + name + "</interface-name>" +
           inside + "</interface-configuration>";
}

std::string macsec(const std::string &inside)
{
    return "<macsec xmlns='http://tarvex.example/ns/yang/Tarvex-crypto-macsec-mka-if-cfg'>" + inside + "</macsec>";
}

const std::string chain = "<key-chain-name>C1</key-chain-name>";
const std::string both = macsec("<psk-key-chain>" + chain +
                                "<fallbackkeychain>C9</fallbackkeychain><policy-name>P1</policy-name></psk-key-chain>");

/// The built entry of an interface with `both`.
Lines whole(const std::string &name)
{
    return {list, list + "/name=" + name, list + "/config/name=" + name, list + "/mka/config/key-chain=C1",
            list + "/mka/config/mka-policy=P1"};
}

TEST(InterfaceReverse, OnlyInterfacesWithAKeyChainAreShown)
{
    Walk walk =
        answer(TQM_REQ_GET_CONFIG)
            .trace()
            .reverse(native(entry("plain", "<description>x</description><mtus><mtu><owner>o</owner></mtu></mtus>") +
                            entry("e0", both) + entry("bare", macsec("")) +
                            entry("service", macsec("<macsec-service><policy>P1</policy></macsec-service>")) +
                            entry("eap", macsec("<eap><policyname>P1</policyname></eap>")) +
                            entry("foreign", "<other xmlns='http://example.com/x'><psk-key-chain>" + chain +
                                                 "</psk-key-chain></other>") +
                            entry("empty", macsec("<psk-key-chain/>")) + entry("e1", "<shutdown/>" + both)),
                     root);
    EXPECT_EQ(walk.rc, 0u);
    const Lines empty = {list, list + "/name=empty", list + "/config/name=empty"};
    Lines expected = whole("e0");
    expected.insert(expected.end(), empty.begin(), empty.end());
    const Lines last = whole("e1");
    expected.insert(expected.end(), last.begin(), last.end());
    EXPECT_EQ(walk.built(), expected);
    const Lines texts = walk.texts_of(list_mapper);
    EXPECT_EQ(std::ranges::count(texts, "OC_MACSEC: macsec node  not found"), 5);
    EXPECT_EQ(std::ranges::count(texts, "OC_MACSEC: macsec node found, data:"), 3);
    EXPECT_EQ(walk.lines_of("tqm_map_datatree_add_path_flagged").front(),
              "(\"" + list +
                  "/config/name\", ns=macsec, value=\"e0\", source=null, list_entry=0, flags=32, tree=interface) = 0");
    // The mapper of the MACsec settings only says what it met.
    const std::string mapper = "ymap_to_ocmacsec_interfaces_interface_mka_rev";
    std::string met;
    for (const std::string &text : walk.texts_of(mapper)) {
        met += std::regex_replace(text, std::regex(mapper + R"(:\d+)"), "at") + "; ";
    }
    EXPECT_EQ(met, "Start; at, No mapping done for this node; End; Start; at, No subtrees; End; "
                   "Start; at, No mapping done for this node; End; ");
    // fallbackkeychain is passed over in both of its containers.
    EXPECT_EQ(walk.texts_of("ymap_to_oc_macsec_tarvexcryptomacsecmkaifcfg_lvla_macsec_pskkeychain"),
              (Lines{"Start", "Unsupported tag. Ignoring.", "End", "Start", "End", "Start",
                     "Unsupported tag. Ignoring.", "End"}));
}

TEST(InterfaceReverse, ADeletedEntryIsDeletedWithOrWithoutAKeyChain)
{
    for (const std::string &inside : {std::string(), both}) {
        std::string deleted = entry("e0", inside);
        deleted.insert(deleted.find('>'), " nc:operation='delete'");
        for (Walk walk : {answer(TQM_REQ_EDIT), answer(TQM_REQ_EDIT).without_configuration()}) {
            // Neither result is looked at.
            walk.fault({"tqm_map_copy_trim_path_list_ctx", 1, failure}).reverse(native(deleted), root);
            EXPECT_EQ(walk.rc, 0u);
            EXPECT_EQ(walk.lines_of("tqm_map_datatree_add_path_flagged").front(),
                      "(\"" + list +
                          "\", ns=macsec, value=null, source=interface-configuration:delete, list_entry=1, flags=0, "
                          "out_node=1) = "
                          "0");
            EXPECT_EQ(walk.lines_of("tqm_map_copy_trim_path_list_ctx"), Lines{"(\"" + list + "\") = 0x00001234"});
            EXPECT_EQ(walk.lines_of("tqm_map_search_or_add_list"), Lines{});
            EXPECT_EQ(walk.built().front(), list + ":delete");
        }
        Walk failed = answer(TQM_REQ_EDIT);
        failed.fault({"tqm_map_datatree_add_path_flagged", 1, failure}).reverse(native(deleted), root);
        EXPECT_EQ(failed.rc, 0u);
    }
}

TEST(InterfaceReverse, AnEntryWithoutANameIsRefused)
{
    Walk walk = answer().trace().reverse(native("<interface-configuration><active>act</active>" + both +
                                                "</interface-configuration>" + entry("e1", both)),
                                         root);
    EXPECT_EQ(walk.rc, TQM_ERR_UNSUPPORTED);
    EXPECT_EQ(walk.built(), Lines{});
    EXPECT_EQ(walk.texts_of(list_mapper), Lines{"Start"});
    EXPECT_EQ(walk.lines_of("tqm_map_tree_xpath_operations"), Lines{});
    EXPECT_EQ(walk.lines_of("tqm_map_add_to_node_hierarchy").size(), 2u); // no child was walked
}

TEST(InterfaceReverse, NativeEntriesOfOneNameMakeOneInterface)
{
    Walk walk = answer().reverse(native(entry("e0", macsec("<psk-key-chain>" + chain + "</psk-key-chain>")) +
                                        entry("e1", both) + entry("e0", both, "pre")),
                                 root);
    Lines expected = whole("e0");
    const Lines second = whole("e1");
    expected.insert(expected.end(), second.begin(), second.end());
    EXPECT_EQ(walk.built(), expected);
}

TEST(InterfaceReverse, WithoutConfigurationNothingIsShown)
{
    Walk walk = answer().without_configuration().reverse(native(entry("e0", both)), root);
    EXPECT_EQ(walk.rc, 0u);
    EXPECT_EQ(walk.built(), Lines{});
    EXPECT_EQ(walk.adds(), Lines{});
    EXPECT_EQ(walk.lines_of("tqm_map_tree_xpath_operations"),
              Lines{"(path=\"macsec/psk-key-chain\", tree=interface-configuration) = 0, data=\"\""});
}

TEST(InterfaceReverse, FailuresOfTheFramework)
{
    const std::string two = native(entry("e0", both) + entry("e1", both));
    // A lookup that fails counts as one that found nothing.
    Walk lookup = answer().trace();
    lookup.fault({"tqm_map_tree_xpath_operations", 1, failure}).reverse(two, root);
    EXPECT_EQ(lookup.rc, 0u);
    EXPECT_EQ(lookup.texts_of(list_mapper)[1], "OC_MACSEC: macsec node  not found");
    EXPECT_EQ(lookup.lines_of("tqm_map_search_or_add_list").size(), 1u);

    // Of a second interface: what fails there must not touch the first.
    const struct {
        Fault fault;
        rcode rc;
    } cases[] = {
        {{"tqm_map_search_or_add_list", 2, failure}, 0},
        {{"tqm_map_datatree_add_path_flagged", 4, failure}, 0},       // config/name
        {{"tqm_map_datatree_add_path_flagged", 5, failure}, failure}, // key-chain
        {{"tqm_map_datatree_add_path_flagged", 6, failure}, failure}, // mka-policy
    };
    for (const auto &one : cases) {
        Walk walk = answer().trace();
        walk.fault(one.fault).reverse(two, root);
        EXPECT_EQ(walk.rc, one.rc) << one.fault.operation << one.fault.nth;
        Lines built = walk.built();
        built.resize(5);
        EXPECT_EQ(built, whole("e0")) << one.fault.operation << one.fault.nth;
        // What the list mapper swallows it logs, with its name and line.
        const Lines texts = walk.texts_of(list_mapper);
        const std::regex form(list_mapper + R"(:\d+: tqm_map_datatree_add_path_flagged failed)");
        EXPECT_EQ(std::ranges::count_if(texts, [&](const std::string &text) { return std::regex_match(text, form); }),
                  one.rc == 0 ? 1 : 0);
        EXPECT_EQ(texts.back(), "End");
        if (one.fault.nth == 5) {
            EXPECT_EQ(walk.adds().size(), 5u); // the leaf behind it is not walked
        }
    }
}

TEST(InterfaceReverse, MissingArguments)
{
    const rdl_tqm_datatree node{};
    EXPECT_EQ(ymap_to_ocmacsec_interfaces_list_rev(nullptr, &node, nullptr), TQM_ERR_NO_SUBTREE);
    Walk walk = answer().trace().run(ymap_to_ocmacsec_interfaces_list_rev, nullptr);
    EXPECT_EQ(walk.rc, TQM_ERR_BAD_ARGS);
    EXPECT_EQ(walk.texts().back(), list_mapper + ": Invalid arguments passed!");
    EXPECT_EQ(walk.lines_of("tqm_oc_error_path").size(), 1u);

    tqm_map_request *const request = walk.request().ctx()->request;
    walk.request().ctx()->request = nullptr;
    walk.run(ymap_to_ocmacsec_interfaces_list_rev, &node);
    walk.request().ctx()->request = request;
    EXPECT_EQ(walk.rc, TQM_ERR_NO_SUBTREE);
    EXPECT_EQ(walk.texts().back(), list_mapper + ": End");
}

} // namespace
