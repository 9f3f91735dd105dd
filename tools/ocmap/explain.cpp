// Watching a walk. What the framework tells is put together with the plug-in's trace lines, which say which function
// runs: functions nest as the nodes do that they are called for.
#include "explain.h"

#include <algorithm>
#include <map>
#include <unordered_map>
#include <utility>

#include "dry_run.h"
#include "tqm/framework.h"

namespace ocmap
{
namespace
{

const char *const masked = "***";

// The value of the node at a schema path. An empty text hides nothing.
std::optional<std::string> shown_value(const tqm::Schema &schema, std::string_view path, const char *value)
{
    if (value == nullptr) {
        return std::nullopt;
    }
    return *value != '\0' && schema.hides(path) ? masked : value;
}

// A trace line of the plug-in: "#7: TRC: <function>:<line> ctx=<address>,<message>".
struct TraceLine {
    std::string_view function;
    std::string_view message;
};

std::optional<TraceLine> parse_trace(std::string_view line)
{
    constexpr std::string_view mark = "TRC: ";
    const std::size_t begin = line.find(mark);
    const std::size_t comma = line.find(',');
    if (begin == std::string_view::npos || comma == std::string_view::npos || comma < begin) {
        return std::nullopt;
    }
    const std::string_view rest = line.substr(begin + mark.size(), comma - begin - mark.size());
    return TraceLine{rest.substr(0, rest.find(':')), line.substr(comma + 1)};
}

// ---- The request, before the walk -----------------------------------------------------------------------------------

class RequestOutline
{
public:
    RequestOutline(const tqm::Schema &schema, tqm::Request &request, Explanation &explanation)
        : schema_(schema), request_(request), explanation_(explanation)
    {
        for (const tqm::LeftOut &left : request.left_out()) {
            left_out_.emplace(left.parent, &left);
        }
        for (uint32_t i = 0; i < request.tree_count(); ++i) {
            add(*request.tree(i), 0, "", "");
        }
        auto [left, left_end] = left_out_.equal_range(nullptr);
        for (; left != left_end; ++left) {
            add_left_out(*left->second, 0, "", "");
        }
    }

    // Position of the node whose tag has this address.
    std::optional<std::size_t> position_of(const char *tag) const
    {
        const auto found = by_tag_.find(tag);
        return found == by_tag_.end() ? std::nullopt : std::optional(found->second);
    }

    // The node with this path, keys included. Of several the one that the walk has come to last.
    std::optional<std::size_t> position_of_path(const std::string &path, std::optional<std::size_t> last) const
    {
        std::optional<std::size_t> found;
        for (std::size_t i = 0; i < explanation_.request.size() && (!found || i <= last.value_or(0)); ++i) {
            if (is_at(explanation_.request[i], path)) {
                found = i;
            }
        }
        return found;
    }

private:
    // `path` may end in a leaf-list's value, "[.='x']".
    static bool is_at(const RequestNode &node, const std::string &path)
    {
        if (node.path == path || !node.value || !path.starts_with(node.path)) {
            return node.path == path;
        }
        std::string with_value = node.path;
        tqm::append_key(with_value, ".", *node.value);
        return with_value == path;
    }

    void add(const rdl_tqm_datatree &node, std::size_t depth, const std::string &outer_schema_path,
             const std::string &outer_path)
    {
        const std::string schema_path = outer_schema_path + "/" + node.tag;
        RequestNode &shown = explanation_.request.emplace_back();
        by_tag_.emplace(node.tag, explanation_.request.size() - 1);
        shown.depth = depth;
        shown.tag = node.tag;
        shown.path = outer_path + "/" + node.tag;
        if (const std::vector<std::string> *const keys = schema_.list_keys(schema_path)) {
            tqm::append_keys(shown.path, node, *keys);
        }
        if ((node.present & TQM_PRESENT_VALUE) != 0) {
            shown.value = shown_value(schema_, schema_path, node.value);
        } else if (schema_.is_leaf_list(schema_path)) { // a value that goes is told by itself
            shown.value = shown_value(schema_, schema_path, request_.deleted_text(node));
        }
        if ((node.present & TQM_PRESENT_OPERATION) != 0) {
            shown.operation = tqm::operation_name(node.operation);
        }
        const std::string path = shown.path;
        auto [left, left_end] = left_out_.equal_range(&node);
        for (uint32_t i = 0; i <= child_count(node); ++i) {
            for (; left != left_end && left->second->position == i; ++left) {
                add_left_out(*left->second, depth + 1, schema_path, path);
            }
            if (i < child_count(node)) {
                add(node.subtree[i], depth + 1, schema_path, path);
            }
        }
    }

