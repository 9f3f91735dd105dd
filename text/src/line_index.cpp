#include "text/line_index.h"

#include <algorithm>

namespace text
{

LineIndex::LineIndex(std::string_view text)
{
    for (std::size_t at = text.find('\n'); at != std::string_view::npos; at = text.find('\n', at + 1)) {
        ends_.push_back(at);
    }
}

std::size_t LineIndex::line_of(std::size_t offset) const
{
    return static_cast<std::size_t>(std::ranges::lower_bound(ends_, offset) - ends_.begin()) + 1;
}

std::string LineIndex::place_of(std::size_t offset) const
{
    const std::size_t line = line_of(offset);
    const std::size_t line_start = line == 1 ? 0 : ends_[line - 2] + 1;
    return "line " + std::to_string(line) + ", column " + std::to_string(offset - line_start + 1);
}

} // namespace text
