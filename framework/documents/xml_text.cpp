#include "documents/xml_text.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdint>
#include <string>

#include "text/characters.h"

namespace tqm
{

namespace
{

/// Whether `name`, what stands between "&" and ";", refers to a character that XML allows.
bool is_good_reference(std::string_view name)
{
    if (!name.starts_with('#')) {
        return name == "lt" || name == "gt" || name == "amp" || name == "apos" || name == "quot";
    }
    const bool hexadecimal = name.starts_with("#x");
    name.remove_prefix(hexadecimal ? 2 : 1);
    uint32_t code = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), code, hexadecimal ? 16 : 10);
    if (error != std::errc() || end != name.data() + name.size()) {
        return false;
    }
    return text::is_xml_character(code);
}

} // namespace

bool is_declared_utf8(std::string_view text)
{
    if (text.substr(0, 4).find('\0') != std::string_view::npos || text.starts_with("\xfe\xff") ||
        text.starts_with("\xff\xfe")) {
        return false;
    }
    text.remove_prefix(text.starts_with("\xef\xbb\xbf") ? 3 : 0);
    if (!text.starts_with("<?xml")) {
        return true;
    }
    std::string declaration(text.substr(0, std::min<std::size_t>(text.find("?>"), 200)));
    std::ranges::transform(declaration, declaration.begin(), [](unsigned char c) { return std::tolower(c); });
    return declaration.find("encoding") == std::string::npos || declaration.find("utf-8") != std::string::npos ||
           declaration.find("us-ascii") != std::string::npos;
}

std::size_t find_bad_reference(std::string_view text)
{
    std::size_t reference = text.find('&');
    std::size_t section = reference == std::string_view::npos ? reference : text.find("<!");
    while (reference != std::string_view::npos) {
        if (section < reference) {
            const std::string_view close = text.substr(section).starts_with("<![CDATA[") ? "]]>" : "-->";
            const std::size_t end = text.find(close, section);
            if (end == std::string_view::npos) {
                return end; // truncated, which the parser says better
            }
            section = text.find("<!", end);
            if (reference < end) {
                reference = text.find('&', end);
            }
            continue;
        }
        const std::size_t end = text.find(';', reference);
        if (end == std::string_view::npos || end - reference > 12 ||
            !is_good_reference(text.substr(reference + 1, end - reference - 1))) {
            return reference;
        }
        reference = text.find('&', end);
    }
    return reference;
}

} // namespace tqm
