// What the forward container and list walkers share: the tests and marks of a walk, the replace split, and the fill.
#pragma once

#include "forward_walker.h"
#include "namespaces.h"

namespace oc_macsec
{

// A walker above is descending through the schema on its own.
inline bool in_fill(tqm_map_ctx ctx)
{
    return ctx->request->fill_mode == 1;
}

// The walk is in the remove pass of a replace.
inline bool replace_removes(tqm_map_ctx ctx)
{
    return (ctx->request->walk_flags & TQM_WALK_REPLACE_REMOVE) != 0;
}

// Whether the request's kind lets the child be walked.
inline bool is_walked(const forward_child &child, tqm_map_ctx ctx)
{
    return child.on == side::config || TQM_MAP_KIND(ctx) == TQM_REQ_GET;
}

// The first entry of a child table that takes `tag`, or null.
inline const forward_child *find_child(const forward_children &children, tqm_map_ctx ctx, const char *tag)
{
    for (const forward_child &child : children) {
        if (tqm_map_do_these_match(tag, child.tag) != 0 && is_walked(child, ctx)) {
            return &child;
        }
    }
    return nullptr;
}

// Whether a child that no table entry took stands in the model's own namespace.
bool is_of_model(const rdl_tqm_datatree *child);

// A tag of the model's namespace that no table entry took: passed over in a read (0), refused in an edit.
rcode unsupported_tag(const frame &of, tqm_map_ctx ctx, const char *tag);

// Marks of a walker on its node; every operation that a walker writes goes with its presence bit.
inline void set_operation(rdl_tqm_datatree *node, uint32_t operation)
{
    node->operation = operation;
    set_present(node, TQM_PRESENT_OPERATION);
}

inline void set_role(rdl_tqm_datatree *node, uint32_t role)
{
    node->node_role = role;
    node->role_present |= TQM_ROLE_PRESENT;
}

// Pushes the node on the hierarchy and gives it its role; a read's filter starts a new sibling set.
inline void enter_level(tqm_map_ctx ctx, rdl_tqm_datatree *node, uint32_t level_kind, uint32_t role)
{
    tqm_map_add_to_node_hierarchy(ctx, node, level_kind);
    set_role(node, role);
    if (TQM_MAP_IS_READ(ctx)) {
        ctx->request->filter_flags &= TQM_FILTER_KEEP_MASK;
    }
}

// The replace split: what begins its remove pass, and what ends it as a whole.
void begin_remove_pass(tqm_map_ctx ctx, rdl_tqm_datatree *node);
void end_replace(tqm_map_ctx ctx);

// A fill. begin_fill says whether this walker began it, and end_fill ends it only then. Results of the walkers called
// in a fill are dropped: a fill cannot fail the request.
bool begin_fill(tqm_map_ctx ctx);
void end_fill(tqm_map_ctx ctx, bool begun);
void fill_children(const forward_children &children, side on, MAPPER_PARAMETERS);

// A delete is lowered to a remove around the config-side part of a fill, and set back behind it.
bool lower_delete(rdl_tqm_datatree *node);
void restore_delete(rdl_tqm_datatree *node, bool lowered);

} // namespace oc_macsec
