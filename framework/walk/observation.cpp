#include "walk/observation.h"

#include <algorithm>
#include <optional>
#include <string>

namespace tqm
{
namespace
{

/// What a trace line says of its function.
struct TraceLine {
    std::string_view function;
    std::string_view message;
};

/// Takes "#7: TRC: <function>:<line> ctx=<address>,<message>" apart, the form that tqm_log.h gives these lines. A
/// function says its name and that it runs nowhere else: walkers call one another and mappers inside the plug-in, and
/// operations are given the context alone.
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

} // namespace

void Observation::begin(const rdl_tqm_datatree &tree)
{
    if (observer_ != nullptr) {
        running_.clear();
        next_ = nullptr;
        know_tags(tree);
    }
}

void Observation::know_tags(const rdl_tqm_datatree &node)
{
    tags_.insert(node.tag);
    for (const rdl_tqm_datatree &child : children_of(node)) {
        know_tags(child);
    }
}

void Observation::matched(const char *text)
{
    next_ = tags_.contains(text) ? text : nullptr;
}

void Observation::entered(const rdl_tqm_datatree &node)
{
    if (!tags_.contains(node.tag)) {
        return;
    }
    if (running_.empty()) {
        running_.emplace_back();
    }
    Running &walker = running_.back();
    if (walker.call.tag != node.tag) { // a root walker: nobody has looked for its tag
        walker.call.tag = node.tag;
        observer_->called(walker.call);
    }
    walker.calls_node_function = true;
    observer_->reached(node.tag);
}

void Observation::read(const rdl_tqm_datatree &node) const
{
    observer_->read(innermost(), node);
}

void Observation::added(const Added &add)
{
    if (!running_.empty()) {
        running_.back().call.has_added = true;
    }
    observer_->added(innermost(), add);
}

void Observation::traced(std::string_view line)
{
    const std::optional<TraceLine> trace = parse_trace(line);
    if (!trace) {
        return;
    }
    if (trace->message == "Start") {
        start(trace->function);
    } else if (trace->message == "End") {
        end(trace->function);
    }
}

// A function that starts right behind its walker's entering is the node's own; one that starts behind a match is the
// walker of the child that matched; any other works for the node of the function that called it.
void Observation::start(std::string_view function)
{
    Call call{std::string(function), running_.empty() ? nullptr : running_.back().call.tag, innermost()};
    if (!running_.empty() && running_.back().calls_node_function) {
        running_.back().calls_node_function = false;
    } else if (next_ != nullptr) {
        call.tag = next_;
        observer_->reached(next_);
    }
    next_ = nullptr;
    running_.push_back({std::move(call)});
    if (running_.back().call.tag != nullptr) {
        observer_->called(running_.back().call);
    }
}

// Not every function tells its end; those that are above one that does have ended, too.
void Observation::end(std::string_view function)
{
    const auto found = std::ranges::find(running_.rbegin(), running_.rend(), function,
                                         [](const Running &running) { return running.call.function; });
    if (found != running_.rend()) {
        running_.erase(std::prev(found.base()), running_.end());
    }
}

} // namespace tqm
