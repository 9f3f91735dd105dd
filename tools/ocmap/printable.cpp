#include "printable.h"

#include <algorithm>
#include <cstdio>

#include "text/characters.h"

namespace ocmap
{
namespace
{

// Control characters, those that cannot be seen, and those that turn the direction of writing.
bool is_unprintable(char32_t code)
{
    constexpr struct {
        char32_t first;
        char32_t last;
    } ranges[] = {{0x00, 0x1f}, {0x7f, 0x9f}, {0x200b, 0x200f}, {0x2028, 0x202e}, {0x2060, 0x2069}, {0xfeff, 0xfeff}};
    return std::ranges::any_of(ranges, [&](const auto &range) { return code >= range.first && code <= range.last; });
}

} // namespace

std::string printable(std::string_view text)
{
    constexpr std::size_t longest = 2000;
    std::string shown;
    std::size_t at = 0;
    while (at < std::min(text.size(), longest)) {
        const text::Character character = text::character_at(text, at);
        const std::size_t length = std::max<std::size_t>(character.length, 1);
        if (character.length == 0 || is_unprintable(character.code)) {
            const unsigned code = character.length == 0 ? static_cast<unsigned char>(text[at]) : character.code;
            char escape[sizeof "\\uffff"];
            std::snprintf(escape, sizeof escape, code < 0x100 ? "\\x%02x" : "\\u%04x", code);
            shown += escape;
        } else {
            shown += text.substr(at, length);
        }
        at += length;
    }
    return at < text.size() ? shown + "..." : shown;
}

} // namespace ocmap
