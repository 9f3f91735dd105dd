#include "tqm/request.h"

#include <algorithm>
#include <cstring>

#include "documents/tree_loader.h"
#include "walk/request_state.h"

namespace tqm
{

namespace
{

constexpr uint64_t error_log = 1;
constexpr uint64_t trace_log = 2;
constexpr uint64_t trace_buffer = 1;

/// True where an answer has something to say at `node`; takes what has not out of the tree.
bool keep_answered(OutputRecord &node)
{
    bool answered = false;
    std::size_t keys = 0;
    for (OutputRecord *child = node.first_child(); child != nullptr; child = child->next) {
        if (child->dropped || !keep_answered(*child)) {
            continue;
        }
        answered = true;
        keys += child->is_key();
    }
    if (node.list_entry) {
        answered = answered && keys == node.info()->keys().size();
    } else if (node.first_child() == nullptr) {
        answered = node.value != nullptr;
    }
    node.dropped = !answered;
    return answered;
}

} // namespace

constinit thread_local Request::Impl *serving_request [[gnu::tls_model("initial-exec")]] = nullptr;
constinit thread_local Journal *questions_journal [[gnu::tls_model("initial-exec")]] = nullptr;

Request::Impl::Impl(const Schema &schema, std::span<const tqm_map_reg_info> registrations, uint32_t kind,
                    Direction direction, Watch watch)
    : schema_(schema), registrations_(registrations), watch_(std::move(watch)), kind_(header_, direction),
      namespaces_(schema, arena_), paths_(schema, arena_), output_(arena_), observation_(watch_.observer),
      failure_(record_, hierarchy_),
      placing_({kind_, context_.record, registrations_, observation_, arena_, namespaces_, paths_, hierarchy_, output_})
{
    header_.kind = kind;
    record_.hdr = &header_;
    context_.request = this;
    tqm_map_ctx_record &ctx = context_.record;
    ctx.request = &record_;
    ctx.debug.filter =
        (watch_.log_errors ? uint64_t{1} << TQM_LOG_ERROR : 0) | (watch_.log_trace ? uint64_t{1} << TQM_LOG_TRACE : 0);
    ctx.err_log = error_log;
    ctx.trc_log = trace_log;
    ctx.trace_buf = trace_buffer;
    ctx.trace_on = watch_.trace_on || observation_ ? 1 : 0;
    serve(this);
}

Request::Impl::~Impl()
{
    if (serving() == this) {
        serve(nullptr);
    }
}

void Request::Impl::enter(const rdl_tqm_datatree &node, bool is_list)
{
    placing_.move();
    hierarchy_.push(node, is_list, paths_).undo_start = placing_.made_current();
}

bool Request::Impl::leave(const rdl_tqm_datatree *node)
{
    placing_.move();
    const std::size_t position = hierarchy_.position_of(node);
    if (position == hierarchy_.depth()) {
        return false;
    }
    failure_.note_place_of_message();
    while (hierarchy_.depth() > position) {
        placing_.undo_to(hierarchy_.top().undo_start);
        hierarchy_.pop();
    }
    return true;
}

bool Request::Impl::leads_to_an_entry()
{
    return placing_.made_current() > hierarchy_.top().undo_start;
}

void Request::Impl::start_walk()
{
    placing_.move();
    while (!hierarchy_.empty()) {
        leave(hierarchy_.top().node);
    }
    placing_.undo_to(0);
    iterations_.clear();
    record_.walk_flags = 0;
    record_.delete_mode = 0;
    record_.fill_mode = 0;
    record_.filter_flags = 0;
    record_.replace_active = 0;
    record_.output_depth = 0;
    record_.current_list = nullptr;
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
    return &impl_->context();
}

rdl_tqm_datatree *Request::out()
{
    return impl_->output().handle_of(impl_->output().base());
}

tqm_map_request &Request::record()
{
    return impl_->record();
}

tqm_map_request_hdr &Request::header()
{
    return impl_->header();
}

Expected<void> Request::load(Document document)
{
    const LoadRules rules{impl_->schema(), impl_->registrations(), impl_->kind(), impl_->watch().observer != nullptr};
    return load_tree(std::move(document), rules, {impl_->arena(), impl_->namespaces(), impl_->paths(), impl_->tree()});
}

TreeBuilder Request::builder()
{
    return TreeBuilder(impl_->arena());
}

void Request::adopt(TreeBuilder::Roots roots)
{
    impl_->tree().adopt(roots);
}

rdl_tqm_datatree *Request::tree(uint32_t index)
{
    const TreeBuilder::Roots &roots = impl_->tree().roots();
    return index < roots.count ? roots.nodes + index : nullptr;
}

uint32_t Request::tree_count() const
{
    return impl_->tree().roots().count;
}

const char *Request::foreign_tag() const
{
    return impl_->tree().foreign_tag();
}

const char *Request::deleted_text(const rdl_tqm_datatree &node) const
{
    return impl_->tree().deleted_text(node);
}

std::span<const LeftOut> Request::left_out() const
{
    return impl_->tree().left_out();
}

std::vector<const OutputNode *> Request::roots()
{
    impl_->failure().check_memory();
    impl_->placing().settle();
    std::vector<const OutputNode *> roots;
    const OutputNode::Children tops = impl_->output().base().children();
    for (const OutputNode &root : tops) {
        roots.push_back(&root);
    }
    const auto rank = [this](const OutputNode *root) {
        const auto named = [root](const tqm_map_reg_info &registration) {
            return std::strcmp(registration.native_top, root->tag()) == 0;
        };
        return std::ranges::find_if(impl_->registrations(), named) - impl_->registrations().begin();
    };
    std::ranges::stable_sort(roots, {}, rank);
    return roots;
}

void Request::drop_unanswered()
{
    impl_->failure().check_memory();
    for (OutputRecord *root = impl_->output().base().first_child(); root != nullptr; root = root->next) {
        keep_answered(*root);
    }
}

std::string Request::error_path() const
{
    return impl_->failure().path();
}

Error Request::error(rcode code) const
{
    return impl_->failure().error(code);
}

} // namespace tqm
