// An explanation as a page for a browser.
#pragma once

#include <string>

#include "explanation.h"

namespace ocmap
{

/// One self-contained HTML document, which needs no other file and no network: the request and the result side by side,
/// with the links between their nodes. page/ holds what it looks like and how it answers to the pointer and the
/// keyboard.
std::string explanation_page(const Explanation &explanation);

} // namespace ocmap
