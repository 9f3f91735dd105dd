/* The surface between a model-mapping framework and its mapping plug-ins: the records of a request, their constants,
 * and the operations that a framework offers. C and C++ can include it, and either side can be replaced by anything
 * that keeps to it. A framework defines every operation below with C linkage; a plug-in defines none of them.
 *
 * How the two work together. A framework makes its operations visible to libraries that it loads (an executable links
 * with -rdynamic, a library is loaded with RTLD_GLOBAL), loads the plug-in and calls its entry points, each with a
 * tqm_map_reg_info of zeros. For an edit or a read it fills the records of a request (header, request, context), hands
 * the top node to a forward_root with an output tree, and lets the adds build native trees there; from each native
 * answer it calls the reverse_root of that tree, and the adds build the OpenConfig tree. Both roots give 0, or the code
 * of what failed; TQM_ERR_SKIP_NODE is no failure. Of a failure error_tag, error_msg and the error path
 * (tqm_oc_error_path) say more.
 *
 * Threads. One thread serves one request at a time. A plug-in keeps data between its calls, takes no locks, and asks
 * the C library for the local time: one walk, from a root walker's call to its return, runs at a time in a process.
 * Operations are called on the thread of the walk, and must not throw or jump out.
 *
 * Texts and nodes. All texts are null-terminated. A text handed to an operation belongs to the caller and is copied if
 * the framework keeps it. A text or node handed out stays the framework's and is valid, at its address, until the end
 * of the request. Request and answer nodes must be writable: walkers mark them (role, key, operation, hidden children).
 * Walkers do not free nodes, and put back what they have hidden.
 *
 * Result codes. Operations that return rcode give 0 for success. Each can give TQM_ERR_BAD_ARGS, for a null `ctx` or
 * another null pointer where null is not said to be admitted, and TQM_ERR_INVALID_REQUEST where it cannot be carried
 * out at all (no memory); what else it can give stands with it. Out-parameters of a failed operation are as they were.
 * Plug-ins tell 0, TQM_ERR_SKIP_NODE and all others apart. */
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "tqm_rcode.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Data trees ------------------------------------------------------------------------------------------------ */

/* Node operations, numbered in the order in which edit-config lists them (RFC 6241, section 7.2). */
#define TQM_OP_MERGE 0u
#define TQM_OP_REPLACE 1u
#define TQM_OP_CREATE 2u
#define TQM_OP_DELETE 3u
#define TQM_OP_REMOVE 4u

/* Bits of rdl_tqm_datatree.present: which fields are given. */
#define TQM_PRESENT_VALUE 0x0002u
#define TQM_PRESENT_OPERATION 0x0010u
#define TQM_PRESENT_SUBTREE 0x0040u
#define TQM_PRESENT_IS_KEY 0x0200u
#define TQM_PRESENT_ERROR_KIND 0x0800u

/* Values of rdl_tqm_datatree.node_role, written by forward walkers for the framework. */
#define TQM_ROLE_LEAF 1u
#define TQM_ROLE_LEAF_LIST 2u
#define TQM_ROLE_CONTAINER 3u
#define TQM_ROLE_LIST 4u
#define TQM_ROLE_MATCH_LEAF 6u /* a leaf with a value in a read: a content match (RFC 6241, section 6.2.5) */

/* Bit of rdl_tqm_datatree.role_present: node_role is given. */
#define TQM_ROLE_PRESENT 0x04u

/* Value of rdl_tqm_datatree.error_kind: an xpath error node in an answer tree. */
#define TQM_NODE_ERROR_XPATH 5u

/* One node of a request, answer or output tree. Children lie next to one another in one array. */
typedef struct rdl_tqm_datatree {
    const char *tag;                  /* node name without prefix; null is a fault */
    const char *value;                /* text of a leaf or key; null when absent */
    const char *ns;                   /* namespace URI */
    uint32_t operation;               /* TQM_OP_*, given with TQM_PRESENT_OPERATION */
    struct rdl_tqm_datatree *subtree; /* children, given with TQM_PRESENT_SUBTREE */
    uint32_t subtree_count;           /* number of children; not 0 with a null subtree is a fault */
    uint32_t node_role;               /* TQM_ROLE_*, given with TQM_ROLE_PRESENT */
    uint8_t role_present;             /* TQM_ROLE_PRESENT or 0 */
    uint8_t is_key;                   /* 1 on a key leaf, given with TQM_PRESENT_IS_KEY */
    uint32_t error_kind;              /* TQM_NODE_ERROR_*, given with TQM_PRESENT_ERROR_KIND */
    uint16_t present;                 /* TQM_PRESENT_* */
} rdl_tqm_datatree;

