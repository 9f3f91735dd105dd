// What the reverse mappers share: adds to the OpenConfig tree, and the request that joins an entry to one that an
// earlier native tree has made.
#pragma once

#include "frame.h"

namespace oc_macsec
{

// Adds an OpenConfig path without source, with `value` (null: none). `out_node` may be null.
rcode add_oc_leaf(tqm_map_ctx ctx, rdl_tqm_datatree *out, const char *path, const char *value,
                  rdl_tqm_datatree **out_node = nullptr);

// The same, unless the request wants no configuration; then 0.
rcode add_gated_oc_leaf(tqm_map_ctx ctx, rdl_tqm_datatree *out, const char *path, const char *value);

// Adds an entry of an OpenConfig list, with the operation of `source` if that is not null, and keeps it as the
// request's current list entry.
rcode add_oc_list_entry(tqm_map_ctx ctx, rdl_tqm_datatree *out, const char *path, const rdl_tqm_datatree *source);

// How a list of the native model finds its entry in the OpenConfig tree.
struct oc_list {
    const char *path;
    const char *keyed_path; // a format, with the key as its argument
    const char *key_leaf;
};

// Whether the OpenConfig tree has the entry with this key (null: no).
rcode search_oc_list(tqm_map_ctx ctx, rdl_tqm_datatree *out, const oc_list &list, const char *key);

// Continues in the entry that a search has found. May give TQM_ERR_SKIP_NODE.
rcode stitch_oc_list(tqm_map_ctx ctx, rdl_tqm_datatree *out, const oc_list &list, const char *key);

} // namespace oc_macsec
