// What the macros of all tables are made of. A module's .def file has its schema nodes, one a line. The _auto file
// reads it once and makes the node functions. The _parser file reads it three times: it declares all functions, makes
// data of the lines, from which the child tables follow, and makes the walkers. Both files say
//   TABLE_MODULE         direction and module, as they stand in the exported names
//   NODE(kind, ...)      what is made of a line in this reading; the .def file takes the definition away at its end
// A macro here makes only what a function cannot: an exported name with its signature, the name and place for trace
// lines and assertions, and the function's own call-site words.
#pragma once

#include "frame.h"
#include "node_function.h"

#define DECLARE_MAPPER(name) extern "C" rcode name(MAPPER_PARAMETERS);
#define DECLARE_CONTAINER_FUNCTION(name) extern "C" rcode name(CONTAINER_PARAMETERS);

#define JOINED_(a, b, c, d) a##b##c##d
#define JOIN_(a, b, c, d) JOINED_(a, b, c, d)
#define QUOTED_(text) #text
#define QUOTE_(text) QUOTED_(text)

// The exported functions of a schema node; `name` is the part of their names behind the module's.
#define WALKER(name) JOIN_(ymap_, TABLE_MODULE, _, name)
#define HOOK(name) JOIN_(ymap_, TABLE_MODULE, _, name##_parse_augments)
#define CONTAINER_FUNCTION(name) JOIN_(ymap_, TABLE_MODULE, _cont_, name)
#define LIST_FUNCTION(name) JOIN_(ymap_, TABLE_MODULE, _list_, name)
#define LEAF_FUNCTION(name) JOIN_(ymap_, TABLE_MODULE, _leaf_, name)

#define MAPPER_ARGUMENTS ctx, node, out
#define CONTAINER_ARGUMENTS ctx, node, child_count, out

// A function that runs a template, `run`, on a constant descriptor of `type`, whose fields follow.
#define DESCRIBED_(linkage, exported, family, type, run, ...)                                                          \
    linkage rcode exported(family##_PARAMETERS)                                                                        \
    {                                                                                                                  \
        static oc_macsec::call_sites sites;                                                                            \
        static constexpr oc_macsec::type self = {__VA_ARGS__};                                                         \
        return oc_macsec::run(self, family##_ARGUMENTS);                                                               \
    }
// The file that an assertion names is the _parser or _auto file, the line that of the node in the .def file.
#define FRAME_(exported)                                                                                               \
    oc_macsec::frame                                                                                                   \
    {                                                                                                                  \
        QUOTE_(exported), __BASE_FILE__, __LINE__, &sites                                                              \
    }

// The same where the function's frame stands first in the descriptor.
#define FRAMED_(linkage, exported, family, type, run, ...)                                                             \
    DESCRIBED_(linkage, exported, family, type, run, FRAME_(exported) __VA_OPT__(, ) __VA_ARGS__)

// A function that runs a template without a frame.
#define BARE_(linkage, exported, family, run)                                                                          \
    linkage rcode exported(family##_PARAMETERS)                                                                        \
    {                                                                                                                  \
        return oc_macsec::run(family##_ARGUMENTS);                                                                     \
    }

// ---- The first reading by a _parser file: declarations -------------------------------------------------------------

#define DECLARE_CONTAINER(variant, tag, name, ...)                                                                     \
    DECLARE_MAPPER(WALKER(name)) DECLARE_CONTAINER_FUNCTION(CONTAINER_FUNCTION(name))
#define DECLARE_LIST(variant, tag, name, ...) DECLARE_MAPPER(WALKER(name)) DECLARE_MAPPER(LIST_FUNCTION(name))
#define DECLARE_LEAF(variant, tag, name, ...) DECLARE_MAPPER(WALKER(name)) DECLARE_MAPPER(LEAF_FUNCTION(name))
#define DECLARE_END()

// ---- What a node becomes, in either direction ----------------------------------------------------------------------
// The _auto file says which lines the module's node functions log, as trace_lines:
//   TABLE_NODE_LINES     those with a shape of their own
//   TABLE_LEAF_BY_LINES  those that only hand a leaf on

#define EMPTY EMPTY_
#define BY(mapper) BY_, mapper
#define IN_MAN_FILE IN_MAN_FILE_

#define MAP_CONTAINER(variant, tag, name, how, ...) how(CONTAINER, CONTAINER_FUNCTION(name) __VA_OPT__(, ) __VA_ARGS__)
#define MAP_LEAF(variant, tag, name, how, ...) how(LEAF, LEAF_FUNCTION(name) __VA_OPT__(, ) __VA_ARGS__)
#define MAP_END()

#define NODE_FUNCTION_(exported, family, type, run, lines, ...)                                                        \
    DESCRIBED_(OC_MACSEC_EXPORT_WEAK, exported, family, type, run,                                                     \
               oc_macsec::generated{FRAME_(exported), oc_macsec::trace_lines::lines} __VA_OPT__(, ) __VA_ARGS__)

#define EMPTY_(kind, exported) EMPTY_##kind##_(exported)
#define EMPTY_CONTAINER_(exported) NODE_FUNCTION_(exported, CONTAINER, generated, empty_container, TABLE_NODE_LINES)
#define EMPTY_LIST_(exported) NODE_FUNCTION_(exported, MAPPER, generated, empty_list, TABLE_NODE_LINES)

#define BY_(kind, exported, mapper) BY_##kind##_(exported, mapper)
#define BY_CONTAINER_(exported, mapper)                                                                                \
    DECLARE_CONTAINER_FUNCTION(mapper)                                                                                 \
    NODE_FUNCTION_(exported, CONTAINER, mapped_container, delegate_container, TABLE_NODE_LINES, mapper)
#define BY_LIST_(exported, mapper)                                                                                     \
    DECLARE_MAPPER(mapper) NODE_FUNCTION_(exported, MAPPER, mapped_node, delegate, TABLE_NODE_LINES, mapper)
#define BY_LEAF_(exported, mapper)                                                                                     \
    DECLARE_MAPPER(mapper) NODE_FUNCTION_(exported, MAPPER, mapped_node, delegate, TABLE_LEAF_BY_LINES, mapper)

#define IN_MAN_FILE_(kind, exported)
