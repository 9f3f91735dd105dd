// Makes the explanation of a walk: watches the plug-in while it serves the request, and puts what it saw in the order
// of the request's nodes.
#pragma once

#include <cstdint>

#include "environment.h"
#include "explanation.h"
#include "tqm/document.h"
#include "tqm/request.h"

namespace ocmap
{

/// Walks `document` as Framework::forward or Framework::reverse would, TQM_REQ_* `kind` where the document does not say
/// its own. A request that the plug-in refuses is explained up to there; only a document that makes no request tree at
/// all is an error. Others may watch, too.
tqm::Expected<Explanation> explain(const Environment &environment, tqm::Document document, tqm::Direction direction,
                                   uint32_t kind, tqm::Watch watch = {});

} // namespace ocmap
