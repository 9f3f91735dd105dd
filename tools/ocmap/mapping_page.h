// docs/mapping.md: the tree with its native paths, and what a client that edits and reads back should know of it.
#pragma once

#include <string>

#include "environment.h"

namespace ocmap
{

/// The page in Markdown. What comes back is found by writing values of each leaf's type to a store of its own, below
/// the directory for temporary files, and reading them. Fails if the notes of why do not fit what was found.
tqm::Expected<std::string> mapping_page(const Environment &environment);

} // namespace ocmap
