// An explanation for the terminal: the request on the left, a line a node, and on the right what each node became.
#pragma once

#include <string>

#include "explanation.h"

namespace ocmap
{

/// With `colour` the lines have ANSI colours; nothing is told by colour alone.
std::string explanation_table(const Explanation &explanation, bool colour);

} // namespace ocmap
