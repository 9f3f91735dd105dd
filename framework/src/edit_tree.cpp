// See edit_tree.h.
#include "edit_tree.h"

#include <functional>

namespace tqm
{

LoadedEdit::LoadedEdit(const Request::Impl &edit) : edit_(edit)
{
    for (const LeftOut &left : edit.left_out) {
        left_out_[left.parent].push_back(&left);
    }
}

bool LoadedEdit::for_each_child(const rdl_tqm_datatree &node, const Visit &visit) const
{
    const auto found = left_out_.find(&node);
    const std::vector<const LeftOut *> none;
    const std::vector<const LeftOut *> &left = found == left_out_.end() ? none : found->second;
    auto next = left.begin();
    const bool has_children = (node.present & TQM_PRESENT_SUBTREE) != 0 && node.subtree != nullptr;
    const uint32_t count = has_children ? node.subtree_count : 0;
    for (uint32_t i = 0; i <= count; ++i) {
        for (; next != left.end() && (*next)->position == i; ++next) {
            if (!visit((*next)->node)) {
                return false;
            }
        }
        if (i < count && !visit(node.subtree[i])) {
            return false;
        }
    }
    return true;
}

bool LoadedEdit::takes_part(const rdl_tqm_datatree &node) const
{
    const std::less<const void *> before;
    const LeftOut *const first = edit_.left_out.data();
    return first == nullptr || before(&node, first) || !before(&node, first + edit_.left_out.size());
}

const char *LoadedEdit::text(const rdl_tqm_datatree &node) const
{
    const auto deleted = edit_.deleted_texts.find(&node);
    return deleted == edit_.deleted_texts.end() ? given_value(&node) : deleted->second;
}

} // namespace tqm
