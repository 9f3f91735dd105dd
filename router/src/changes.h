// What differs between two configurations, for those who look at an edit before it is made.
#ifndef ROUTER_CHANGES_H
#define ROUTER_CHANGES_H

#include "router/datastore.h"

#include <libyang/libyang.h>

#include <vector>

namespace router
{

// Each may be null, for nothing. In the order of the models; fails for want of memory.
Expected<std::vector<Change>> changes_between(const lyd_node *before, const lyd_node *after);

} // namespace router

#endif
