// A request as the framework sees it: its parts, each with a job and a header of its own, and the context that leads a
// plug-in's call back to them.
#pragma once

#include <deque>
#include <span>
#include <string>

#include "schema/paths.h"
#include "tqm/request.h"
#include "trees/arena.h"
#include "trees/namespaces.h"
#include "trees/output.h"
#include "trees/request_tree.h"
#include "walk/failure.h"
#include "walk/hierarchy.h"
#include "walk/observation.h"
#include "walk/placing.h"
#include "walk/walk_kind.h"

namespace tqm
{

class TQM_HIDDEN Request::Impl
{
public:
    Impl(const Schema &schema, std::span<const tqm_map_reg_info> registrations, uint32_t kind, Direction direction,
         Watch watch);
    ~Impl();
    Impl(const Impl &) = delete;
    Impl &operator=(const Impl &) = delete;

    /// The request of a context; null for a null one.
    static Impl *of(tqm_map_ctx ctx)
    {
        return ctx == nullptr ? nullptr : reinterpret_cast<ContextBlock *>(ctx)->request;
    }

    // ---- What it is for ----
    const Schema &schema() const { return schema_; }
    std::span<const tqm_map_reg_info> registrations() const { return registrations_; }
    const Watch &watch() const { return watch_; }
    const WalkKind &kind() const { return kind_; }
    void widen() { kind_.widen(); }
    /// The journal, if it wants to know of questions, too.
    Journal *asks_questions() const
    {
        return watch_.journal != nullptr && watch_.journal->questions() ? watch_.journal : nullptr;
    }

    // ---- What plug-ins see ----
    tqm_map_ctx_record &context() { return context_.record; }
    tqm_map_request &record() { return record_; }
    tqm_map_request_hdr &header() { return header_; }
    bool in_fill() const { return record_.fill_mode == 1; }

    // ---- Its parts ----
    Arena &arena() { return arena_; }
    Namespaces &namespaces() { return namespaces_; }
    PathTable &paths() { return paths_; }
    const PathTable &paths() const { return paths_; }
    RequestTree &tree() { return tree_; }
    const RequestTree &tree() const { return tree_; }
    Output &output() { return output_; }
    Hierarchy &hierarchy() { return hierarchy_; }
    Placing &placing() { return placing_; }
    const Placing &placing() const { return placing_; }
    Observation &observation() { return observation_; }
    Failure &failure() { return failure_; }
    const Failure &failure() const { return failure_; }
    std::deque<tqm_map_itree> &iterations() { return iterations_; }

    // ---- The walk ----
    /// The walker stands at `node` now.
    void enter(const rdl_tqm_datatree &node, bool is_list);
    /// The walker leaves `node`, and what it has entered since. False where it does not stand in it.
    bool leave(const rdl_tqm_datatree *node);
    /// True where mappers have made an entry current since the walker entered the node on top.
    bool leads_to_an_entry();
    /// Ready for the walk of another tree.
    void start_walk();

    /// The number of the next trace line.
    uint32_t next_trace_index() { return ++trace_index_; }
    /// Several requests that serve one of a client's count their trace lines together.
    void continue_trace_of(const Impl &other) { trace_index_ = other.trace_index_; }

private:
    /// What a `tqm_map_ctx` points at. The record comes first, so that the context leads back to its request.
    struct ContextBlock {
        tqm_map_ctx_record record{};
        Impl *request = nullptr;
    };

    const Schema &schema_;
    std::span<const tqm_map_reg_info> registrations_;
    Watch watch_;

    tqm_map_request_hdr header_{};
    tqm_map_request record_{};
    ContextBlock context_;
    WalkKind kind_;

    Arena arena_;
    Namespaces namespaces_;
    PathTable paths_;
    RequestTree tree_;
    Output output_;
    Hierarchy hierarchy_;
    Observation observation_;
    Failure failure_;
    Placing placing_;
    std::deque<tqm_map_itree> iterations_;
    uint32_t trace_index_ = 0;
};

// The library is linked to its program, so that the fast way to a thread's variables is open.
extern constinit thread_local Request::Impl *serving_request [[gnu::tls_model("initial-exec")]];
/// The journal that wants to know of the questions of serving_request; null if none does.
extern constinit thread_local Journal *questions_journal [[gnu::tls_model("initial-exec")]];

/// The request that operations without a context serve on this thread; null if there is none.
inline Request::Impl *serving()
{
    return serving_request;
}

/// From now on `request`, which may be null, is the one that operations without a context serve on this thread.
inline void serve(Request::Impl *request)
{
    if (serving_request != request) {
        serving_request = request;
        questions_journal = request == nullptr ? nullptr : request->asks_questions();
    }
}

} // namespace tqm
