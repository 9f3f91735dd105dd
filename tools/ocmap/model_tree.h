// The OpenConfig tree with the native paths of each node. The paths come from running the plug-in's walkers, not from a
// table: what a request that names a node adds beyond what its parent adds is the node's.
#pragma once

#include <string>

#include "environment.h"

namespace ocmap
{

/// In the notation of RFC 8340, one line a node, each with its native paths or "not supported".
std::string model_tree(const Environment &environment);

} // namespace ocmap