/* ---- The request ----------------------------------------------------------------------------------------------- */

/* Request kinds. Any other kind is an edit without the key tests. */
#define TQM_REQ_GET_CONFIG 0u
#define TQM_REQ_EDIT 1u
#define TQM_REQ_EDIT_8 8u
#define TQM_REQ_GET 10u
#define TQM_REQ_EDIT_15 15u

/* The kinds below 16, as bits, in which every list entry must carry exactly one key leaf with a value. */
#define TQM_REQ_KEYED_MASK 0x8102u

/* With any option set: leaves under config containers stay out of a read answer. */
#define TQM_DATA_SELECTOR_NO_CONFIG 2u

/* The request header, read-only for plug-ins. The bits of each option group that count stand beside it. */
typedef struct tqm_map_request_hdr {
    uint32_t kind;           /* TQM_REQ_* */
    uint8_t option_group_1;  /* low 4 bits */
    uint8_t option_group_2;  /* low 2 bits */
    uint8_t option_group_3;  /* low 2 bits */
    uint8_t option_group_4;  /* low 3 bits */
    uint16_t option_group_5; /* low 14 bits */
    uint8_t option_group_6;  /* low 2 bits */
    uint32_t data_selector;  /* TQM_DATA_SELECTOR_* */
    uint8_t option_group_7;  /* low 4 bits */
    uint8_t option_group_8;  /* low 3 bits */
    int16_t option_group_9;  /* the sign bit */
} tqm_map_request_hdr;

/* Bits of tqm_map_request.walk_flags. */
#define TQM_WALK_REPLACE_REMOVE 0x40u
#define TQM_WALK_REPLACE_MERGE 0x80u
#define TQM_WALK_XPATH_ERROR 0x100u

/* Bits of tqm_map_request.filter_flags, and the mask that walkers clear them with (not 0xfffffffe). */
#define TQM_FILTER_ALL_SIBLINGS 0x1u
#define TQM_FILTER_SELECTION_SEEN 0x2u
#define TQM_FILTER_MATCH_SEEN 0x4u
#define TQM_FILTER_MATCH_IN_REQUEST 0x10000u
#define TQM_FILTER_KEEP_MASK 0x11111110u

/* Per-request state. The framework starts a request with the five walk fields (walk_flags, delete_mode, fill_mode,
 * filter_flags, replace_active) at 0. */
typedef struct tqm_map_request {
    tqm_map_request_hdr *hdr;
    char *error_tag;      /* tag of the node that failed; made with tqm_strdup, freed by whoever replaces it */
    uint32_t walk_flags;  /* TQM_WALK_* */
    uint8_t output_depth; /* depth of the output list */
    struct rdl_tqm_datatree *current_list; /* output list entry that reverse mappers are filling */
    uint32_t delete_mode;                  /* 1, 2: inside the delete of a list entry */
    uint32_t fill_mode;                    /* 1: a walker descends through the schema on its own */
    uint32_t filter_flags;                 /* TQM_FILTER_* */
    char *error_msg;                       /* text for the client; made with tqm_strdup, freed by the framework */
    uint32_t replace_active;               /* 1 while a replace is split into its two passes */
} tqm_map_request;

/* Filter state of the framework log. Plug-ins only pass its address to tqm_debug_should_log. */
typedef struct tqm_debug_ctx {
    uint64_t filter;
} tqm_debug_ctx;

typedef uint64_t tqm_log_handle;

/* The mapping context, first argument of every mapper. Never null when the framework calls. */
typedef struct tqm_map_ctx_record {
    tqm_map_request *request;
    tqm_debug_ctx debug;
    tqm_log_handle err_log;  /* for messages of TQM_LOG_ERROR */
    tqm_log_handle trc_log;  /* for messages of TQM_LOG_TRACE */
    uint64_t trace_buf;      /* trace buffer handle for _rbtrace */
    int32_t trace_on;        /* not 0: every log line goes to the trace buffer too */
    uint32_t list_operation; /* operation of the list node whose node function succeeded last */
} * tqm_map_ctx;

