// What a failed request tells its client. Errors are values: whoever finds one makes its text, and nobody rewords it
// further up. Printing is left to the tool.
#pragma once

#include <optional>
#include <string>

#include <tl/expected.hpp>

extern "C" {
#include "tqm_rcode.h"
}

namespace tqm
{

struct Error {
    std::string text;               ///< one sentence for the client; never empty
    std::string path = {};          ///< data path with keys, or empty
    std::string tag = {};           ///< tag of the node that failed, or empty
    std::optional<rcode> code = {}; ///< result code of the plug-in or of a framework operation
};

template <class T>
using Expected = tl::expected<T, Error>;

/// Result code of a search that finds no entry and of a lookup that finds no node.
inline constexpr rcode kNotFound = 0xaaf2fa00u;

} // namespace tqm
