// The bytes of a JSON document as its parser gets them.
#pragma once

#include <cstddef>
#include <iterator>
#include <string_view>

#include "documents/xml_text.h"

namespace tqm
{

/// The place where the parser reads, for those who look on. Of an indented text a half is blanks at the beginnings of
/// lines: they are passed over, as no line feed stands in a token.
class JsonCursor
{
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char *;
    using reference = const char &;

    /// `read` is kept behind the byte that was read last.
    JsonCursor(const char *at, const char *end, const char *&read) : at_(at), end_(end), read_(&read) {}
    reference operator*() const { return *at_; }
    JsonCursor &operator++()
    {
        const bool ends_line = *at_ == '\n';
        *read_ = ++at_;
        while (ends_line && at_ != end_ && is_white_space(*at_)) {
            ++at_;
        }
        return *this;
    }
    friend bool operator==(const JsonCursor &a, const JsonCursor &b) { return a.at_ == b.at_; }

    const char *at() const { return at_; }

private:
    const char *at_;
    const char *end_;
    const char **read_;
};

/// Offset of the byte number `count` of those that the parser reads, from 1.
inline std::size_t json_offset(std::string_view text, std::size_t count)
{
    const char *const end = text.data() + text.size();
    const char *read = text.data();
    JsonCursor cursor(read, end, read);
    for (; count > 1 && cursor.at() != end; --count) {
        ++cursor;
    }
    return static_cast<std::size_t>(cursor.at() - text.data());
}

} // namespace tqm
