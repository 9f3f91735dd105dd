// One request while it is being served: the context that mappers get, the trees that they read and build, and what they
// leave behind. The framework makes one for each walk; tests of a plug-in make their own and call its functions.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "tqm/document.h"
#include "tqm/error.h"
#include "tqm/journal.h"
#include "tqm/observer.h"
#include "tqm/schema.h"
#include "tqm/tree.h"
#include "tqm_map.h"

namespace tqm
{

/// Where lines go, and which. All pointers are borrowed and must outlive the request.
struct Watch {
    Journal *journal = nullptr;
    Faults *faults = nullptr;
    Observer *observer = nullptr;
    std::function<void(uint32_t level, std::string_view line)> log = {}; ///< framework log; level is TQM_LOG_*
    std::function<void(std::string_view line)> trace = {};               ///< trace buffer
    bool log_errors = false;                                             ///< let lines of TQM_LOG_ERROR through to log
    bool log_trace = false;                                              ///< let lines of TQM_LOG_TRACE through to log
    bool trace_on = false; ///< send every line to trace, too; so does an observer
};

enum class Direction {
    forward, ///< adds build native trees, placed by the list entries that the walk stands in
    reverse  ///< adds build the OpenConfig tree, placed in the entries that list mappers made, found or stitched
};

/// A node of a document that is not walked: of an edit a leaf that says nothing under the default-operation none, of a
/// read what selects nothing or is matched in the answer alone.
struct LeftOut {
    const rdl_tqm_datatree *parent; ///< null for a top element
    uint32_t position;              ///< it stood before the parent's child with this index
    rdl_tqm_datatree node;
    const char *reason = nullptr; ///< one sentence; null for the leaf of an edit
};

/// One request: what it holds - trees, nodes, texts - lives until it ends.
///
/// The operations find their request through the context; those without a context argument serve the request that was
/// made last on the thread, or that a Framework is walking there. An operation that gets no memory answers its plug-in
/// TQM_ERR_INVALID_REQUEST; whoever then asks the request for its output or its error is thrown std::bad_alloc.
///
/// A request is one thread's at a time. Several may be loaded, read and printed side by side; of those that a plug-in
/// walks only one is walked at a time in a process (Framework::walk sees to that; who calls a plug-in's functions by
/// hand must).
class TQM_EXPORT Request
{
public:
    /// `schema` and what `registrations` names must outlive the request. `kind` is TQM_REQ_* or any other number.
    Request(const Schema &schema, std::span<const tqm_map_reg_info> registrations, uint32_t kind, Direction direction,
            Watch watch = {});
    ~Request();
    Request(const Request &) = delete;
    Request &operator=(const Request &) = delete;

    tqm_map_ctx ctx();
    /// What the root walker gets as `out`.
    rdl_tqm_datatree *out();
    tqm_map_request &record();
    /// The request header: kind, option groups, data selector. May be written before a walk.
    tqm_map_request_hdr &header();

    /// Reads the document's elements into the request tree. Forward: one OpenConfig top element, or in a filter several
    /// with the same name, which become one tree, beside those of other models. Reverse: native ones. A filter with no
    /// element of ours gives no tree.
    Expected<void> load(Document document);
    /// Makes the request tree by hand: fill the builder, then call adopt.
    TreeBuilder builder();
    void adopt(TreeBuilder::Roots roots);
    /// The request's trees; of a forward request at most one. Null when there is none.
    rdl_tqm_datatree *tree(uint32_t index = 0);
    uint32_t tree_count() const;
    /// Tag of an edit's first element of another namespace, known by its address, as those that an observer is told of.
    /// Null if there is none.
    const char *foreign_tag() const;
    /// The text that the document has at a deleted node, which the walkers do not get; null if it has none.
    const char *deleted_text(const rdl_tqm_datatree &node) const;
    /// In document order; empty without an observer.
    std::span<const LeftOut> left_out() const;

    /// The roots of what was built so far, in the order of the registrations, those that no registration names last.
    /// Operations that wait for the walk are settled first.
    std::vector<const OutputNode *> roots();
    /// Reverse reads: takes leaves without a value, entries without a key and empty containers out of the output.
    void drop_unanswered();

    /// The path noted by tqm_oc_error_path, with keys; empty if none was.
    std::string error_path() const;
    /// What a client is told when a walk has returned `code` (not 0): error_msg or a sentence for the code, with path
    /// and tag unless a fill left them behind.
    Error error(rcode code) const;

    /// The framework's side of it.
    class Impl;

private:
    friend class Framework;

    std::unique_ptr<Impl> impl_;
};

} // namespace tqm
