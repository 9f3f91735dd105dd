#include "walk/hierarchy.h"

#include <cstring>

namespace tqm
{

namespace
{
constexpr uint32_t worth_an_index = 48;
constexpr std::size_t few_frames = 8;
} // namespace

const rdl_tqm_datatree *find_child(const rdl_tqm_datatree *nodes, uint32_t count, std::string_view tag)
{
    // The first character tells most of them apart.
    const char first = tag.empty() ? '\0' : tag.front();
    const auto is_it = [tag, first](const char *other) { return other != nullptr && *other == first && tag == other; };
    for (uint32_t i = 0; nodes != nullptr && i < count; ++i) {
        if (is_it(nodes[i].tag)) {
            return nodes + i;
        }
    }
    return nullptr;
}

const rdl_tqm_datatree *find_child(const rdl_tqm_datatree &node, std::string_view tag)
{
    if ((node.present & TQM_PRESENT_SUBTREE) == 0) {
        return nullptr;
    }
    return find_child(node.subtree, node.subtree_count, tag);
}

const rdl_tqm_datatree *Frame::child(std::string_view tag)
{
    const rdl_tqm_datatree *const nodes = all_children().data();
    const auto count = static_cast<uint32_t>(all_children().size());
    if (count < worth_an_index || nodes == nullptr) {
        return find_child(nodes, count, tag);
    }
    if (indexed_ != nodes) {
        index_.clear();
        for (uint32_t i = 0; i < count; ++i) {
            if (nodes[i].tag != nullptr) {
                index_.try_emplace(nodes[i].tag, nodes + i);
            }
        }
        indexed_ = nodes;
    }
    const auto found = index_.find(tag);
    return found == index_.end() ? nullptr : found->second;
}

Frame *Hierarchy::outer_list(const Frame &list)
{
    const auto position = static_cast<std::size_t>(&list - frames_.data());
    if (position == 0 || frames_[position - 1].list_frame < 0) {
        return nullptr;
    }
    return &at_list(frames_[position - 1].list_frame);
}

Frame &Hierarchy::push(const rdl_tqm_datatree &node, bool is_list, PathTable &paths)
{
    const PathInfo *parent = empty() ? nullptr : top().path;
    const int32_t outer = empty() ? -1 : top().list_frame;
    if (depth_ == frames_.size()) {
        frames_.resize(frames_.size() + few_frames);
    }
    Frame &frame = frames_[depth_];
    frame.node = &node;
    frame.path = node.tag == nullptr ? nullptr : paths.intern_child(parent, node.tag);
    frame.is_list = is_list;
    const bool live = (node.present & TQM_PRESENT_SUBTREE) != 0;
    frame.children = live ? node.subtree : nullptr;
    frame.child_count = live ? node.subtree_count : 0;
    frame.list_frame = is_list ? static_cast<int32_t>(depth_) : outer;
    frame.undo_start = 0;
    frame.instances.clear();
    frame.indexed_ = nullptr;
    ++depth_;
    return frame;
}

std::size_t Hierarchy::position_of(const rdl_tqm_datatree *node)
{
    for (std::size_t position = depth_; position-- > 0;) {
        if (frames_[position].node == node) {
            return position;
        }
    }
    return depth_;
}

Frame *Hierarchy::find(const PathInfo *path)
{
    for (std::size_t position = depth_; path != nullptr && position-- > 0;) {
        if (frames_[position].path == path) {
            return &frames_[position];
        }
    }
    return nullptr;
}

void Hierarchy::children_moved(const rdl_tqm_datatree &node)
{
    for (std::size_t position = 0; position < depth_; ++position) {
        if (frames_[position].node != &node) {
            continue;
        }
        frames_[position].children = node.subtree;
        frames_[position].child_count = node.subtree_count;
    }
}

InstancePath place_of(const WalkSteps &steps)
{
    InstancePath place;
    for (const WalkStep &step : steps) {
        place.enter(step.node->tag);
        if (!step.is_list || step.path == nullptr) {
            continue;
        }
        const std::span<const rdl_tqm_datatree> children = step.all_children();
        for (const std::string &key : step.path->keys()) {
            const auto *const leaf = find_child(children.data(), static_cast<uint32_t>(children.size()), key);
            if (const char *const value = given_value(leaf)) {
                place.key(key, value);
            }
        }
    }
    return place;
}

bool Hierarchy::top_has_leaf(const char *tag) const
{
    const Frame &frame = frames_[depth_ - 1];
    for (uint32_t i = 0; frame.children != nullptr && i < frame.child_count; ++i) {
        if (frame.children[i].tag == tag && frame.children[i].subtree_count == 0) {
            return true;
        }
    }
    return false;
}

const rdl_tqm_datatree *Hierarchy::walked_node(bool in_fill)
{
    if (empty()) {
        return nullptr;
    }
    const rdl_tqm_datatree *const child = in_fill || matched_tag_ == nullptr ? nullptr : matched_child();
    return child != nullptr && child->subtree_count == 0 ? child : top().node;
}

/// The first child of the node on top that is called as the matched tag is, if that is its very tag.
const rdl_tqm_datatree *Hierarchy::matched_child()
{
    const std::span<const rdl_tqm_datatree> children = top().all_children();
    if (children.size() >= worth_an_index) {
        const rdl_tqm_datatree *const child = top().child(matched_tag_);
        return child != nullptr && child->tag == matched_tag_ ? child : nullptr;
    }
    for (const rdl_tqm_datatree &child : children) {
        if (child.tag == matched_tag_) {
            return &child;
        }
        if (child.tag != nullptr && *child.tag == *matched_tag_ && std::strcmp(child.tag, matched_tag_) == 0) {
            return nullptr;
        }
    }
    return nullptr;
}

} // namespace tqm
