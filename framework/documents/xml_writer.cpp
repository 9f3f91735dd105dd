#include "documents/xml_writer.h"

#include <cstring>

namespace tqm
{

namespace
{

constexpr PlainBytes plain_in_text("&<>");
constexpr PlainBytes plain_in_attribute("&<>\"");

/// True below an entry that goes away with all that it holds. A container that goes away is set anew by what is below.
bool is_in_removed_entry(const OutputRecord &node)
{
    for (const OutputRecord *outer = node.outer; outer != nullptr; outer = outer->outer) {
        const std::optional<uint32_t> operation = outer->operation();
        const bool removed = operation == TQM_OP_DELETE || operation == TQM_OP_REMOVE;
        if (removed && outer->list_entry) {
            return true;
        }
    }
    return false;
}

/// What stands in a document for a character that is not plain.
std::string_view escape_of(char c, bool in_attribute)
{
    switch (c) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '"':
        return "&quot;";
    case '\r':
        return "&#13;";
    case '\n':
        return in_attribute ? "&#10;" : "\n";
    case '\t':
        return in_attribute ? "&#9;" : "\t";
    default:
        // Other control characters exist in no XML document, not even as references.
        return "\xef\xbf\xbd";
    }
}

std::string_view escape_in_text(char c)
{
    return escape_of(c, false);
}

std::string_view escape_in_attribute(char c)
{
    return escape_of(c, true);
}

} // namespace

WrittenOperation written_operation(const OutputNode &node, uint32_t outer_operation)
{
    const OutputRecord &record = record_of(node);
    const uint32_t operation = record.operation().value_or(outer_operation);
    if (operation == outer_operation) {
        return {nullptr, outer_operation};
    }
    const bool needless = operation == TQM_OP_MERGE && (node.is_key() || is_in_removed_entry(record));
    const bool written = operation < operation_names.size() && !needless;
    return {written ? operation_names[operation] : nullptr, operation};
}

bool XmlWriter::write(std::string_view wrapper, std::string_view attributes,
                      const std::vector<const OutputNode *> &trees, bool with_operations)
{
    with_operations_ = with_operations;
    text_.append("<");
    text_.append(wrapper);
    text_.append(attributes);
    if (trees.empty()) {
        text_.append("/>\n");
    } else {
        text_.append(">\n");
        for (const OutputNode *tree : trees) {
            node(record_of(*tree), nullptr, TQM_OP_MERGE, 1);
        }
        text_.append("</");
        text_.append(wrapper);
        text_.append(">\n");
    }
    return text_.flush();
}

bool XmlWriter::write(std::string_view attributes, const std::vector<const OutputNode *> &trees, bool with_operations)
{
    with_operations_ = with_operations;
    top_attributes_ = attributes;
    for (const OutputNode *tree : trees) {
        node(record_of(*tree), nullptr, TQM_OP_MERGE, 0);
    }
    return text_.flush();
}

void XmlWriter::declare(const char *ns)
{
    if (declared_.front().ns != ns) {
        std::swap(declared_.front(), declared_.back());
    }
    Declaration &declaration = declared_.front();
    if (declaration.ns != ns) {
        declaration = {ns, " xmlns=\""};
        for (const char *c = ns; *c != '\0'; ++c) {
            if (plain_in_attribute.has(*c)) {
                declaration.attribute += *c;
            } else {
                declaration.attribute += escape_in_attribute(*c);
            }
        }
        declaration.attribute += '"';
    }
    text_.append(declaration.attribute);
}

void XmlWriter::node(const OutputRecord &node, const char *outer_ns, uint32_t outer_operation, unsigned int level)
{
    constexpr std::size_t marks = 8; // more than stand around a tag
    const std::string_view tag = node.info()->name();
    const std::size_t line = 2 * std::size_t{level} + tag.size() + marks;
    text_.reserve(line);
    text_.indent(level);
    text_.put('<');
    text_.put(tag);
    if (outer_ns == nullptr || (outer_ns != node.ns() && std::strcmp(outer_ns, node.ns()) != 0)) {
        declare(node.ns());
    }
    if (outer_ns == nullptr) {
        text_.append(top_attributes_);
    }
    if (with_operations_) {
        const WrittenOperation written = written_operation(node, outer_operation);
        if (written.name != nullptr) {
            text_.append(" nc:operation=\"");
            text_.append(written.name);
            text_.append("\"");
        }
        outer_operation = written.effective;
    }

    const Records children(node.first_child());
    const bool has_text = node.value != nullptr && *node.value != '\0';
    if (!children.empty()) {
        text_.append(">\n");
        for (const OutputRecord &child : children) {
            this->node(child, node.ns(), outer_operation, level + 1);
        }
        text_.reserve(line);
        text_.indent(level);
    } else if (has_text) {
        text_.append(">");
        text_.append_escaped(node.value, plain_in_text, escape_in_text);
        text_.reserve(line);
    } else {
        text_.append("/>\n");
        return;
    }
    text_.put("</");
    text_.put(tag);
    text_.put(">\n");
}

} // namespace tqm
