// What the reverse mappers share.
#include "reverse_mapping.h"

#include <stdio.h>

#include "namespaces.h"
#include "text.h"

namespace oc_macsec
{

rcode add_oc_leaf(tqm_map_ctx ctx, rdl_tqm_datatree *out, const char *path, const char *value,
                  rdl_tqm_datatree **out_node)
{
    return tqm_map_datatree_add_path_flagged(ctx, out, path, OC_MACSEC_NS, value, nullptr, out_node, 0, TQM_ADD_PLAIN);
}

rcode add_gated_oc_leaf(tqm_map_ctx ctx, rdl_tqm_datatree *out, const char *path, const char *value)
{
    return TQM_MAP_SKIP_CONFIG_LEAF(ctx) ? 0 : add_oc_leaf(ctx, out, path, value);
}

rcode add_oc_list_entry(tqm_map_ctx ctx, rdl_tqm_datatree *out, const char *path, const rdl_tqm_datatree *source)
{
    ctx->request->current_list = nullptr;
    return tqm_map_datatree_add_path_flagged(ctx, out, path, OC_MACSEC_NS, nullptr, source, &ctx->request->current_list,
                                             1, TQM_ADD_PLAIN);
}

rcode search_oc_list(tqm_map_ctx ctx, rdl_tqm_datatree *out, const oc_list &list, const char *key)
{
    rdl_tqm_datatree *found = nullptr;
    return tqm_map_search_list(ctx, out, &found, list.path, key, list.key_leaf, OC_MACSEC_NS);
}

rcode stitch_oc_list(tqm_map_ctx ctx, rdl_tqm_datatree *out, const oc_list &list, const char *key)
{
    tqm_map_xpath_ops ops;
    clear_memory(&ops, sizeof ops);
    ops.tree = out;
    ops.operation = TQM_XPATH_OP_STITCH;
    ops.mode = TQM_XPATH_MODE_STITCH;
    copy_text(ops.ns, sizeof ops.ns, OC_MACSEC_NS, sizeof ops.ns);
    (void)snprintf(ops.path, sizeof ops.path, list.keyed_path, key);
    copy_text(ops.list_path, sizeof ops.list_path, list.path, sizeof ops.list_path);
    return tqm_map_stitch_list_to_list(ctx, &ops);
}

} // namespace oc_macsec
