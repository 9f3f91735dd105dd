// Where in a text something is, as people count.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace text
{

/// Knows the lines of a text, which may be gone: parsers that work in place need their own errors' places afterwards.
class LineIndex
{
public:
    LineIndex() = default;
    explicit LineIndex(std::string_view text);

    /// Says that the next line feed is at `offset`.
    void end_line(std::size_t offset) { ends_.push_back(offset); }

    /// The line that the byte at `offset` is in, from 1.
    std::size_t line_of(std::size_t offset) const;
    /// "line 3, column 14". Columns are bytes, from 1.
    std::string place_of(std::size_t offset) const;

private:
    std::vector<std::size_t> ends_; ///< offsets of the line feeds
};

} // namespace text
