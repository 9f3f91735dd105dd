// What the framework wants of the side that keeps the native data. The tool implements it over the router's datastore.
#pragma once

#include <span>
#include <string>

#include "tqm/error.h"
#include "tqm/export.h"
#include "tqm/tree.h"

namespace tqm
{

/// Why the native side has refused an edit, in its own terms. The framework finds the client's node for it.
struct NativeError {
    std::string text;                 ///< one sentence, with the value and the rule; never a key text
    std::string path;                 ///< native data path with keys; empty where no one node is to blame
    const OutputNode *node = nullptr; ///< the node of the edit that is to blame; null if it is not known
    ErrorTag error_tag = ErrorTag::operation_failed;
    std::string app_tag = {};
};

/// One edit reads first what it asks of the data, and then writes: whoever shares the data among several editors keeps
/// the others out from the first read to the end of the edit. Calls come on the thread of the request, and not during a
/// walk: those of other threads may be walking meanwhile.
class TQM_EXPORT NativeSide
{
public:
    virtual ~NativeSide() = default;

    /// Applies the native trees of one edit, all or nothing, configuration trees first. Nodes carry their operations
    /// (OutputNode::operation); entries come in the order in which they are to be applied. Whether the client's create
    /// or delete may be done has been decided: a native create that finds its node and a delete that does not are no
    /// errors. An entry without keys that goes away means all that the client sees, but those that the same edit names:
    /// they lose what it says, and keep the rest.
    virtual tl::expected<void, NativeError> edit(std::span<const OutputNode *const> trees) = 0;

    /// Answers the subtree filter `filter` (one native tree) with the trees that it selects: `answer` gets the roots,
    /// none if there is nothing. Values select on key leaves only; answering more than was asked for is allowed.
    virtual Expected<void> read(const OutputNode &filter, TreeBuilder &answer) = 0;
};

} // namespace tqm
