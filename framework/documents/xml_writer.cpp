#include "documents/xml_writer.h"

#include <cstring>

namespace tqm
{

namespace
{

constexpr std::size_t buffer_size = std::size_t{1} << 16;

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

/// What stands for `c` in a document, null if it stands for itself.
const char *escape_of(char c, bool in_attribute)
{
    switch (c) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '"':
        return in_attribute ? "&quot;" : nullptr;
    case '\r':
        return "&#13;";
    case '\n':
        return in_attribute ? "&#10;" : nullptr;
    case '\t':
        return in_attribute ? "&#9;" : nullptr;
    default:
        // Other control characters exist in no XML document, not even as references.
        return static_cast<unsigned char>(c) < 0x20 ? "\xef\xbf\xbd" : nullptr;
    }
}

} // namespace

WrittenOperation written_operation(const OutputNode &node, uint32_t outer_operation)
{
    const uint32_t operation = node.operation().value_or(outer_operation);
    if (operation == outer_operation) {
        return {nullptr, outer_operation};
    }
    const bool needless = operation == TQM_OP_MERGE && (node.is_key() || is_in_removed_entry(record_of(node)));
    const bool written = operation < operation_names.size() && !needless;
    return {written ? operation_names[operation] : nullptr, operation};
}

bool XmlWriter::write(std::string_view wrapper, std::string_view attributes,
                      const std::vector<const OutputNode *> &trees, bool with_operations)
{
    with_operations_ = with_operations;
    buffer_.reserve(buffer_size + 4096);
    buffer_.append("<").append(wrapper).append(attributes);
    if (trees.empty()) {
        buffer_ += "/>\n";
    } else {
        buffer_ += ">\n";
        for (const OutputNode *tree : trees) {
            node(record_of(*tree), nullptr, TQM_OP_MERGE, 1);
        }
        buffer_.append("</").append(wrapper).append(">\n");
    }
    flush();
    return good_;
}

bool XmlWriter::write(std::string_view attributes, const std::vector<const OutputNode *> &trees, bool with_operations)
{
    with_operations_ = with_operations;
    top_attributes_ = attributes;
    for (const OutputNode *tree : trees) {
        node(record_of(*tree), nullptr, TQM_OP_MERGE, 0);
    }
    flush();
    return good_;
}

void XmlWriter::node(const OutputRecord &node, const char *outer_ns, uint32_t outer_operation, unsigned int level)
{
    if (buffer_.size() >= buffer_size) {
        flush();
    }
    const std::string_view tag = node.tag();
    buffer_.append(2 * std::size_t{level}, ' ').append("<").append(tag);
    if (outer_ns == nullptr || (outer_ns != node.ns() && std::strcmp(outer_ns, node.ns()) != 0)) {
        buffer_ += " xmlns=\"";
        escaped(node.ns(), true);
        buffer_ += '"';
    }
    if (outer_ns == nullptr) {
        buffer_ += top_attributes_;
    }
    if (with_operations_) {
        const WrittenOperation written = written_operation(node, outer_operation);
        if (written.name != nullptr) {
            buffer_.append(" nc:operation=\"").append(written.name).append("\"");
        }
        outer_operation = written.effective;
    }
    const Records children(node.first_child());
    const bool has_text = node.value != nullptr && *node.value != '\0';
    if (!children.empty()) {
        buffer_ += ">\n";
        for (const OutputRecord &child : children) {
            this->node(child, node.ns(), outer_operation, level + 1);
        }
        buffer_.append(2 * std::size_t{level}, ' ').append("</").append(tag).append(">\n");
    } else if (has_text) {
        buffer_ += '>';
        escaped(node.value, false);
        buffer_.append("</").append(tag).append(">\n");
    } else {
        buffer_ += "/>\n";
    }
}

void XmlWriter::escaped(std::string_view text, bool in_attribute)
{
    std::size_t plain = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char *escape = escape_of(text[at], in_attribute);
        if (escape == nullptr) {
            continue;
        }
        buffer_.append(text, plain, at - plain).append(escape);
        plain = at + 1;
    }
    buffer_.append(text, plain);
}

void XmlWriter::flush()
{
    good_ = good_ && sink_(buffer_);
    buffer_.clear();
}

} // namespace tqm
