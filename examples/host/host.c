/* A host for a mapping plug-in, in C: the smallest framework that can walk an edit. It loads the plug-in, asks it for
 * its mappings, hands it one request, and prints what the plug-in adds to the native trees: the operation ("entry" for
 * that of the list entry around, nothing for the default), the path and the value. With -v log lines go to stderr.
 *
 *     cc -std=c11 -I INCLUDE -rdynamic host.c -ldl -o host        INCLUDE has tqm_map.h and tqm_rcode.h
 *     ./host libymap_oc_macsec.so [-v]
 *
 * -rdynamic lets the plug-in find the operations below. The plug-in needs libsafec beside libc, and registers its
 * mappings only where /pkg/yang/openconfig-macsec.yang exists.
 *
 * A framework has more: native trees in place of printed lines, which know the keys of the entry that a path without
 * keys belongs to; documents; answers, and their way back. Operations that only those need refuse here, and null
 * arguments are looked for only where the plug-in hands them on. tqm_map.h says what each operation has to do. */
#define _POSIX_C_SOURCE 200809L

#include <dlfcn.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "tqm_map.h"

/* The signatures are the surface's; this host needs a part of the arguments. */
#pragma GCC diagnostic ignored "-Wunused-parameter"

#define COUNT(array) (sizeof(array) / sizeof((array)[0]))

/* ---- Where the walk stands ---- */
static const rdl_tqm_datatree *hierarchy[32];
static size_t depth;
static char error_path[1000];

rcode tqm_map_add_to_node_hierarchy(tqm_map_ctx ctx, const rdl_tqm_datatree *node, uint32_t level_kind)
{
    if (node == NULL || depth == COUNT(hierarchy)) {
        return TQM_ERR_BAD_ARGS;
    }
    hierarchy[depth++] = node;
    return 0;
}

rcode tqm_map_remove_from_node_hierarchy(tqm_map_ctx ctx, const rdl_tqm_datatree *node)
{
    for (size_t level = depth; level > 0; --level) {
        if (hierarchy[level - 1] == node) {
            depth = level - 1;
            return 0;
        }
    }
    return TQM_ERR_BAD_ARGS;
}

/* The schema path of the nodes up to a level. */
static const char *path_of(size_t levels)
{
    static char path[1000];
    size_t length = 0;
    for (size_t level = 0; level < levels && length < sizeof path; ++level) {
        length += (size_t)snprintf(path + length, sizeof path - length, "/%s", hierarchy[level]->tag);
    }
    return levels == 0 ? "" : path;
}

rcode tqm_map_get_node_info(tqm_map_ctx ctx, const char *path, const char *leaf, const char **value_out)
{
    for (size_t level = depth; level > 0; --level) {
        const rdl_tqm_datatree *node = hierarchy[level - 1];
        for (uint32_t i = 0; i < node->subtree_count && strcmp(path_of(level), path) == 0; ++i) {
            if (tqm_map_do_these_match(node->subtree[i].tag, leaf) && node->subtree[i].value != NULL) {
                *value_out = node->subtree[i].value;
                return 0;
            }
        }
    }
    return 0; /* none: the variable stays as it is */
}

void tqm_oc_error_path(tqm_map_ctx ctx) { snprintf(error_path, sizeof error_path, "%s", path_of(depth)); }
/* Here a framework with native trees learns which list the entry on top belongs to. */
rcode tqm_map_update_current_list_node(tqm_map_ctx ctx, const char *path) { return 0; }

/* Here the keys that a request repeats under config would be compared with the entry's. */
rcode tqm_map_check_oc_leafref(tqm_map_ctx ctx, const char *list_path, const char *container, const char *key_tag,
                               const rdl_tqm_datatree *list_node)
{
    return 0;
}

/* ---- What the plug-in adds ---- */
static rdl_tqm_datatree output; /* stands for all native trees */

rcode tqm_map_datatree_add_path_flagged(tqm_map_ctx ctx, rdl_tqm_datatree *tree, const char *path, const char *ns,
                                        const char *value, const rdl_tqm_datatree *source_node,
                                        rdl_tqm_datatree **out_node, uint32_t list_entry, uint32_t flags)
{
    static const char *const operations[] = {"merge", "replace", "create", "delete", "remove"};
    if (ctx == NULL || path == NULL || tree != &output || out_node != NULL) {
        return TQM_ERR_BAD_ARGS; /* adds to a request node and handed-out nodes belong to reads and answers */
    }
    const char *operation = list_entry != 0 ? "entry" : "";
    if (source_node != NULL && (source_node->present & TQM_PRESENT_OPERATION) != 0 &&
        source_node->operation < COUNT(operations)) {
        operation = operations[source_node->operation];
    }
    printf(value != NULL ? "%-6s  %s = \"%s\"\n" : "%-6s  %s\n", operation, path, value);
    return 0;
}

