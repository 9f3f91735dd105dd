// The page is a text that is built in; what is written here is the explanation, as the JSON that the page's script
// reads.
#include "explanation_page.h"

#include <cstdio>
#include <string_view>

#include <nlohmann/json.hpp>

#include "page.h"

namespace ocmap
{
namespace
{

using Json = nlohmann::ordered_json;

// What is not there, or empty, has no member.
void put(Json &object, const char *name, const std::string &text)
{
    if (!text.empty()) {
        object[name] = text;
    }
}

template <typename Value>
void put(Json &object, const char *name, const std::optional<Value> &value)
{
    if (value) {
        object[name] = *value;
    }
}

Json to_json(const RequestNode &node)
{
    Json object = {{"depth", node.depth}, {"tag", node.tag}, {"path", node.path}};
    put(object, "value", node.value);
    put(object, "operation", node.operation);
    object["fate"] = fate_names[static_cast<std::size_t>(node.fate)];
    put(object, "reason", node.reason);
    object["mappers"] = node.mappers;
    object["adds"] = node.adds;
    return object;
}

Json to_json(const Add &add)
{
    Json object = {{"node", add.node}, {"mapper", add.mapper}, {"path", add.path}};
    put(object, "value", add.value);
    put(object, "operation", add.operation);
    put(object, "result", add.result);
    put(object, "lost_to", add.lost_to);
    if (!add.wins_over.empty()) {
        object["wins_over"] = add.wins_over;
    }
    put(object, "not_taken", add.not_taken);
    return object;
}

Json to_json(const ResultNode &node)
{
    Json object = {{"depth", node.depth}, {"tag", node.tag}, {"path", node.path}, {"ns", node.ns}};
    put(object, "value", node.value);
    put(object, "operation", node.operation);
    object["adds"] = node.adds;
    return object;
}

Json to_json(const tqm::Error &error)
{
    Json object = {{"text", text_at_place(error)}};
    if (error.code) {
        char code[sizeof "0x00000000"];
        std::snprintf(code, sizeof code, "0x%08x", *error.code);
        object["code"] = code;
    }
    return object;
}

// Safe inside a script element: in JSON a "<" stands in strings only, where it can be escaped, so that no text can end
// the element. Bytes that are not UTF-8 become U+FFFD.
void append(std::string &page, const Json &json)
{
    for (const char c : json.dump(-1, ' ', false, Json::error_handler_t::replace)) {
        if (c == '<') {
            page += "\\u003c";
        } else {
            page += c;
        }
    }
}

// Record by record: a DOM of all would be a second copy of the explanation.
template <typename Record>
void append(std::string &page, const char *name, const std::vector<Record> &records)
{
    page.append(",\n\"").append(name).append("\": [");
    const char *separator = "\n";
    for (const Record &record : records) {
        page += separator;
        append(page, to_json(record));
        separator = ",\n";
    }
    page += "]";
}

} // namespace

std::string explanation_page(const Explanation &explanation)
{
    constexpr std::string_view data = R"(<script id="explanation" type="application/json">)";
    static_assert(page_template.find(data) != std::string_view::npos);
    constexpr std::size_t place = page_template.find(data) + data.size();

    std::string page(page_template.substr(0, place));
    page += "\n{\"kind\": \"" + explanation.kind + "\", \"reverse\": " + (explanation.reverse ? "true" : "false");
    if (explanation.refusal) {
        page += ",\n\"refusal\": ";
        append(page, to_json(*explanation.refusal));
    }
    append(page, "request", explanation.request);
    append(page, "adds", explanation.adds);
    append(page, "results", explanation.results);
    page += "}\n";
    page += page_template.substr(place);
    return page;
}

} // namespace ocmap
