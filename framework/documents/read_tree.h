// From a client's filter to the tree that a read's walk is given. The filter itself stays as it came: the answer is
// matched with it.
#pragma once

#include <string_view>

#include "documents/tree_loader.h"

namespace tqm
{

/// Makes of the filter in `target.tree` the one tree that is walked, in which texts have no blanks at their ends, and
/// which leaves out what the walkers would refuse or take for something else although it selects nothing, or is matched
/// in the answer alone. Of a widened walk it leads to all that matching the answer needs.
void make_read_tree(const LoadRules &rules, const LoadTarget &target);

/// `text` without the white space at its ends, which is no part of a content match (RFC 6241, section 6.2.5).
std::string_view without_blanks(std::string_view text);

} // namespace tqm
