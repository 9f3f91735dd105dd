// The reverse mappers of interfaces. The native list holds every interface of the router; only one that has
// macsec/psk-key-chain becomes an OpenConfig interface. Its MACsec settings stand in a module that augments the list,
// which the hook lets in.
#include "namespaces.h"
#include "reverse_mapping.h"
#include "table_macros.h"
#include "text.h"

using namespace oc_macsec;

#define NATIVE_INTERFACE "/interface-configurations/interface-configuration"
#define OC_INTERFACE "/macsec/interfaces/interface"

DECLARE_MAPPER(ymap_to_oc_macsec_tarvexcryptomacsecmkaifcfg_augment_lvla_interface_configuration)

namespace
{

const char *interface_name(tqm_map_ctx ctx, rcode *rc)
{
    const char *name = nullptr;
    *rc = tqm_map_get_node_info(ctx, NATIVE_INTERFACE, "interface-name", &name);
    return name;
}

void fill_presence_lookup(tqm_map_xpath_ops *ops, const rdl_tqm_datatree *entry, const char *owner)
{
    clear_memory(ops, sizeof *ops);
    ops->tree = writable(entry);
    ops->operation = TQM_XPATH_OP_LOOKUP;
    ops->mode = TQM_XPATH_MODE_LOOKUP;
    (void)tqm_strncpy_s(owner, ops->ns, sizeof ops->ns, OC_MACSEC_NS, sizeof ops->ns - 1);
    (void)tqm_strncpy_s(owner, ops->path, sizeof ops->path, "macsec/psk-key-chain", sizeof ops->path - 1);
}

void delete_interface(tqm_map_ctx ctx, const rdl_tqm_datatree *node, rdl_tqm_datatree *out)
{
    (void)add_oc_list_entry(ctx, out, OC_INTERFACE, node);
    (void)tqm_map_copy_trim_path_list_ctx(ctx, OC_INTERFACE);
}

// Finds or makes the entry and writes its name; the name goes to the entry, not to the output tree. False without an
// entry, so that no name ends up in that of another interface, and when the name cannot be written.
bool add_interface(tqm_map_ctx ctx, rdl_tqm_datatree *out, const char *name)
{
    rdl_tqm_datatree *&entry = ctx->request->current_list;
    entry = nullptr;
    (void)tqm_map_search_or_add_list(ctx, out, &entry, OC_INTERFACE, name, "name", OC_MACSEC_NS);
    return entry != nullptr && tqm_map_datatree_add_path_flagged(ctx, entry, OC_INTERFACE "/config/name", OC_MACSEC_NS,
                                                                 name, nullptr, nullptr, 0, TQM_ADD_ENTRY_NAME) == 0;
}

} // namespace

// No failure of the lookup or of an add reaches the caller.
OC_MACSEC_EXPORT rcode ymap_to_ocmacsec_interfaces_list_rev(MAPPER_PARAMETERS)
{
    if (ctx == nullptr) {
        return TQM_ERR_NO_SUBTREE;
    }
    TQM_TRC(ctx, "Start");
    REJECT_NULL_ARGUMENTS(ctx, node == nullptr || out == nullptr);
    if (ctx->request == nullptr) {
        LEAVE_MAPPER(ctx, TQM_ERR_NO_SUBTREE);
    }
    rcode lookup = 0;
    const char *const name = interface_name(ctx, &lookup);
    if (name == nullptr) {
        return TQM_ERR_UNSUPPORTED;
    }
    tqm_map_xpath_ops ops;
    fill_presence_lookup(&ops, node, __func__);
    const bool has_macsec = tqm_map_tree_xpath_operations(ctx, &ops) == 0;
    if (has_macsec) {
        TQM_TRC(ctx, "OC_MACSEC: macsec node found, data:%s", ops.data);
    } else {
        TQM_TRC(ctx, "OC_MACSEC: macsec node  not found");
    }
    if (tqm_map_is_request_delete(node) != 0) {
        delete_interface(ctx, node, out);
    } else if (!TQM_MAP_SKIP_CONFIG_LEAF(ctx) && has_macsec) {
        if (!add_interface(ctx, out, name)) {
            TQM_TRC(ctx, "%s:%d: tqm_map_datatree_add_path_flagged failed", __func__, __LINE__);
        }
    }
    LEAVE_MAPPER(ctx, 0);
}

// Only the test for a name: the list mapper has written it.
OC_MACSEC_EXPORT rcode
ymap_to_oc_macsec_tarvexifmgrcfg_man_leaf_lvla_interfaceconfigurations_interfaceconfiguration_interfacename(
    MAPPER_PARAMETERS)
{
    ENTER_MAPPER(ctx, node, out);
    rcode rc = 0;
    if (interface_name(ctx, &rc) == nullptr) {
        return TQM_ERR_UNSUPPORTED;
    }
    LEAVE_MAPPER(ctx, rc);
}

// In place of the generated hook: children of the MACsec module are walked there.
OC_MACSEC_EXPORT rcode
ymap_to_oc_macsec_tarvexifmgrcfg_lvla_interfaceconfigurations_interfaceconfiguration_parse_augments(MAPPER_PARAMETERS)
{
    ENTER_MAPPER(ctx, node, out);
    rcode rc = 0;
    if (tqm_map_do_these_match(node->ns, MKA_IF_CFG_NS) != 0) {
        rc = ymap_to_oc_macsec_tarvexcryptomacsecmkaifcfg_augment_lvla_interface_configuration(ctx, node, out);
    }
    LEAVE_MAPPER(ctx, rc);
}
