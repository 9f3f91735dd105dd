// See envelope.h. pugixml tells where in the text its nodes begin; of end tags it is known what can stand behind them.
#include "envelope.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>
#include <pugixml.hpp>

namespace router
{

namespace
{

tl::unexpected<Error> fault(std::string text)
{
    return tl::unexpected(Error{std::move(text), ""});
}

void blank(std::string &text, size_t begin, size_t end)
{
    for (size_t at = begin; at < end; ++at) {
        text[at] = text[at] == '\n' ? '\n' : ' ';
    }
}

std::string_view local_name(std::string_view name)
{
    const size_t colon = name.find(':');
    return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

tl::unexpected<Error> no_data_in_reply(std::string_view holds)
{
    return fault("it is a reply that holds " + std::string(holds) + ", and no data");
}

size_t offset_of(pugi::xml_node node)
{
    return static_cast<size_t>(node.offset_debug());
}

// Behind the ">" of the element's start tag.
size_t end_of_start_tag(const std::string &text, pugi::xml_node element)
{
    char quote = '\0';
    size_t at = offset_of(element);
    for (; at < text.size() && (quote || text[at] != '>'); ++at) {
        if (quote ? text[at] == quote : text[at] == '"' || text[at] == '\'') {
            quote = quote ? '\0' : text[at];
        }
    }
    return at + 1;
}

bool is_misc(pugi::xml_node node)
{
    return node.type() == pugi::node_comment || node.type() == pugi::node_pi || node.type() == pugi::node_declaration;
}

// The one element among the siblings, beside which there are only comments and processing instructions.
pugi::xml_node only_element(pugi::xml_node parent)
{
    pugi::xml_node found;
    for (pugi::xml_node node : parent.children()) {
        if (is_misc(node)) {
            continue;
        }
        if (found || node.type() != pugi::node_element) {
            return {};
        }
        found = node;
    }
    return found;
}

// Where the end tag of `element` begins, which `bound` is behind.
size_t start_of_end_tag(const std::string &text, pugi::xml_node element, size_t bound)
{
    const pugi::xml_node next = element.next_sibling();
    return text.rfind("</", (next ? offset_of(next) : bound) - 1);
}

// The elements around the data, outermost first; none if the document is bare.
Expected<std::vector<pugi::xml_node>> envelope_of(const pugi::xml_document &document)
{
    const pugi::xml_node first =
        document.find_child([](pugi::xml_node node) { return node.type() == pugi::node_element; });
    const std::string_view name = local_name(first.name());
    if (name != "config" && name != "data" && name != "rpc-reply") {
        return {};
    }
    if (only_element(document) != first) {
        return fault("it is not well-formed XML: there is something beside <" + std::string(first.name()) + ">");
    }
    if (name != "rpc-reply") {
        return std::vector{first};
    }
    const pugi::xml_node data = only_element(first);
    if (data && local_name(data.name()) == "data") {
        return std::vector{first, data};
    }
    for (const pugi::xml_node child : first.children()) {
        if (local_name(child.name()) == "rpc-error" || local_name(child.name()) == "ok") {
            return no_data_in_reply("<" + std::string(child.name()) + ">");
        }
    }
    return fault("it is a reply that does not hold <data> alone");
}

// Declarations of the envelope as attributes, where `element` and the inner elements do not make them anew.
std::string declarations_for(pugi::xml_node element, const std::vector<pugi::xml_node> &envelope)
{
    std::string text;
    std::vector<std::string_view> declared;
    for (const pugi::xml_attribute attribute : element.attributes()) {
        declared.emplace_back(attribute.name());
    }
    for (auto around = envelope.rbegin(); around != envelope.rend(); ++around) {
        for (const pugi::xml_attribute attribute : around->attributes()) {
            const std::string_view name = attribute.name();
            const bool declares = name == "xmlns" || name.starts_with("xmlns:");
            if (!declares || std::find(declared.begin(), declared.end(), name) != declared.end()) {
                continue;
            }
            declared.push_back(name);
            const char quote = std::strchr(attribute.value(), '"') ? '\'' : '"';
            text.append(" ").append(name).append("=").append(1, quote).append(attribute.value()).append(1, quote);
        }
    }
    return text;
}

} // namespace

Expected<void> take_off_envelope(std::string &xml)
{
    pugi::xml_document document;
    constexpr unsigned int options = pugi::parse_fragment | pugi::parse_cdata | pugi::parse_comments | pugi::parse_pi |
                                     pugi::parse_declaration | pugi::parse_doctype;
    const pugi::xml_parse_result parsed = document.load_buffer(xml.data(), xml.size(), options, pugi::encoding_utf8);
    if (!parsed) {
        const auto end = xml.begin() + std::min<std::ptrdiff_t>(parsed.offset, std::ssize(xml));
        const auto line = std::count(xml.begin(), end, '\n') + 1;
        return fault(parsed.status == pugi::status_out_of_memory
                         ? "out of memory"
                         : "it is not well-formed XML (line " + std::to_string(line) + ")");
    }
    for (const pugi::xml_node node : document.children()) {
        if (node.type() == pugi::node_doctype) {
            return fault("a document type declaration is not allowed");
        }
    }
    const auto envelope = envelope_of(document);
    if (!envelope) {
        return tl::unexpected(envelope.error());
    }
    if (envelope->empty()) {
        return {};
    }
    const size_t begin = end_of_start_tag(xml, envelope->back());
    size_t end = xml.size();
    if (xml[begin - 2] == '/') {
        end = begin;
    } else {
        for (const pugi::xml_node element : *envelope) {
            end = start_of_end_tag(xml, element, end);
        }
    }
    blank(xml, 0, begin);
    blank(xml, end, xml.size());
    std::string text;
    size_t copied = 0;
    for (const pugi::xml_node child : envelope->back().children()) {
        if (child.type() != pugi::node_element) {
            continue;
        }
        if (const std::string declarations = declarations_for(child, *envelope); !declarations.empty()) {
            const size_t name_end = offset_of(child) + std::strlen(child.name());
            text.append(xml, copied, name_end - copied).append(declarations);
            copied = name_end;
        }
    }
    if (copied != 0) {
        xml = text.append(xml, copied);
    }
    return {};
}

// ---- JSON -----------------------------------------------------------------------------------------------------------

namespace
{

size_t skip_space(std::string_view text, size_t at)
{
    return std::min(text.find_first_not_of(" \t\r\n", at), text.size());
}

// Whether the text is an object that begins with this member. Gives the place behind the colon.
bool begins_with(std::string_view text, std::string_view member, size_t &behind)
{
    const size_t begin = skip_space(text, skip_space(text, 0) + 1);
    const size_t colon = skip_space(text, begin + member.size());
    behind = colon + 1;
    return text.substr(begin).starts_with(member) && colon < text.size() && text[colon] == ':';
}

Expected<void> take_off_json_reply(std::string &json)
{
    using Json = nlohmann::ordered_json;
    const Json document = Json::parse(json, nullptr, false);
    if (document.is_discarded() || document.size() != 1) {
        return {}; // what is wrong with it is said by those who read it
    }
    const Json &reply = document.front();
    const Json *data = nullptr;
    for (const auto &[name, value] : reply.items()) {
        const std::string_view local = local_name(name);
        if (local == "rpc-error" || local == "ok") {
            return no_data_in_reply("'" + name + "'");
        }
        if (local == "data") {
            data = &value;
        } else if (local != "message-id") {
            return fault("it is a reply with the unknown member '" + name + "'");
        }
    }
    if (!data || !data->is_object()) {
        return fault("it is a reply that holds no data");
    }
    json = data->dump(-1, ' ', false, Json::error_handler_t::replace);
    return {};
}

} // namespace

Expected<void> take_off_json_envelope(std::string &json)
{
    size_t behind = 0;
    if (begins_with(json, "\"ietf-netconf:rpc-reply\"", behind)) {
        return take_off_json_reply(json);
    }
    const size_t close = json.rfind('}');
    if (begins_with(json, "\"ietf-netconf:data\"", behind) && close != std::string::npos && behind <= close) {
        blank(json, 0, behind);
        blank(json, close, close + 1);
    }
    return {};
}

} // namespace router
