// What a client's value has brought into a line must not break it, drive the terminal, or fill the screen.
#pragma once

#include <string>

namespace ocmap
{

/// `text` with control characters as \xNN, cut off where it is too long for a line.
std::string printable(const std::string &text);

} // namespace ocmap
