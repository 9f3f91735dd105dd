#include "walk/hierarchy.h"

#include <cstring>

namespace tqm
{

namespace
{
constexpr uint32_t worth_an_index = 48;
}

const rdl_tqm_datatree *find_child(const rdl_tqm_datatree *nodes, uint32_t count, std::string_view tag)
{
    for (uint32_t i = 0; nodes != nullptr && i < count; ++i) {
        if (nodes[i].tag != nullptr && tag == nodes[i].tag) {
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
    const bool live = (node->present & TQM_PRESENT_SUBTREE) != 0;
    const rdl_tqm_datatree *nodes = live ? node->subtree : children;
    const uint32_t count = live ? node->subtree_count : child_count;
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
    PathInfo *parent = empty() ? nullptr : top().path;
    const int32_t outer = empty() ? -1 : top().list_frame;
    if (depth_ == frames_.size()) {
        frames_.emplace_back();
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

InstancePath Hierarchy::place()
{
    InstancePath place;
    for (std::size_t position = 0; position < depth_; ++position) {
        Frame &frame = frames_[position];
        place.enter(frame.node->tag);
        if (!frame.is_list || frame.path == nullptr) {
            continue;
        }
        for (const std::string &key : frame.path->keys()) {
            if (const char *const value = given_value(frame.child(key))) {
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
    const rdl_tqm_datatree *const child = in_fill || matched_tag_ == nullptr ? nullptr : top().child(matched_tag_);
    return child != nullptr && child->tag == matched_tag_ && child->subtree_count == 0 ? child : top().node;
}

} // namespace tqm
