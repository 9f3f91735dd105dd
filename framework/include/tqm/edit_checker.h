// What judges an edit by the client's own model, before the mapping sees it: names, structure and values. The framework
// knows no schema language; the tool implements this over its YANG library. A framework without a checker leaves the
// judgement to the plug-in's walkers.
#pragma once

#include <functional>

#include "tqm/error.h"
#include "tqm/export.h"
#include "tqm_map.h"

namespace tqm
{

/// An edit as it came, and before it is walked.
class TQM_EXPORT EditTree
{
public:
    using Visit = std::function<bool(const rdl_tqm_datatree &child)>;

    virtual ~EditTree() = default;
    virtual const rdl_tqm_datatree &top() const = 0;
    /// Calls `visit` with the children of `node` in document order, those among them that the walk will not see, as
    /// they say nothing under the default-operation none. Stops where `visit` says false, and says so.
    virtual bool for_each_child(const rdl_tqm_datatree &node, const Visit &visit) const = 0;
    /// False for a node that the walk will not see.
    virtual bool takes_part(const rdl_tqm_datatree &node) const = 0;
    /// The text of a node as it was given, null if there was none. A walker does not get the text of a deleted node;
    /// here it is.
    virtual const char *text(const rdl_tqm_datatree &node) const = 0;
};

/// Is asked on the thread of the framework that it is given to: several frameworks want one each, or one that copes.
class TQM_EXPORT EditChecker
{
public:
    virtual ~EditChecker() = default;
    /// The first fault of `edit`, in document order, with the client's path and what is allowed.
    virtual Expected<void> check(const EditTree &edit) = 0;
};

} // namespace tqm
