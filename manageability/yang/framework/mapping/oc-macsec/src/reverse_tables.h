// The macros of the native modules' tables: one line for each schema node that is walked makes its walker in the
// _parser file, and one for each schema node makes its node function in the _auto file.
//
// The including file says which module it is:
//   REVERSE_MODULE        the module's part of the exported names
//   REVERSE_HOOK          (parser) DEFAULT_HOOK, or BARE_HOOK in the module whose hooks have no frame
//   REVERSE_NODE_LINES    (auto) trace_lines of node functions that have a frame
//   REVERSE_LEAF_BY_LINES (auto) trace_lines of node functions that only hand a leaf on
// and, in a parser, defines `module`, the reverse_module of its walkers.
#pragma once

#include "namespaces.h"
#include "node_function.h"
#include "reverse_walker.h"
#include "table_macros.h"

#define JOINED_(a, b, c, d) a##b##c##d
#define JOIN_(a, b, c, d) JOINED_(a, b, c, d)
#define QUOTED_(text) #text
#define QUOTE_(text) QUOTED_(text)

#define TV_WALKER(name) JOIN_(ymap_to_oc_macsec_, REVERSE_MODULE, _, name)
#define TV_CONTAINER(name) JOIN_(ymap_to_oc_macsec_, REVERSE_MODULE, _cont_, name)
#define TV_LIST(name) JOIN_(ymap_to_oc_macsec_, REVERSE_MODULE, _list_, name)
#define TV_LEAF(name) JOIN_(ymap_to_oc_macsec_, REVERSE_MODULE, _leaf_, name)
#define TV_DUCK(kind) JOIN_(ymap_to_oc_macsec_, REVERSE_MODULE, _duck_map_, kind)
#define TV_AUGMENTS(name) JOIN_(ymap_to_oc_macsec_, REVERSE_MODULE, _, name##_parse_augments)

// FRAME_OF() of a name that is still to be joined.
#define REVERSE_FRAME_OF(exported)                                                                                     \
    {                                                                                                                  \
        QUOTE_(exported), __FILE__, __LINE__, &sites                                                                   \
    }

// ---- Walkers -------------------------------------------------------------------------------------------------------

// Entries of a chain of tags.
#define CHILD(tag, name)                                                                                               \
    {                                                                                                                  \
        tag, TV_WALKER(name), oc_macsec::child_kind::plain                                                             \
    }
#define KEY_CHILD(tag, name)                                                                                           \
    {                                                                                                                  \
        tag, TV_WALKER(name), oc_macsec::child_kind::key                                                               \
    }
#define LIST_CHILD(tag, name)                                                                                          \
    {                                                                                                                  \
        tag, TV_WALKER(name), oc_macsec::child_kind::list                                                              \
    }
// The key tags of a list.
#define KEYS(...)                                                                                                      \
    {                                                                                                                  \
        __VA_ARGS__                                                                                                    \
    }

#define DEFAULT_HOOK(name)                                                                                             \
    OC_MACSEC_EXPORT_WEAK rcode TV_AUGMENTS(name)(MAPPER_PARAMETERS)                                                   \
    {                                                                                                                  \
        CALL_SITES;                                                                                                    \
        static const oc_macsec::frame of = REVERSE_FRAME_OF(TV_AUGMENTS(name));                                        \
        return oc_macsec::walk_reverse_hook(of, ctx, node, out);                                                       \
    }
#define BARE_HOOK(name)                                                                                                \
    OC_MACSEC_EXPORT_WEAK rcode TV_AUGMENTS(name)(tqm_map_ctx, const rdl_tqm_datatree *, rdl_tqm_datatree *)           \
    {                                                                                                                  \
        return 0;                                                                                                      \
    }

#define LEAF(name)                                                                                                     \
    DECLARE_MAPPER(TV_LEAF(name))                                                                                      \
    OC_MACSEC_EXPORT rcode TV_WALKER(name)(MAPPER_PARAMETERS)                                                          \
    {                                                                                                                  \
        CALL_SITES;                                                                                                    \
        static const oc_macsec::reverse_leaf leaf = {REVERSE_FRAME_OF(TV_WALKER(name)), TV_LEAF(name)};                \
        return oc_macsec::walk_reverse_leaf(leaf, ctx, node, out);                                                     \
    }