rcode tqm_map_datatree_add_path(tqm_map_ctx ctx, rdl_tqm_datatree *tree, const char *path, const char *ns,
                                const char *value, const rdl_tqm_datatree *source_node, rdl_tqm_datatree **out_node,
                                uint32_t list_entry)
{
    return tqm_map_datatree_add_path_flagged(ctx, tree, path, ns, value, source_node, out_node, list_entry,
                                             TQM_ADD_PLAIN);
}

/* ---- Questions, texts and logs ---- */
int tqm_map_is_request_delete(const rdl_tqm_datatree *node)
{
    return node != NULL && (node->present & TQM_PRESENT_OPERATION) != 0 &&
           (node->operation == TQM_OP_DELETE || node->operation == TQM_OP_REMOVE);
}

int tqm_map_is_request_add(tqm_map_ctx ctx) { return ctx != NULL && !TQM_MAP_IS_READ(ctx); }
int tqm_map_do_these_match(const char *a, const char *b) { return a != NULL && b != NULL && strcmp(a, b) == 0; }
char *tqm_strdup(const char *text, const char *owner) { return text != NULL ? strdup(text) : NULL; }
void plat_named_free(void *pointer) { free(pointer); }

rcode tqm_strncpy_s(const char *owner, char *dest, size_t dest_size, const char *src, size_t max)
{
    const size_t length = strnlen(src, max);
    if (length >= dest_size) {
        dest[0] = '\0';
        return TQM_ERR_BAD_ARGS;
    }
    memcpy(dest, src, length);
    dest[length] = '\0';
    return 0;
}

rcode tqm_strcpy_s(const char *owner, char *dest, size_t dest_size, const char *src)
{
    return tqm_strncpy_s(owner, dest, dest_size, src, dest_size);
}
const char *rcode_strerror(rcode rc) { return rc == 0 ? "success" : "failure"; }
int tqm_debug_should_log(const tqm_debug_ctx *debug, uint32_t level) { return debug->filter != 0; }
void _plat_dt_log_filter_adv(tqm_log_handle handle, uint32_t a, uint32_t b, uint32_t c, uint32_t d, uint32_t e,
                             uint32_t *site, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    vfprintf(stderr, format, arguments);
    va_end(arguments);
    fputc('\n', stderr);
}

/* The trace buffer is off: these are never called. */
uint32_t ret_nc_tqm_trace_index_incr(void) { return 0; }
void _rbtrace(uint64_t trace_buf, uint64_t flags, const char *line) {}

/* ---- What an edit like this one does without: reads, answers, and entries that the request does not name ---- */
#define REFUSED(name, ...)                                                                                             \
    rcode name(__VA_ARGS__) { return TQM_ERR_INVALID_REQUEST; }
REFUSED(tqm_map_add_leaf_from_xpath, tqm_map_ctx ctx, const rdl_tqm_datatree *node, rdl_tqm_datatree *out,
        const char *root, const char *ns, const char *const *components, uint32_t count)
REFUSED(tqm_map_search_list, tqm_map_ctx ctx, rdl_tqm_datatree *tree, rdl_tqm_datatree **found, const char *path,
        const char *key_value, const char *key_leaf, const char *ns)
REFUSED(tqm_map_search_or_add_list, tqm_map_ctx ctx, rdl_tqm_datatree *tree, rdl_tqm_datatree **found, const char *path,
        const char *key_value, const char *key_leaf, const char *ns)
REFUSED(tqm_map_stitch_list_to_list, tqm_map_ctx ctx, tqm_map_xpath_ops *ops)
REFUSED(tqm_map_auto_stitch_list_to_list, tqm_map_ctx ctx, const rdl_tqm_datatree *node, rdl_tqm_datatree *out,
        const char *ns, const char *const *components, uint32_t count)
REFUSED(tqm_map_tree_xpath_operations, tqm_map_ctx ctx, tqm_map_xpath_ops *ops)
REFUSED(tqm_map_copy_trim_path_list_ctx, tqm_map_ctx ctx, const char *path)
REFUSED(tqm_add_to_output_list_ctx, tqm_map_ctx ctx, const rdl_tqm_datatree *node, rdl_tqm_datatree *out)
REFUSED(tqm_remove_from_output_list_ctx, tqm_map_ctx ctx, const rdl_tqm_datatree *node, rdl_tqm_datatree *out)
REFUSED(tqm_map_util_itree_stack_push, tqm_map_ctx ctx, rdl_tqm_datatree *nodes, uint32_t count,
        rcode (*callback)(tqm_map_ctx, rdl_tqm_datatree *, rdl_tqm_datatree *, uint32_t))
