// Tells an observer what a walk does. It knows of each event which function of the plug-in it comes from, and for which
// node: functions nest as the nodes do that they are called for.
#pragma once

#include <deque>
#include <string_view>
#include <unordered_set>

#include "tqm/observer.h"

namespace tqm
{

class Observation
{
public:
    /// Without an `observer` nothing is told, and nothing may be called but begin().
    explicit Observation(Observer *observer) : observer_(observer) {}
    explicit operator bool() const { return observer_ != nullptr; }

    /// The walk of a tree begins: its nodes are those that the walk can come to. Loading asks questions, too.
    void begin(const rdl_tqm_datatree &tree);

    /// A walker has found that a text, which may be the tag of a child, is what it looks for.
    void matched(const char *text);
    /// A walker stands at a container or list entry now.
    void entered(const rdl_tqm_datatree &node);
    void read(const rdl_tqm_datatree &node) const;
    void added(const Added &add);
    /// A line of the plug-in for the trace buffer.
    void traced(std::string_view line);

private:
    struct Running {
        Call call;
        bool calls_node_function = false; ///< a walker that has entered its node and is about to call its function
    };

    void know_tags(const rdl_tqm_datatree &node);
    void start(std::string_view function);
    void end(std::string_view function);
    const Call *innermost() const { return running_.empty() ? nullptr : &running_.back().call; }

    Observer *observer_;
    std::deque<Running> running_;           ///< innermost last; addresses stay
    std::unordered_set<const char *> tags_; ///< of the nodes that are walked
    const char *next_ = nullptr;            ///< tag of the child whose walker is about to be called
};

} // namespace tqm
