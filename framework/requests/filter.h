// Subtree filtering (RFC 6241, section 6) of an answer.
#pragma once

#include "trees/output.h"

namespace tqm
{

/// Takes out of `output`, whose paths are in `paths`, what the filter trees do not select. A content match holds for
/// the value as it is given, and for it without the white space at its ends.
///
/// n filters on m entries take time in n + m where they have no content match, or one, such as a key. A filter with
/// several is only compared with nodes that agree with that of them which the fewest filters have.
void apply_filter(Output &output, const PathTable &paths, TreeBuilder::Roots filters);

} // namespace tqm