REFUSED(tqm_map_util_itree_stack_pop, tqm_map_ctx ctx)
REFUSED(tqm_map_util_itree_stack_peak, tqm_map_ctx ctx, tqm_map_itree **element_out)
uint32_t tqm_map_util_itree_stack_size(tqm_map_ctx ctx) { return 0; }

/* ---- The request: a policy with two leaves is merged, a key chain created ---- */
#define OC "http://openconfig.net/yang/macsec"
#define LEAF(tag_, operation_, value_)                                                                                 \
    {                                                                                                                  \
        .tag = tag_, .ns = OC, .operation = operation_, .value = value_,                                               \
        .present = TQM_PRESENT_OPERATION | TQM_PRESENT_VALUE                                                           \
    }
#define NODE(tag_, operation_, children_)                                                                              \
    {                                                                                                                  \
        .tag = tag_, .ns = OC, .operation = operation_, .subtree = children_, .subtree_count = COUNT(children_),       \
        .present = TQM_PRESENT_OPERATION | TQM_PRESENT_SUBTREE                                                         \
    }

static rdl_tqm_datatree policy_config[] = {LEAF("name", TQM_OP_MERGE, "core"),
                                           LEAF("key-server-priority", TQM_OP_MERGE, "20"),
                                           LEAF("delay-protection", TQM_OP_MERGE, "true")};
static rdl_tqm_datatree policy[] = {LEAF("name", TQM_OP_MERGE, "core"), NODE("config", TQM_OP_MERGE, policy_config)};
static rdl_tqm_datatree policies[] = {NODE("policy", TQM_OP_MERGE, policy)};
static rdl_tqm_datatree chain_config[] = {LEAF("name", TQM_OP_CREATE, "ring")};
static rdl_tqm_datatree chain[] = {LEAF("name", TQM_OP_CREATE, "ring"), NODE("config", TQM_OP_CREATE, chain_config)};
static rdl_tqm_datatree chains[] = {NODE("key-chain", TQM_OP_CREATE, chain)};
static rdl_tqm_datatree mka[] = {NODE("policies", TQM_OP_MERGE, policies), NODE("key-chains", TQM_OP_MERGE, chains)};
static rdl_tqm_datatree macsec_children[] = {NODE("mka", TQM_OP_MERGE, mka)};
static rdl_tqm_datatree macsec = NODE("macsec", TQM_OP_MERGE, macsec_children);

/* ---- The walk ---- */
int main(int argc, char **argv)
{
    static const char *const entry_points[] = {"tqm_map_reg_ocmacsec_conf", "tqm_map_reg_ocmacsec_conf_libkeychain",
                                               "tqm_map_reg_ocmacsec_ifmgr", "tqm_map_reg_ocmacsec_private_oper"};
    void *plugin = argc > 1 ? dlopen(argv[1], RTLD_NOW) : NULL;
    if (plugin == NULL) {
        fprintf(stderr, "%s\n", argc > 1 ? dlerror() : "usage: host PLUGIN [-v]");
        return 1;
    }
    tqm_map_function forward_root = NULL;
    for (size_t i = 0; i < COUNT(entry_points); ++i) {
        tqm_map_reg_info info = {0};
        void (*register_tree)(tqm_map_reg_info *) = NULL;
        *(void **)&register_tree = dlsym(plugin, entry_points[i]);
        if (register_tree != NULL) {
            register_tree(&info);
        }
        if (info.forward_root != NULL) {
            printf("%s: /%s to /%s\n", info.tree_name, info.oc_top, info.native_top);
            forward_root = info.forward_root; /* the same in all: one walk serves every native tree */
        }
    }
    if (forward_root == NULL) {
        fprintf(stderr, "nothing is registered: is there a /pkg/yang/openconfig-macsec.yang?\n");
        return 1;
    }
    tqm_map_request_hdr header = {.kind = TQM_REQ_EDIT};
    tqm_map_request request = {.hdr = &header};
    struct tqm_map_ctx_record context = {.request = &request, .debug.filter = argc > 2};
    const rcode rc = forward_root(&context, &macsec, &output);
    const int failed = rc != 0 && rc != TQM_ERR_SKIP_NODE;
    if (failed) {
        fprintf(stderr, "refused with 0x%08x at %s: %s\n", (unsigned)rc, error_path[0] != '\0' ? error_path : "-",
                request.error_msg != NULL ? request.error_msg : "-");
    }
    free(request.error_tag);
    free(request.error_msg);
    return failed;
}
