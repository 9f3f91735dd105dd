#include "requests/edit_tree.h"

#include <functional>

#include "walk/hierarchy.h"

namespace tqm
{

LoadedEdit::LoadedEdit(const RequestTree &edit) : edit_(edit)
{
    for (const LeftOut &left : edit.left_out()) {
        left_out_[left.parent].push_back(&left);
    }
}

bool LoadedEdit::for_each_child(const rdl_tqm_datatree &node, const Visit &visit) const
{
    const auto found = left_out_.find(&node);
    const std::vector<const LeftOut *> none;
    const std::vector<const LeftOut *> &left = found == left_out_.end() ? none : found->second;
    auto next = left.begin();
    const std::span<const rdl_tqm_datatree> children = children_of(node);
    for (uint32_t i = 0; i <= children.size(); ++i) {
        for (; next != left.end() && (*next)->position == i; ++next) {
            if (!visit((*next)->node)) {
                return false;
            }
        }
        if (i < children.size() && !visit(children[i])) {
            return false;
        }
    }
    return true;
}

bool LoadedEdit::takes_part(const rdl_tqm_datatree &node) const
{
    const std::less<const void *> before;
    const LeftOut *const first = edit_.left_out().data();
    return first == nullptr || before(&node, first) || !before(&node, first + edit_.left_out().size());
}

const char *LoadedEdit::text(const rdl_tqm_datatree &node) const
{
    const char *const deleted = edit_.deleted_text(node);
    return deleted == nullptr ? given_value(&node) : deleted;
}

} // namespace tqm
