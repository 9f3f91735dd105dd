// The macros of the native modules' tables: what each kind of line is, the walker of it, and what its node becomes.
#pragma once

#include "line_table.h"
#include "namespaces.h"
#include "reverse_walker.h"
#include "table_macros.h"

#define CONTAINER(tag, name, becomes) NODE(CONTAINER, plain, tag, name, becomes)
#define LIST(tag, name, path, keys, becomes) NODE(LIST, plain, tag, name, path, keys, becomes)
#define KEYS(...) (oc_macsec::list_keys{{__VA_ARGS__}})
#define KEY_LEAF(tag, name, becomes) NODE(LEAF, key, tag, name, becomes)
#define LEAF(tag, name, becomes) NODE(LEAF, plain, tag, name, becomes)
#define UNWALKED_LEAF(name) NODE(UNWALKED_LEAF, name)
#define END NODE(END)

#define DECLARE_UNWALKED_LEAF(name)

// ---- Walkers -------------------------------------------------------------------------------------------------------
// The _parser file defines `module`, the reverse_module of its walkers, and REVERSE_HOOK, the hook of its containers
// and lists: DEFAULT_HOOK, or BARE_HOOK in the module whose hooks have no frame.

namespace oc_macsec
{

constexpr bool make_child(const table_line &line, const table_line &, reverse_child &child)
{
    const child_kind kind = line.kind == line_kind::key    ? child_kind::key
                            : line.kind == line_kind::list ? child_kind::list
                                                           : child_kind::plain;
    child = {line.tag, line.walker, kind};
    return true;
}

} // namespace oc_macsec

#define LINE_CONTAINER(variant, tag, name, ...) LINE_(container, false, tag, name)
#define LINE_LIST(variant, tag, name, ...) LINE_(list, false, tag, name)
#define LINE_UNWALKED_LEAF(name)

#define DEFAULT_HOOK(name) FRAMED_(OC_MACSEC_EXPORT_WEAK, HOOK(name), MAPPER, frame, walk_reverse_hook)
#define BARE_HOOK(name) BARE_(OC_MACSEC_EXPORT_WEAK, HOOK(name), MAPPER, map_nothing)

#define WALK_CONTAINER(variant, tag, name, ...)                                                                        \
    REVERSE_HOOK(name)                                                                                                 \
    FRAMED_(OC_MACSEC_EXPORT, WALKER(name), MAPPER, reverse_container, walk_reverse_container, &module,                \
            CONTAINER_FUNCTION(name), HOOK(name), CHILDREN_OF_LINE(reverse_child))
#define WALK_LIST(variant, tag, name, path, keys, ...)                                                                 \
    REVERSE_HOOK(name)                                                                                                 \
    FRAMED_(OC_MACSEC_EXPORT, WALKER(name), MAPPER, reverse_list, walk_reverse_list, &module, path, keys,              \
            LIST_FUNCTION(name), HOOK(name), CHILDREN_OF_LINE(reverse_child))
#define WALK_LEAF(variant, tag, name, ...)                                                                             \
    FRAMED_(OC_MACSEC_EXPORT, WALKER(name), MAPPER, reverse_leaf, walk_reverse_leaf, LEAF_FUNCTION(name))
#define WALK_UNWALKED_LEAF(name)
#define WALK_END()

// In the _parser file itself: the walker of the container `tag`, with which the module augments a list of another
// module, and the hook of that list. `container` is the container's walker.
#define AUGMENT(name, hook, tag, container)                                                                            \
    DEFAULT_HOOK(hook)                                                                                                 \
    FRAMED_(OC_MACSEC_EXPORT, WALKER(name), MAPPER, reverse_augment, walk_reverse_augment, &module, tag,               \
            WALKER(container), HOOK(hook))

// ---- What a node becomes -------------------------------------------------------------------------------------------
// The _auto file defines REVERSE_UNMAPPED, what the function of a node without a mapping is: OWN_FUNCTION, or
// DEFAULT_FUNCTION where it is another name of the module's default function.

#define CONFIG(path) COPY_, path, true
#define STATE(path) COPY_, path, false
#define STITCHED(...) STITCHED_, __VA_ARGS__
#define UNMAPPED REVERSE_UNMAPPED

#define MAP_LIST(variant, tag, name, path, keys, how, ...) how(LIST, LIST_FUNCTION(name) __VA_OPT__(, ) __VA_ARGS__)
#define MAP_UNWALKED_LEAF(name) REVERSE_UNMAPPED(LEAF, LEAF_FUNCTION(name))

#define COPY_(kind, exported, path, gated)                                                                             \
    NODE_FUNCTION_(exported, MAPPER, copied_leaf, copy_leaf, TABLE_NODE_LINES, path, gated)
#define STITCHED_(kind, exported, ...)                                                                                 \
    NODE_FUNCTION_(exported, MAPPER, stitched_list, stitch_list, TABLE_NODE_LINES, {__VA_ARGS__})
#define OWN_FUNCTION(kind, exported) BARE_(OC_MACSEC_EXPORT_WEAK, exported, MAPPER, map_nothing)

// The module's default functions, one for each kind of node.
#define DUCK_FUNCTION_(kind) JOIN_(ymap_, TABLE_MODULE, _duck_map_, kind)
#define DUCK_MAP_FUNCTIONS                                                                                             \
    BARE_(OC_MACSEC_EXPORT, DUCK_FUNCTION_(container), CONTAINER, map_nothing)                                         \
    BARE_(OC_MACSEC_EXPORT, DUCK_FUNCTION_(list), MAPPER, map_nothing)                                                 \
    BARE_(OC_MACSEC_EXPORT, DUCK_FUNCTION_(leaf), MAPPER, map_nothing)
#define DEFAULT_FUNCTION(kind, exported) ALIAS_OF_##kind##_(exported)
#define ALIAS_OF_CONTAINER_(exported) ALIAS_(exported, CONTAINER, container)
#define ALIAS_OF_LIST_(exported) ALIAS_(exported, MAPPER, list)
#define ALIAS_OF_LEAF_(exported) ALIAS_(exported, MAPPER, leaf)
#define ALIAS_(exported, family, kind)                                                                                 \
    extern "C" rcode exported(family##_PARAMETERS)                                                                     \
        __attribute__((weak, visibility("default"), alias(QUOTE_(DUCK_FUNCTION_(kind)))));