/* Predicates on the request header of a context. */
#define TQM_MAP_KIND(ctx) ((ctx)->request->hdr->kind)
#define TQM_MAP_IS_READ(ctx) (TQM_MAP_KIND(ctx) == TQM_REQ_GET_CONFIG || TQM_MAP_KIND(ctx) == TQM_REQ_GET)
#define TQM_MAP_IS_KEYED_KIND(ctx) (TQM_MAP_KIND(ctx) < 16u && ((TQM_REQ_KEYED_MASK >> TQM_MAP_KIND(ctx)) & 1u) != 0u)

static inline int tqm_map_has_request_options(const tqm_map_request_hdr *hdr)
{
    return (hdr->option_group_1 & 0x0fu) != 0u || (hdr->option_group_2 & 0x03u) != 0u ||
           (hdr->option_group_3 & 0x03u) != 0u || (hdr->option_group_4 & 0x07u) != 0u ||
           (hdr->option_group_5 & 0x3fffu) != 0u || (hdr->option_group_6 & 0x03u) != 0u ||
           (hdr->option_group_7 & 0x0fu) != 0u || (hdr->option_group_8 & 0x07u) != 0u || hdr->option_group_9 < 0;
}

#define TQM_MAP_HAS_REQUEST_OPTIONS(ctx) tqm_map_has_request_options((ctx)->request->hdr)
/* A mapper that asks this leaves out the path that it was about to add when it holds. */
#define TQM_MAP_SKIP_CONFIG_LEAF(ctx)                                                                                  \
    ((ctx)->request->hdr->data_selector == TQM_DATA_SELECTOR_NO_CONFIG && TQM_MAP_HAS_REQUEST_OPTIONS(ctx))

/* ---- Function families ----------------------------------------------------------------------------------------- */

/* Walkers, augment walkers, list and leaf node functions, most hand-written mappers. `node` is the request node
 * (forward) or answer node (reverse), in a fill the nearest node that the request named; `out` the tree that
 * receives what is mapped. */
typedef rcode (*tqm_map_function)(tqm_map_ctx ctx, const rdl_tqm_datatree *node, rdl_tqm_datatree *out);

/* Container node functions; `child_count` is the number of children that the walker will dispatch. */
typedef rcode (*tqm_map_container_function)(tqm_map_ctx ctx, const rdl_tqm_datatree *node, unsigned int child_count,
                                            rdl_tqm_datatree *out);

/* ---- Registration ---------------------------------------------------------------------------------------------- */

#define TQM_REG_TEXT_SIZE 81

/* Filled by an entry point of a plug-in, once, after loading; owned by the framework. An entry point that leaves the
 * record as it was registers nothing. */
typedef struct tqm_map_reg_info {
    char tree_name[TQM_REG_TEXT_SIZE];  /* for the framework's messages */
    char native_ns[TQM_REG_TEXT_SIZE];  /* namespace of the native module */
    char oc_ns[TQM_REG_TEXT_SIZE];      /* namespace of the OpenConfig module */
    char native_top[TQM_REG_TEXT_SIZE]; /* tag of the top node of native trees */
    char oc_top[TQM_REG_TEXT_SIZE];     /* tag of the top node of OpenConfig trees */
    tqm_map_function forward_root;      /* OpenConfig to native */
    tqm_map_function reverse_root;      /* native to OpenConfig */
    uint32_t tree_word_a;
    uint32_t tree_word_b;
} tqm_map_reg_info;

/* ---- Argument records ------------------------------------------------------------------------------------------ */

/* One element of the iteration-tree stack: list instances to walk. */
typedef struct tqm_map_itree {
    rdl_tqm_datatree *nodes;
    uint32_t count;
    /* Optional, called once per instance with 0 as last argument; its result is not used. */
    rcode (*callback)(tqm_map_ctx ctx, rdl_tqm_datatree *node, rdl_tqm_datatree *out, uint32_t zero);
} tqm_map_itree;

