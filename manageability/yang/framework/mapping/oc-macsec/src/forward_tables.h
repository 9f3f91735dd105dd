// The macros of the OpenConfig tables: one line for each schema node in the _parser file makes its walker, and one in
// the _auto file its node function. `name` is always the part of an exported name behind the module's.
#pragma once

#include "forward_walker.h"
#include "namespaces.h"
#include "node_function.h"
#include "table_macros.h"

#define OC_WALKER(name) ymap_ot_oc_macsec_openconfigmacsec_##name
#define OC_CONTAINER(name) ymap_ot_oc_macsec_openconfigmacsec_cont_##name
#define OC_LIST(name) ymap_ot_oc_macsec_openconfigmacsec_list_##name
#define OC_LEAF(name) ymap_ot_oc_macsec_openconfigmacsec_leaf_##name
#define OC_AUGMENTS(name) ymap_ot_oc_macsec_openconfigmacsec_##name##_parse_augments

// ---- Walkers -------------------------------------------------------------------------------------------------------

#define FORWARD_LEAF_(exported, node_function, kind)                                                                   \
    DECLARE_MAPPER(node_function)                                                                                      \
    OC_MACSEC_EXPORT rcode exported(MAPPER_PARAMETERS)                                                                 \
    {                                                                                                                  \
        CALL_SITES;                                                                                                    \
        static const oc_macsec::forward_leaf leaf = {FRAME_OF(exported), oc_macsec::leaf_kind::kind, node_function};   \
        return oc_macsec::walk_forward_leaf(leaf, ctx, node, out);                                                     \
    }

#define PLAIN_LEAF(name) FORWARD_LEAF_(OC_WALKER(name), OC_LEAF(name), plain)
#define LEAF_LIST(name) FORWARD_LEAF_(OC_WALKER(name), OC_LEAF(name), leaf_list)
#define KEY_LEAF(name) FORWARD_LEAF_(OC_WALKER(name), OC_LEAF(name), key)

// Entries of a child table, each on its side.
#define CONFIG(tag, name)                                                                                              \
    {                                                                                                                  \
        tag, OC_WALKER(name), oc_macsec::side::config                                                                  \
    }
#define STATE(tag, name)                                                                                               \
    {                                                                                                                  \
        tag, OC_WALKER(name), oc_macsec::side::state                                                                   \
    }
#define KEY(tag, name) tag, OC_WALKER(name)

#define FORWARD_AUGMENTS_(exported)                                                                                    \
    OC_MACSEC_EXPORT_WEAK rcode exported(MAPPER_PARAMETERS)                                                            \
    {                                                                                                                  \
        CALL_SITES;                                                                                                    \
        static const oc_macsec::frame of = FRAME_OF(exported);                                                         \
        return oc_macsec::walk_forward_augments(of, ctx, node, out);                                                   \
    }

#define FORWARD_CONTAINER_(exported, node_function, augments, container_side, ...)                                     \
    DECLARE_CONTAINER_FUNCTION(node_function)                                                                          \
    FORWARD_AUGMENTS_(augments)                                                                                        \
    OC_MACSEC_EXPORT rcode exported(MAPPER_PARAMETERS)                                                                 \
    {                                                                                                                  \
        CALL_SITES;                                                                                                    \
        static const oc_macsec::forward_child children[] = {__VA_ARGS__};                                              \
        static const oc_macsec::forward_container container = {                                                        \
            FRAME_OF(exported), container_side, node_function, augments, {children, LENGTH_OF(children)}};             \
        return oc_macsec::walk_forward_container(container, ctx, node, out);                                           \
    }

#define CONTAINER(name, ...)                                                                                           \
    FORWARD_CONTAINER_(OC_WALKER(name), OC_CONTAINER(name), OC_AUGMENTS(name), oc_macsec::side::config, __VA_ARGS__)
#define STATE_CONTAINER(name, ...)                                                                                     \
    FORWARD_CONTAINER_(OC_WALKER(name), OC_CONTAINER(name), OC_AUGMENTS(name), oc_macsec::side::state, __VA_ARGS__)

#define FORWARD_LIST_(exported, node_function, augments, list_side, path, key_tag, key_walker, ...)                    \
    DECLARE_MAPPER(node_function)                                                                                      \
    FORWARD_AUGMENTS_(augments)                                                                                        \
    OC_MACSEC_EXPORT rcode exported(MAPPER_PARAMETERS)                                                                 \
    {                                                                                                                  \
        CALL_SITES;                                                                                                    \
        static const oc_macsec::forward_child children[] = {__VA_ARGS__};                                              \
        static const oc_macsec::forward_list list = {                                                                  \
            FRAME_OF(exported), list_side,     path,     key_tag,                                                      \
            key_walker,         node_function, augments, {children, LENGTH_OF(children)}};                             \
        return oc_macsec::walk_forward_list(list, ctx, node, out);                                                     \
    }

// KEY() gives two arguments of the next macro, so the list macros go through one that expands it.
#define FORWARD_LIST_EXPANDED_(...) FORWARD_LIST_(__VA_ARGS__)
#define KEYED_LIST(name, path, key, ...)                                                                               \
    FORWARD_LIST_EXPANDED_(OC_WALKER(name), OC_LIST(name), OC_AUGMENTS(name), oc_macsec::side::config, path, key,      \
                           __VA_ARGS__)
#define STATE_LIST(name, path, key, ...)                                                                               \
    FORWARD_LIST_EXPANDED_(OC_WALKER(name), OC_LIST(name), OC_AUGMENTS(name), oc_macsec::side::state, path, key,       \
                           __VA_ARGS__)

