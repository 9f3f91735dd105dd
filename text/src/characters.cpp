#include "text/characters.h"

#include <array>
#include <cstdint>
#include <cstring>

namespace text
{

namespace
{

// Of the sequence that a byte begins; 0 if it begins none.
std::size_t sequence_length(unsigned char first)
{
    if (first < 0x80) {
        return 1;
    }
    if (first < 0xc2 || first >= 0xf5) {
        return 0;
    }
    return first < 0xe0 ? 2 : first < 0xf0 ? 3 : 4;
}

// True for eight bytes of ASCII none of which can be a control character.
bool is_plain(const char *text)
{
    constexpr std::uint64_t high = 0x8080808080808080U;
    constexpr std::uint64_t blanks = 0x2020202020202020U;
    std::uint64_t word;
    std::memcpy(&word, text, 8);
    return ((word | (word - blanks)) & high) == 0;
}

} // namespace

Character character_at(std::string_view text, std::size_t at)
{
    // By the length of its sequence: smaller codes are written in fewer bytes.
    static constexpr std::array<char32_t, 5> smallest = {0, 0, 0x80, 0x800, 0x10000};
    static constexpr Character none = {0, 0};

    const auto first = static_cast<unsigned char>(text[at]);
    const std::size_t length = sequence_length(first);
    if (length == 0 || text.size() - at < length) {
        return none;
    }
    if (length == 1) {
        return {first, length};
    }
    char32_t code = first & (0x7fU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        const auto next = static_cast<unsigned char>(text[at + i]);
        if ((next & 0xc0U) != 0x80U) {
            return none;
        }
        code = (code << 6U) | (next & 0x3fU);
    }
    const bool is_surrogate = code >= 0xd800 && code < 0xe000;
    return code < smallest[length] || is_surrogate || code > 0x10ffff ? none : Character{code, length};
}

bool is_xml_character(char32_t code)
{
    return code == '\t' || code == '\n' || code == '\r' || (code >= 0x20 && code < 0xd800) ||
           (code >= 0xe000 && code < 0xfffe) || (code >= 0x10000 && code < 0x110000);
}

std::size_t find_bad_character(std::string_view text)
{
    for (std::size_t at = 0; at < text.size();) {
        if (text.size() - at >= 8 && is_plain(text.data() + at)) {
            at += 8;
            continue;
        }
        const Character character = character_at(text, at);
        if (character.length == 0 || !is_xml_character(character.code)) {
            return at;
        }
        at += character.length;
    }
    return std::string_view::npos;
}

} // namespace text
