// What a parsed document holds between its parsing and the making of a request tree.
#pragma once

#include <memory>
#include <optional>
#include <string_view>

#include <pugixml.hpp>

#include "documents/xml_names.h"
#include "tqm/document.h"

namespace tqm
{

/// default-operation of an edit (RFC 6241, section 7.2).
enum class DefaultOperation { merge, replace, none };

struct DocumentContent {
    std::shared_ptr<char[]> buffer; ///< the text; parsed in place, so that names and values point into it
    std::size_t size = 0;
    pugi::xml_document dom;
    pugi::xml_node holder; ///< its child elements are the trees; null if everything is meant
    pugi::xml_node single; ///< or this one element is
    XmlScope scope;        ///< namespaces at the trees
    std::optional<uint32_t> kind;
    bool json = false; ///< namespaces are names of modules yet
    bool is_filter = false;
    bool selects_all = false; ///< a read without a filter
    DefaultOperation default_operation = DefaultOperation::merge;
};

/// The framework's way to what a document holds.
struct DocumentAccess {
    static std::unique_ptr<DocumentContent> take(Document document) { return std::move(document.content_); }
    /// Once its tree is made. The buffer may have other owners.
    static void drop(std::unique_ptr<DocumentContent> content);
};

} // namespace tqm