// ---- Node functions ------------------------------------------------------------------------------------------------
// In this module a node function logs "Start" and no "End"; one that only hands a leaf on logs nothing.

#define FORWARD_FUNCTION_(exported, trace)                                                                             \
    CALL_SITES;                                                                                                        \
    static const oc_macsec::generated function = {FRAME_OF(exported), oc_macsec::trace_lines::trace};

#define EMPTY_CONTAINER_(exported)                                                                                     \
    OC_MACSEC_EXPORT_WEAK rcode exported(tqm_map_ctx ctx, const rdl_tqm_datatree *node, unsigned int,                  \
                                         rdl_tqm_datatree *out)                                                        \
    {                                                                                                                  \
        FORWARD_FUNCTION_(exported, start)                                                                             \
        return oc_macsec::empty_node(function, CONTAINER_SIGNATURE, ctx, node, out);                                   \
    }
#define EMPTY_LIST_(exported)                                                                                          \
    OC_MACSEC_EXPORT_WEAK rcode exported(MAPPER_PARAMETERS)                                                            \
    {                                                                                                                  \
        FORWARD_FUNCTION_(exported, start)                                                                             \
        return oc_macsec::empty_node(function, MAPPER_SIGNATURE, ctx, node, out);                                      \
    }
#define CONTAINER_BY_(exported, mapper)                                                                                \
    DECLARE_CONTAINER_FUNCTION(mapper)                                                                                 \
    OC_MACSEC_EXPORT_WEAK rcode exported(CONTAINER_PARAMETERS)                                                         \
    {                                                                                                                  \
        FORWARD_FUNCTION_(exported, start)                                                                             \
        return oc_macsec::delegating_container(function, mapper, ctx, node, child_count, out);                         \
    }
#define NODE_BY_(exported, mapper, trace)                                                                              \
    DECLARE_MAPPER(mapper)                                                                                             \
    OC_MACSEC_EXPORT_WEAK rcode exported(MAPPER_PARAMETERS)                                                            \
    {                                                                                                                  \
        FORWARD_FUNCTION_(exported, trace)                                                                             \
        return oc_macsec::delegating_node(function, mapper, ctx, node, out);                                           \
    }
#define DIRECT_LEAF_(exported, ns, path, flags)                                                                        \
    OC_MACSEC_EXPORT_WEAK rcode exported(MAPPER_PARAMETERS)                                                            \
    {                                                                                                                  \
        CALL_SITES;                                                                                                    \
        static const oc_macsec::direct_leaf leaf = {                                                                   \
            {FRAME_OF(exported), oc_macsec::trace_lines::start}, ns, path, flags};                                     \
        return oc_macsec::add_direct_leaf(leaf, ctx, node, out);                                                       \
    }
#define STATE_READ_(exported, ...)                                                                                     \
    OC_MACSEC_EXPORT_WEAK rcode exported(MAPPER_PARAMETERS)                                                            \
    {                                                                                                                  \
        CALL_SITES;                                                                                                    \
        static const char *const components[] = {"/oc-macsec", __VA_ARGS__};                                           \
        static const oc_macsec::state_read leaf = {                                                                    \
            {FRAME_OF(exported), oc_macsec::trace_lines::start}, components, LENGTH_OF(components)};                   \
        return oc_macsec::add_state_read(leaf, ctx, node, out);                                                        \
    }
#define UNSUPPORTED_LEAF_(exported)                                                                                    \
    OC_MACSEC_EXPORT_WEAK rcode exported(tqm_map_ctx ctx, const rdl_tqm_datatree *node, rdl_tqm_datatree *)            \
    {                                                                                                                  \
        return oc_macsec::refuse_leaf(ctx, node);                                                                      \
    }
#define TESTED_UNSUPPORTED_LEAF_(exported)                                                                             \
    OC_MACSEC_EXPORT_WEAK rcode exported(MAPPER_PARAMETERS)                                                            \
    {                                                                                                                  \
        FORWARD_FUNCTION_(exported, none)                                                                              \
        return oc_macsec::test_and_refuse_leaf(function, ctx, node, out);                                              \
    }

#define EMPTY_CONTAINER(name) EMPTY_CONTAINER_(OC_CONTAINER(name))
#define EMPTY_LIST(name) EMPTY_LIST_(OC_LIST(name))
#define CONTAINER_BY(name, mapper) CONTAINER_BY_(OC_CONTAINER(name), mapper)
#define LIST_BY(name, mapper) NODE_BY_(OC_LIST(name), mapper, start)
#define LEAF_BY(name, mapper) NODE_BY_(OC_LEAF(name), mapper, none)
// The native leaf at `path` has the same value.
#define DIRECT_LEAF(name, ns, path) DIRECT_LEAF_(OC_LEAF(name), ns, path, TQM_ADD_PLAIN)
// The same for a leaf in another module than the native list around it.
#define DIRECT_MODULE_LEAF(name, ns, path) DIRECT_LEAF_(OC_LEAF(name), ns, path, TQM_ADD_OTHER_MODULE)
// The components behind "/oc-macsec", which stands first in every path of the operational model.
#define STATE_READ(name, ...) STATE_READ_(OC_LEAF(name), __VA_ARGS__)
#define UNSUPPORTED_LEAF(name) UNSUPPORTED_LEAF_(OC_LEAF(name))
#define TESTED_UNSUPPORTED_LEAF(name) TESTED_UNSUPPORTED_LEAF_(OC_LEAF(name))
// The node function stands in the _man file, under the name that the table would give it.
#define MAN_LEAF(name) DECLARE_MAPPER(OC_LEAF(name))
