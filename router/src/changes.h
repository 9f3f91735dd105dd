// What differs between two configurations, for those who look at an edit before it is made.
#pragma once

#include "router/datastore.h"

#include <libyang/libyang.h>

#include <vector>

namespace router
{

/// Each may be null, for nothing: the first sibling of a tree's top. In the order of the models, what goes before what
/// comes; fails for want of memory. Takes time in the size of both.
Expected<std::vector<Change>> changes_between(const lyd_node *before, const lyd_node *after);

} // namespace router
