// The operations by which walkers keep account of where they stand, and the questions that mappers ask about it.
#include <cstring>

#include "surface/operation.h"

namespace
{

using namespace tqm;

/// The frame of a walk operation that is given a node.
template <class Body>
rcode node_operation(tqm_map_ctx ctx, const char *name, const rdl_tqm_datatree *node, const Body &body)
{
    return run_operation(
        Request::Impl::of(ctx), name,
        [&](Request::Impl &request) -> rcode { return node == nullptr ? TQM_ERR_BAD_ARGS : body(request); },
        [&](JournalLine &line) { line.node("", node); });
}

/// The value of a `leaf` in one of the `container` children that is not `key`; null if all agree.
const char *other_value(const rdl_tqm_datatree &list_node, const char *container, const char *leaf, const char *key)
{
    for (const rdl_tqm_datatree &holder : children_of(list_node)) {
        if (holder.tag == nullptr || std::strcmp(holder.tag, container) != 0) {
            continue;
        }
        for (const rdl_tqm_datatree &named : children_of(holder)) {
            const char *value =
                named.tag != nullptr && std::strcmp(named.tag, leaf) == 0 ? given_value(&named) : nullptr;
            if (value != nullptr && std::strcmp(value, key) != 0) {
                return value;
            }
        }
    }
    return nullptr;
}

rcode check_leafref(Request::Impl &request, const char *list_path, const char *container, const char *key_tag,
                    const rdl_tqm_datatree *list_node)
{
    if (list_path == nullptr || container == nullptr || key_tag == nullptr || list_node == nullptr) {
        return TQM_ERR_BAD_ARGS;
    }
    const char *key = given_value(find_child(*list_node, key_tag));
    const char *value = key == nullptr ? nullptr : other_value(*list_node, container, key_tag, key);
    if (value == nullptr) {
        return 0;
    }
    request.failure().refuse(std::string("Invalid request : ") + key_tag + " of the entry of " + list_path + " is '" +
                             key + "', but its " + container + "/" + key_tag + " is '" + value + "'");
    return TQM_ERR_INVALID_REQUEST;
}

[[gnu::noinline]] int compare(const char *a, const char *b)
{
    const bool match = a != nullptr && b != nullptr && std::strcmp(a, b) == 0;
    Request::Impl *const request = serving();
    if (match && request != nullptr) {
        request->hierarchy().note_match(a);
        if (request->observation()) {
            without_exceptions(request, [request, a] { request->observation().matched(a); });
        }
    }
    journal_question("tqm_map_do_these_match",
                     [a, b, match](JournalLine &line) { line.text("", a).text("", b).result_number(match); });
    return match ? 1 : 0;
}

} // namespace