/* Argument record of tqm_map_stitch_list_to_list (operation 1, mode 2) and tqm_map_tree_xpath_operations (operation
 * 4, mode 3). The caller zeroes all of it first. */
typedef struct tqm_map_xpath_ops {
    rdl_tqm_datatree *tree;
    uint32_t operation;
    uint32_t mode;
    char data[300]; /* filled by the framework: the value found by operation 4 */
    char ns[250];
    char path[1000];      /* 1: keyed path of the list entry, with a "/" at the end; 4: relative path */
    char list_path[1000]; /* 1: path of the list without the key */
} tqm_map_xpath_ops;

#define TQM_XPATH_OP_STITCH 1u
#define TQM_XPATH_MODE_STITCH 2u
#define TQM_XPATH_OP_LOOKUP 4u
#define TQM_XPATH_MODE_LOOKUP 3u

/* One row of a one-to-many mapping table; a row with path and ns "NULL" and value "None" closes the table. */
typedef struct xpath_list_type_t {
    char path[250];
    char ns[100];
    const char *(*convert)(const rdl_tqm_datatree *node);
    int32_t enabled; /* not 0: the row takes part; set at run time by a selection function */
    uint32_t flags;  /* TQM_ADD_* for tqm_map_datatree_add_path_flagged */
    char value[256];
} xpath_list_type_t;

/* ---- Tree building --------------------------------------------------------------------------------------------- */

/* Flags of tqm_map_datatree_add_path_flagged. */
#define TQM_ADD_PLAIN 0u
#define TQM_ADD_OTHER_MODULE 1u /* the leaf lies in another module than the list around it */
#define TQM_ADD_ENTRY_NAME 32u  /* the name leaf of a reverse interface entry */

/* Adds the absolute schema path `path` to `tree`, creating missing ancestors, in namespace `ns`.
 *   tree         the output tree, or a node of it that an operation has handed out
 *   path         without keys, and with or without its leading "/": which entry of a list on the way is meant follows
 *                from the node hierarchy (forward) or is the current one (reverse)
 *   value        text for the last node, or null
 *   source_node  node whose operation the new node takes on, or null
 *   out_node     if not null, receives the new last node, as it is now; it stands for the node in later calls
 *   list_entry   1 when the add addresses a list instance: the list itself, or one of several keys; else 0
 *   flags        TQM_ADD_*
 * A node that is there already is not added again: its last value and operation win. But a leaf-list takes each value,
 * and in the reverse direction each add of a list makes an entry, which becomes the current one. Walkers also give
 * `tree` a request node and `path` a bare leaf name: the leaf is added to that node's children, which move to a longer
 * array; the old one stays readable. TQM_ERR_BAD_ARGS also for an empty step in the path, a path below a leaf, another
 * `list_entry` or unknown flags. */
rcode tqm_map_datatree_add_path_flagged(tqm_map_ctx ctx, rdl_tqm_datatree *tree, const char *path, const char *ns,
                                        const char *value, const rdl_tqm_datatree *source_node,
                                        rdl_tqm_datatree **out_node, uint32_t list_entry, uint32_t flags);

/* The same with flags 0. */
rcode tqm_map_datatree_add_path(tqm_map_ctx ctx, rdl_tqm_datatree *tree, const char *path, const char *ns,
                                const char *value, const rdl_tqm_datatree *source_node, rdl_tqm_datatree **out_node,
                                uint32_t list_entry);

/* Adds a read of one leaf to `out`, for state that is read for `node`. `components` are `count` (5 to 9) texts, each
 * with its leading slash, whose joining gives the leaf's path; `root` is the first. Keys on the way are taken from the
 * node hierarchy. TQM_ERR_BAD_ARGS also for no components, a null one, or a path that does not begin with `root`. */
rcode tqm_map_add_leaf_from_xpath(tqm_map_ctx ctx, const rdl_tqm_datatree *node, rdl_tqm_datatree *out,
                                  const char *root, const char *ns, const char *const *components, uint32_t count);

/* Looks up in `tree` the entry of the list at `path` whose `key_leaf` equals `key_value` and stores it through
 * `found`. TQM_ERR_NOT_FOUND if there is none. */
rcode tqm_map_search_list(tqm_map_ctx ctx, rdl_tqm_datatree *tree, rdl_tqm_datatree **found, const char *path,
                          const char *key_value, const char *key_leaf, const char *ns);

