// The forward list walker, in its two forms: the keyed list, for the lists that hold configuration, and the state list.
// It tests an entry's keys against the kind of the request, marks a delete for the list node function, dispatches the
// children, and starts the two fills that only a list has: the key fill, when a request names an entry by its key
// alone, and the own fill, when it names the list without keys.
#include "forward_walk.h"

namespace oc_macsec
{
namespace
{

// One walk of one list node.
struct list_walk {
    const forward_list &list;
    tqm_map_ctx ctx;
    rdl_tqm_datatree *node;
    rdl_tqm_datatree *out;
    child_array children; // of the current instance
    rcode rc;
    bool needs_keys;        // the request is of a kind in which every entry has its key
    uint8_t key_values = 0; // key children that have a value
    uint8_t key_nodes = 0;  // key children seen
    bool has_children = false;
    bool key_without_value = false;
    bool other_child = false;
    bool deleting_entry = false;  // a delete marking has been made
    bool own_delete_mode = false; // this walker set delete_mode and must clear it
    bool replacing = false;
    tqm_map_itree *element = nullptr;

    bool keyed() const { return list.on == side::config; }
    tqm_map_request *request() const { return ctx->request; }
};

bool is_key(const list_walk &walk, const rdl_tqm_datatree *child)
{
    return tqm_map_do_these_match(child->tag, walk.list.key.tag) != 0;
}

void end_own_delete_mode(const list_walk &walk)
{
    if (walk.own_delete_mode) {
        walk.request()->delete_mode = 0;
    }
}

// ---- Keys ----------------------------------------------------------------------------------------------------------

// A list node without children has no keys. True when the request cannot go on without them.
bool misses_keys(const list_walk &walk)
{
    if (walk.has_children) {
        return false;
    }
    if (walk.keyed()) {
        log(walk.list.of, walk.ctx, MESSAGE_NO_KEYS);
    }
    if (in_fill(walk.ctx) || walk.request()->delete_mode != 0 || !walk.needs_keys) {
        return false;
    }
    log(walk.list.of, walk.ctx, MESSAGE_NO_KEYS_AT_ALL);
    return true;
}

// Counts and marks the keys. Not 0 when a key disagrees with the leaf that it refers to.
rcode scan_keys(list_walk &walk)
{
    if (in_fill(walk.ctx) || walk.request()->delete_mode != 0) {
        return 0;
    }
    for (rdl_tqm_datatree &child : walk.children) {
        if (!is_key(walk, &child)) {
            walk.other_child = true;
            continue;
        }
        if (walk.needs_keys) {
            const rcode rc = tqm_map_check_oc_leafref(walk.ctx, walk.list.path, "config", child.tag, walk.node);
            if (rc != 0) {
                return rc;
            }
        }
        ++walk.key_nodes;
        mark_key(&child);
        if (has(&child, TQM_PRESENT_VALUE)) {
            ++walk.key_values;
        } else {
            walk.key_without_value = true;
        }
    }
    return 0;
}

bool key_count_is_wrong(const list_walk &walk)
{
    if (!walk.keyed() || in_fill(walk.ctx) || walk.request()->delete_mode != 0 || !walk.has_children) {
        return false;
    }
    if (walk.needs_keys) {
        return walk.key_values != 1 || walk.key_nodes >= 2;
    }
    return walk.key_nodes > 1 || walk.key_values > 1;
}

void refuse_key_count(list_walk &walk)
{
    log(walk.list.of, walk.ctx, MESSAGE_KEY_NODE_ERROR);
    set_error_tag(walk.ctx, walk.list.key.tag);
    tqm_oc_error_path(walk.ctx);
    walk.rc = TQM_ERR_LIST_KEY;
}

// ---- The list node function ----------------------------------------------------------------------------------------

rcode call_node_function(list_walk &walk)
{
    tqm_map_request *const request = walk.request();
    const bool entry_by_key = !walk.other_child && walk.key_nodes != 0;
    if (tqm_map_is_request_delete(walk.node) != 0 && entry_by_key && request->delete_mode == 0) {
        request->delete_mode = 2;
        const rcode rc = walk.list.node_function(walk.ctx, walk.node, walk.out);
        request->delete_mode = 0;
        walk.deleting_entry = true;
        return rc;
    }
    if (walk.children.count == 0 && tqm_map_is_request_delete(walk.node) != 0 && request->delete_mode == 0 &&
        in_fill(walk.ctx)) {
        request->delete_mode = 1;
        walk.own_delete_mode = true;
        walk.deleting_entry = true;
    }
    return walk.list.node_function(walk.ctx, walk.node, walk.out);
}

uint16_t stack_size(tqm_map_ctx ctx)
{
    return static_cast<uint16_t>(tqm_map_util_itree_stack_size(ctx));
}

// Calls the list node function, and gives its result.
rcode run_node_function(list_walk &walk)
{
    const uint16_t size_before = stack_size(walk.ctx);
    const rcode rc = call_node_function(walk);
    if (rc == TQM_ERR_SKIP_NODE) {
        return rc;
    }
    if (stack_size(walk.ctx) > size_before) {
        tqm_map_util_itree_stack_peak(walk.ctx, &walk.element);
    }
    if (rc == 0) {
        walk.ctx->list_operation = has(walk.node, TQM_PRESENT_OPERATION) ? walk.node->operation : TQM_OP_MERGE;
    }
    return rc;
}

// ---- Children ------------------------------------------------------------------------------------------------------

rcode dispatch_key(list_walk &walk, rdl_tqm_datatree *child)
{
    if (walk.keyed()) {
        if (walk.needs_keys && !has(child, TQM_PRESENT_VALUE)) {
            log(walk.list.of, walk.ctx, MESSAGE_EMPTY_KEY);
            set_error_tag(walk.ctx, child->tag);
            tqm_oc_error_path(walk.ctx);
            return TQM_ERR_LIST_KEY;
        }
        if (tqm_map_is_request_delete(child) != 0) {
            log(walk.list.of, walk.ctx, MESSAGE_KEY_DELETE);
            tqm_oc_error_path(walk.ctx);
            return TQM_ERR_KEY_DELETE;
        }
    }
    const rcode rc = walk.list.key.walker(walk.ctx, child, walk.out);
    if (has(child, TQM_PRESENT_VALUE)) {
        walk.key_nodes = 1;
    }
    mark_key(child);
    return rc;
}

rcode dispatch_child(list_walk &walk, rdl_tqm_datatree *child)
{
    if (child->tag == nullptr) {
        log(walk.list.of, walk.ctx, MESSAGE_NO_TAG);
        return TQM_ERR_NO_SUBTREE;
    }
    if (is_key(walk, child) && (walk.keyed() || TQM_MAP_KIND(walk.ctx) == TQM_REQ_GET)) {
        return dispatch_key(walk, child);
    }
    if (replace_removes(walk.ctx)) {
        return 0; // a replace's remove pass looks at the keys alone
    }
    if (const forward_child *entry = find_child(walk.list.children, walk.ctx, child->tag)) {
        const rcode rc = entry->walker(walk.ctx, child, walk.out);
        walk.other_child = true;
        return rc;
    }
    if (is_of_model(child)) {
        return unsupported_tag(walk.list.of, walk.ctx, child->tag);
    }
    const rcode rc = walk.list.augments(walk.ctx, child, walk.out);
    walk.other_child = true;
    return rc;
}

void dispatch_children(list_walk &walk)
{
    for (rdl_tqm_datatree *child = walk.children.begin(); child != walk.children.end() && walk.rc == 0; ++child) {
        walk.rc = dispatch_child(walk, child);
    }
}

// ---- Fills ---------------------------------------------------------------------------------------------------------

bool needs_key_fill(const list_walk &walk)
{
    if (walk.rc != 0 || walk.key_without_value || walk.other_child || walk.key_nodes == 0) {
        return false;
    }
    return TQM_MAP_IS_READ(walk.ctx) || tqm_map_is_request_delete(walk.node) != 0;
}

// Descends through all that a named entry holds. The entry's children, which are its keys, are hidden for that time and
// left with the framework.
void key_fill(list_walk &walk, rdl_tqm_datatree *instance)
{
    const tqm_map_ctx ctx = walk.ctx;
    const bool begun = begin_fill(ctx);
    if (walk.deleting_entry) {
        ctx->request->delete_mode = 1;
        walk.own_delete_mode = true;
    }
    if (tqm_map_is_request_delete(walk.node) != 0) {
        set_operation(instance, TQM_OP_REMOVE);
    }
    rdl_tqm_datatree *const subtree = instance->subtree;
    const uint32_t subtree_count = instance->subtree_count;
    tqm_map_util_itree_stack_push(ctx, subtree, subtree_count, nullptr);
    instance->subtree = nullptr;
    instance->subtree_count = 0;
    clear_present(instance, TQM_PRESENT_SUBTREE);

    for (const forward_child &child : walk.list.children) {
        if (is_walked(child, ctx)) {
            child.walker(ctx, instance, walk.out);
        }
    }
    walk.list.augments(ctx, instance, walk.out);

    end_fill(ctx, begun);
    end_own_delete_mode(walk);
    instance->subtree = subtree;
    instance->subtree_count = subtree_count;
    set_present(instance, TQM_PRESENT_SUBTREE);
    tqm_map_util_itree_stack_pop(ctx);
    walk.own_delete_mode = false;
}

bool needs_own_fill(const list_walk &walk)
{
    if (walk.children.count != 0) {
        return false;
    }
    return TQM_MAP_IS_READ(walk.ctx) || (walk.keyed() && tqm_map_is_request_delete(walk.node) != 0);
}

// Descends through all that every entry of the list holds.
void own_fill(list_walk &walk)
{
    const tqm_map_ctx ctx = walk.ctx;
    const forward_list &list = walk.list;
    const bool begun = begin_fill(ctx);
    if (walk.keyed()) {
        const bool lowered = lower_delete(walk.node);
        if (tqm_map_is_request_delete(walk.node) != 0 && ctx->request->delete_mode == 0) {
            ctx->request->delete_mode = 1;
            walk.own_delete_mode = true;
        }
        list.key.walker(ctx, walk.node, walk.out);
        fill_children(list.children, side::config, ctx, walk.node, walk.out);
        restore_delete(walk.node, lowered);
    } else if (TQM_MAP_KIND(ctx) == TQM_REQ_GET) {
        list.key.walker(ctx, walk.node, walk.out);
    }
    fill_children(list.children, side::state, ctx, walk.node, walk.out);
    list.augments(ctx, walk.node, walk.out);
    end_fill(ctx, begun);
    end_own_delete_mode(walk);
}

// ---- Instances -----------------------------------------------------------------------------------------------------

void run_instance(list_walk &walk, rdl_tqm_datatree *instance)
{
    if (walk.children.count != 0 && walk.rc == 0) {
        dispatch_children(walk);
    }
    if (needs_key_fill(walk)) {
        key_fill(walk, instance);
    }
    if (needs_own_fill(walk)) {
        own_fill(walk);
    }
}

// Walks the instances of an iteration-tree element that the list node function has left on the stack.
void run_element(list_walk &walk)
{
    for (uint32_t index = 0; index < walk.element->count; ++index) {
        rdl_tqm_datatree *const instance = &walk.element->nodes[index];
        walk.children = children_of(instance);
        if (index != 0) {
            tqm_map_add_to_node_hierarchy(walk.ctx, instance, TQM_HIER_LIST);
            walk.rc = tqm_map_update_current_list_node(walk.ctx, walk.list.path);
        }
        if (walk.element->callback != nullptr) {
            if (tqm_map_is_request_delete(walk.node) != 0) {
                set_operation(instance, TQM_OP_REMOVE);
            }
            walk.element->callback(walk.ctx, instance, walk.out, 0);
        }
        run_instance(walk, instance);
        if (index != 0) {
            tqm_map_remove_from_node_hierarchy(walk.ctx, instance);
        }
    }
}

// A filter that names children of the list but no key gets the key leaf, so that entries can be told apart.
void add_key_to_filter(list_walk &walk)
{
    if (walk.rc != 0 || !TQM_MAP_IS_READ(walk.ctx) || in_fill(walk.ctx) || !walk.other_child || walk.key_nodes != 0) {
        return;
    }
    rdl_tqm_datatree *added = nullptr;
    walk.rc = tqm_map_datatree_add_path_flagged(walk.ctx, walk.node, walk.list.key.tag, walk.node->ns, nullptr, nullptr,
                                                &added, 0, TQM_ADD_PLAIN);
    if (added != nullptr) {
        mark_key(added);
    }
}

void end_remove_pass(const list_walk &walk)
{
    if (walk.replacing) {
        set_operation(walk.node, TQM_OP_MERGE);
        walk.request()->walk_flags &= ~TQM_WALK_REPLACE_REMOVE;
    }
}

void run_pass(list_walk &walk)
{
    if (walk.rc == 0) {
        walk.rc = run_node_function(walk);
        if (walk.rc == TQM_ERR_SKIP_NODE) {
            end_own_delete_mode(walk);
            walk.rc = 0;
            end_remove_pass(walk);
            return;
        }
    }
    if (walk.element != nullptr && walk.rc == 0 && walk.element->count != 0) {
        run_element(walk);
    } else {
        run_instance(walk, walk.node);
    }
    add_key_to_filter(walk);
    end_remove_pass(walk);
}

// Children of a list node as its family takes them: in a read, a state list takes a missing array for an empty one.
bool take_children(list_walk &walk)
{
    walk.children = children_of(walk.node);
    if (walk.children.missing()) {
        if (walk.keyed() || !TQM_MAP_IS_READ(walk.ctx)) {
            log(walk.list.of, walk.ctx, MESSAGE_NO_SUBTREES);
            return false;
        }
        walk.children.count = 0;
    }
    walk.has_children = walk.children.count != 0;
    return true;
}

} // namespace

rcode walk_forward_list(const forward_list &list, MAPPER_PARAMETERS)
{
    assert_context(list.of, ctx, MAPPER_SIGNATURE);
    log(list.of, ctx, MESSAGE_START);
    if (rejects_arguments(list.of, ctx, node, out)) {
        return TQM_ERR_BAD_ARGS;
    }
    list_walk walk{list, ctx, writable(node), out, {nullptr, 0}, 0, TQM_MAP_IS_KEYED_KIND(ctx)};
    if (!take_children(walk) || misses_keys(walk)) {
        log(list.of, ctx, MESSAGE_END);
        return TQM_ERR_NO_SUBTREE;
    }
    if (!in_fill(ctx)) {
        enter_level(ctx, walk.node, TQM_HIER_LIST, TQM_ROLE_LIST);
    }
    walk.rc = tqm_map_update_current_list_node(ctx, list.path);
    if (walk.rc == 0) {
        const rcode mismatch = scan_keys(walk);
        if (mismatch != 0) {
            log(list.of, ctx, MESSAGE_LEAFREF);
            log(list.of, ctx, MESSAGE_END);
            return mismatch; // the list stays on the hierarchy: the request ends here
        }
    }
    if (key_count_is_wrong(walk)) {
        refuse_key_count(walk);
    }
    walk.replacing = walk.node->operation == TQM_OP_REPLACE;
    if (walk.replacing) {
        begin_remove_pass(ctx, walk.node);
        walk.key_without_value = false;
        walk.other_child = false;
    }
    const int passes = walk.replacing ? 2 : 1;
    for (int pass = 0; pass < passes; ++pass) {
        run_pass(walk);
    }
    if (walk.replacing) {
        end_replace(ctx);
    }
    if (walk.element != nullptr && walk.element->nodes != nullptr) {
        tqm_map_util_itree_stack_pop(ctx);
    }
    if (!in_fill(ctx)) {
        tqm_map_remove_from_node_hierarchy(ctx, node);
    }
    log(list.of, ctx, MESSAGE_END);
    return walk.rc;
}

} // namespace oc_macsec
