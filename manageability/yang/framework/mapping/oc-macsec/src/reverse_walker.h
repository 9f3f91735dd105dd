// The reverse walkers, native to OpenConfig: one plain pass over an answer tree. A walker calls its node function and
// then dispatches the children by tag; what reaches the OpenConfig tree is added by the node functions alone. A tag
// that a walker does not know is never an error here.
#pragma once

#include "frame.h"

namespace oc_macsec
{

enum class child_kind : unsigned char { plain, key, list };

struct reverse_child {
    const char *tag;
    tqm_map_function walker;
    child_kind kind;
};

struct reverse_children {
    const reverse_child *first;
    size_t count;

    const reverse_child *begin() const { return first; }
    const reverse_child *end() const { return first + count; }
};

// What the walkers of one module have in common.
struct reverse_module {
    const char *ns;
    bool get_only; // chain entries match only in requests of kind TQM_REQ_GET
};

struct reverse_leaf {
    frame of;
    tqm_map_function node_function;
};

struct reverse_container {
    frame of;
    const reverse_module *module;
    tqm_map_container_function node_function;
    tqm_map_function augments;
    reverse_children children; // the chain of tags, in the order of comparison
};

// A list has one or two keys; the second is null where there is none.
struct list_keys {
    const char *tag[2];
};

struct reverse_list {
    frame of;
    const reverse_module *module;
    const char *path;
    list_keys keys;
    tqm_map_function node_function;
    tqm_map_function augments;
    reverse_children children;
};

// The walker of what another module adds to a list: it gets the foreign child itself, not the list.
struct reverse_augment {
    frame of;
    const reverse_module *module;
    const char *tag;         // of the container that the module adds
    tqm_map_function walker; // of that container
    tqm_map_function augments;
};

// Each gives the result of the exported walker that it runs for.
rcode walk_reverse_leaf(const reverse_leaf &leaf, MAPPER_PARAMETERS);
rcode walk_reverse_container(const reverse_container &container, MAPPER_PARAMETERS);
rcode walk_reverse_list(const reverse_list &list, MAPPER_PARAMETERS);
rcode walk_reverse_augment(const reverse_augment &augment, MAPPER_PARAMETERS);

// The default hook for children of other modules: it has the frame, and does nothing.
rcode walk_reverse_hook(const frame &of, MAPPER_PARAMETERS);

} // namespace oc_macsec
