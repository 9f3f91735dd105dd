#include "report.h"

#include <cstdio>

#include <nlohmann/json.hpp>

#include "printable.h"

namespace ocmap
{
namespace
{

// A line beside the error's own, where there is something to say.
std::string line(std::string_view name, std::string_view text)
{
    return text.empty() ? "" : "  " + std::string(name) + ": " + printable(text) + "\n";
}

std::string code_text(rcode code)
{
    char text[sizeof "0x00000000"];
    std::snprintf(text, sizeof text, "0x%08x", code);
    return text;
}

// The router's own place and words.
std::string native_words(const tqm::Error &error)
{
    return (error.native_path.empty() ? "" : error.native_path + ": ") + error.native_text;
}

std::string lines(const tqm::Error &error)
{
    std::string text = report_line(error.text);
    text += line("error-tag", tqm::name_of(error.error_tag));
    text += line("error-app-tag", error.app_tag);
    text += line("path", error.path);
    text += line("tag", error.tag);
    text += error.code ? line("code", code_text(*error.code)) : "";
    return text + line("native", native_words(error));
}

void put(nlohmann::ordered_json &object, const char *name, std::string_view text)
{
    if (!text.empty()) {
        object[name] = text;
    }
}

std::string json(const tqm::Error &error)
{
    nlohmann::ordered_json told;
    put(told, "error-type", tqm::name_of(error.type));
    put(told, "error-tag", tqm::name_of(error.error_tag));
    put(told, "error-app-tag", error.app_tag);
    put(told, "error-path", tqm::json_path(error));
    const std::string native = native_words(error);
    put(told, "error-message", native.empty() ? error.text : error.text + " (" + native + ")");
    nlohmann::ordered_json info;
    put(info, "ietf-netconf:bad-element", error.bad_element);
    put(info, "ietf-netconf:bad-attribute", error.bad_attribute);
    put(info, "ietf-netconf:bad-namespace", error.bad_namespace);
    if (!info.empty()) {
        told["error-info"] = info;
    }
    nlohmann::ordered_json document;
    document["ietf-restconf:errors"]["error"] = nlohmann::ordered_json::array({told});
    return document.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

} // namespace

std::string report_line(std::string_view text)
{
    return "error: " + printable(text) + "\n";
}

std::string report(const tqm::Error &error, tqm::Format format)
{
    return format == tqm::Format::json ? json(error) : lines(error);
}

} // namespace ocmap
