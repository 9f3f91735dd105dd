// JSON documents (RFC 7951, metadata as in RFC 7952). One becomes the document object that the same request in XML
// would have been parsed to, so that all that follows is one code for both.
#pragma once

#include <string_view>

#include "documents/document_content.h"
#include "text/line_index.h"

namespace tqm
{

/// True where `text` begins as JSON does and XML never.
bool is_json(std::string_view text);

/// Fills `content.dom` from the text in `content.buffer`, which has room for one byte more and is spoilt; `lines` are
/// the text's. Elements have no prefixes; the default namespace of one whose member named a module is that module's
/// name, or NETCONF's namespace for ietf-netconf, and its children inherit it as RFC 7951, section 4 has it.
/// Fails with a place where the text is no JSON, with the path where it is none of a request.
Expected<void> read_json(const text::LineIndex &lines, DocumentContent &content);

} // namespace tqm
