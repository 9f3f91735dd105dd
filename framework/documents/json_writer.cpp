#include "documents/json_writer.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "schema/paths.h"

namespace tqm
{

namespace
{

constexpr std::size_t buffer_size = std::size_t{1} << 16;

/// A list's entries and a leaf-list's values stand among their siblings; in JSON they are one array.
bool is_repeated(const OutputRecord &node)
{
    return node.list_entry || node.info()->is_leaf_list();
}

template <class Visit>
void for_each_alike(const OutputRecord &first, Visit visit)
{
    for (const OutputRecord &node : Records(&first)) {
        if (node.info() == first.info()) {
            visit(node);
        }
    }
}

bool is_number(std::string_view text)
{
    if (text.starts_with('-')) {
        text.remove_prefix(1);
    }
    const bool leading_zero = text.size() > 1 && text.front() == '0';
    return !text.empty() && text.size() <= 10 && !leading_zero &&
           std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
}

} // namespace

bool JsonWriter::write(std::string_view wrapper, const std::vector<const OutputNode *> &trees, bool with_operations)
{
    with_operations_ = with_operations;
    const bool wrapped = !wrapper.empty();
    buffer_ += '{';
    if (wrapped) {
        buffer_.append("\n  \"ietf-netconf:").append(wrapper).append("\": {");
    }
    const Place place{nullptr, TQM_OP_MERGE, wrapped ? 2U : 1U};
    for (const OutputNode *tree : trees) {
        member(record_of(*tree), place);
    }
    if (!trees.empty()) {
        buffer_ += wrapped ? "\n  " : "\n";
    }
    buffer_ += wrapped ? "}\n}\n" : "}\n";
    flush();
    return good_;
}

WrittenOperation JsonWriter::operation_of(const OutputRecord &node, Place place) const
{
    return with_operations_ ? written_operation(node, place.operation) : WrittenOperation{nullptr, place.operation};
}

/// Starts a member or an array's element: all but the first have a comma before them.
void JsonWriter::next(unsigned int level)
{
    if (buffer_.size() >= buffer_size) {
        flush();
    }
    if (after_value_) {
        buffer_ += ',';
    }
    after_value_ = false;
    buffer_.append("\n").append(2 * std::size_t{level}, ' ');
}

void JsonWriter::members(const OutputRecord &node, Place place)
{
    std::vector<const PathInfo *> done;
    for (const OutputRecord &child : Records(node.first_child())) {
        if (!is_repeated(child)) {
            member(child, place);
        } else if (std::ranges::find(done, child.info()) == done.end()) {
            done.push_back(child.info());
            next(place.level);
            name(child, place);
            array(child, place);
        }
    }
}

void JsonWriter::member(const OutputRecord &node, Place place)
{
    next(place.level);
    name(node, place);
    const bool is_leaf = Records(node.first_child()).empty() && !node.info()->is_container();
    if (is_leaf) {
        value(node);
        after_value_ = true;
        leaf_annotations(node, place, false);
    } else {
        object(node, operation_of(node, place), place);
    }
}

void JsonWriter::array(const OutputRecord &first, Place place)
{
    buffer_ += '[';
    after_value_ = false;
    const Place inner{place.ns, place.operation, place.level + 1};
    for_each_alike(first, [&](const OutputRecord &node) {
        next(inner.level);
        if (node.list_entry) {
            object(node, operation_of(node, place), inner);
        } else {
            value(node);
            after_value_ = true;
        }
    });
    buffer_.append("\n").append(2 * std::size_t{place.level}, ' ').append("]");
    after_value_ = true;
    if (!first.list_entry) {
        leaf_annotations(first, place, true);
    }
}

void JsonWriter::object(const OutputRecord &node, const WrittenOperation &operation, Place place)
{
    buffer_ += '{';
    after_value_ = false;
    if (operation.name != nullptr) {
        next(place.level + 1);
        buffer_.append("\"@\": {\"ietf-netconf:operation\": \"").append(operation.name).append("\"}");
        after_value_ = true;
    }
    members(node, {node.ns(), operation.effective, place.level + 1});
    if (after_value_) {
        buffer_.append("\n").append(2 * std::size_t{place.level}, ' ');
    }
    buffer_ += '}';
    after_value_ = true;
}

void JsonWriter::leaf_annotations(const OutputRecord &first, Place place, bool is_array)
{
    std::string annotations;
    bool any = false;
    const auto annotate = [&](const OutputRecord &node) {
        const char *operation = operation_of(node, place).name;
        annotations += annotations.empty() ? "" : ", ";
        if (operation == nullptr) {
            annotations += "null";
        } else {
            annotations.append("{\"ietf-netconf:operation\": \"").append(operation).append("\"}");
        }
        any = any || operation != nullptr;
    };
    if (is_array) {
        for_each_alike(first, annotate);
    } else {
        annotate(first);
    }
    if (!any) {
        return;
    }
    next(place.level);
    name(first, place, "@");
    buffer_ += is_array ? "[" + annotations + "]" : annotations;
    after_value_ = true;
}

void JsonWriter::name(const OutputRecord &node, Place place, const char *mark)
{
    buffer_.append("\"").append(mark);
    if (place.ns == nullptr || (place.ns != node.ns() && std::strcmp(place.ns, node.ns()) != 0)) {
        const SchemaModule *const module = schema_.module_of(node.ns());
        buffer_.append(module == nullptr ? node.ns() : module->name.c_str()).append(":");
    }
    buffer_.append(node.tag()).append("\": ");
}

void JsonWriter::value(const OutputRecord &leaf)
{
    const char *value = leaf.value;
    const ValueForm type = leaf.info()->schema->form;
    const std::string_view given = value == nullptr ? "" : value;
    if (type == ValueForm::empty && given.empty()) {
        buffer_ += "[null]";
    } else if (value == nullptr) {
        buffer_ += "null";
    } else if ((type == ValueForm::number && is_number(given)) ||
               (type == ValueForm::boolean && (given == "true" || given == "false"))) {
        buffer_ += given;
    } else {
        text(given);
    }
}

void JsonWriter::text(std::string_view text)
{
    buffer_ += '"';
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            buffer_.append(1, '\\').append(1, c);
        } else if (static_cast<unsigned char>(c) < 0x20) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned int>(c));
            buffer_ += escape;
        } else {
            buffer_ += c;
        }
    }
    buffer_ += '"';
}

void JsonWriter::flush()
{
    good_ = good_ && sink_(buffer_);
    buffer_.clear();
}

} // namespace tqm
