// What the framework wants of the side that keeps the native data. The tool implements it over the router's datastore.
#pragma once

#include <span>

#include "tqm/error.h"
#include "tqm/tree.h"

namespace tqm
{

class NativeSide
{
public:
    virtual ~NativeSide() = default;

    /// Applies the native trees of one edit, all or nothing, configuration trees first. Nodes carry their operations
    /// (OutputNode::operation); entries come in the order in which they are to be applied.
    virtual Expected<void> edit(std::span<const OutputNode *const> trees) = 0;

    /// Answers the subtree filter `filter` (one native tree) with the trees that it selects: `answer` gets the roots,
    /// none if there is nothing. Values select on key leaves only; answering more than was asked for is allowed.
    virtual Expected<void> read(const OutputNode &filter, TreeBuilder &answer) = 0;
};

} // namespace tqm