extern "C" {

TQM_EXPORT rcode tqm_map_add_to_node_hierarchy(tqm_map_ctx ctx, const rdl_tqm_datatree *node, uint32_t level_kind)
{
    return run_operation(
        Request::Impl::of(ctx), "tqm_map_add_to_node_hierarchy",
        [&](Request::Impl &request) -> rcode {
            if (node == nullptr || (level_kind != TQM_HIER_CONTAINER && level_kind != TQM_HIER_LIST)) {
                return TQM_ERR_BAD_ARGS;
            }
            request.enter(*node, level_kind == TQM_HIER_LIST);
            if (request.observation()) {
                request.observation().entered(*node);
            }
            return 0;
        },
        [&](JournalLine &line) { line.node("", node).number("level_kind", level_kind); });
}

TQM_EXPORT rcode tqm_map_remove_from_node_hierarchy(tqm_map_ctx ctx, const rdl_tqm_datatree *node)
{
    return node_operation(ctx, "tqm_map_remove_from_node_hierarchy", node,
                          [&](Request::Impl &request) { return request.leave(node) ? 0 : TQM_ERR_BAD_ARGS; });
}

TQM_EXPORT rcode tqm_map_update_current_list_node(tqm_map_ctx ctx, const char *path)
{
    return run_operation(
        Request::Impl::of(ctx), "tqm_map_update_current_list_node",
        [&](Request::Impl &request) -> rcode {
            const PathInfo *info = path == nullptr ? nullptr : request.paths().intern_literal(path);
            if (info == nullptr) {
                return TQM_ERR_BAD_ARGS;
            }
            // A fill pushes nothing: the entry on top is another list's.
            if (!request.in_fill() && !request.hierarchy().empty() && request.hierarchy().top().is_list) {
                request.hierarchy().top().path = info;
            }
            return 0;
        },
        [&](JournalLine &line) { line.text("", path); });
}

TQM_EXPORT rcode tqm_map_get_node_info(tqm_map_ctx ctx, const char *path, const char *leaf, const char **value_out)
{
    const char *value = nullptr;
    return run_operation(
        Request::Impl::of(ctx), "tqm_map_get_node_info",
        [&](Request::Impl &request) -> rcode {
            if (path == nullptr || leaf == nullptr || value_out == nullptr) {
                return TQM_ERR_BAD_ARGS;
            }
            Frame *frame = request.hierarchy().find(request.paths().intern_literal(path));
            const rdl_tqm_datatree *child = frame == nullptr ? nullptr : frame->child(leaf);
            value = child == nullptr ? nullptr : child->value;
            if (value != nullptr) {
                *value_out = value;
                request.hierarchy().note_lookup(frame->node, child);
            }
            if (value != nullptr && request.observation()) {
                request.observation().read(*child);
            }
            return 0;
        },
        [&](JournalLine &line) { line.text("", path).text("", leaf); },
        [&](JournalLine &line) {
            line.found("value", value, hides_value(Request::Impl::of(ctx), std::string(path) + '/' + leaf));
        });
}

TQM_EXPORT rcode tqm_map_check_oc_leafref(tqm_map_ctx ctx, const char *list_path, const char *container,
                                          const char *key_tag, const rdl_tqm_datatree *list_node)
{
    return run_operation(
        Request::Impl::of(ctx), "tqm_map_check_oc_leafref",
        [&](Request::Impl &request) { return check_leafref(request, list_path, container, key_tag, list_node); },
        [&](JournalLine &line) { line.text("", list_path).text("", container).text("", key_tag).node("", list_node); });
}

TQM_EXPORT uint32_t tqm_map_util_itree_stack_size(tqm_map_ctx ctx)
{
    Request::Impl *request = Request::Impl::of(ctx);
    const std::size_t size = request == nullptr ? 0 : request->iterations().size();
    journal_call(request, "tqm_map_util_itree_stack_size", [&](JournalLine &line) { line.result_number(size); });
    return static_cast<uint32_t>(size);
}

TQM_EXPORT rcode tqm_map_util_itree_stack_push(tqm_map_ctx ctx, rdl_tqm_datatree *nodes, uint32_t count,
                                               rcode (*callback)(tqm_map_ctx, rdl_tqm_datatree *, rdl_tqm_datatree *,
                                                                 uint32_t))
{
    return run_operation(
        Request::Impl::of(ctx), "tqm_map_util_itree_stack_push",
        [&](Request::Impl &request) -> rcode {
            if (nodes == nullptr && count != 0) {
                return TQM_ERR_BAD_ARGS;
            }
            request.iterations().push_back({nodes, count, callback});
            return 0;
        },
        [&](JournalLine &line) { line.number("count", count); });
}

TQM_EXPORT rcode tqm_map_util_itree_stack_pop(tqm_map_ctx ctx)
{
    return run_operation(
        Request::Impl::of(ctx), "tqm_map_util_itree_stack_pop",
        [](Request::Impl &request) -> rcode {
            if (request.iterations().empty()) {
                return TQM_ERR_BAD_ARGS;
            }
            request.iterations().pop_back();
            return 0;
        },
        [](JournalLine &) {});
}

TQM_EXPORT rcode tqm_map_util_itree_stack_peak(tqm_map_ctx ctx, tqm_map_itree **element_out)
{
    return run_operation(
        Request::Impl::of(ctx), "tqm_map_util_itree_stack_peak",
        [&](Request::Impl &request) -> rcode {
            if (element_out == nullptr || request.iterations().empty()) {
                return TQM_ERR_BAD_ARGS;
            }
            *element_out = &request.iterations().back();
            return 0;
        },
        [](JournalLine &) {});
}

TQM_EXPORT rcode tqm_add_to_output_list_ctx(tqm_map_ctx ctx, const rdl_tqm_datatree *node, rdl_tqm_datatree *out)
{
    return node_operation(ctx, "tqm_add_to_output_list_ctx", node, [&](Request::Impl &request) -> rcode {
        if (out == nullptr) {
            return TQM_ERR_BAD_ARGS;
        }
        if (request.hierarchy().empty() || request.hierarchy().top().node != node) {
            return 0;
        }
        const bool leads_to_an_entry = request.leads_to_an_entry();
        // At the end of its range the depth stays: walkers then leave the undo out, too.
        if (leads_to_an_entry && request.record().output_depth < UINT8_MAX) {
            ++request.record().output_depth;
        }
        return 0;
    });
}

TQM_EXPORT rcode tqm_remove_from_output_list_ctx(tqm_map_ctx ctx, const rdl_tqm_datatree *node, rdl_tqm_datatree *out)
{
    return node_operation(ctx, "tqm_remove_from_output_list_ctx", node, [&](Request::Impl &request) -> rcode {
        if (out == nullptr) {
            return TQM_ERR_BAD_ARGS;
        }
        if (request.record().output_depth > 0) {
            --request.record().output_depth;
        }
        return 0;
    });
}

TQM_EXPORT int tqm_map_is_request_delete(const rdl_tqm_datatree *node)
{
    const bool is_delete = node != nullptr && (node->present & TQM_PRESENT_OPERATION) != 0 &&
                           (node->operation == TQM_OP_DELETE || node->operation == TQM_OP_REMOVE);
    journal_question("tqm_map_is_request_delete",
                     [node, is_delete](JournalLine &line) { line.source(node).result_number(is_delete); });
    return is_delete ? 1 : 0;
}

TQM_EXPORT int tqm_map_is_request_add(tqm_map_ctx ctx)
{
    Request::Impl *request = Request::Impl::of(ctx);
    const bool is_add = request != nullptr && !request->kind().is_read();
    journal_call(request, "tqm_map_is_request_add", [&](JournalLine &line) { line.result_number(is_add); });
    return is_add ? 1 : 0;
}

// Walkers compare a tag with all that it could be: most differ at once.
TQM_EXPORT int tqm_map_do_these_match(const char *a, const char *b)
{
    const bool differ = a == nullptr || b == nullptr || *a != *b;
    return differ && questions_journal == nullptr ? 0 : compare(a, b);
}

TQM_EXPORT void tqm_oc_error_path(tqm_map_ctx ctx)
{
    Request::Impl *request = Request::Impl::of(ctx);
    if (request == nullptr) {
        return;
    }
    without_exceptions(request, [&] { request->failure().note_path(); });
    journal_call(request, "tqm_oc_error_path",
                 [&](JournalLine &line) { line.result_text(request->failure().path().c_str()); });
}

} // extern "C"
