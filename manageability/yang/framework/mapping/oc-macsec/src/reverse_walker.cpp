// The reverse walkers. They write nothing but the key marks of a list's children and the mark of an xpath error node.
#include "reverse_walker.h"

namespace oc_macsec
{
namespace
{

bool misses_children(const frame &of, tqm_map_ctx ctx, const child_array &children)
{
    if (!children.missing()) {
        return false;
    }
    log(of, ctx, MESSAGE_NO_SUBTREES);
    log(of, ctx, MESSAGE_END);
    return true;
}

// What a walker and its children need to know of their place: the module, the chain of tags and the hook.
struct dispatch {
    const frame &of;
    const reverse_module &module;
    reverse_children chain;
    tqm_map_function augments;
};

bool takes(const dispatch &place, tqm_map_ctx ctx, const reverse_child &entry, const char *tag)
{
    return tqm_map_do_these_match(tag, entry.tag) != 0 && (!place.module.get_only || TQM_MAP_KIND(ctx) == TQM_REQ_GET);
}

// A list entry that was skipped is no failure of the container around it.
rcode walk_child(const reverse_child &entry, tqm_map_ctx ctx, rdl_tqm_datatree *child, rdl_tqm_datatree *out)
{
    if (entry.kind == child_kind::key) {
        mark_key(child);
    }
    const rcode rc = entry.walker(ctx, child, out);
    return entry.kind == child_kind::list && rc == TQM_ERR_SKIP_NODE ? 0 : rc;
}

// A tag that no chain entry took: the module's own is passed over, another module's goes to the hook.
rcode pass_over(const dispatch &place, tqm_map_ctx ctx, const rdl_tqm_datatree *child, rdl_tqm_datatree *out)
{
    if (tqm_map_do_these_match(child->ns, place.module.ns) != 0) {
        log(place.of, ctx, MESSAGE_IGNORED_TAG);
        return 0;
    }
    return place.augments(ctx, child, out);
}

rcode dispatch_child(const dispatch &place, tqm_map_ctx ctx, rdl_tqm_datatree *child, rdl_tqm_datatree *out)
{
    if (child->tag == nullptr) {
        log(place.of, ctx, MESSAGE_NO_TAG);
        return TQM_ERR_NO_SUBTREE;
    }
    for (const reverse_child &entry : place.chain) {
        if (takes(place, ctx, entry, child->tag)) {
            return walk_child(entry, ctx, child, out);
        }
    }
    return pass_over(place, ctx, child, out);
}

// Walks the children in order, up to the first that fails.
rcode dispatch_children(const dispatch &place, const child_array &children, tqm_map_ctx ctx, rdl_tqm_datatree *out)
{
    rcode rc = 0;
    for (rdl_tqm_datatree *child = children.begin(); child != children.end() && rc == 0; ++child) {
        rc = dispatch_child(place, ctx, child, out);
    }
    return rc;
}

} // namespace

rcode walk_reverse_leaf(const reverse_leaf &leaf, MAPPER_PARAMETERS)
{
    assert_context(leaf.of, ctx, MAPPER_SIGNATURE);
    log(leaf.of, ctx, MESSAGE_START);
    if (rejects_arguments(leaf.of, ctx, node, out)) {
        return TQM_ERR_BAD_ARGS;
    }
    if (has(node, TQM_PRESENT_ERROR_KIND) && node->error_kind == TQM_NODE_ERROR_XPATH) {
        log(leaf.of, ctx, MESSAGE_XPATH_ERROR);
        ctx->request->walk_flags |= TQM_WALK_XPATH_ERROR;
    }
    const rcode rc = leaf.node_function(ctx, node, out);
    log(leaf.of, ctx, MESSAGE_END);
    return rc;
}

rcode walk_reverse_container(const reverse_container &container, MAPPER_PARAMETERS)
{
    assert_context(container.of, ctx, MAPPER_SIGNATURE);
    log(container.of, ctx, MESSAGE_START);
    if (rejects_arguments(container.of, ctx, node, out)) {
        return TQM_ERR_BAD_ARGS;
    }
    const child_array children = children_of(node);
    if (misses_children(container.of, ctx, children)) {
        return TQM_ERR_NO_SUBTREE;
    }
    tqm_map_add_to_node_hierarchy(ctx, node, TQM_HIER_CONTAINER);
    const dispatch place{container.of, *container.module, container.children, container.augments};
    rcode rc = container.node_function(ctx, node, children.count, out);
    if (rc == 0) {
        rc = dispatch_children(place, children, ctx, out);
    }
    tqm_map_remove_from_node_hierarchy(ctx, node);
    log(container.of, ctx, MESSAGE_END);
    return rc;
}

namespace
{

void mark_keys(const reverse_list &list, const child_array &children)
{
    const size_t key_count = list.keys.tag[1] != nullptr ? 2 : 1;
    for (rdl_tqm_datatree &child : children) {
        for (size_t key = 0; key < key_count; ++key) {
            if (tqm_map_do_these_match(child.tag, list.keys.tag[key]) != 0) {
                mark_key(&child);
            }
        }
    }
}

// Runs an entry that its node function has not declined: children are walked between the output list's add and remove.
rcode walk_entry(const reverse_list &list, const child_array &children, rcode rc, MAPPER_PARAMETERS)
{
    const uint8_t depth_before = ctx->request->output_depth;
    tqm_add_to_output_list_ctx(ctx, node, out);
    const uint8_t depth_after = ctx->request->output_depth;
    const dispatch place{list.of, *list.module, list.children, list.augments};
    if (rc == 0) {
        rc = dispatch_children(place, children, ctx, out);
    }
    tqm_map_remove_from_node_hierarchy(ctx, node);
    if (depth_before < depth_after) {
        tqm_remove_from_output_list_ctx(ctx, node, out);
    }
    return rc;
}

} // namespace

rcode walk_reverse_list(const reverse_list &list, MAPPER_PARAMETERS)
{
    assert_context(list.of, ctx, MAPPER_SIGNATURE);
    log(list.of, ctx, MESSAGE_START);
    if (rejects_arguments(list.of, ctx, node, out)) {
        return TQM_ERR_BAD_ARGS;
    }
    const child_array children = children_of(node);
    if (misses_children(list.of, ctx, children)) {
        return TQM_ERR_NO_SUBTREE;
    }
    if (children.count == 0) {
        log(list.of, ctx, MESSAGE_NO_KEYS);
    }
    tqm_map_add_to_node_hierarchy(ctx, node, TQM_HIER_LIST);
    rcode rc = tqm_map_update_current_list_node(ctx, list.path);
    if (rc == 0) {
        mark_keys(list, children);
        rc = list.node_function(ctx, node, out);
        if (rc == TQM_ERR_SKIP_NODE) {
            tqm_map_remove_from_node_hierarchy(ctx, node);
            log(list.of, ctx, MESSAGE_END);
            return rc;
        }
    }
    rc = walk_entry(list, children, rc, ctx, node, out);
    log(list.of, ctx, MESSAGE_END);
    return rc;
}

rcode walk_reverse_augment(const reverse_augment &augment, MAPPER_PARAMETERS)
{
    assert_context(augment.of, ctx, MAPPER_SIGNATURE);
    log(augment.of, ctx, MESSAGE_START);
    if (rejects_arguments(augment.of, ctx, node, out)) {
        return TQM_ERR_BAD_ARGS;
    }
    if (misses_children(augment.of, ctx, children_of(node))) {
        return TQM_ERR_NO_SUBTREE;
    }
    rcode rc = TQM_ERR_NO_SUBTREE;
    if (node->tag == nullptr) {
        log(augment.of, ctx, MESSAGE_NO_TAG);
    } else {
        log(augment.of, ctx, MESSAGE_PROCESSING_TAG, node->tag);
        if (tqm_map_do_these_match(node->tag, augment.tag) != 0) {
            rc = augment.walker(ctx, node, out);
        } else {
            rc = pass_over({augment.of, *augment.module, {nullptr, 0}, augment.augments}, ctx, node, out);
        }
    }
    log(augment.of, ctx, MESSAGE_END);
    return rc;
}

rcode walk_reverse_hook(const frame &of, MAPPER_PARAMETERS)
{
    assert_context(of, ctx, MAPPER_SIGNATURE);
    log(of, ctx, MESSAGE_START);
    if (rejects_arguments(of, ctx, node, out)) {
        return TQM_ERR_BAD_ARGS;
    }
    log(of, ctx, MESSAGE_END);
    return 0;
}

} // namespace oc_macsec
