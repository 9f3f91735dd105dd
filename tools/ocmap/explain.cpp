#include "explain.h"

#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "dry_run.h"
#include "request_outline.h"
#include "result_outline.h"
#include "shown_value.h"
#include "tqm/framework.h"

namespace ocmap
{
namespace
{

// ---- The walk -------------------------------------------------------------------------------------------------------

class Recorder final : public tqm::Observer
{
public:
    Recorder(const tqm::Schema &schema, Explanation &explanation) : schema_(schema), explanation_(explanation) {}

    // To be called between the request's loading and its walk.
    void know(const RequestOutline &outline) { outline_ = &outline; }

    void reached(const char *tag) override
    {
        if (const auto position = outline_->position_of(tag)) {
            last_ = position;
            explanation_.request[*position].fate = Fate::passed;
        }
    }

    // Of functions that call one another for one node only those are worth a line that add, and the innermost.
    void called(const tqm::Call &call) override
    {
        const auto position = outline_->position_of(call.tag);
        if (!position) {
            return;
        }
        std::vector<std::string> &mappers = explanation_.request[*position].mappers;
        const bool only_calls = call.caller != nullptr && !call.caller->has_added && !mappers.empty() &&
                                mappers.back() == call.caller->function;
        if (only_calls) {
            mappers.pop_back();
        }
        mappers.push_back(call.function);
    }

    void read(const tqm::Call *by, const rdl_tqm_datatree &node) override
    {
        if (const auto position = outline_->position_of(node.tag); position && by != nullptr) {
            readers_.emplace(*position, by->function);
        }
    }

    void added(const tqm::Call *by, const tqm::Added &add) override
    {
        Add &record = explanation_.adds.emplace_back();
        record.node = by == nullptr ? 0 : outline_->position_of(by->tag).value_or(0);
        record.mapper = by == nullptr ? "" : by->function;
        record.path = add.path == nullptr ? "" : add.path;
        const std::string path = record.path.starts_with('/') ? record.path : "/" + record.path;
        record.value = shown_value(schema_, path, add.value);
        record.operation = add.operation ? tqm::operation_name(*add.operation) : "";
        if (add.code != 0) {
            record.not_taken = rcode_strerror(add.code);
        }
        explanation_.request[record.node].adds.push_back(explanation_.adds.size() - 1);
        targets_.push_back(add.node);
    }

