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
rcode empty_node(const generated &function, const char *parameters, MAPPER_PARAMETERS);

// A node whose mapping is a hand-written mapper's.
rcode delegating_node(const generated &function, tqm_map_function mapper, MAPPER_PARAMETERS);
rcode delegating_container(const generated &function, tqm_map_container_function mapper, CONTAINER_PARAMETERS);

// ---- Forward -------------------------------------------------------------------------------------------------------

// A configuration leaf with one native leaf, its value unchanged.
struct direct_leaf {
    generated function;
    const char *ns;
    const char *path;
    uint32_t flags; // TQM_ADD_*
};

rcode add_direct_leaf(const direct_leaf &leaf, MAPPER_PARAMETERS);

// A state leaf: a read of one leaf of the operational model, given by the components of its path.
struct state_read {
    generated function;
    const char *const *components;
    uint32_t count;
};

rcode add_state_read(const state_read &leaf, MAPPER_PARAMETERS);

// A leaf without a native counterpart: refused, with its tag for the client. Has no frame of its own.
rcode refuse_leaf(tqm_map_ctx ctx, const rdl_tqm_datatree *node);
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

// A list of the operational model: its entry is joined to the OpenConfig list at `components`.
struct stitched_list {
    generated function;
    const char *const *components;
    uint32_t count;
};

rcode stitch_list(const stitched_list &list, MAPPER_PARAMETERS);

} // namespace oc_macsec
