// How a case is run: its document, what no document can say, and the faults of the framework that it meets.
#pragma once

#include <optional>
#include <string>
#include <utility>

#include "case_file.h"

namespace test
{

/// What a faulty call answers.
inline constexpr rcode failure = 0x12345678;

/// A case is forward or reverse, and of some kind; a row may have a kind of its own in front, as "get: ".
struct Request {
    Direction direction;
    uint32_t kind;
    std::string document;
    Lines fields; ///< of its row
};

/// The request of a case, or of one of its rows.
Request request_of(const Case &one, const std::string &row);

/// Runs it, with one fault more than the case has.
Walk walked(const Case &one, const Request &request,
            const std::optional<std::pair<std::string, unsigned int>> &fault = std::nullopt, rcode code = failure);

/// The parts of `text` between separators.
Lines words(const std::string &text, char separator = ' ');

} // namespace test
