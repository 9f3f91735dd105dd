// Documents. A store's nodes stand in one <config>, so that a file that was cut short is never a whole one. libyang
// reads siblings without an envelope.
#include "document.h"

#include "earlier_forms.h"
#include "entries.h"
#include "envelope.h"
#include "report.h"
#include "router/memory.h"
#include "router/models.h"
#include "text/characters.h"
#include "text/line_index.h"

#include <cstdint>
#include <cstring>

#include <nlohmann/json.hpp>

namespace router
{

namespace
{

constexpr const char *white_space = " \t\r\n";
constexpr const char *envelope_open = "<config xmlns=\"urn:ietf:params:xml:ns:netconf:base:1.0\">\n";
constexpr const char *envelope_close = "</config>\n";

bool is_json(std::string_view text)
{
    const size_t begin = text.find_first_not_of(white_space);
    return begin != text.npos && text[begin] == '{';
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
        place = " (line " + std::to_string(text::LineIndex(text).line_of(error.byte)) + ")";
    } catch (const Json::exception &) { // a number that is too large
    }
    return failure("it is not one well-formed JSON object" + place);
}

// The tree that the text holds, every root of which must please `belongs`.
Expected<Tree> parse(const ly_ctx *context, std::string text, uint32_t options, bool (*belongs)(const lysc_node *))
{
    if (text.find_first_not_of(white_space) == text.npos) {
        return failure("it is empty");
    }
    if (text.starts_with("\xef\xbb\xbf")) { // a byte order mark
        text.replace(0, 3, "   ");
    }
    const bool json = is_json(text);
    if (text.find('\0') != std::string::npos) { // which parsers take for the end
        return failure("it is not well-formed: it holds a NUL");
    }
    if (auto taken_off = json ? take_off_json_envelope(text) : take_off_envelope(text); !taken_off) {
        return tl::unexpected(taken_off.error());
    }
    if (json) {
        if (auto complete = check_json(text); !complete) { // libyang does not look at what comes behind the object
            return tl::unexpected(complete.error());
        }
    }
    const MemoryWatch watch;
    lyd_node *parsed = nullptr;
    ly_err_clean(const_cast<ly_ctx *>(context), nullptr);
    LY_ERR code = lyd_parse_data_mem(context, text.c_str(), json ? LYD_JSON : LYD_XML,
                                     LYD_PARSE_STRICT | LYD_PARSE_ONLY | options, 0, &parsed);
    Tree tree(parsed);
    if (!code && tree) {
        admit_earlier_forms(tree);
        parsed = tree.release();
        code = lyd_validate_all(&parsed, context, LYD_VALIDATE_PRESENT, nullptr);
        tree.reset(parsed);
    }
    watch.check();
    if (code) {
        return failure(document_fault(context));
    }
    for (const lyd_node *root = tree.get(); root; root = root->next) {
        if (!belongs(root->schema)) {
            return failure(std::string("<") + LYD_NAME(root) + "> of " + root->schema->module->ns +
                           " has no place in it");
        }
    }
    return tree;
}

} // namespace

bool is_xml_text(std::string_view text)
{
    return text::find_bad_character(text) == text.npos && text.find('\r') == text.npos;
}

Expected<Tree> parse_configuration(const ly_ctx *context, std::string text)
{
    return parse(context, std::move(text), LYD_PARSE_NO_STATE, is_native_configuration);
}

Expected<Tree> parse_state(const ly_ctx *context, std::string text)
{
    return parse(context, std::move(text), 0, is_state);
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
            return failure("libyang cannot print the configuration");
        }
        document += text.get() ? text.get() : "";
    }
    document += envelope_close;
    return document;
}

} // namespace router
