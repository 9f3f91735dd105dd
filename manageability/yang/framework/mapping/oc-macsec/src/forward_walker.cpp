// The forward leaf, container and augment walkers. The list walker, which has the keys to look after, stands in a file
// of its own; what both kinds of parents share is declared in forward_walk.h.
#include "forward_walker.h"

#include "forward_walk.h"

namespace oc_macsec
{

void begin_remove_pass(tqm_map_ctx ctx, rdl_tqm_datatree *node)
{
    set_operation(node, TQM_OP_REMOVE);
    ctx->request->walk_flags |= TQM_WALK_REPLACE_REMOVE;
    ctx->request->replace_active = 1;
}

void end_replace(tqm_map_ctx ctx)
{
    ctx->request->walk_flags &= ~(TQM_WALK_REPLACE_REMOVE | TQM_WALK_REPLACE_MERGE);
    ctx->request->replace_active = 0;
}

rcode unsupported_tag(const frame &of, tqm_map_ctx ctx, const char *tag)
{
    log(of, ctx, MESSAGE_UNSUPPORTED_TAG);
    if (TQM_MAP_IS_READ(ctx)) {
        return 0;
    }
    set_error_tag(ctx, tag);
    tqm_oc_error_path(ctx);
    return TQM_ERR_UNSUPPORTED;
}

bool is_of_model(const rdl_tqm_datatree *child)
{
    return tqm_map_do_these_match(child->ns, OC_MACSEC_NS) != 0;
}

void fill_children(const forward_children &children, side on, MAPPER_PARAMETERS)
{
    for (const forward_child &child : children) {
        if (child.on == on && is_walked(child, ctx)) {
            child.walker(ctx, node, out);
        }
    }
}

bool begin_fill(tqm_map_ctx ctx)
{
    const bool begun = !in_fill(ctx);
    if (begun) {
        ctx->request->fill_mode = 1;
    }
    return begun;
}

void end_fill(tqm_map_ctx ctx, bool begun)
{
    if (begun) {
        ctx->request->fill_mode = 0;
    }
}

bool lower_delete(rdl_tqm_datatree *node)
{
    const bool lowered = tqm_map_is_request_delete(node) != 0 && node->operation == TQM_OP_DELETE;
    if (lowered) {
        set_operation(node, TQM_OP_REMOVE);
    }
    return lowered;
}

void restore_delete(rdl_tqm_datatree *node, bool lowered)
{
    if (lowered) {
        set_operation(node, TQM_OP_DELETE);
    }
}

// ---- Leaves --------------------------------------------------------------------------------------------------------

namespace
{

// In a read, a plain leaf with a value is a content match, one without a value a selection.
void note_filter_leaf(tqm_map_ctx ctx, rdl_tqm_datatree *node)
{
    uint32_t &flags = ctx->request->filter_flags;
    if (has(node, TQM_PRESENT_VALUE)) {
        flags |= TQM_FILTER_MATCH_SEEN;
        node->node_role = TQM_ROLE_MATCH_LEAF;
        flags |= TQM_FILTER_MATCH_IN_REQUEST;
    } else {
        flags |= TQM_FILTER_SELECTION_SEEN;
    }
}

} // namespace

rcode walk_forward_leaf(const forward_leaf &leaf, MAPPER_PARAMETERS)
{
    assert_context(leaf.of, ctx, MAPPER_SIGNATURE);
    log(leaf.of, ctx, MESSAGE_START);
    if (rejects_arguments(leaf.of, ctx, node, out)) {
        return TQM_ERR_BAD_ARGS;
    }
    const rcode rc = leaf.node_function(ctx, node, out);
    if (!in_fill(ctx) && ctx->request->delete_mode == 0) {
        set_role(writable(node), leaf.kind == leaf_kind::leaf_list ? TQM_ROLE_LEAF_LIST : TQM_ROLE_LEAF);
        if (leaf.kind == leaf_kind::plain && TQM_MAP_IS_READ(ctx)) {
            note_filter_leaf(ctx, writable(node));
        }
    }
    log(leaf.of, ctx, MESSAGE_END);
    return rc;
}

// ---- Augments ------------------------------------------------------------------------------------------------------

rcode walk_forward_augments(const frame &of, MAPPER_PARAMETERS)
{
    assert_context(of, ctx, MAPPER_SIGNATURE);
    if (rejects_arguments(of, ctx, node, out)) {
        return TQM_ERR_BAD_ARGS;
    }
    if (tqm_map_is_request_add(ctx) == 0) {
        return 0;
    }
    set_error_tag(ctx, node->tag);
    tqm_oc_error_path(ctx);
    return TQM_ERR_AUGMENT;
}

// ---- Containers ----------------------------------------------------------------------------------------------------

namespace
{

// One walk of one container. In a replace there are two passes: the first sees a remove and no children, so that it
// fills and removes the whole subtree; the second sees a merge and the children as they came.
struct container_walk {
    const forward_container &container;
    tqm_map_ctx ctx;
    rdl_tqm_datatree *node;
    rdl_tqm_datatree *out;
    child_array children;
    uint32_t visible_count;
    uint32_t saved_count;
    bool replacing;
    rcode rc;
};

void hide_children(container_walk &walk)
{
    walk.saved_count = walk.visible_count;
    walk.visible_count = 0;
    walk.node->subtree = nullptr;
    walk.node->subtree_count = 0;
    clear_present(walk.node, TQM_PRESENT_SUBTREE);
}

void end_remove_pass(container_walk &walk)
{
    tqm_map_request *const request = walk.ctx->request;
    set_operation(walk.node, TQM_OP_MERGE);
    request->walk_flags |= TQM_WALK_REPLACE_MERGE;
    request->walk_flags &= ~TQM_WALK_REPLACE_REMOVE;
    walk.node->subtree = walk.children.first;
    walk.node->subtree_count = walk.saved_count;
    set_present(walk.node, TQM_PRESENT_SUBTREE);
    walk.visible_count = walk.saved_count;
}

rcode dispatch_child(const container_walk &walk, rdl_tqm_datatree *child)
{
    const forward_container &container = walk.container;
    if (child->tag == nullptr) {
        log(container.of, walk.ctx, MESSAGE_NO_TAG);
        return TQM_ERR_NO_SUBTREE;
    }
    if (const forward_child *entry = find_child(container.children, walk.ctx, child->tag)) {
        return entry->walker(walk.ctx, child, walk.out);
    }
    if (is_of_model(child)) {
        return unsupported_tag(container.of, walk.ctx, child->tag);
    }
    return container.augments(walk.ctx, child, walk.out);
}

void dispatch_children(container_walk &walk)
{
    rdl_tqm_datatree *const end = walk.children.first + walk.visible_count;
    for (rdl_tqm_datatree *child = walk.children.first; child != end && walk.rc == 0; ++child) {
        walk.rc = dispatch_child(walk, child);
    }
}

// A sibling set of content matches alone selects all siblings (RFC 6241, section 6.2.5).
void apply_sibling_rule(tqm_map_ctx ctx)
{
    uint32_t &flags = ctx->request->filter_flags;
    if ((flags & TQM_FILTER_MATCH_SEEN) != 0 && (flags & TQM_FILTER_SELECTION_SEEN) == 0) {
        flags |= TQM_FILTER_ALL_SIBLINGS;
        flags &= ~(TQM_FILTER_MATCH_SEEN | TQM_FILTER_SELECTION_SEEN);
    }
}

// State containers are never deleted, and never ask.
bool fills(const container_walk &walk)
{
    if (walk.visible_count != 0 && (walk.ctx->request->filter_flags & TQM_FILTER_ALL_SIBLINGS) == 0) {
        return false;
    }
    if (TQM_MAP_IS_READ(walk.ctx)) {
        return true;
    }
    return walk.container.on == side::config && tqm_map_is_request_delete(walk.node) != 0;
}

void fill(const container_walk &walk)
{
    const forward_container &container = walk.container;
    const tqm_map_ctx ctx = walk.ctx;
    const bool begun = begin_fill(ctx);
    if (container.on == side::config) {
        const bool lowered = lower_delete(walk.node);
        fill_children(container.children, side::config, ctx, walk.node, walk.out);
        restore_delete(walk.node, lowered);
    }
    fill_children(container.children, side::state, ctx, walk.node, walk.out);
    container.augments(ctx, walk.node, walk.out);
    end_fill(ctx, begun);
    ctx->request->filter_flags &= TQM_FILTER_KEEP_MASK;
    ctx->request->filter_flags &= ~(TQM_FILTER_MATCH_SEEN | TQM_FILTER_SELECTION_SEEN);
}

// Runs the node function and the children of one pass; false when the node function declined the container outside a
// remove pass, so that the walker is left at once.
bool run_node_function(container_walk &walk)
{
    if (walk.rc == 0) {
        walk.rc = walk.container.node_function(walk.ctx, walk.node, walk.visible_count, walk.out);
        if (walk.rc == TQM_ERR_SKIP_NODE && !replace_removes(walk.ctx)) {
            return false;
        }
    }
    return true;
}

void run_children_and_fill(container_walk &walk)
{
    if (walk.rc == 0 && walk.visible_count != 0) {
        dispatch_children(walk);
    }
    apply_sibling_rule(walk.ctx);
    if (fills(walk)) {
        fill(walk);
    }
}

// False when the container was declined.
bool run_passes(container_walk &walk)
{
    const int passes = walk.replacing ? 2 : 1;
    for (int pass = 0; pass < passes; ++pass) {
        const bool called = walk.rc == 0;
        if (!run_node_function(walk)) {
            return false;
        }
        if (called && walk.rc == TQM_ERR_SKIP_NODE) {
            walk.rc = 0;
        } else {
            run_children_and_fill(walk);
        }
        if (walk.replacing) {
            end_remove_pass(walk);
        }
    }
    return true;
}

bool deletes_with_children(const container_walk &walk)
{
    return walk.container.on == side::config && !in_fill(walk.ctx) && walk.children.count != 0 &&
           walk.ctx->request->delete_mode == 0 && tqm_map_is_request_delete(walk.node) != 0;
}

rcode leave_with(const frame &of, tqm_map_ctx ctx, message_id reason, rcode rc)
{
    log(of, ctx, reason);
    log(of, ctx, MESSAGE_END);
    return rc;
}

} // namespace

rcode walk_forward_container(const forward_container &container, MAPPER_PARAMETERS)
{
    assert_context(container.of, ctx, MAPPER_SIGNATURE);
    log(container.of, ctx, MESSAGE_START);
    if (rejects_arguments(container.of, ctx, node, out)) {
        return TQM_ERR_BAD_ARGS;
    }
    container_walk walk{container, ctx, writable(node), out, children_of(node), 0, 0, false, 0};
    if (walk.children.missing()) {
        return leave_with(container.of, ctx, MESSAGE_NO_SUBTREES, TQM_ERR_NO_SUBTREE);
    }
    if (deletes_with_children(walk)) {
        return leave_with(container.of, ctx, MESSAGE_DELETE_WITH_SUBTREE, TQM_ERR_BAD_ARGS);
    }
    const bool all_siblings = (ctx->request->filter_flags & TQM_FILTER_ALL_SIBLINGS) != 0;
    walk.visible_count = all_siblings && in_fill(ctx) ? 0 : walk.children.count;
    if (!in_fill(ctx)) {
        enter_level(ctx, walk.node, TQM_HIER_CONTAINER, TQM_ROLE_CONTAINER);
    }
    walk.replacing = walk.node->operation == TQM_OP_REPLACE;
    if (walk.replacing) {
        begin_remove_pass(ctx, walk.node);
        hide_children(walk);
    }
    const bool completed = run_passes(walk);
    if (completed && walk.replacing) {
        end_replace(ctx);
    }
    if (!in_fill(ctx)) {
        tqm_map_remove_from_node_hierarchy(ctx, node);
    }
    if (!completed) {
        return 0;
    }
    log(container.of, ctx, MESSAGE_END);
    return walk.rc;
}

} // namespace oc_macsec
