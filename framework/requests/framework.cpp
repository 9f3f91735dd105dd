#include "tqm/framework.h"

#include <cstring>

#include "requests/error_path.h"
#include "requests/filter.h"
#include "requests/request_kind.h"
#include "walk/request_state.h"
#include "walk/root_walk.h"

namespace tqm
{

namespace
{

tl::unexpected<Error> not_registered()
{
    return tl::unexpected(Error{"the plug-in has registered no mapping"});
}

/// Leads `place`, which is that of the node around `node`, to the first node at or below it that a code without a place
/// of its own is about: a list entry without children, or a deleted container with some. False if there is none.
bool find_place(rcode code, const rdl_tqm_datatree &node, const PathInfo *info, InstancePath &place)
{
    place.enter(node.tag);
    if (info != nullptr) {
        place.keys(node, info->keys());
    }
    const std::span<const rdl_tqm_datatree> children = children_of(node);
    if (code == TQM_ERR_NO_SUBTREE && children.empty() && info != nullptr && info->is_list()) {
        return true;
    }
    if (code == TQM_ERR_BAD_ARGS && !children.empty() && tqm_map_is_request_delete(&node) != 0) {
        return true;
    }
    for (const rdl_tqm_datatree &child : children) {
        const PathInfo *const child_info = info == nullptr || child.tag == nullptr ? nullptr : info->child(child.tag);
        if (find_place(code, child, child_info, place)) {
            return true;
        }
    }
    place.leave();
    return false;
}

/// Where the plug-in has noted no path, the request shows it.
Error placed(Error error, const rdl_tqm_datatree &tree, const PathTable &paths)
{
    InstancePath place;
    if (error.path.empty() && error.code && find_place(*error.code, tree, paths.find(tree.tag), place)) {
        error.at(place);
    }
    return error;
}

} // namespace

Framework::Framework(const Plugin &plugin, const Schema &schema, Watch watch, EditChecker *checker)
    : plugin_(plugin), schema_(schema), watch_(std::move(watch)), checker_(checker)
{
}

Expected<std::shared_ptr<Request>> Framework::load(Document document, uint32_t kind, bool widened) const
{
    if (plugin_.registrations().empty()) {
        return not_registered();
    }
    auto request = std::make_shared<Request>(schema_, plugin_.registrations(), kind, Direction::forward, watch_);
    if (widened) {
        request->impl_->widen();
    }
    if (Expected<void> loaded = request->load(std::move(document)); !loaded) {
        return with_instance(std::move(loaded.error()), schema_);
    }
    return request;
}

/// A request that the forward root has walked; one that selects or edits nothing has no output. A `widened` walk leads
/// to all that matching the answer needs.
Expected<std::shared_ptr<Request>> Framework::walk_forward(Document document, uint32_t kind, bool widened) const
{
    Expected<std::shared_ptr<Request>> request = load(std::move(document), kind, widened);
    if (!request) {
        return request;
    }
    if (Expected<void> walked = walk(**request); !walked) {
        return tl::unexpected(std::move(walked.error()));
    }
    return request;
}

Expected<void> Framework::walk_request(Request &request) const
{
    rdl_tqm_datatree *tree = request.tree();
    if (tree == nullptr) {
        return {};
    }
    for (const tqm_map_reg_info &registration : plugin_.registrations()) {
        if (std::strcmp(registration.oc_top, tree->tag) != 0) {
            continue;
        }
        const rcode code = walk_root(*request.impl_, registration.forward_root, *tree);
        if (code != 0) {
            return with_instance(placed(request.error(code), *tree, request.impl_->paths()), schema_);
        }
        break;
    }
    if (const std::optional<Error> &foreign = request.impl_->tree().foreign()) {
        return with_instance(*foreign, schema_);
    }
    if (request.impl_->kind().is_forward_edit()) {
        request.impl_->placing().settle_markers();
    }
    return {};
}

Expected<void> Framework::walk(Request &request) const
{
    if (plugin_.registrations().empty()) {
        return not_registered();
    }
    if (request.impl_->kind().is_forward()) {
        return walk_request(request);
    }
    Expected<void> walked = walk_answers(request, request.impl_->tree().roots());
    if (walked && request.impl_->kind().is_read()) {
        request.drop_unanswered();
    }
    return walked;
}

uint32_t Framework::kind_of(const Document &document, Direction direction, uint32_t kind)
{
    kind = document.kind().value_or(kind);
    const bool reads = direction == Direction::forward && document.is_filter();
    return reads && kind != TQM_REQ_GET_CONFIG ? TQM_REQ_GET : kind;
}

Expected<Trees> Framework::forward(Document document, uint32_t kind, bool checked)
{
    kind = kind_of(document, Direction::forward, kind);
    Expected<std::shared_ptr<Request>> request = load(std::move(document), kind);
    if (!request) {
        return tl::unexpected(std::move(request.error()));
    }
    if (Expected<void> good = checked ? check(**request) : Expected<void>(); !good) {
        return tl::unexpected(std::move(good.error()));
    }
    if (Expected<void> walked = walk(**request); !walked) {
        return tl::unexpected(std::move(walked.error()));
    }
    if (Expected<void> good = checked ? check_values(**request) : Expected<void>(); !good) {
        return tl::unexpected(std::move(good.error()));
    }
    Trees trees;
    trees.request_ = *request;
    trees.roots_ = trees.request_->roots();
    trees.kind_ = kind;
    trees.schema_ = &schema_;
    const bool is_read = kind == TQM_REQ_GET || kind == TQM_REQ_GET_CONFIG;
    trees.wrapper_ = is_read ? Trees::Wrapper::filter : Trees::Wrapper::config;
    return trees;
}

/// Walks each of the request's trees with the reverse root of its registration.
Expected<void> Framework::walk_answers(Request &request, TreeBuilder::Roots answers) const
{
    for (uint32_t i = 0; i < answers.count; ++i) {
        rdl_tqm_datatree &answer = answers.nodes[i];
        for (const tqm_map_reg_info &registration : plugin_.registrations()) {
            if (answer.tag == nullptr || std::strcmp(registration.native_top, answer.tag) != 0 ||
                answer.ns == nullptr || std::strcmp(registration.native_ns, answer.ns) != 0) {
                continue;
            }
            request.impl_->start_walk();
            const rcode code = walk_root(*request.impl_, registration.reverse_root, answer);
            if (code != 0) {
                return with_instance(request.error(code), schema_);
            }
            break;
        }
    }
    return {};
}

Expected<Trees> Framework::reverse(Document document, uint32_t kind)
{
    Trees trees;
    trees.kind_ = kind_of(document, Direction::reverse, kind);
    trees.schema_ = &schema_;
    trees.request_ =
        std::make_shared<Request>(schema_, plugin_.registrations(), trees.kind_, Direction::reverse, watch_);
    Request &request = *trees.request_;
    if (Expected<void> loaded = request.load(std::move(document)); !loaded) {
        return with_instance(std::move(loaded.error()), schema_);
    }
    if (Expected<void> walked = walk(request); !walked) {
        return tl::unexpected(std::move(walked.error()));
    }
    trees.roots_ = request.roots();
    return trees;
}

Expected<Trees> Framework::get(std::optional<Document> document, NativeSide &native)
{
    return read(std::move(document), native, TQM_REQ_GET);
}

Expected<Trees> Framework::get_config(std::optional<Document> document, NativeSide &native)
{
    return read(std::move(document), native, TQM_REQ_GET_CONFIG);
}

Expected<Trees> Framework::read(std::optional<Document> document, NativeSide &native, uint32_t kind)
{
    if (document && document->kind().value_or(kind) != kind) {
        return wrong_kind(*document->kind(), kind);
    }
    const bool selects_all = !document || document->selects_all();
    const Expected<std::shared_ptr<Request>> asked =
        walk_forward(document ? std::move(*document) : Document::selecting_all(), kind, true);
    if (!asked) {
        return tl::unexpected(asked.error());
    }

    Trees trees;
    trees.kind_ = kind;
    trees.schema_ = &schema_;
    trees.request_ = std::make_shared<Request>(schema_, plugin_.registrations(), kind, Direction::reverse, watch_);
    Request &request = *trees.request_;
    request.impl_->continue_trace_of(*(*asked)->impl_); // one read, one count
    for (const OutputNode *filter : (*asked)->roots()) {
        TreeBuilder answer = request.builder();
        if (Expected<void> read = native.read(*filter, answer); !read) {
            return with_instance(std::move(read.error()), schema_);
        }
        if (Expected<void> walked = walk_answers(request, answer.finish()); !walked) {
            return tl::unexpected(std::move(walked.error()));
        }
    }
    request.drop_unanswered();
    if (!selects_all) {
        apply_filter(request.impl_->output(), request.impl_->paths(), (*asked)->impl_->tree().filter());
    }
    trees.roots_ = request.roots();
    return trees;
}

} // namespace tqm
