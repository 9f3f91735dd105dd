// The entry points, on a system with the model and on one without.
#include <gtest/gtest.h>

#include <cstring>

#include "support/system.h"
#include "support/walk.h"

namespace
{

struct Tree {
    const char *entry_point;
    const char *tree_name;
    const char *native_module;
    const char *native_top;
    const char *oc_top;
    const char *reverse_root;
    uint32_t word_b;
};

const Tree trees[] = {
    {"tqm_map_reg_ocmacsec_conf", "MACSEC policy-cfg tree", "Tarvex-crypto-macsec-mka-cfg", "macsec", "macsec",
     "ymap_to_oc_macsec_tarvexcryptomacsecmkacfg_lvla_macsec", 1},
    {"tqm_map_reg_ocmacsec_conf_libkeychain", "MACSEC keychain-cfg tree", "Tarvex-lib-keychain-cfg", "keychains",
     "macsec", "ymap_to_oc_macsec_tarvexlibkeychaincfg_lvla_keychains", 0},
    {"tqm_map_reg_ocmacsec_ifmgr", "MACSEC ifmgr tree", "Tarvex-ifmgr-cfg", "interface-configurations", "macsec",
     "ymap_to_oc_macsec_tarvexifmgrcfg_lvla_interfaceconfigurations", 0},
    {"tqm_map_reg_ocmacsec_private_oper", "OC-MACSEC oper tree", "Tarvex-PRIVATE-oc-macsec-oper", "oc-macsec",
     "oc-macsec", "ymap_to_oc_macsec_tarvexprivateocmacsecoper_lvla_ocmacsec", 0},
};

void enter(const std::string &entry_point, tqm_map_reg_info &info)
{
    reinterpret_cast<void (*)(tqm_map_reg_info *)>(test::symbol(entry_point))(&info);
}

TEST(Registration, FillsTheRecordOfEachTree)
{
    for (const Tree &tree : trees) {
        tqm_map_reg_info info{};
        info.tree_word_a = 7;
        enter(tree.entry_point, info);
        EXPECT_STREQ(info.tree_name, tree.tree_name);
        EXPECT_EQ(info.native_ns, std::string("http://tarvex.example/ns/yang/") + tree.native_module);
        EXPECT_STREQ(info.oc_ns, "http://openconfig.net/yang/macsec");
        EXPECT_STREQ(info.native_top, tree.native_top);
        EXPECT_STREQ(info.oc_top, tree.oc_top);
        const char *const forward_root = "ymap_ot_oc_macsec_openconfigmacsec_lvla_macsec";
        EXPECT_EQ(reinterpret_cast<void *>(info.forward_root), test::symbol(forward_root));
        EXPECT_EQ(reinterpret_cast<void *>(info.reverse_root), test::symbol(tree.reverse_root));
        EXPECT_EQ(info.tree_word_a, 0u);
        EXPECT_EQ(info.tree_word_b, tree.word_b);
    }
}

TEST(Registration, LeavesTheRecordAsItWasWithoutTheModel)
{
    (void)test::symbol(trees[0].entry_point); // the plug-in is loaded with its model, as for the other tests
    test::let_model_be(false);
    for (const Tree &tree : trees) {
        tqm_map_reg_info info;
        tqm_map_reg_info before;
        std::memset(static_cast<void *>(&info), 0x5a, sizeof info);
        std::memcpy(static_cast<void *>(&before), &info, sizeof info);
        enter(tree.entry_point, info);
        EXPECT_EQ(std::memcmp(&info, &before, sizeof info), 0) << tree.tree_name;
    }
    test::let_model_be(true);
}

TEST(Registration, CopiesInOrderUnderItsOwnName)
{
    tqm_map_reg_info info{};
    const test::Walk walk(TQM_REQ_EDIT, test::Direction::forward);
    (void)walk.ctx(); // makes the request, which journals the copies
    enter("tqm_map_reg_ocmacsec_ifmgr", info);
    const test::Lines copies = walk.calls_of("tqm_strncpy_s");
    ASSERT_EQ(copies.size(), 5u);
    const char *const texts[] = {"Tarvex-ifmgr-cfg", "openconfig.net/yang/macsec", "MACSEC ifmgr tree",
                                 "interface-configurations", "\"macsec\""};
    for (size_t index = 0; index < copies.size(); ++index) {
        EXPECT_NE(copies[index].find("tqm_map_reg_ocmacsec_ifmgr"), std::string::npos) << copies[index];
        EXPECT_NE(copies[index].find(texts[index]), std::string::npos) << copies[index];
    }
}

} // namespace
