// Documents. A store's nodes stand in one <config>, so that a file that was cut short is never a whole one. libyang
// reads siblings without an envelope; its tags are blanked out, which keeps the line numbers of its errors right.
#include "document.h"

#include "entries.h"
#include "memory.h"
#include "report.h"
#include "router/models.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include <nlohmann/json.hpp>

namespace router
{

namespace
{

constexpr const char *envelope_open = "<config xmlns=\"urn:ietf:params:xml:ns:netconf:base:1.0\">\n";
constexpr const char *envelope_close = "</config>\n";

tl::unexpected<Error> fault(std::string text)
{
    return tl::unexpected(Error{std::move(text), ""});
}

bool is_space(char character)
{
    return std::string_view(" \t\r\n").find(character) != std::string_view::npos;
}

size_t skip_space(std::string_view text, size_t at)
{
    while (at < text.size() && is_space(text[at])) {
        ++at;
    }
    return at;
}

// Behind white space, comments, processing instructions and the XML declaration.
size_t skip_misc(std::string_view text, size_t at)
{
    for (;;) {
        at = skip_space(text, at);
        const std::string_view rest = text.substr(std::min(at, text.size()));
        const bool comment = rest.starts_with("<!--");
        if (!comment && !rest.starts_with("<?")) {
            return at;
        }
        const size_t end = rest.find(comment ? "-->" : "?>");
        if (end == std::string_view::npos) {
            return at;
        }
        at += end + (comment ? 3 : 2);
    }
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

// Blanks out the tags of a <config> or <data> around everything. A document without one stays as it is.
bool unwrap(std::string &text)
{
    const size_t begin = skip_misc(text, 0);
    const size_t name_end = text.find_first_of(" \t\r\n/>", begin);
    const size_t tag_end = text.find('>', begin);
    if (begin >= text.size() || text[begin] != '<' || tag_end == std::string::npos) {
        return true;
    }
    const std::string name = text.substr(begin + 1, name_end - begin - 1);
    if (local_name(name) != "config" && local_name(name) != "data") {
        return true;
    }
    blank(text, 0, begin);
    if (text[tag_end - 1] == '/') {
        blank(text, begin, tag_end + 1);
        return skip_misc(text, tag_end + 1) == text.size();
    }
    const size_t close = text.rfind("</" + name);
    if (close == std::string::npos || close < tag_end) {
        return false;
    }
    const size_t close_name_end = skip_space(text, close + 2 + name.size());
    if (close_name_end >= text.size() || text[close_name_end] != '>' ||
        skip_misc(text, close_name_end + 1) != text.size()) {
        return false;
    }
    blank(text, begin, tag_end + 1);
    blank(text, close, text.size());
    return true;
}

bool is_json(std::string_view text)
{
    const size_t begin = skip_space(text, 0);
    return begin < text.size() && text[begin] == '{';
}

// Blanks out {"ietf-netconf:data": and its brace at the end. A document without it stays as it is.
void unwrap_json(std::string &text)
{
    constexpr std::string_view member = "\"ietf-netconf:data\"";
    const size_t begin = skip_space(text, skip_space(text, 0) + 1);
    const size_t colon = skip_space(text, begin + member.size());
    const size_t close = text.rfind('}');
    if (std::string_view(text).substr(std::min(begin, text.size())).starts_with(member) && colon < close &&
        text[colon] == ':') {
        blank(text, 0, colon + 1);
        blank(text, close, close + 1);
    }
}

// Whether the text is one JSON value. What the parser says may quote a key: only the place is taken.
Expected<void> check_json(const std::string &text)
{
    using Json = nlohmann::json;
    const auto keep_nothing = [](int, Json::parse_event_t, Json &) { return false; };
    std::string place;
    try {
        [[maybe_unused]] const Json nothing = Json::parse(text, keep_nothing);
        return {};
    } catch (const Json::parse_error &error) {
        const auto end = text.begin() + static_cast<std::ptrdiff_t>(std::min(error.byte, text.size()));
        place = " (line " + std::to_string(std::count(text.begin(), end, '\n') + 1) + ")";
    } catch (const Json::exception &) { // a number that is too large
    }
    return fault("it is not one well-formed JSON object" + place);
}

// The tree that the text holds, every root of which must please `belongs`.
Expected<Tree> parse(const ly_ctx *context, std::string text, uint32_t options, bool (*belongs)(const lysc_node *))
{
    if (skip_space(text, 0) == text.size()) {
        return fault("it is empty");
    }
    if (text.starts_with("\xef\xbb\xbf")) { // a byte order mark
        blank(text, 0, 3);
    }
    const bool json = is_json(text);
    if (text.find('\0') != std::string::npos) { // which parsers take for the end
        return fault("it is not well-formed: it holds a NUL");
    }
    if (json) {
        unwrap_json(text);
        if (auto complete = check_json(text); !complete) { // libyang does not look at what comes behind the object
            return tl::unexpected(complete.error());
        }
    } else if (!unwrap(text)) {
        return fault("it is not well-formed XML");
    }
    const MemoryWatch watch;
    lyd_node *parsed = nullptr;
    ly_err_clean(const_cast<ly_ctx *>(context), nullptr);
    const LY_ERR code = lyd_parse_data_mem(context, text.c_str(), json ? LYD_JSON : LYD_XML, LYD_PARSE_STRICT | options,
                                           LYD_VALIDATE_PRESENT, &parsed);
    Tree tree(parsed);
    watch.check();
    if (code) {
        return fault(document_fault(context));
    }
    for (const lyd_node *root = tree.get(); root; root = root->next) {
        if (!belongs(root->schema)) {
            return fault(std::string("<") + LYD_NAME(root) + "> of " + root->schema->module->ns +
                         " has no place in it");
        }
    }
    return tree;
}

bool is_operational(const lysc_node *root)
{
    return std::strcmp(root->module->ns, ns::operational) == 0;
}

// Length of the UTF-8 sequence that a byte begins; 0 if it begins none.
size_t sequence_length(unsigned char first)
{
    if (first < 0x80) {
        return 1;
    }
    if (first >= 0xc2 && first < 0xe0) {
        return 2;
    }
    if (first >= 0xe0 && first < 0xf0) {
        return 3;
    }
    return first >= 0xf0 && first < 0xf5 ? 4 : 0;
}

// A carriage return is a character of XML, but a reader may turn it into a line feed.
bool is_xml_character(uint32_t character)
{
    return character == '\t' || character == '\n' || (character >= 0x20 && character < 0xd800) ||
           (character >= 0xe000 && character < 0xfffe) || (character >= 0x10000 && character < 0x110000);
}

} // namespace

bool is_xml_text(const char *text)
{
    static constexpr uint32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};

