// The node hierarchy: the walked nodes from the root down to where the walker stands.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "schema/paths.h"
#include "tqm/instance_path.h"
#include "tqm_map.h"

namespace tqm
{

struct OutputRecord;

/// First child of `nodes` with `tag`, null if there is none.
const rdl_tqm_datatree *find_child(const rdl_tqm_datatree *nodes, uint32_t count, std::string_view tag);
/// The child of `node`, if its children are given.
const rdl_tqm_datatree *find_child(const rdl_tqm_datatree &node, std::string_view tag);
/// Value of a node if it is given, else null.
inline const char *given_value(const rdl_tqm_datatree *node)
{
    return node != nullptr && (node->present & TQM_PRESENT_VALUE) != 0 ? node->value : nullptr;
}

/// A list entry of the output that belongs to a list entry of the walk.
struct Instance {
    const PathInfo *list;
    OutputRecord *entry;
};

/// The output entries of one walked list entry: one in each list that it leads to.
class Instances
{
public:
    OutputRecord *find(const PathInfo &list) const
    {
        for (const Instance &instance : instances_) {
            if (instance.list == &list) {
                return instance.entry;
            }
        }
        return nullptr;
    }
    void add(const PathInfo &list, OutputRecord &entry) { instances_.push_back({&list, &entry}); }
    void clear() { instances_.clear(); }

private:
    std::vector<Instance> instances_;
};

/// One node on the way to where the walk stands.
struct WalkStep {
    const rdl_tqm_datatree *node = nullptr;
    const PathInfo *path = nullptr; ///< null when the tag gives none
    bool is_list = false;
    /// The children at the time of the push: walkers hide them for a while (key fill, remove pass).
    const rdl_tqm_datatree *children = nullptr;
    uint32_t child_count = 0;

    std::span<const rdl_tqm_datatree> all_children() const
    {
        const bool live = (node->present & TQM_PRESENT_SUBTREE) != 0;
        return live ? std::span(node->subtree, node->subtree_count) : std::span(children, child_count);
    }
};

/// The way to where a walk stood, as it was then: what becomes a place if it is asked for.
using WalkSteps = std::vector<WalkStep>;
/// With the keys of list entries.
InstancePath place_of(const WalkSteps &steps);

struct Frame : WalkStep {
    int32_t list_frame = -1;    ///< position of the innermost list frame at or above this one
    std::size_t undo_start = 0; ///< reverse: where the entries begin that this frame made current
    Instances instances;

    /// First child with `tag`, hidden or not.
    const rdl_tqm_datatree *child(std::string_view tag);

private:
    friend class Hierarchy;
    // Many children (of a node with a long leaf-list) are looked up in a hash, so that each look-up stays constant.
    std::unordered_map<std::string_view, const rdl_tqm_datatree *> index_;
    const rdl_tqm_datatree *indexed_ = nullptr;
};

class Hierarchy
{
public:
    bool empty() const { return depth_ == 0; }
    std::size_t depth() const { return depth_; }
    Frame &top() { return frames_[depth_ - 1]; }
    Frame &at(std::size_t position) { return frames_[position]; }
    /// The innermost list frame, null if the walk stands in no entry.
    Frame *innermost_list() { return empty() || top().list_frame < 0 ? nullptr : &at_list(top().list_frame); }
    /// The next list frame outwards, null at the outermost.
    Frame *outer_list(const Frame &list);

    Frame &push(const rdl_tqm_datatree &node, bool is_list, PathTable &paths);
    void pop() { --depth_; }
    /// Position of the frame of `node`, searched from the top; depth() if it is not there.
    std::size_t position_of(const rdl_tqm_datatree *node);
    /// The innermost frame at schema path `path`; null if there is none.
    Frame *find(const PathInfo *path);
    /// The children of `node` were replaced by a longer array.
    void children_moved(const rdl_tqm_datatree &node);
    /// Where the walk stands. `steps` is used again for its memory.
    void copy_to(WalkSteps &steps) const
    {
        steps.assign(frames_.begin(), frames_.begin() + static_cast<std::ptrdiff_t>(depth_));
    }

    // ---- What the walker, and mappers, have last looked at ----

    /// A walker has found that `tag`, a text of the request, is that of a child which it knows.
    void note_match(const char *tag) { matched_tag_ = tag; }
    /// The tag that was found to match last; null if none was.
    const char *matched_tag() const { return matched_tag_; }
    /// True where the node on top had a child without children of its own, with this very tag, when it was pushed.
    bool top_has_leaf(const char *tag) const;
    /// The request node that the walk has come to: the leaf that was matched last, or the node on top. In a fill, which
    /// matches nothing, the one that is filled. Null if the walk stands nowhere.
    const rdl_tqm_datatree *walked_node(bool in_fill);
    /// A mapper has looked up the value of `child` of the walked node `parent`.
    void note_lookup(const rdl_tqm_datatree *parent, const rdl_tqm_datatree *child) { looked_up_ = {parent, child}; }
    /// The child of `node` that was looked up last; null if that was another node's.
    const rdl_tqm_datatree *looked_up_in(const rdl_tqm_datatree &node) const
    {
        return looked_up_.parent == &node ? looked_up_.child : nullptr;
    }

private:
    const rdl_tqm_datatree *matched_child();
    Frame &at_list(int32_t position) { return frames_[static_cast<std::size_t>(position)]; }

    std::vector<Frame> frames_; ///< those from depth_ on are kept for their memory
    std::size_t depth_ = 0;
    const char *matched_tag_ = nullptr;
    struct {
        const rdl_tqm_datatree *parent = nullptr;
        const rdl_tqm_datatree *child = nullptr;
    } looked_up_;
};

} // namespace tqm
