// The NETCONF elements around the data (RFC 6241, sections 7.1, 7.2 and 7.7), and errors of documents that are none.
#pragma once

#include <string>

#include "documents/document_content.h"

namespace tqm
{

/// Reads what stands around the data of a document with the root element `root`: what is asked for goes to `content`.
Expected<void> read_wrapper(DocumentContent &content, pugi::xml_node root);

/// The error of a message as such; `element` is at fault.
tl::unexpected<Error> failure(ErrorTag tag, std::string text, std::string element = {});
/// Of one that is not well-formed.
tl::unexpected<Error> malformed(std::string text);

} // namespace tqm