/* The same, but adds the entry when it is missing, so never TQM_ERR_NOT_FOUND; found or added, what follows is filled
 * in there. */
rcode tqm_map_search_or_add_list(tqm_map_ctx ctx, rdl_tqm_datatree *tree, rdl_tqm_datatree **found, const char *path,
                                 const char *key_value, const char *key_leaf, const char *ns);

/* Makes the list entry named by ops->path the place where the answer that follows is filled in, in ops->tree, until the
 * node on top of the hierarchy is popped. `ops` stays the caller's. TQM_ERR_SKIP_NODE if there is no such entry: the
 * native entry is then left out. TQM_ERR_BAD_ARGS also for another operation or mode than those of a stitch. */
rcode tqm_map_stitch_list_to_list(tqm_map_ctx ctx, tqm_map_xpath_ops *ops);

/* The same with the list's path given as `count` (3 to 6) components, as above, and the key taken from the child of
 * `node` that is marked as key; a missing entry is added. TQM_ERR_SKIP_NODE if `node` has no key with a value. */
rcode tqm_map_auto_stitch_list_to_list(tqm_map_ctx ctx, const rdl_tqm_datatree *node, rdl_tqm_datatree *out,
                                       const char *ns, const char *const *components, uint32_t count);

/* Looks up the relative ops->path below ops->tree; 0 if found, with the text (empty where the node has none, cut where
 * it is too long) in ops->data. TQM_ERR_NOT_FOUND if not. TQM_ERR_BAD_ARGS also for another operation, or no path. */
rcode tqm_map_tree_xpath_operations(tqm_map_ctx ctx, tqm_map_xpath_ops *ops);

/* Copies `path` into the list context, trimmed to the current list. No further code. */
rcode tqm_map_copy_trim_path_list_ctx(tqm_map_ctx ctx, const char *path);

/* ---- Walk bookkeeping ------------------------------------------------------------------------------------------ */

/* Values of `level_kind`. */
#define TQM_HIER_CONTAINER 1u
#define TQM_HIER_LIST 2u

/* Pushes `node` on the node hierarchy: the nodes from the root down to where the walker stands. In a fill nothing is
 * pushed. The framework keeps the address. TQM_ERR_BAD_ARGS also for another level kind. */
rcode tqm_map_add_to_node_hierarchy(tqm_map_ctx ctx, const rdl_tqm_datatree *node, uint32_t level_kind);

/* Pops `node`, and with it what a walker that failed has left above it. TQM_ERR_BAD_ARGS also if it is not there. */
rcode tqm_map_remove_from_node_hierarchy(tqm_map_ctx ctx, const rdl_tqm_datatree *node);

/* Records `path` as the schema path of the list instance on top of the hierarchy. Any code but 0 ends the walker of
 * that instance. No further code. */
rcode tqm_map_update_current_list_node(tqm_map_ctx ctx, const char *path);

/* Finds the innermost node at schema `path` on the hierarchy and stores the value of its child `leaf` through
 * `value_out`, or leaves that alone, with 0 all the same, when there is none: callers clear it before. Children that
 * a walker has hidden for a while are seen, as they were when the node was pushed. The text stays the tree's. */
rcode tqm_map_get_node_info(tqm_map_ctx ctx, const char *path, const char *leaf, const char **value_out);

/* Checks that leaf `key_tag` in `container` of the list entry `list_node` agrees with the entry's key: an OpenConfig
 * key is a leafref to it. What is missing agrees. TQM_ERR_INVALID_REQUEST on a mismatch, with error_msg, where that was
 * null, and the error path set. */
rcode tqm_map_check_oc_leafref(tqm_map_ctx ctx, const char *list_path, const char *container, const char *key_tag,
                               const rdl_tqm_datatree *list_node);

/* The iteration-tree stack. The size is a number of elements, 0 for a null context. The nodes of an element stay their
 * owner's. `element_out` receives the top element's address, which holds until the next push or pop. TQM_ERR_BAD_ARGS
 * for null nodes of a count other than 0, and for a pop or peak of an empty stack. */
