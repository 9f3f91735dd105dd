// Kinds of requests, as clients call them.
#pragma once

#include <string>

#include "tqm/error.h"
#include "tqm_map.h"

namespace tqm
{

inline std::string name_of_kind(uint32_t kind)
{
    return kind == TQM_REQ_GET_CONFIG ? "get-config" : kind == TQM_REQ_GET ? "get" : "edit-config";
}

/// A request that was given where another kind is served.
inline tl::unexpected<Error> wrong_kind(uint32_t found, uint32_t wanted)
{
    Error error{"the request is for " + name_of_kind(found) + ", not for " + name_of_kind(wanted)};
    error.error_tag = ErrorTag::operation_not_supported;
    error.type = ErrorType::protocol;
    return tl::unexpected(std::move(error));
}

} // namespace tqm
