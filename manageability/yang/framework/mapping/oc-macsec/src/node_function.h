// The shapes of a generated node function, each an ordinary function over a small constant descriptor. The _auto files
// make one exported function of a shape for each schema node.
#pragma once

#include "frame.h"

namespace oc_macsec
{

// Which lines a generated function logs on its good path: the modules differ.
enum class trace_lines : unsigned char { none, start, start_and_end };

struct generated {
    frame of;
    trace_lines lines;
};

// A node that maps to nothing of its own.
rcode empty_list(const generated &function, MAPPER_PARAMETERS);
rcode empty_container(const generated &function, CONTAINER_PARAMETERS);

// A node whose mapping is a hand-written mapper's.
struct mapped_node {
    generated function;
    tqm_map_function mapper;
};

struct mapped_container {
    generated function;
    tqm_map_container_function mapper;
};

rcode delegate_in_frame(const mapped_node &node_function, MAPPER_PARAMETERS);
rcode delegate_container(const mapped_container &node_function, CONTAINER_PARAMETERS);

// Inline for the sake of most leaves of a request: without lines the function is a test of its arguments and a jump.
inline rcode delegate(const mapped_node &node_function, MAPPER_PARAMETERS)
{
    if (node_function.function.lines == trace_lines::none && node != nullptr && out != nullptr) {
        return node_function.mapper(ctx, node, out);
    }
    return delegate_in_frame(node_function, ctx, node, out);
}

// A path in the components that operations take, each with its leading slash.
struct component_path {
    const char *component[9];
    uint32_t count;

    template <class... Text>
    constexpr component_path(Text... text) : component{text...}, count(sizeof...(text))
    {
    }
};

// ---- Forward -------------------------------------------------------------------------------------------------------

// A configuration leaf with one native leaf, its value unchanged.
struct direct_leaf {
    generated function;
    const char *ns;
    const char *path;
    uint32_t flags; // TQM_ADD_*
};

rcode add_direct_leaf(const direct_leaf &leaf, MAPPER_PARAMETERS);

// A state leaf: a read of one leaf of the operational model.
struct state_read {
    generated function;
    component_path path;
};

rcode add_state_read(const state_read &leaf, MAPPER_PARAMETERS);

// A leaf without a native counterpart: refused, with its tag for the client. Has no frame of its own.
rcode refuse_leaf(tqm_map_ctx ctx, const rdl_tqm_datatree *node, rdl_tqm_datatree *);
// The same behind an argument test.
rcode test_and_refuse_leaf(const generated &function, MAPPER_PARAMETERS);

// ---- Reverse -------------------------------------------------------------------------------------------------------

// A native leaf with one OpenConfig leaf, its value unchanged.
struct copied_leaf {
    generated function;
    const char *path;
    bool gated; // a leaf under `config`: left out where the request wants no configuration
};

rcode copy_leaf(const copied_leaf &leaf, MAPPER_PARAMETERS);

// A list of the operational model: its entry is joined to the OpenConfig list at `path`.
struct stitched_list {
    generated function;
    component_path path;
};

rcode stitch_list(const stitched_list &list, MAPPER_PARAMETERS);

// A node, or a hook, that has nothing to do. Has no frame.
inline rcode map_nothing(tqm_map_ctx, const rdl_tqm_datatree *, rdl_tqm_datatree *)
{
    return 0;
}
inline rcode map_nothing(tqm_map_ctx, const rdl_tqm_datatree *, unsigned int, rdl_tqm_datatree *)
{
    return 0;
}

} // namespace oc_macsec
