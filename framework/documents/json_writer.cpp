#include "documents/json_writer.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

#include "schema/paths.h"

namespace tqm
{

namespace
{

constexpr PlainBytes plain("\"\\");

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

/// What stands in a text for a character that is not plain.
std::string escape_of(char c)
{
    if (c == '"' || c == '\\') {
        return {'\\', c};
    }
    char escape[8];
    std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned char>(c));
    return escape;
}

std::string annotation(const char *operation)
{
    return std::string("{\"ietf-netconf:operation\": \"") + operation + "\"}";
}

} // namespace

bool JsonWriter::write(std::string_view wrapper, const std::vector<const OutputNode *> &trees, bool with_operations)
{
    with_operations_ = with_operations;
    const bool wrapped = !wrapper.empty();
    text_.append("{");
    if (wrapped) {
        text_.append("\n  \"ietf-netconf:");
        text_.append(wrapper);
        text_.append("\": {");
    }
    const Place place{nullptr, TQM_OP_MERGE, wrapped ? 2U : 1U};
    for (const OutputNode *tree : trees) {
        member(record_of(*tree), place);
    }
    if (!trees.empty()) {
        text_.append(wrapped ? "\n  " : "\n");
    }
    text_.append(wrapped ? "}\n}\n" : "}\n");
    return text_.flush();
}

WrittenOperation JsonWriter::operation_of(const OutputRecord &node, Place place) const
{
    return with_operations_ ? written_operation(node, place.operation) : WrittenOperation{nullptr, place.operation};
}

/// Starts a member or an array's element: all but the first have a comma before them. `room`: as much more may be put.
void JsonWriter::next(unsigned int level, std::size_t room)
{
    text_.reserve(2 + 2 * std::size_t{level} + room);
    if (after_value_) {
        text_.put(',');
    }
    after_value_ = false;
    text_.put('\n');
    text_.indent(level);
}

/// Ends a line and begins another one.
void JsonWriter::end_line(unsigned int level)
{
    text_.reserve(1 + 2 * std::size_t{level});
    text_.put('\n');
    text_.indent(level);
}

void JsonWriter::members(const OutputRecord &node, Place place)
{
    std::vector<const PathInfo *> done;
    for (const OutputRecord &child : Records(node.first_child())) {
        if (!is_repeated(child)) {
            member(child, place);
        } else if (std::ranges::find(done, child.info()) == done.end()) {
            done.push_back(child.info());
            name(child, place);
            array(child, place);
        }
    }
}

void JsonWriter::member(const OutputRecord &node, Place place)
{
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
    text_.append("[");
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
    end_line(place.level);
    text_.append("]");
    after_value_ = true;
    if (!first.list_entry) {
        leaf_annotations(first, place, true);
    }
}

void JsonWriter::object(const OutputRecord &node, const WrittenOperation &operation, Place place)
{
    text_.append("{");
    after_value_ = false;
    if (operation.name != nullptr) {
        next(place.level + 1);
        text_.append("\"@\": ");
        text_.append(annotation(operation.name));
        after_value_ = true;
    }
    members(node, {node.ns(), operation.effective, place.level + 1});
    if (after_value_) {
        end_line(place.level);
    }
    text_.append("}");
    after_value_ = true;
}

void JsonWriter::leaf_annotations(const OutputRecord &first, Place place, bool is_array)
{
    const auto operation = [&](const OutputRecord &node) { return operation_of(node, place).name; };
    bool any = operation(first) != nullptr;
    if (is_array && with_operations_) {
        for_each_alike(first, [&](const OutputRecord &node) { any = any || operation(node) != nullptr; });
    }
    if (!any) {
        return;
    }
    name(first, place, "@");
    bool is_first = true;
    const auto annotate = [&](const OutputRecord &node) {
        text_.append(is_first ? "" : ", ");
        text_.append(operation(node) == nullptr ? "null" : annotation(operation(node)));
        is_first = false;
    };
    if (is_array) {
        text_.append("[");
        for_each_alike(first, annotate);
        text_.append("]");
    } else {
        annotate(first);
    }
    after_value_ = true;
}

/// Starts the member of `node`, up to its value.
void JsonWriter::name(const OutputRecord &node, Place place, std::string_view mark)
{
    const std::string_view tag = node.info()->name();
    const std::size_t rest = tag.size() + 3;
    next(place.level, 1 + mark.size() + rest);
    text_.put('"');
    text_.put(mark);
    if (place.ns == nullptr || (place.ns != node.ns() && std::strcmp(place.ns, node.ns()) != 0)) {
        const SchemaModule *const module = schema_.module_of(node.ns());
        text_.append(module == nullptr ? node.ns() : module->name.c_str());
        text_.append(":");
        text_.reserve(rest);
    }
    text_.put(tag);
    text_.put("\": ");
}

void JsonWriter::value(const OutputRecord &leaf)
{
    const char *value = leaf.value;
    const ValueForm type = leaf.info()->schema->form;
    const std::string_view given = value == nullptr ? "" : value;
    if (type == ValueForm::empty && given.empty()) {
        text_.append("[null]");
    } else if (value == nullptr) {
        text_.append("null");
    } else if ((type == ValueForm::number && is_number(given)) ||
               (type == ValueForm::boolean && (given == "true" || given == "false"))) {
        text_.append(given);
    } else {
        text_.append("\"");
        text_.append_escaped(value, plain, escape_of);
        text_.append("\"");
    }
}

} // namespace tqm
