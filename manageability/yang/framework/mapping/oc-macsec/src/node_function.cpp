// The shapes of generated node functions.
#include "node_function.h"

#include "namespaces.h"

namespace oc_macsec
{
namespace
{

// The frame up to the argument test; true when the arguments are rejected. Inlined into every shape: most nodes have a
// function without lines, for which nothing but the test of two pointers is left of this.
[[gnu::always_inline]] inline bool enter(const generated &function, const char *parameters, tqm_map_ctx ctx,
                                         const rdl_tqm_datatree *node, const rdl_tqm_datatree *out)
{
    if (function.lines != trace_lines::none) {
        assert_context(function.of, ctx, parameters);
        log(function.of, ctx, MESSAGE_START);
    } else if (node == nullptr || out == nullptr) {
        assert_context(function.of, ctx, parameters); // without lines the context is only passed on, but for this
    }
    return rejects_arguments(function.of, ctx, node, out);
}

rcode leave(const generated &function, tqm_map_ctx ctx, rcode rc)
{
    if (function.lines == trace_lines::start_and_end) {
        log(function.of, ctx, MESSAGE_END);
    }
    return rc;
}

} // namespace

rcode empty_list(const generated &function, MAPPER_PARAMETERS)
{
    if (enter(function, MAPPER_SIGNATURE, ctx, node, out)) {
        return TQM_ERR_BAD_ARGS;
    }
    return leave(function, ctx, 0);
}

rcode empty_container(const generated &function, tqm_map_ctx ctx, const rdl_tqm_datatree *node, unsigned int,
                      rdl_tqm_datatree *out)
{
    if (enter(function, CONTAINER_SIGNATURE, ctx, node, out)) {
        return TQM_ERR_BAD_ARGS;
    }
    return leave(function, ctx, 0);
}

rcode delegate_in_frame(const mapped_node &node_function, MAPPER_PARAMETERS)
{
    if (enter(node_function.function, MAPPER_SIGNATURE, ctx, node, out)) {
        return TQM_ERR_BAD_ARGS;
    }
    return leave(node_function.function, ctx, node_function.mapper(ctx, node, out));
}

rcode delegate_container(const mapped_container &node_function, CONTAINER_PARAMETERS)
{
    if (enter(node_function.function, CONTAINER_SIGNATURE, ctx, node, out)) {
        return TQM_ERR_BAD_ARGS;
    }
    return leave(node_function.function, ctx, node_function.mapper(ctx, node, child_count, out));
}

rcode add_direct_leaf(const direct_leaf &leaf, MAPPER_PARAMETERS)
{
    if (enter(leaf.function, MAPPER_SIGNATURE, ctx, node, out)) {
        return TQM_ERR_BAD_ARGS;
    }
    const char *value = node->value;
    const rdl_tqm_datatree *source = nullptr;
    if (!TQM_MAP_IS_READ(ctx)) {
        source = node;
        if (tqm_map_is_request_delete(node) != 0) {
            value = nullptr;
        }
    }
    const rcode rc =
        tqm_map_datatree_add_path_flagged(ctx, out, leaf.path, leaf.ns, value, source, nullptr, 0, leaf.flags);
    return leave(leaf.function, ctx, rc);
}

rcode add_state_read(const state_read &leaf, MAPPER_PARAMETERS)
{
    if (enter(leaf.function, MAPPER_SIGNATURE, ctx, node, out)) {
        return TQM_ERR_BAD_ARGS;
    }
    if (!TQM_MAP_IS_READ(ctx)) {
        return leave(leaf.function, ctx, 0);
    }
    const rcode rc = tqm_map_add_leaf_from_xpath(ctx, node, out, leaf.path.component[0], OPER_NS, leaf.path.component,
                                                 leaf.path.count);
    return leave(leaf.function, ctx, rc);
}

rcode refuse_leaf(tqm_map_ctx ctx, const rdl_tqm_datatree *node, rdl_tqm_datatree *)
{
    tqm_oc_error_path(ctx);
    if (ctx != nullptr && ctx->request != nullptr && node != nullptr) {
        tqm_map_request *const request = ctx->request;
        if (request->error_tag != nullptr) {
            plat_named_free(request->error_tag);
            request->error_tag = nullptr;
        }
        request->error_tag = tqm_strdup(node->tag, node->tag); // the tag is its own owner label
    }
    return TQM_ERR_UNSUPPORTED;
}

rcode test_and_refuse_leaf(const generated &function, MAPPER_PARAMETERS)
{
    if (enter(function, MAPPER_SIGNATURE, ctx, node, out)) {
        return TQM_ERR_BAD_ARGS;
    }
    return refuse_leaf(ctx, node, out);
}

rcode copy_leaf(const copied_leaf &leaf, MAPPER_PARAMETERS)
{
    if (enter(leaf.function, MAPPER_SIGNATURE, ctx, node, out)) {
        return TQM_ERR_BAD_ARGS;
    }
    rcode rc = 0;
    if (!leaf.gated || !TQM_MAP_SKIP_CONFIG_LEAF(ctx)) {
        rc = tqm_map_datatree_add_path_flagged(ctx, out, leaf.path, OC_MACSEC_NS, node->value, nullptr, nullptr, 0,
                                               TQM_ADD_PLAIN);
    }
    return leave(leaf.function, ctx, rc);
}

rcode stitch_list(const stitched_list &list, MAPPER_PARAMETERS)
{
    if (enter(list.function, MAPPER_SIGNATURE, ctx, node, out)) {
        return TQM_ERR_BAD_ARGS;
    }
    const rcode rc =
        tqm_map_auto_stitch_list_to_list(ctx, node, out, OC_MACSEC_NS, list.path.component, list.path.count);
    return leave(list.function, ctx, rc);
}

} // namespace oc_macsec
