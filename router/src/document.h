// Documents of the store and of the router's state: their envelope, and the way between their text and a data tree.
#pragma once

#include "router/error.h"
#include "tree.h"

#include <string>
#include <string_view>

namespace router
{

/// Whether the text is UTF-8 of characters that an XML document can hold and gives back as they were. A carriage return
/// is one of XML, but a reader may turn it into a line feed.
bool is_xml_text(std::string_view text);

/// The configuration in a store's document: native nodes alone, in <config> or <data>, in an <rpc-reply>, or bare. The
/// error's text is what is wrong, without the name of the file.
Expected<Tree> parse_configuration(const ly_ctx *context, std::string text);

/// The state in a document of the operational model.
Expected<Tree> parse_state(const ly_ctx *context, std::string text);

/// The tree as a store's document; null if libyang cannot print it.
Expected<std::string> print_configuration(const lyd_node *tree);

} // namespace router
