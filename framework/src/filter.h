// Subtree filtering (RFC 6241, section 6) of an answer.
#pragma once

#include "output.h"

namespace tqm
{

/// Takes out of `output` what the filter trees do not select. Entries that are named by a single key are found by it,
/// which takes time in the size of the filter and of what it selects.
void apply_filter(Output &output, TreeBuilder::Roots filters);

} // namespace tqm
