// A loaded edit as its document has it: what the walkers will see, and what they will not.
#pragma once

#include <unordered_map>
#include <vector>

#include "tqm/edit_checker.h"
#include "trees/request_tree.h"

namespace tqm
{

class LoadedEdit final : public EditTree
{
public:
    /// `edit` has been loaded, and is neither walked nor loaded again while this lives. It has a tree.
    explicit LoadedEdit(const RequestTree &edit);

    const rdl_tqm_datatree &top() const override { return *edit_.roots().nodes; }
    bool for_each_child(const rdl_tqm_datatree &node, const Visit &visit) const override;
    bool takes_part(const rdl_tqm_datatree &node) const override;
    const char *text(const rdl_tqm_datatree &node) const override;

private:
    const RequestTree &edit_;
    std::unordered_map<const rdl_tqm_datatree *, std::vector<const LeftOut *>> left_out_; ///< by their parents
};

} // namespace tqm
