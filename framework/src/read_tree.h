// From a client's filter to the tree that a read's walk is given. The filter itself stays as it came: the answer is
// matched with it.
#pragma once

#include "request_impl.h"

namespace tqm
{

/// Makes `request.trees` of `request.filter`: one tree, in which texts have no blanks at their ends, and which leaves
/// out what the walkers would refuse or take for something else although it selects nothing, or is matched in the
/// answer alone. With `request.widened` it leads to all that matching the answer needs.
void make_read_tree(Request::Impl &request);

/// `text` without the white space at its ends, which is no part of a content match (RFC 6241, section 6.2.5).
std::string_view without_blanks(std::string_view text);

} // namespace tqm
