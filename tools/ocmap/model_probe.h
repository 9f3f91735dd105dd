// What the plug-in makes of each node of the OpenConfig model, found by running its walkers on one request a node.
// There is no second table of the model behind this.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "environment.h"

namespace ocmap
{

using Paths = std::set<std::string>;

struct ProbedNode {
    router::SchemaNode info;
    bool supported = true; ///< false: a request that names it is refused as "not supported"
    Paths read;            ///< native paths that a read of it alone fetches
    Paths edit;            ///< native paths that an edit of it writes or takes away; empty for state
};

/// All nodes of openconfig-macsec in schema order. A container has the paths that it adds itself; what it covers is
/// below it.
tqm::Expected<std::vector<ProbedNode>> probe_model(const Environment &environment);

} // namespace ocmap
