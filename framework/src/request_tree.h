// From an XML document to the arrays that walkers walk.
#pragma once

#include <memory>

#include "request_impl.h"
#include "tqm/document.h"

namespace tqm
{

/// Gives `request` the elements in `content` as its trees, checked against the registrations' top tags. The texts stay
/// in the document's buffer, which the request then owns.
Expected<void> load_request_tree(Request::Impl &request, std::unique_ptr<Document::Content> content);

} // namespace tqm
