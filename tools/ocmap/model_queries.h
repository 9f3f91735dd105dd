// What the pages about the mapping ask of the models beyond their nodes.
#pragma once

#include <string>
#include <vector>

#include "router/models.h"

namespace ocmap
{

/// Values of the type of the OpenConfig leaf at `path`: each of an enumeration, both booleans, the ends of each range,
/// and of a text one, or dates where it holds dates. Empty if there is no such leaf.
std::vector<std::string> sample_values(const router::Models &models, const std::string &path);

/// The nodes of the module with the namespace `module_ns`, as router::Models::nodes() has them, in the tree notation of
/// RFC 8340, one line each, without the module's own line.
router::Expected<std::vector<std::string>> tree_lines(const router::Models &models, const char *module_ns);

} // namespace ocmap
