// See printable.h.
#include "printable.h"

#include <cstdio>

namespace ocmap
{

std::string printable(const std::string &text)
{
    constexpr std::size_t longest = 2000;
    std::string shown;
    for (const char c : text.substr(0, longest)) {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) {
            char escape[5];
            std::snprintf(escape, sizeof escape, "\\x%02x", static_cast<unsigned int>(c));
            shown += escape;
        } else {
            shown += c;
        }
    }
    return text.size() > longest ? shown + "..." : shown;
}

} // namespace ocmap