    void add_left_out(const tqm::LeftOut &left, std::size_t depth, const std::string &outer_schema_path,
                      const std::string &outer_path)
    {
        const std::size_t first = explanation_.request.size();
        add(left.node, depth, outer_schema_path, outer_path);
        const char *const no_operation = "the default-operation is none, and it has no operation of its own";
        for (std::size_t i = first; i < explanation_.request.size(); ++i) {
            explanation_.request[i].fate = Fate::dropped;
            explanation_.request[i].reason = left.reason == nullptr ? no_operation : left.reason;
        }
    }

    static uint32_t child_count(const rdl_tqm_datatree &node)
    {
        return (node.present & TQM_PRESENT_SUBTREE) != 0 && node.subtree != nullptr ? node.subtree_count : 0;
    }

    const tqm::Schema &schema_;
    const tqm::Request &request_;
    Explanation &explanation_;
    std::unordered_map<const char *, std::size_t> by_tag_;
    std::multimap<const rdl_tqm_datatree *, const tqm::LeftOut *> left_out_; // equal keys stay in document order
};

// ---- The walk -------------------------------------------------------------------------------------------------------

class Recorder final : public tqm::Observer
{
public:
    Recorder(const tqm::Schema &schema, Explanation &explanation) : schema_(schema), explanation_(explanation) {}

    // To be called between the request's loading and its walk: loading asks questions, too.
    void know(const RequestOutline &outline) { outline_ = &outline; }

    void matched(const char *tag) override
    {
        if (outline_ != nullptr) {
            next_ = outline_->position_of(tag);
        }
    }

    void entered(const rdl_tqm_datatree &node) override
    {
        const auto position = outline_ == nullptr ? std::nullopt : outline_->position_of(node.tag);
        if (!position) {
            return;
        }
        if (running_.empty()) {
            running_.push_back({});
        }
        Running &walker = running_.back();
        if (walker.node != position) { // a root walker: nobody has looked for its tag
            walker.node = position;
            explanation_.request[*position].mappers.push_back(walker.function);
        }
        walker.calls_node_function = true;
        walked(*position);
    }

    void read(const rdl_tqm_datatree &node) override
    {
        const auto position = outline_ == nullptr ? std::nullopt : outline_->position_of(node.tag);
        if (position && !running_.empty()) {
            readers_.emplace(*position, running_.back().function);
        }
    }

    void added(const tqm::Added &add) override
    {
        Add &record = explanation_.adds.emplace_back();
        record.node = running_.empty() ? 0 : running_.back().node.value_or(0);
        record.mapper = running_.empty() ? "" : running_.back().function;
        record.path = add.path == nullptr ? "" : add.path;
        const std::string path = record.path.starts_with('/') ? record.path : "/" + record.path;
        record.value = shown_value(schema_, path, add.value);
        record.operation = add.operation ? tqm::operation_name(*add.operation) : "";
        if (!running_.empty()) {
            running_.back().has_added = true;
        }
        if (add.code != 0) {
            record.not_taken = rcode_strerror(add.code);
        }
        explanation_.request[record.node].adds.push_back(explanation_.adds.size() - 1);
        targets_.push_back(add.node);
    }

    void traced(std::string_view text)
    {
        const std::optional<TraceLine> line = parse_trace(text);
        if (!line) {
            return;
        }
        if (line->message == "Start") {
            start(std::string(line->function));
        } else if (line->message == "End") {
            end(line->function);
        }
    }

    // The result nodes that the adds found, in the order of the adds; null where one was refused.
    const std::vector<const tqm::OutputNode *> &targets() const { return targets_; }
    // Nodes whose values mappers of other nodes, or their own, have looked up, with the first that did.
    const std::unordered_map<std::size_t, std::string> &readers() const { return readers_; }
    // The node at which the walk was last seen.
    std::optional<std::size_t> last() const { return last_; }

private:
    struct Running {
        std::string function;
        std::optional<std::size_t> node = {};
        bool has_added = false;
        bool calls_node_function = false; ///< a walker that has entered its node and is about to call its function
    };

    // A function that starts right behind its walker's entering is the node's own; one that starts behind a match is
    // the walker of the child that matched; any other works for the node of the function that called it.
    void start(std::string function)
    {
        std::optional<std::size_t> node;
        if (!running_.empty()) {
            node = running_.back().node;
        }
        if (!running_.empty() && running_.back().calls_node_function) {
            running_.back().calls_node_function = false;
        } else if (next_) {
            node = next_;
            walked(*node);
        }
        next_.reset();
        if (node) {
            note_function(explanation_.request[*node], function);
        }
        running_.push_back({std::move(function), node});
    }

    // Of functions that call one another for one node only those are worth a line that add, and the innermost.
    void note_function(RequestNode &node, const std::string &function) const
    {
        const bool only_calls = !running_.empty() && !node.mappers.empty() &&
                                node.mappers.back() == running_.back().function && !running_.back().has_added;
        if (only_calls) {
            node.mappers.pop_back();
        }
        node.mappers.push_back(function);
    }