// A chain can be empty, which an array cannot: it has one more element than it counts.
#define CHAIN_OF(...) static const oc_macsec::reverse_child chain[] = {__VA_ARGS__ __VA_OPT__(, ){}}
#define CHAIN                                                                                                          \
    {                                                                                                                  \
        chain, LENGTH_OF(chain) - 1                                                                                    \
    }

#define CONTAINER(name, ...)                                                                                           \
    DECLARE_CONTAINER_FUNCTION(TV_CONTAINER(name))                                                                     \
    REVERSE_HOOK(name)                                                                                                 \
    OC_MACSEC_EXPORT rcode TV_WALKER(name)(MAPPER_PARAMETERS)                                                          \
    {                                                                                                                  \
        CALL_SITES;                                                                                                    \
        CHAIN_OF(__VA_ARGS__);                                                                                         \
        static const oc_macsec::reverse_container container = {REVERSE_FRAME_OF(TV_WALKER(name)), &module,             \
                                                               TV_CONTAINER(name), TV_AUGMENTS(name), CHAIN};          \
        return oc_macsec::walk_reverse_container(container, ctx, node, out);                                           \
    }

#define LIST(name, path, keys, ...)                                                                                    \
    DECLARE_MAPPER(TV_LIST(name))                                                                                      \
    REVERSE_HOOK(name)                                                                                                 \
    OC_MACSEC_EXPORT rcode TV_WALKER(name)(MAPPER_PARAMETERS)                                                          \
    {                                                                                                                  \
        CALL_SITES;                                                                                                    \
        CHAIN_OF(__VA_ARGS__);                                                                                         \
        static const oc_macsec::reverse_list list = {                                                                  \
            REVERSE_FRAME_OF(TV_WALKER(name)), &module, path, keys, TV_LIST(name), TV_AUGMENTS(name), CHAIN};          \
        return oc_macsec::walk_reverse_list(list, ctx, node, out);                                                     \
    }

// The container `tag`, walked by `walker`, with which the module augments a list of another module.
#define AUGMENT(name, hook, tag, walker)                                                                               \
    DEFAULT_HOOK(hook)                                                                                                 \
    OC_MACSEC_EXPORT rcode TV_WALKER(name)(MAPPER_PARAMETERS)                                                          \
    {                                                                                                                  \
        CALL_SITES;                                                                                                    \
        static const oc_macsec::reverse_augment augment = {REVERSE_FRAME_OF(TV_WALKER(name)), &module, tag,            \
                                                           TV_WALKER(walker), TV_AUGMENTS(hook)};                      \
        return oc_macsec::walk_reverse_augment(augment, ctx, node, out);                                               \
    }

// ---- Node functions ------------------------------------------------------------------------------------------------

#define REVERSE_GENERATED(exported, lines)                                                                             \
    {                                                                                                                  \
        REVERSE_FRAME_OF(exported), oc_macsec::trace_lines::lines                                                      \
    }

#define EMPTY_CONTAINER(name)                                                                                          \
    OC_MACSEC_EXPORT_WEAK rcode TV_CONTAINER(name)(tqm_map_ctx ctx, const rdl_tqm_datatree *node, unsigned int,        \
                                                   rdl_tqm_datatree *out)                                              \
    {                                                                                                                  \
        CALL_SITES;                                                                                                    \
        static const oc_macsec::generated function = REVERSE_GENERATED(TV_CONTAINER(name), REVERSE_NODE_LINES);        \
        return oc_macsec::empty_node(function, CONTAINER_SIGNATURE, ctx, node, out);                                   \
    }
#define CONTAINER_BY(name, mapper)                                                                                     \
    DECLARE_CONTAINER_FUNCTION(mapper)                                                                                 \
    OC_MACSEC_EXPORT_WEAK rcode TV_CONTAINER(name)(CONTAINER_PARAMETERS)                                               \
    {                                                                                                                  \
        CALL_SITES;                                                                                                    \
        static const oc_macsec::generated function = REVERSE_GENERATED(TV_CONTAINER(name), REVERSE_NODE_LINES);        \
        return oc_macsec::delegating_container(function, mapper, ctx, node, child_count, out);                         \
    }