    // The result nodes that the adds found, in the order of the adds; null where one was refused.
    const std::vector<const tqm::OutputNode *> &targets() const { return targets_; }
    // Nodes whose values mappers of other nodes, or their own, have looked up, with the first that did.
    const std::unordered_map<std::size_t, std::string> &readers() const { return readers_; }
    // The node at which the walk was last seen.
    std::optional<std::size_t> last() const { return last_; }

private:
    const tqm::Schema &schema_;
    const RequestOutline *outline_ = nullptr;
    Explanation &explanation_;
    std::vector<const tqm::OutputNode *> targets_;
    std::unordered_map<std::size_t, std::string> readers_;
    std::optional<std::size_t> last_;
};

// ---- What became of each node of the request ------------------------------------------------------------------------

// Why nothing of what the node added is in the result; empty if something is. A value that a later
// add repeats is there.
std::string loss(const Explanation &explanation, const RequestNode &node)
{
    std::string reason;
    for (const std::size_t position : node.adds) {
        const Add &add = explanation.adds[position];
        if (add.lost_to && add.value != explanation.results[*add.result].value) {
            reason = "what it added is replaced by " + add_number(*add.lost_to) + ", for " +
                     explanation.request[explanation.adds[*add.lost_to].node].path;
        } else if (add.not_taken) {
            reason = *add.not_taken;
        } else if (!add.result) {
            reason = "it has no value, and an answer holds no such nodes";
        } else {
            return "";
        }
    }
    return reason;
}

void judge(Explanation &explanation, const std::unordered_map<std::size_t, std::string> &readers)
{
    for (const auto &[position, reader] : readers) {
        RequestNode &node = explanation.request[position];
        if (node.fate == Fate::not_reached) {
            node.fate = Fate::passed;
            node.reason = "read by the mapper of a node around it";
            node.mappers.push_back(reader);
        }
    }
    for (RequestNode &node : explanation.request) {
        if (node.fate == Fate::passed && !node.adds.empty()) {
            node.reason = loss(explanation, node);
            node.fate = node.reason.empty() ? Fate::mapped : Fate::dropped;
        } else if (node.fate == Fate::not_reached && !explanation.refusal) {
            node.fate = Fate::dropped;
            node.reason = "no mapping takes it";
        }
    }
}

void note_refusal(Explanation &explanation, const RequestOutline &outline, const char *foreign_tag,
                  std::optional<std::size_t> last)
{
    const tqm::Error &error = *explanation.refusal;
    std::optional<std::size_t> position;
    if (foreign_tag != nullptr) {
        position = outline.position_of(foreign_tag);
        if (position && explanation.request[*position].path != error.path) { // refused for something else
            position.reset();
        }
    }
    if (!position && !error.tag.empty()) {
        position = outline.position_of_path(error.path + "/" + error.tag, last);
    }
    if (!position && !error.path.empty()) {
        position = outline.position_of_path(error.path, last);
    }
    if (!position) {
        position = last;
    }
    if (position) {
        explanation.request[*position].fate = Fate::refused;
        std::string &reason = explanation.request[*position].reason;
        reason = text_at_place(error);
        reason += error.native_text.empty() ? "" : " (" + error.native_path + ": " + error.native_text + ")";
    }
}

// What `ocmap edit` would refuse first; the walk is made all the same.
std::optional<tqm::Error> judge_and_walk(const Environment &environment, tqm::Request &request, const Judges &judges)
{
    const tqm::Framework framework(environment.plugin(), environment.schema(), {}, judges.checker);
    const bool is_edit = judges.checker != nullptr && request.header().kind == TQM_REQ_EDIT;
    auto empty = router::Datastore::in_memory(environment.native());
    Preview native(judges.store != nullptr ? *judges.store : empty,
                   judges.store != nullptr ? NativeStore::Leads::must_be_there : NativeStore::Leads::are_made);
    tqm::Expected<void> good = framework.check(request);
    if (good && is_edit && judges.store != nullptr) {
        good = framework.check_existence(request, native);
    }
    const auto walked = framework.walk(request);
    good = good ? walked : good;
    if (good && is_edit) {
        good = framework.write(request, native);
    }
    return good ? std::nullopt : std::optional(good.error());
}

const char *kind_name(uint32_t kind)
{
    return kind == TQM_REQ_GET ? "get" : kind == TQM_REQ_GET_CONFIG ? "get-config" : "edit";
}

} // namespace

tqm::Expected<Explanation> explain(const Environment &environment, tqm::Document document, tqm::Direction direction,
                                   uint32_t kind, const Judges &judges, tqm::Watch watch)
{
    Explanation explanation;
    kind = tqm::Framework::kind_of(document, direction, kind);
    explanation.reverse = direction == tqm::Direction::reverse;
    explanation.kind = kind_name(kind);

    Recorder recorder(environment.schema(), explanation);
    watch.observer = &recorder;
    tqm::Request request(environment.schema(), environment.plugin().registrations(), kind, direction, watch);
    if (auto loaded = request.load(std::move(document)); !loaded) {
        return tl::unexpected(loaded.error());
    }
    const RequestOutline outline(environment.schema(), request, explanation);
    recorder.know(outline);

    explanation.refusal = judge_and_walk(environment, request, judges);
    if (explanation.refusal) {
        note_refusal(explanation, outline, request.foreign_tag(), recorder.last());
    }
    outline_result(environment.schema(), request.roots(), recorder.targets(), explanation);
    judge(explanation, recorder.readers());
    return explanation;
}

} // namespace ocmap
