// The characters of a text in UTF-8, and which of them a document may hold.
#pragma once

#include <cstddef>
#include <string_view>

namespace text
{

class LineIndex;

struct Character {
    char32_t code;
    std::size_t length; ///< in bytes; 0 where no character of UTF-8 begins
};

/// The character that begins at byte `at`, which the text has.
Character character_at(std::string_view text, std::size_t at);

/// Whether XML 1.0, section 2.2, allows it in a document.
bool is_xml_character(char32_t code);

/// Offset of the first byte that begins no character of XML in UTF-8; npos if there is none.
std::size_t find_bad_character(std::string_view text);
/// The same, and in the same pass the lines before it, or all lines if there is none.
std::size_t find_bad_character(std::string_view text, LineIndex &lines);

} // namespace text
