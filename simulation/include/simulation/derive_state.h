// The router's state where no router tells it, as it follows from the configuration alone.
#pragma once

#include "router/setup.h"

namespace simulation
{

/// A router::OperationalSource: what is configured is in force, what a router does by itself stands where nothing is
/// configured, and counters are at 0. Dates are the process's local time.
router::Tree derive_state(const ly_ctx *context, const lyd_node *configuration, const router::Shown &is_shown);

} // namespace simulation
