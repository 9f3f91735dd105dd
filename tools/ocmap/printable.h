// What a client's value has brought into a line must not break it, drive the terminal, or fill the screen.
#pragma once

#include <string>
#include <string_view>

namespace ocmap
{

/// `text` with control characters as \xNN, those that cannot be seen or turn the direction of writing as \uNNNN, and
/// bytes that are no UTF-8 as \xNN. Cut off where it is too long for a line.
std::string printable(std::string_view text);

} // namespace ocmap
