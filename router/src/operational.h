// The router's state as it follows from its configuration alone: what is configured is in force, defaults stand where
// nothing is configured, and counters are at 0.
#pragma once

#include "entries.h"
#include "tree.h"

namespace router
{

// A tree of the operational model; null if libyang cannot make it.
Tree derive_state(const ly_ctx *context, const Visibility &visibility, const lyd_node *configuration);

} // namespace router
