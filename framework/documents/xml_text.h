// What a text must be before it is parsed beside characters of XML: declared as such, without references to others.
#pragma once

#include <string_view>

namespace tqm
{

/// White space is the same in XML and JSON.
inline bool is_white_space(char c)
{
    return c <= ' ' && (c == ' ' || c == '\n' || c == '\t' || c == '\r');
}

/// Messages are UTF-8 (RFC 6241, section 3): false for a document that begins as another encoding or declares one.
bool is_declared_utf8(std::string_view text);

/// Offset of the first "&" that begins no reference, outside comments and CDATA sections; npos if there is none. The
/// parser leaves unknown references as they are, and a reference to U+0000 would end a value early.
std::size_t find_bad_reference(std::string_view text);

} // namespace tqm
