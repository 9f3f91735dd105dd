// Building of walked trees by calls, without a document.
#include <algorithm>

#include "tqm/tree.h"
#include "trees/arena.h"

namespace tqm
{

TreeBuilder::Roots TreeBuilder::array_of(Arena &arena, const rdl_tqm_datatree *nodes, std::size_t count)
{
    if (count == 0) {
        return {};
    }
    auto *array = arena.make_array<rdl_tqm_datatree>(count);
    std::copy_n(nodes, count, array);
    return {array, static_cast<uint32_t>(count)};
}

// Tags and namespaces come again from the same addresses; the text is compared, as an address may hold several texts
// one after another.
const char *TreeBuilder::shared(std::string_view text)
{
    const auto address = reinterpret_cast<std::uintptr_t>(text.data());
    std::string_view &known = by_address_[(address ^ (address >> 6)) % by_address_.size()];
    if (known != text || known.data() == nullptr) {
        auto found = texts_.find(text);
        if (found == texts_.end()) {
            found = texts_.insert({arena_.copy(text), text.size()}).first;
        }
        known = *found;
    }
    return known.data();
}

rdl_tqm_datatree *TreeBuilder::append(std::string_view ns, std::string_view tag)
{
    rdl_tqm_datatree &node = nodes_.emplace_back();
    node.tag = shared(tag);
    node.ns = shared(ns);
    return &node;
}

void TreeBuilder::open(std::string_view ns, std::string_view tag)
{
    append(ns, tag);
    open_.push_back(nodes_.size() - 1);
}

void TreeBuilder::leaf(std::string_view ns, std::string_view tag, std::optional<std::string_view> value)
{
    rdl_tqm_datatree *node = append(ns, tag);
    if (!value) {
        return;
    }
    node->value = arena_.copy(*value);
    node->present |= TQM_PRESENT_VALUE;
}

void TreeBuilder::close()
{
    if (open_.empty()) {
        return;
    }
    const std::size_t position = open_.back();
    open_.pop_back();
    const Roots children = array_of(arena_, nodes_.data() + position + 1, nodes_.size() - position - 1);
    nodes_.resize(position + 1);
    if (children.count == 0) {
        return;
    }
    nodes_[position].subtree = children.nodes;
    nodes_[position].subtree_count = children.count;
    nodes_[position].present |= TQM_PRESENT_SUBTREE;
}

void TreeBuilder::operation(uint32_t operation)
{
    if (nodes_.empty()) {
        return;
    }
    nodes_.back().operation = operation;
    nodes_.back().present |= TQM_PRESENT_OPERATION;
}

TreeBuilder::Roots TreeBuilder::finish()
{
    while (!open_.empty()) {
        close();
    }
    const Roots roots = array_of(arena_, nodes_.data(), nodes_.size());
    nodes_.clear();
    return roots;
}

} // namespace tqm
