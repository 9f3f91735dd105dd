// An edit all the way: what it says of its own model, what it asks of the data that are there, the walk, the writing.
#include "tqm/framework.h"

#include "requests/error_path.h"
#include "requests/existence.h"
#include "requests/request_kind.h"
#include "walk/request_state.h"

namespace tqm
{

namespace
{

/// Where a node of the request stands.
struct Place {
    InstancePath path; ///< empty if it is not in the tree
    const PathInfo *info = nullptr;
};

/// Makes `place`, which leads to the node around `node`, that of `wanted`. False if that is not at or below `node`.
bool find_place(const rdl_tqm_datatree &wanted, const rdl_tqm_datatree &node, const PathInfo *info, Place &place)
{
    place.path.enter(node.tag);
    if (info != nullptr) {
        place.path.keys(node, info->keys());
    }
    place.info = info;
    if (&wanted == &node) {
        return true;
    }
    for (const rdl_tqm_datatree &child : children_of(node)) {
        const PathInfo *const child_info = info == nullptr || child.tag == nullptr ? nullptr : info->child(child.tag);
        if (find_place(wanted, child, child_info, place)) {
            return true;
        }
    }
    place.path.leave();
    return false;
}

Place place_of(const rdl_tqm_datatree *node, const Request::Impl &request)
{
    Place place;
    const rdl_tqm_datatree *const top = request.tree().roots().nodes;
    if (node == nullptr || top == nullptr || top->tag == nullptr ||
        !find_place(*node, *top, request.paths().find(top->tag), place)) {
        return {};
    }
    return place;
}

const rdl_tqm_datatree *origin_of(const OutputNode *node)
{
    while (node != nullptr && node->origin() == nullptr) {
        node = node->parent();
    }
    return node == nullptr ? nullptr : node->origin();
}

} // namespace

/// The router's place and words stay beside the client's, who can mend what it has sent.
Error Framework::in_clients_terms(NativeError native, Request &request) const
{
    const rdl_tqm_datatree *const origin = origin_of(native.node);
    const Place place = place_of(origin, *request.impl_);
    Error error{"the router refuses the edit"};
    error.at(place.path).error_tag = native.error_tag;
    error.app_tag = std::move(native.app_tag);
    error.native_path = std::move(native.path);
    error.native_text = std::move(native.text);
    if (!place.path.empty()) {
        const char *const value = given_value(origin);
        const bool shown =
            value != nullptr && place.info != nullptr && place.info->is_leaf() && !place.info->schema->secret;
        error.text =
            error.path + ": " + (shown ? std::string("'") + value + "'" : "this") + " is refused by the router";
    }
    fill_instance(error, schema_);
    return error;
}

/// Starts a part of the journal and of the trace.
void Framework::head(const char *heading) const
{
    if (watch_.journal != nullptr) {
        watch_.journal->write(heading);
    }
    if (watch_.trace_on && watch_.trace) {
        watch_.trace(heading);
    }
}

Expected<void> Framework::check(Request &request) const
{
    if (checker_ == nullptr || !request.impl_->kind().is_forward_edit() || request.tree() == nullptr) {
        return {};
    }
    const LoadedEdit edit(request.impl_->tree());
    Expected<void> checked = checker_->check(edit);
    if (!checked) {
        fill_instance(checked.error(), schema_);
    }
    return checked;
}

Expected<void> Framework::check_existence(Request &request, NativeSide &native) const
{
    Request::Impl &edit = *request.impl_;
    if (request.tree() == nullptr) {
        return {};
    }
    Existence existence(edit);
    if (existence.reads()) {
        head("---- before the edit: what it creates, deletes or counts on, as it is now ----");
        Request asked(schema_, plugin_.registrations(), TQM_REQ_GET_CONFIG, Direction::forward, watch_);
        asked.impl_->continue_trace_of(edit);
        asked.impl_->widen();
        TreeBuilder filter = asked.builder();
        asked.adopt(existence.filter(filter));
        existence.note_filter(asked.impl_->tree().roots());
        if (Expected<void> walked = walk(asked); !walked) {
            return walked;
        }
        Request answered(schema_, plugin_.registrations(), TQM_REQ_GET_CONFIG, Direction::reverse, watch_);
        answered.impl_->continue_trace_of(*asked.impl_);
        for (const OutputNode *root : asked.roots()) {
            TreeBuilder builder = answered.builder();
            if (Expected<void> read = native.read(*root, builder); !read) {
                return with_instance(std::move(read.error()), schema_);
            }
            const TreeBuilder::Roots answer = builder.finish();
            existence.note_native(*root, answer);
            if (Expected<void> walked = walk_answers(answered, answer); !walked) {
                return walked;
            }
        }
        answered.drop_unanswered();
        existence.note_answer(*answered.impl_);
        edit.continue_trace_of(*answered.impl_);
        head("---- the edit ----");
    }
    serve(&edit);
    Expected<void> good = existence.judge();
    if (!good) {
        fill_instance(good.error(), schema_);
    }
    return good;
}

/// Values of a leaf-list that the walk has brought to one native leaf.
Expected<void> Framework::check_values(Request &request) const
{
    const rdl_tqm_datatree *const value = request.impl_->placing().one_too_many();
    if (value == nullptr) {
        return {};
    }
    const InstancePath path = place_of(value, *request.impl_).path.key(".", value->value);
    Error error{path.text() + ": the router keeps one value, and this is one more"};
    error.at(path).app_tag = too_many_elements;
    return with_instance(std::move(error), schema_);
}

Expected<void> Framework::write(Request &request, NativeSide &native) const
{
    if (Expected<void> good = check_values(request); !good) {
        return good;
    }
    const std::vector<const OutputNode *> trees = request.roots();
    if (trees.empty()) {
        return {};
    }
    if (tl::expected<void, NativeError> edited = native.edit(trees); !edited) {
        return tl::unexpected(in_clients_terms(std::move(edited.error()), request));
    }
    return {};
}

Expected<void> Framework::edit(Document document, NativeSide &native)
{
    const uint32_t kind = document.is_filter() ? uint32_t{TQM_REQ_GET} : document.kind().value_or(TQM_REQ_EDIT);
    if (kind != TQM_REQ_EDIT) {
        return wrong_kind(kind, TQM_REQ_EDIT);
    }
    const Expected<std::shared_ptr<Request>> request = load(std::move(document), kind);
    if (!request) {
        return tl::unexpected(request.error());
    }
    if (Expected<void> good = check(**request); !good) {
        return good;
    }
    if (Expected<void> good = check_existence(**request, native); !good) {
        return good;
    }
    if (Expected<void> walked = walk(**request); !walked) {
        return walked;
    }
    return write(**request, native);
}

} // namespace tqm
