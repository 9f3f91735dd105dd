// The forward walkers, OpenConfig to native: how a leaf, a container, a list and an augment walker run. A walker
// descends the request tree by tag, calls one node function for each schema node that it reaches, and decides with
// which node and in which mode; what goes to the native side is added by the node functions alone.
//
// The central device is the fill: with fill_mode at 1 a walker calls the walkers of all its schema children with its
// own node in place of a child. Nothing below then tests tags or pushes on the node hierarchy.
#pragma once

#include "frame.h"

namespace oc_macsec
{

// State-side children (`state`, `scsa-tx`, `scsa-rx` and all below them) are walked in requests of kind TQM_REQ_GET
// only, and are unknown tags in all others.
enum class side : unsigned char { config, state };

enum class leaf_kind : unsigned char { plain, leaf_list, key };

struct forward_child {
    const char *tag;
    tqm_map_function walker;
    side on;
};

// A child table, in schema order.
struct forward_children {
    const forward_child *first;
    size_t count;

    const forward_child *begin() const { return first; }
    const forward_child *end() const { return first + count; }
};

struct forward_leaf {
    frame of;
    leaf_kind kind;
    tqm_map_function node_function;
};

struct forward_container {
    frame of;
    side on; // of the container itself: a state container holds state-side children only
    tqm_map_container_function node_function;
    tqm_map_function augments;
    forward_children children;
};

struct list_key {
    const char *tag;
    tqm_map_function walker;
};

struct forward_list {
    frame of;
    side on; // config: a keyed list; state: a state list
    const char *path;
    list_key key;
    tqm_map_function node_function;
    tqm_map_function augments;
    forward_children children; // without the key leaf
};

// Each gives the result of the exported walker that it runs for.
rcode walk_forward_leaf(const forward_leaf &leaf, MAPPER_PARAMETERS);
rcode walk_forward_container(const forward_container &container, MAPPER_PARAMETERS);
rcode walk_forward_list(const forward_list &list, MAPPER_PARAMETERS);

// A child from another namespace: refused when the request adds data, passed over otherwise.
rcode walk_forward_augments(const frame &of, MAPPER_PARAMETERS);

} // namespace oc_macsec
