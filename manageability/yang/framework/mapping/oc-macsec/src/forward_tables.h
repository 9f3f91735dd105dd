// The macros of openconfig-macsec's table: what each kind of line is, the walker of it, and what its node becomes.
#pragma once

#include "forward_walker.h"
#include "line_table.h"
#include "namespaces.h"
#include "table_macros.h"

#define CONTAINER(tag, name, becomes) NODE(CONTAINER, config, tag, name, becomes)
#define STATE_CONTAINER(tag, name, becomes) NODE(CONTAINER, state, tag, name, becomes)
#define LIST(tag, name, path, becomes) NODE(LIST, config, tag, name, path, becomes)
#define STATE_LIST(tag, name, path, becomes) NODE(LIST, state, tag, name, path, becomes)
#define KEY_LEAF(tag, name, becomes) NODE(LEAF, key, tag, name, becomes)
#define LEAF(tag, name, becomes) NODE(LEAF, plain, tag, name, becomes)
#define LEAF_LIST(tag, name, becomes) NODE(LEAF, leaf_list, tag, name, becomes)
#define END NODE(END)

// ---- Walkers -------------------------------------------------------------------------------------------------------

namespace oc_macsec
{

// A leaf is on the side of the container around it. The key leaf has a place of its own in the list's descriptor.
constexpr bool make_child(const table_line &line, const table_line &parent, forward_child &child)
{
    if (line.kind == line_kind::key) {
        return false;
    }
    const bool state = holds_lines(line.kind) ? line.state : parent.state;
    child = {line.tag, line.walker, state ? side::state : side::config};
    return true;
}

constexpr list_key make_key(const table_line &line)
{
    return {line.tag, line.walker};
}

} // namespace oc_macsec

#define LINE_CONTAINER(side_, tag, name, ...)                                                                          \
    LINE_(container, oc_macsec::side::side_ == oc_macsec::side::state, tag, name)
#define LINE_LIST(side_, tag, name, ...) LINE_(list, oc_macsec::side::side_ == oc_macsec::side::state, tag, name)

#define FORWARD_HOOK_(name) FRAMED_(OC_MACSEC_EXPORT_WEAK, HOOK(name), MAPPER, frame, walk_forward_augments)

#define WALK_CONTAINER(side_, tag, name, ...)                                                                          \
    FORWARD_HOOK_(name)                                                                                                \
    FRAMED_(OC_MACSEC_EXPORT, WALKER(name), MAPPER, forward_container, walk_forward_container, oc_macsec::side::side_, \
            CONTAINER_FUNCTION(name), HOOK(name), CHILDREN_OF_LINE(forward_child))
#define WALK_LIST(side_, tag, name, path, ...)                                                                         \
    FORWARD_HOOK_(name)                                                                                                \
    FRAMED_(OC_MACSEC_EXPORT, WALKER(name), MAPPER, forward_list, walk_forward_list, oc_macsec::side::side_, path,     \
            oc_macsec::make_key(key_of(lines, __LINE__)), LIST_FUNCTION(name), HOOK(name),                             \
            CHILDREN_OF_LINE(forward_child))
#define WALK_LEAF(kind, tag, name, ...)                                                                                \
    FRAMED_(OC_MACSEC_EXPORT, WALKER(name), MAPPER, forward_leaf, walk_forward_leaf, oc_macsec::leaf_kind::kind,       \
            LEAF_FUNCTION(name))
#define WALK_END()

// ---- What a node becomes -------------------------------------------------------------------------------------------

#define DIRECT(ns, path) DIRECT_, ns, path, TQM_ADD_PLAIN
#define DIRECT_OTHER_MODULE(ns, path) DIRECT_, ns, path, TQM_ADD_OTHER_MODULE
#define STATE_READ(...) STATE_READ_, __VA_ARGS__
#define UNSUPPORTED UNSUPPORTED_
#define TESTED_UNSUPPORTED TESTED_UNSUPPORTED_

#define MAP_LIST(variant, tag, name, path, how, ...) how(LIST, LIST_FUNCTION(name) __VA_OPT__(, ) __VA_ARGS__)

#define DIRECT_(kind, exported, ns, path, flags)                                                                       \
    NODE_FUNCTION_(exported, MAPPER, direct_leaf, add_direct_leaf, start, ns, path, flags)
// "/oc-macsec" stands first in every path of the operational model.
#define STATE_READ_(kind, exported, ...)                                                                               \
    NODE_FUNCTION_(exported, MAPPER, state_read, add_state_read, start, {"/oc-macsec", __VA_ARGS__})
#define UNSUPPORTED_(kind, exported) BARE_(OC_MACSEC_EXPORT_WEAK, exported, MAPPER, refuse_leaf)
#define TESTED_UNSUPPORTED_(kind, exported) NODE_FUNCTION_(exported, MAPPER, generated, test_and_refuse_leaf, none)
