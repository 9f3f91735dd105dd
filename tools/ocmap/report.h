// How a failure is told on standard error.
#pragma once

#include <string>
#include <string_view>

#include "tqm/error.h"
#include "tqm/framework.h"

namespace ocmap
{

/// "error: " and the text, in one line that a terminal can show.
std::string report_line(std::string_view text);

/// All that `error` says: lines for people, or with Format::json the errors of RFC 8040, section 7.1.
std::string report(const tqm::Error &error, tqm::Format format);

} // namespace ocmap