uint32_t tqm_map_util_itree_stack_size(tqm_map_ctx ctx);
rcode tqm_map_util_itree_stack_push(tqm_map_ctx ctx, rdl_tqm_datatree *nodes, uint32_t count,
                                    rcode (*callback)(tqm_map_ctx, rdl_tqm_datatree *, rdl_tqm_datatree *, uint32_t));
rcode tqm_map_util_itree_stack_pop(tqm_map_ctx ctx);
rcode tqm_map_util_itree_stack_peak(tqm_map_ctx ctx, tqm_map_itree **element_out);

/* Adds `node` to the output list, raising request->output_depth when it really added (where the entry of the answer
 * leads to one of the output); and undoes that. 0 whether it added or not. No further code. */
rcode tqm_add_to_output_list_ctx(tqm_map_ctx ctx, const rdl_tqm_datatree *node, rdl_tqm_datatree *out);
rcode tqm_remove_from_output_list_ctx(tqm_map_ctx ctx, const rdl_tqm_datatree *node, rdl_tqm_datatree *out);

/* ---- Questions and texts --------------------------------------------------------------------------------------- */

/* Not 0 if the node's own operation is given and is delete or remove; 0 for a null node. */
int tqm_map_is_request_delete(const rdl_tqm_datatree *node);
/* Not 0 if the request adds data: it is no read. */
int tqm_map_is_request_add(tqm_map_ctx ctx);
/* Not 0 if the texts are equal; a null text matches nothing. */
int tqm_map_do_these_match(const char *a, const char *b);
/* Takes the present path of the node hierarchy as the error path of the request. Does nothing for a null context. */
void tqm_oc_error_path(tqm_map_ctx ctx);

/* Duplicates `text`; null for a null text and without memory. `owner` is a label for the allocator. The text is the
 * caller's, or that of the request field it is stored in; it is freed with plat_named_free. */
char *tqm_strdup(const char *text, const char *owner);
/* Bounded copies; `owner` is the calling function's name, sizes are bytes, `max` of them at most are taken of `src`.
 * TQM_ERR_BAD_ARGS for a null `dest` or one without size, and, with an empty text in `dest`, for a null `src` and for
 * one that does not fit with its terminator. */
rcode tqm_strcpy_s(const char *owner, char *dest, size_t dest_size, const char *src);
rcode tqm_strncpy_s(const char *owner, char *dest, size_t dest_size, const char *src, size_t max);
/* Frees what tqm_strdup has made; a null pointer is no fault. */
void plat_named_free(void *pointer);
/* Text of a result code, for logs; never null, valid until the next call. */
const char *rcode_strerror(rcode rc);

/* Owner label of the plug-ins' texts. */
#define TQM_MAP_OWNER "TQM MAP"

/* ---- Logging --------------------------------------------------------------------------------------------------- */

#define TQM_LOG_ERROR 0u
#define TQM_LOG_TRACE 3u

/* The size of a trace line's buffer, terminator included; longer lines are cut. */
#define TQM_TRACE_LINE_MAX 250
#define TQM_TRACE_FLAGS 0x10101000000ull

#if defined(__GNUC__)
#define TQM_PRINTF_ARGS(format_index, first_index) __attribute__((format(printf, format_index, first_index)))
#else
#define TQM_PRINTF_ARGS(format_index, first_index)
#endif

/* Not 0 if a message of `level` (TQM_LOG_*) is to be logged. */
int tqm_debug_should_log(const tqm_debug_ctx *debug, uint32_t level);
/* Filtered log write. `site` is a word of its own for each call site, initially 0xffffffff, in which the logger keeps
 * its filter state. `handle` is the context's for the level, the first argument behind `format` the context. */
void _plat_dt_log_filter_adv(tqm_log_handle handle, uint32_t a, uint32_t b, uint32_t c, uint32_t d, uint32_t e,
                             uint32_t *site, const char *format, ...) TQM_PRINTF_ARGS(8, 9);
/* Returns the next number of the request's trace line sequence, the first being 1. */
uint32_t ret_nc_tqm_trace_index_incr(void);
/* Writes a finished line to the trace buffer; `flags` is TQM_TRACE_FLAGS. `line` is the caller's. */
void _rbtrace(uint64_t trace_buf, uint64_t flags, const char *line);

#ifdef __cplusplus
}
#endif
