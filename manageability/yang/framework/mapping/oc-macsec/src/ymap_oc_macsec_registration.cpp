// The four entry points, one for each native tree that the plug-in maps onto the OpenConfig MACsec model. One request
// is walked once, so that all four name the same forward root.
#include "ymap_oc_macsec.h"

#include <sys/stat.h>

#include "frame.h"
#include "namespaces.h"
#include "table_macros.h"

DECLARE_MAPPER(ymap_ot_oc_macsec_openconfigmacsec_lvla_macsec)
DECLARE_MAPPER(ymap_to_oc_macsec_tarvexcryptomacsecmkacfg_lvla_macsec)
DECLARE_MAPPER(ymap_to_oc_macsec_tarvexlibkeychaincfg_lvla_keychains)
DECLARE_MAPPER(ymap_to_oc_macsec_tarvexifmgrcfg_lvla_interfaceconfigurations)
DECLARE_MAPPER(ymap_to_oc_macsec_tarvexprivateocmacsecoper_lvla_ocmacsec)

namespace
{

// A system without the model does not get the trees. The file only has to exist.
constexpr const char *model_file = "/pkg/yang/openconfig-macsec.yang";

struct native_tree {
    const char *name;
    const char *native_ns;
    const char *native_top;
    const char *oc_top;
    tqm_map_function reverse_root;
    uint32_t word_b;
};

void copy(const char *entry_point, char (&field)[TQM_REG_TEXT_SIZE], const char *text)
{
    (void)tqm_strncpy_s(entry_point, field, sizeof field, text, sizeof field);
}

void register_tree(const char *entry_point, const native_tree &tree, tqm_map_reg_info *info)
{
    struct stat status;
    if (stat(model_file, &status) != 0) {
        return;
    }
    copy(entry_point, info->native_ns, tree.native_ns);
    copy(entry_point, info->oc_ns, OC_MACSEC_NS);
    copy(entry_point, info->tree_name, tree.name);
    copy(entry_point, info->native_top, tree.native_top);
    copy(entry_point, info->oc_top, tree.oc_top);
    info->forward_root = ymap_ot_oc_macsec_openconfigmacsec_lvla_macsec;
    info->reverse_root = tree.reverse_root;
    info->tree_word_a = 0;
    info->tree_word_b = tree.word_b;
}

} // namespace

OC_MACSEC_EXPORT void tqm_map_reg_ocmacsec_conf(tqm_map_reg_info *info)
{
    register_tree(__func__,
                  {"MACSEC policy-cfg tree", MKA_CFG_NS, "macsec", "macsec",
                   ymap_to_oc_macsec_tarvexcryptomacsecmkacfg_lvla_macsec, 1},
                  info);
}

OC_MACSEC_EXPORT void tqm_map_reg_ocmacsec_conf_libkeychain(tqm_map_reg_info *info)
{
    register_tree(__func__,
                  {"MACSEC keychain-cfg tree", KEYCHAIN_CFG_NS, "keychains", "macsec",
                   ymap_to_oc_macsec_tarvexlibkeychaincfg_lvla_keychains, 0},
                  info);
}

OC_MACSEC_EXPORT void tqm_map_reg_ocmacsec_ifmgr(tqm_map_reg_info *info)
{
    register_tree(__func__,
                  {"MACSEC ifmgr tree", IFMGR_CFG_NS, "interface-configurations", "macsec",
                   ymap_to_oc_macsec_tarvexifmgrcfg_lvla_interfaceconfigurations, 0},
                  info);
}

OC_MACSEC_EXPORT void tqm_map_reg_ocmacsec_private_oper(tqm_map_reg_info *info)
{
    register_tree(__func__,
                  {"OC-MACSEC oper tree", OPER_NS, "oc-macsec", "oc-macsec",
                   ymap_to_oc_macsec_tarvexprivateocmacsecoper_lvla_ocmacsec, 0},
                  info);
}
