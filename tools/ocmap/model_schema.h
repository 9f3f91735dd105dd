// The models as the framework's schema has them: what libyang says of their nodes, and what the mapping says of some.
#pragma once

#include <vector>

#include "router/models.h"
#include "router/setup.h"
#include "tqm/schema.h"

namespace ocmap
{

/// What OpenConfig sees of the router's lists.
std::vector<router::Visibility> visible_lists();

/// What the framework is to know of the models: their nodes, and what the mapping says of some of them.
tqm::Schema schema_of(const router::Models &models);

} // namespace ocmap
