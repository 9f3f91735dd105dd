// Makes the explanation of a walk: watches the plug-in while it serves the request, and puts what it saw in the order
// of the request's nodes.
#pragma once

#include <cstdint>

#include "environment.h"
#include "explanation.h"
#include "router/datastore.h"
#include "tqm/document.h"
#include "tqm/edit_checker.h"
#include "tqm/request.h"

namespace ocmap
{

/// Who else judges an edit that is explained. Both may be null, and are borrowed.
struct Judges {
    tqm::EditChecker *checker = nullptr;
    /// What the edit would meet; without one the router looks at its values alone.
    router::Datastore *store = nullptr;
};

/// Walks `document` as Framework::forward or Framework::reverse would, TQM_REQ_* `kind` where the document does not say
/// its own. A request that the plug-in refuses is explained up to there, one that others refuse as a whole; only a
/// document that makes no request tree at all is an error. Others may watch, too.
tqm::Expected<Explanation> explain(const Environment &environment, tqm::Document document, tqm::Direction direction,
                                   uint32_t kind, const Judges &judges = {}, tqm::Watch watch = {});

} // namespace ocmap