    // Not every function tells its end; those that are above one that does have ended, too.
    void end(std::string_view function)
    {
        const auto found = std::ranges::find(running_.rbegin(), running_.rend(), function,
                                             [](const Running &r) { return r.function; });
        if (found != running_.rend()) {
            running_.erase(std::prev(found.base()), running_.end());
        }
    }

    void walked(std::size_t position)
    {
        last_ = position;
        explanation_.request[position].fate = Fate::passed;
    }

    const tqm::Schema &schema_;
    const RequestOutline *outline_ = nullptr;
    Explanation &explanation_;
    std::vector<const tqm::OutputNode *> targets_;
    std::vector<Running> running_;
    std::unordered_map<std::size_t, std::string> readers_;
    std::optional<std::size_t> next_; ///< the child whose walker is about to be called
    std::optional<std::size_t> last_;
};

// ---- The result, after the walk -------------------------------------------------------------------------------------

class ResultOutline
{
public:
    ResultOutline(const tqm::Schema &schema, Explanation &explanation) : schema_(schema), explanation_(explanation) {}

    void add(const tqm::OutputNode &node, std::size_t depth = 0, const std::string &outer = "",
             uint32_t outer_operation = TQM_OP_MERGE)
    {
        positions_.emplace(&node, explanation_.results.size());
        ResultNode &shown = explanation_.results.emplace_back();
        shown.depth = depth;
        shown.tag = node.tag();
        shown.ns = node.ns();
        shown.value = shown_value(schema_, node.path(), node.value());
        const tqm::WrittenOperation operation = tqm::written_operation(node, outer_operation);
        shown.operation = operation.name == nullptr ? "" : operation.name;
        shown.path = outer + "/" + shown.tag;
        for (const tqm::OutputNode &child : node.children()) {
            if (node.is_list_entry() && child.is_key() && child.value() != nullptr) {
                tqm::append_key(shown.path, child.tag(), child.value());
            }
        }
        const std::string path = shown.path;
        for (const tqm::OutputNode &child : node.children()) {
            add(child, depth + 1, path, operation.effective);
        }
    }

    // Entries that turned out to be one have been joined.
    std::optional<std::size_t> position_of(const tqm::OutputNode *node) const
    {
        while (node != nullptr && node->merged_into != nullptr) {
            node = node->merged_into;
        }
        const auto found = positions_.find(node);
        return found == positions_.end() ? std::nullopt : std::optional(found->second);
    }

private:
    const tqm::Schema &schema_;
    Explanation &explanation_;
    std::unordered_map<const tqm::OutputNode *, std::size_t> positions_;
};

// An operation that was not known yet when the node was added is no other one.
bool differ(const Add &a, const Add &b)
{
    return a.value != b.value || (!a.operation.empty() && !b.operation.empty() && a.operation != b.operation);
}

// Of several adds to one node the last stands.
void find_winners(Explanation &explanation, const ResultNode &result, bool is_key)
{
    std::vector<std::size_t> standing;
    for (const std::size_t position : result.adds) {
        Add &add = explanation.adds[position];
        if (standing.empty() || !differ(explanation.adds[standing.back()], add)) {
            standing.push_back(position);
            continue;
        }
        if (is_key && !add.value) {
            add.not_taken = "a key keeps its value";
            continue;
        }
        for (const std::size_t loser : standing) {
            explanation.adds[loser].lost_to = position;
        }
        add.wins_over = std::exchange(standing, {position});
    }
}

void connect(Explanation &explanation, const ResultOutline &results,
             const std::vector<const tqm::OutputNode *> &targets)
{
    std::vector<bool> keys(explanation.results.size());
    for (std::size_t position = 0; position < targets.size(); ++position) {
        Add &add = explanation.adds[position];
        add.result = results.position_of(targets[position]);
        if (add.result) {
            explanation.results[*add.result].adds.push_back(position);
            keys[*add.result] = targets[position]->is_key();
        }
    }
    for (std::size_t position = 0; position < explanation.results.size(); ++position) {
        find_winners(explanation, explanation.results[position], keys[position]);
    }
}

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
    watch.trace = [&recorder, others = std::move(watch.trace)](std::string_view line) {
        recorder.traced(line);
        if (others) {
            others(line);
        }
    };
    watch.trace_on = true;
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
    ResultOutline results(environment.schema(), explanation);
    for (const tqm::OutputNode *root : request.roots()) {
        results.add(*root);
    }
    connect(explanation, results, recorder.targets());
    judge(explanation, recorder.readers());
    return explanation;
}

} // namespace ocmap
