#include "envelope.h"

#include "report.h"
#include "text/line_index.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>
#include <pugixml.hpp>

namespace router
{

namespace
{

std::string_view local_name(std::string_view name)
{
    const size_t colon = name.find(':');
    return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

tl::unexpected<Error> no_data_in_reply(std::string_view holds)
{
    return failure("it is a reply that holds " + std::string(holds) + ", and no data");
}

// White space, as it may stand between elements and says nothing.
bool is_blank(pugi::xml_node node)
{
    return node.type() == pugi::node_pcdata && std::strspn(node.value(), " \t\r\n") == std::strlen(node.value());
}

// The one element among the children, beside which there is nothing.
pugi::xml_node only_element(pugi::xml_node parent)
{
    pugi::xml_node found;
    for (pugi::xml_node node : parent.children()) {
        if (is_blank(node)) {
            continue;
        }
        if (found || node.type() != pugi::node_element) {
            return {};
        }
        found = node;
    }
    return found;
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
        return failure("it is not well-formed XML: there is something beside <" + std::string(first.name()) + ">");
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
    return failure("it is a reply that does not hold <data> alone");
}

size_t line_feeds(std::string_view text)
{
    return static_cast<size_t>(std::ranges::count(text, '\n'));
}

// Writes what an envelope holds as it was read: names, values and references are not looked at. Each node stands in the
// line that it was in; comments and processing instructions are gone.
class ContentWriter
{
public:
    ContentWriter(std::string_view source, const std::vector<pugi::xml_node> &envelope)
        : source_(source), envelope_(envelope)
    {
        text_.reserve(source.size());
    }

    // However deep the content is, this takes no more of the stack.
    std::string write(pugi::xml_node parent)
    {
        pugi::xml_node node = parent.first_child();
        while (node) {
            begin(node, node.parent() == parent);
            if (node.first_child()) {
                node = node.first_child();
                continue;
            }
            while (node && !node.next_sibling()) {
                node = node.parent() == parent ? pugi::xml_node() : node.parent();
                end(node);
            }
            node = node.next_sibling();
        }
        return std::move(text_.append(std::exchange(tag_end_, "")));
    }

private:
    void begin(pugi::xml_node node, bool is_outermost)
    {
        // A tag takes up the lines up to the next node: in it white space means nothing.
        if (const auto offset = static_cast<size_t>(node.offset_debug()); offset < source_.size()) {
            source_line_ += line_feeds(source_.substr(offset_, offset - offset_));
            offset_ = offset;
            for (; line_ < source_line_; ++line_) {
                text_ += '\n';
            }
        }
        text_ += std::exchange(tag_end_, "");
        if (node.type() == pugi::node_element) {
            text_.append("<").append(node.name());
            for (const pugi::xml_attribute attribute : node.attributes()) {
                add_attribute(attribute);
            }
            if (is_outermost) {
                add_declarations(node);
            }
            tag_end_ = node.first_child() ? ">" : "/>";
            return;
        }
        const bool is_section = node.type() == pugi::node_cdata;
        text_.append(is_section ? "<![CDATA[" : "");
        add_value(node.value());
        text_.append(is_section ? "]]>" : "");
    }

    void end(pugi::xml_node element)
    {
        if (element) {
            text_.append(std::exchange(tag_end_, "")).append("</").append(element.name());
            tag_end_ = ">";
        }
    }

    void add_value(std::string_view value)
    {
        text_ += value;
        line_ += line_feeds(value);
    }

    void add_attribute(pugi::xml_attribute attribute)
    {
        const char *quote = std::strchr(attribute.value(), '"') ? "'" : "\"";
        text_.append(" ").append(attribute.name()).append("=").append(quote);
        add_value(attribute.value());
        text_ += quote;
    }

    // Declarations of the envelope, where `element` and the inner elements do not make them anew.
    void add_declarations(pugi::xml_node element)
    {
        std::vector<std::string_view> declared;
        for (const pugi::xml_attribute attribute : element.attributes()) {
            declared.emplace_back(attribute.name());
        }
        for (auto around = envelope_.rbegin(); around != envelope_.rend(); ++around) {
            for (const pugi::xml_attribute attribute : around->attributes()) {
                const std::string_view name = attribute.name();
                const bool declares = name == "xmlns" || name.starts_with("xmlns:");
                if (declares && std::ranges::find(declared, name) == declared.end()) {
                    declared.push_back(name);
                    add_attribute(attribute);
                }
            }
        }
    }

    std::string_view source_;
    const std::vector<pugi::xml_node> &envelope_;
    size_t offset_ = 0;      // of the last node in the source
    size_t source_line_ = 0; // that it stands in
    std::string text_;
    size_t line_ = 0;          // that the text has come to
    const char *tag_end_ = ""; // of the tag that it ends with
};

} // namespace

Expected<void> take_off_envelope(std::string &xml)
{
    pugi::xml_document document;
    constexpr unsigned int options =
        pugi::parse_fragment | pugi::parse_cdata | pugi::parse_ws_pcdata | pugi::parse_doctype;
    const pugi::xml_parse_result parsed = document.load_buffer(xml.data(), xml.size(), options, pugi::encoding_utf8);
    if (parsed.status == pugi::status_out_of_memory) {
        throw std::bad_alloc();
    }
    if (!parsed) {
        const size_t line = text::LineIndex(xml).line_of(static_cast<size_t>(parsed.offset));
        return failure("it is not well-formed XML (line " + std::to_string(line) + ")");
    }
    for (const pugi::xml_node node : document.children()) {
        if (node.type() == pugi::node_doctype) {
            return failure("a document type declaration is not allowed");
        }
    }
    const auto envelope = envelope_of(document);
    if (!envelope) {
        return tl::unexpected(envelope.error());
    }
    xml = ContentWriter(xml, *envelope).write(envelope->empty() ? document : envelope->back());
    return {};
}

// ---- JSON -----------------------------------------------------------------------------------------------------------

namespace
{

void blank(std::string &text, size_t begin, size_t end)
{
    for (size_t at = begin; at < end; ++at) {
        text[at] = text[at] == '\n' ? '\n' : ' ';
    }
}

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
            return failure("it is a reply with the unknown member '" + name + "'");
        }
    }
    if (!data || !data->is_object()) {
        return failure("it is a reply that holds no data");
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
