// See request.h and request_impl.h; what concerns placing is in placing.cpp.
#include "tqm/request.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include "document_content.h"
#include "request_impl.h"
#include "request_tree.h"

namespace tqm
{

namespace
{
constexpr uint64_t error_log = 1;
constexpr uint64_t trace_log = 2;
constexpr uint64_t trace_buffer = 1;

/// True where an answer has something to say at `node`; takes what has not out of the tree.
bool keep_answered(OutputNode &node)
{
    bool answered = false;
    std::size_t keys = 0;
    for (OutputNode *child = node.first_child; child != nullptr; child = child->next) {
        if (child->dropped || !keep_answered(*child)) {
            continue;
        }
        answered = true;
        if (child->is_key()) {
            ++keys;
        }
    }
    if (node.list_entry) {
        answered = answered && keys == node.info->keys->size();
    } else if (node.first_child == nullptr) {
        answered = node.record.value != nullptr;
    }
    node.dropped = !answered;
    return answered;
}

/// Walkers have one code for what is no node, for state in an edit, and for what the router does not support.
const char *why_unsupported(const PathInfo &parent, std::string_view tag)
{
    const PathInfo *const info = parent.child(tag);
    if (info == nullptr) {
        return "there is no such node";
    }
    return info->is_state ? "it is state, and cannot be edited" : "this router does not support it";
}

} // namespace

constinit thread_local Request::Impl *serving_request [[gnu::tls_model("initial-exec")]] = nullptr;

Request::Impl::Impl(const Schema &schema_in, std::span<const tqm_map_reg_info> registrations_in, uint32_t kind,
                    Direction direction_in, Watch watch_in)
    : schema(schema_in), registrations(registrations_in), direction(direction_in), watch(std::move(watch_in)),
      observation(watch.observer), paths(schema, arena), output(arena)
{
    header.kind = kind;
    record.hdr = &header;
    context.request = this;
    tqm_map_ctx_record &ctx = context.record;
    ctx.request = &record;
    ctx.debug.filter =
        (watch.log_errors ? uint64_t{1} << TQM_LOG_ERROR : 0) | (watch.log_trace ? uint64_t{1} << TQM_LOG_TRACE : 0);
    ctx.err_log = error_log;
    ctx.trc_log = trace_log;
    ctx.trace_buf = trace_buffer;
    ctx.trace_on = watch.trace_on || observation ? 1 : 0;
    serving() = this;
}

Request::Impl::~Impl()
{
    if (serving() == this) {
        serving() = nullptr;
    }
    std::free(record.error_tag);
    std::free(record.error_msg);
}

void Request::Impl::push(const rdl_tqm_datatree &node, bool is_list)
{
    settle();
    hierarchy.push(node, is_list, paths).undo_start = undo.size();
}

bool Request::Impl::pop(const rdl_tqm_datatree *node)
{
    settle();
    const std::size_t position = hierarchy.position_of(node);
    if (position == hierarchy.depth()) {
        return false;
    }
    if (record.error_msg != nullptr && refused_path.empty() && !made_in_fill(record.error_msg)) {
        note_place_of_message();
    }
    while (hierarchy.depth() > position) {
        for (const std::size_t start = hierarchy.top().undo_start; undo.size() > start; undo.pop_back()) {
            undo.back().list->current = undo.back().previous;
        }
        hierarchy.pop();
    }
    return true;
}

void Request::Impl::note_error_path()
{
    error_path = hierarchy.text();
    if (in_fill()) {
        return;
    }
    refused_path = error_path;
    refused_at = hierarchy.empty() ? nullptr : hierarchy.top().path;
}

/// A mapper may say why it refuses, and not where: at the node on top, or at the leaf in it that was matched last.
void Request::Impl::note_place_of_message()
{
    refused_path = hierarchy.text();
    const Frame &frame = hierarchy.top();
    for (uint32_t i = 0; frame.children != nullptr && i < frame.child_count; ++i) {
        if (frame.children[i].tag == matched_tag && frame.children[i].subtree_count == 0) {
            refused_tag = matched_tag;
        }
    }
}

const rdl_tqm_datatree *Request::Impl::walked_node()
{
    if (hierarchy.empty()) {
        return nullptr;
    }
    Frame &top = hierarchy.top();
    if (!in_fill() && matched_tag != nullptr) {
        const rdl_tqm_datatree *const child = top.child(matched_tag);
        if (child != nullptr && child->tag == matched_tag && child->subtree_count == 0) {
            return child;
        }
    }
    return top.node;
}

void Request::Impl::start_walk()
{
    settle();
    while (!hierarchy.empty()) {
        pop(hierarchy.top().node);
    }
    for (; !undo.empty(); undo.pop_back()) {
        undo.back().list->current = undo.back().previous;
    }
    itree_stack.clear();
    record.walk_flags = 0;
    record.delete_mode = 0;
    record.fill_mode = 0;
    record.filter_flags = 0;
    record.replace_active = 0;
    record.output_depth = 0;
    record.current_list = nullptr;
}

char *Request::Impl::duplicate(const char *text)
{
    if (text == nullptr) {
        return nullptr;
    }
    std::unique_ptr<char, decltype(&std::free)> copy(strdup(text), &std::free);
    if (copy == nullptr) {
        throw std::bad_alloc();
    }
    if (in_fill()) {
        fill_texts.insert(copy.get());
    }
    return copy.release();
}

void Request::Impl::free_text(void *text)
{
    const std::unique_ptr<char, decltype(&std::free)> owned(static_cast<char *>(text), &std::free);
    const char *const given = owned.get();
    if (in_fill() && given != nullptr && given == record.error_tag && !made_in_fill(given)) {
        refused_tag = given;
    }
    fill_texts.erase(given);
}

const char *Request::Impl::intern_ns(const char *ns)
{
    if (ns == nullptr) {
        ns = "";
    }
    if (last_ns != nullptr && std::strcmp(last_ns, ns) == 0) {
        return last_ns;
    }
    auto found = namespaces.find(ns);
    if (found == namespaces.end()) {
        found = namespaces.insert(arena.copy(ns)).first;
    }
    last_ns = found->data();
    return last_ns;
}

// ---- Request ----

Request::Request(const Schema &schema, std::span<const tqm_map_reg_info> registrations, uint32_t kind,
                 Direction direction, Watch watch)
    : impl_(std::make_unique<Impl>(schema, registrations, kind, direction, std::move(watch)))
{
}

Request::~Request() = default;

tqm_map_ctx Request::ctx()
{
    return &impl_->context.record;
}

rdl_tqm_datatree *Request::out()
{
    return &impl_->output.base().record;
}

tqm_map_request &Request::record()
{
    return impl_->record;
}

tqm_map_request_hdr &Request::header()
{
    return impl_->header;
}

Expected<void> Request::load(Document document)
{
    return load_request_tree(*impl_, document.take());
}

TreeBuilder Request::builder()
{
    return TreeBuilder(impl_->arena);
}

void Request::adopt(TreeBuilder::Roots roots)
{
    impl_->trees = roots;
}

rdl_tqm_datatree *Request::tree(uint32_t index)
{
    return index < impl_->trees.count ? impl_->trees.nodes + index : nullptr;
}

uint32_t Request::tree_count() const
{
    return impl_->trees.count;
}

const char *Request::foreign_tag() const
{
    return impl_->foreign_tag;
}

const char *Request::deleted_text(const rdl_tqm_datatree &node) const
{
    const auto found = impl_->deleted_texts.find(&node);
    return found == impl_->deleted_texts.end() ? nullptr : found->second;
}

std::span<const LeftOut> Request::left_out() const
{
    return impl_->left_out;
}

OutputForest Request::output()
{
    if (impl_->out_of_memory) {
        throw std::bad_alloc();
    }
    impl_->settle();
    return OutputForest(&impl_->output.base());
}

std::vector<const OutputNode *> Request::roots()
{
    std::vector<const OutputNode *> roots;
    for (const OutputNode &root : output().roots()) {
        roots.push_back(&root);
    }
    const auto rank = [this](const OutputNode *root) {
        std::size_t position = 0;
        for (const tqm_map_reg_info &registration : impl_->registrations) {
            if (std::strcmp(registration.native_top, root->tag()) == 0) {
                break;
            }
            ++position;
        }
        return position;
    };
    std::ranges::stable_sort(roots, {}, rank);
    return roots;
}

void Request::drop_unanswered()
{
    if (impl_->out_of_memory) {
        throw std::bad_alloc();
    }
    for (OutputNode *root = impl_->output.base().first_child; root != nullptr; root = root->next) {
        keep_answered(*root);
    }
}

const std::string &Request::error_path() const
{
    return impl_->error_path;
}

Error Request::error(rcode code) const
{
    if (impl_->out_of_memory) {
        throw std::bad_alloc();
    }
    const tqm_map_request &record = impl_->record;
    Error error;
    error.code = code;
    const bool has_message = record.error_msg != nullptr && !impl_->made_in_fill(record.error_msg);
    error.text = has_message ? record.error_msg : rcode_strerror(code);
    if (record.error_tag != nullptr && !impl_->made_in_fill(record.error_tag)) {
        error.tag = record.error_tag;
    } else {
        error.tag = impl_->refused_tag;
    }
    error.path = impl_->refused_path;
    if (!has_message && code == TQM_ERR_UNSUPPORTED && impl_->refused_at != nullptr && !error.tag.empty()) {
        error.text = error.tag + ": " + why_unsupported(*impl_->refused_at, error.tag);
    }
    error.error_tag = tag_of(code);
    error.bad_element = error.tag;
    return error;
}

} // namespace tqm
