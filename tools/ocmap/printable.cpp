#include "printable.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>

namespace ocmap
{
namespace
{

struct Character {
    std::uint32_t code;
    std::size_t length; // in bytes; 1 for a byte that begins no UTF-8 sequence
};

Character character_at(std::string_view text, std::size_t at)
{
    const auto first = static_cast<unsigned char>(text[at]);
    const std::size_t length = first < 0xc2 ? 1 : first < 0xe0 ? 2 : first < 0xf0 ? 3 : first < 0xf5 ? 4 : 1;
    std::uint32_t code = length == 1 ? first : first & (0xffU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        const auto next = at + i < text.size() ? static_cast<unsigned char>(text[at + i]) : 0U;
        if ((next & 0xc0U) != 0x80U) {
            return {first, 1};
        }
        code = (code << 6U) | (next & 0x3fU);
    }
    return {code, length};
}

// Control characters, those that cannot be seen, and those that turn the direction of writing.
bool is_unprintable(const Character &character)
{
    constexpr struct {
        std::uint32_t first;
        std::uint32_t last;
    } ranges[] = {{0x00, 0x1f}, {0x7f, 0x9f}, {0x200b, 0x200f}, {0x2028, 0x202e}, {0x2060, 0x2069}, {0xfeff, 0xfeff}};
    const bool is_no_text = character.length == 1 && character.code > 0x7f;
    return is_no_text || std::ranges::any_of(ranges, [&](const auto &range) {
               return character.code >= range.first && character.code <= range.last;
           });
}

} // namespace

std::string printable(std::string_view text)
{
    constexpr std::size_t longest = 2000;
    std::string shown;
    std::size_t at = 0;
    while (at < std::min(text.size(), longest)) {
        const Character character = character_at(text, at);
        if (is_unprintable(character)) {
            char escape[sizeof "\\uffff"];
            std::snprintf(escape, sizeof escape, character.code < 0x100 ? "\\x%02x" : "\\u%04x", character.code);
            shown += escape;
        } else {
            shown += text.substr(at, character.length);
        }
        at += character.length;
    }
    return at < text.size() ? shown + "..." : shown;
}

} // namespace ocmap
