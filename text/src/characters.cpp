#include "text/characters.h"

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#include "text/line_index.h"

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

// What is the same for each byte of a word.
constexpr std::uint64_t each(std::uint64_t byte)
{
    return byte * 0x0101010101010101U;
}

constexpr std::uint64_t high_bits = each(0x80);

// The high bit of each `byte` in a word of ASCII.
constexpr std::uint64_t equal_to(std::uint64_t byte, std::uint64_t word)
{
    return ~((word ^ each(byte)) + each(0x7f)) & high_bits;
}

// Calls `on_line_feed` with the offset of each line feed before what is found.
template <class OnLineFeed>
std::size_t find_bad(std::string_view text, OnLineFeed on_line_feed)
{
    // Eight bytes at once, as long as all of them are graphic characters and blanks of ASCII: the first byte lowest.
    const bool takes_words = std::endian::native == std::endian::little && text.size() >= 8;
    const std::size_t words_end = takes_words ? text.size() - 7 : 0;
    std::size_t at = 0;
    while (true) {
        while (at < words_end) {
            std::uint64_t word;
            std::memcpy(&word, text.data() + at, 8);
            const std::uint64_t others = (word | ~(word + each(0x60))) & high_bits; // exact where all is ASCII
            if (others == 0) {
                at += 8;
                continue;
            }
            const std::uint64_t feeds = equal_to('\n', word);
            const bool is_plain = (word & high_bits) == 0 &&
                                  (others == feeds || others == (feeds | equal_to('\t', word) | equal_to('\r', word)));
            if (!is_plain) {
                break;
            }
            for (std::uint64_t left = feeds; left != 0; left &= left - 1) {
                on_line_feed(at + static_cast<std::size_t>(std::countr_zero(left)) / 8);
            }
            at += 8;
        }
        if (at >= text.size()) {
            return std::string_view::npos;
        }
        if (static_cast<signed char>(text[at]) >= 0x20) { // what is no ASCII is negative
            ++at;
            continue;
        }
        const Character character = character_at(text, at);
        if (character.length == 0 || !is_xml_character(character.code)) {
            return at;
        }
        if (character.code == '\n') {
            on_line_feed(at);
        }
        at += character.length;
    }
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
    return find_bad(text, [](std::size_t) {});
}

std::size_t find_bad_character(std::string_view text, LineIndex &lines)
{
    return find_bad(text, [&](std::size_t at) { lines.end_line(at); });
}

} // namespace text
