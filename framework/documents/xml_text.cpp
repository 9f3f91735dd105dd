// See xml_text.h.
#include "documents/xml_text.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <string>

namespace tqm
{

namespace
{

bool is_control(unsigned char byte)
{
    return byte < 0x20 && byte != '\t' && byte != '\n' && byte != '\r';
}

/// True for eight bytes of ASCII none of which can be a control character.
bool is_plain(const char *text)
{
    constexpr uint64_t high = 0x8080808080808080u;
    constexpr uint64_t blanks = 0x2020202020202020u;
    uint64_t word;
    std::memcpy(&word, text, 8);
    return ((word | (word - blanks)) & high) == 0;
}

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
    return code == 0x9 || code == 0xa || code == 0xd || (code >= 0x20 && code <= 0xd7ff) ||
           (code >= 0xe000 && code <= 0xfffd) || (code >= 0x10000 && code <= 0x10ffff);
}

} // namespace

std::size_t find_bad_character(std::string_view text)
{
    const auto continues = [&](std::size_t at) {
        return at < text.size() && (static_cast<unsigned char>(text[at]) & 0xc0u) == 0x80u;
    };
    for (std::size_t at = 0; at < text.size();) {
        if (at + 8 <= text.size() && is_plain(text.data() + at)) {
            at += 8;
            continue;
        }
        const auto byte = static_cast<unsigned char>(text[at]);
        const std::size_t length = is_control(byte) ? 0
                                   : byte < 0x80    ? 1
                                   : byte < 0xc2    ? 0
                                   : byte < 0xe0    ? 2
                                   : byte < 0xf0    ? 3
                                   : byte < 0xf5    ? 4
                                                    : 0;
        bool good = length != 0;
        for (std::size_t i = 1; good && i < length; ++i) {
            good = continues(at + i);
        }
        if (good && length == 3) {
            const auto second = static_cast<unsigned char>(text[at + 1]);
            const bool is_noncharacter =
                byte == 0xef && second == 0xbf && static_cast<unsigned char>(text[at + 2]) >= 0xbe;
            good = !(byte == 0xe0 && second < 0xa0) && !(byte == 0xed && second >= 0xa0) && !is_noncharacter;
        }
        if (good && length == 4) {
            const auto second = static_cast<unsigned char>(text[at + 1]);
            good = !(byte == 0xf0 && second < 0x90) && !(byte == 0xf4 && second >= 0x90);
        }
        if (!good) {
            return at;
        }
        at += length;
    }
    return std::string_view::npos;
}

bool is_declared_utf8(std::string_view text)
{
    if (text.find('\0') < 4 || text.starts_with("\xfe\xff") || text.starts_with("\xff\xfe")) {
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