#define REVERSE_NODE_BY_(exported, mapper, lines)                                                                      \
    DECLARE_MAPPER(mapper)                                                                                             \
    OC_MACSEC_EXPORT_WEAK rcode exported(MAPPER_PARAMETERS)                                                            \
    {                                                                                                                  \
        CALL_SITES;                                                                                                    \
        static const oc_macsec::generated function = REVERSE_GENERATED(exported, lines);                               \
        return oc_macsec::delegating_node(function, mapper, ctx, node, out);                                           \
    }
#define LIST_BY(name, mapper) REVERSE_NODE_BY_(TV_LIST(name), mapper, REVERSE_NODE_LINES)
#define LEAF_BY(name, mapper) REVERSE_NODE_BY_(TV_LEAF(name), mapper, REVERSE_LEAF_BY_LINES)

#define REVERSE_COPIED_LEAF_(exported, path, gated)                                                                    \
    OC_MACSEC_EXPORT_WEAK rcode exported(MAPPER_PARAMETERS)                                                            \
    {                                                                                                                  \
        CALL_SITES;                                                                                                    \
        static const oc_macsec::copied_leaf leaf = {REVERSE_GENERATED(exported, REVERSE_NODE_LINES), path, gated};     \
        return oc_macsec::copy_leaf(leaf, ctx, node, out);                                                             \
    }
// The OpenConfig leaf at `path` has the same value. A config leaf stays out of answers without configuration.
#define CONFIG_LEAF(name, path) REVERSE_COPIED_LEAF_(TV_LEAF(name), path, true)
#define STATE_LEAF(name, path) REVERSE_COPIED_LEAF_(TV_LEAF(name), path, false)

// The OpenConfig list at the path that the components make.
#define STITCHED_LIST(name, ...)                                                                                       \
    OC_MACSEC_EXPORT_WEAK rcode TV_LIST(name)(MAPPER_PARAMETERS)                                                       \
    {                                                                                                                  \
        CALL_SITES;                                                                                                    \
        static const char *const components[] = {__VA_ARGS__};                                                         \
        static const oc_macsec::stitched_list list = {REVERSE_GENERATED(TV_LIST(name), REVERSE_NODE_LINES),            \
                                                      components, LENGTH_OF(components)};                              \
        return oc_macsec::stitch_list(list, ctx, node, out);                                                           \
    }

// The node function stands in the _man file, under the name that the table would give it.
#define MAN_LEAF(name) DECLARE_MAPPER(TV_LEAF(name))

// A node without a mapping, in a module whose unmapped nodes have functions of their own.
#define UNMAPPED_LEAF(name)                                                                                            \
    OC_MACSEC_EXPORT_WEAK rcode TV_LEAF(name)(tqm_map_ctx, const rdl_tqm_datatree *, rdl_tqm_datatree *)               \
    {                                                                                                                  \
        return 0;                                                                                                      \
    }

// The module's default node functions, and the nodes without a mapping that are other names of them.
#define DUCK_MAP_FUNCTIONS                                                                                             \
    OC_MACSEC_EXPORT rcode TV_DUCK(container)(tqm_map_ctx, const rdl_tqm_datatree *, unsigned int, rdl_tqm_datatree *) \
    {                                                                                                                  \
        return 0;                                                                                                      \
    }                                                                                                                  \
    OC_MACSEC_EXPORT rcode TV_DUCK(list)(tqm_map_ctx, const rdl_tqm_datatree *, rdl_tqm_datatree *)                    \
    {                                                                                                                  \
        return 0;                                                                                                      \
    }                                                                                                                  \
    OC_MACSEC_EXPORT rcode TV_DUCK(leaf)(tqm_map_ctx, const rdl_tqm_datatree *, rdl_tqm_datatree *)                    \
    {                                                                                                                  \
        return 0;                                                                                                      \
    }
#define DUCK_ALIAS_(kind) __attribute__((weak, visibility("default"), alias(QUOTE_(TV_DUCK(kind)))))
#define DUCK_CONTAINER(name) extern "C" rcode TV_CONTAINER(name)(CONTAINER_PARAMETERS) DUCK_ALIAS_(container);
#define DUCK_LIST(name) extern "C" rcode TV_LIST(name)(MAPPER_PARAMETERS) DUCK_ALIAS_(list);
#define DUCK_LEAF(name) extern "C" rcode TV_LEAF(name)(MAPPER_PARAMETERS) DUCK_ALIAS_(leaf);
