// The OpenConfig tree with the native paths of each node.
#pragma once

#include <string>
#include <vector>

#include "environment.h"
#include "model_probe.h"

namespace ocmap
{

/// In the notation of RFC 8340, one line a node. Beside a node stands its native path, "get:" and "edit:" where reads
/// and edits differ, "oper:" and its path in the operational model, or "not supported". Several leaves of one container
/// are written as container/{leaf,leaf}; a path of the mapping that no native model has is marked "(in no model)".
/// Behind the tree stands how many nodes there are of each kind.
tqm::Expected<std::string> model_tree(const Environment &environment);
/// The same of nodes that have been probed already.
tqm::Expected<std::string> tree_of(const Environment &environment, const std::vector<ProbedNode> &nodes);

} // namespace ocmap