    const auto *at = reinterpret_cast<const unsigned char *>(text);
    while (*at) {
        const size_t length = sequence_length(*at);
        uint32_t character = length > 1 ? *at & (0x7fU >> length) : *at;
        if (length == 0) {
            return false;
        }
        for (size_t i = 1; i < length; ++i) {
            if ((at[i] & 0xc0U) != 0x80U) {
                return false;
            }
            character = (character << 6U) | (at[i] & 0x3fU);
        }
        if (character < smallest[length] || !is_xml_character(character)) {
            return false;
        }
        at += length;
    }
    return true;
}

Expected<Tree> parse_configuration(const ly_ctx *context, std::string text)
{
    return parse(context, std::move(text), LYD_PARSE_NO_STATE, is_native_configuration);
}

Expected<Tree> parse_state(const ly_ctx *context, std::string text)
{
    return parse(context, std::move(text), 0, is_operational);
}

Expected<std::string> print_configuration(const lyd_node *tree)
{
    std::string document = envelope_open;
    if (tree) {
        const MemoryWatch watch;
        char *printed = nullptr;
        const LY_ERR code = lyd_print_mem(&printed, tree, LYD_XML, LYD_PRINT_WITHSIBLINGS);
        const Text text(printed);
        watch.check();
        if (code) {
            return fault("libyang cannot print the configuration");
        }
        document += text.get() ? text.get() : "";
    }
    document += envelope_close;
    return document;
}

} // namespace router
