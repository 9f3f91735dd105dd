#include "documents/xml_names.h"

#include <cstring>

namespace tqm
{

bool XmlScope::is_declaration(const char *attribute_name)
{
    return std::strncmp(attribute_name, "xmlns", 5) == 0 && (attribute_name[5] == '\0' || attribute_name[5] == ':');
}

std::size_t XmlScope::enter(pugi::xml_node element)
{
    const std::size_t mark = bindings_.size();
    for (pugi::xml_attribute attribute : element.attributes()) {
        const char *name = attribute.name();
        if (is_declaration(name)) {
            bindings_.push_back({name[5] == ':' ? name + 6 : "", attribute.value()});
        }
    }
    if (bindings_.size() != mark) {
        default_ns_ = find("");
    }
    return mark;
}

void XmlScope::leave(std::size_t mark)
{
    if (bindings_.size() != mark) {
        bindings_.resize(mark);
        default_ns_ = find("");
    }
}

const char *XmlScope::find(std::string_view prefix) const
{
    for (std::size_t at = bindings_.size(); at-- > 0;) {
        if (bindings_[at].prefix == prefix) {
            return bindings_[at].uri;
        }
    }
    if (prefix == "xml") {
        return "http://www.w3.org/XML/1998/namespace";
    }
    return prefix.empty() ? "" : nullptr;
}

std::optional<XmlName> XmlScope::element_name(const char *qualified) const
{
    const char *colon = std::strchr(qualified, ':');
    if (colon == nullptr) {
        return XmlName{default_ns_, qualified};
    }
    const char *uri = find({qualified, static_cast<std::size_t>(colon - qualified)});
    if (uri == nullptr) {
        return std::nullopt;
    }
    return XmlName{uri, colon + 1};
}

std::optional<XmlName> XmlScope::attribute_name(const char *qualified) const
{
    if (std::strchr(qualified, ':') == nullptr) {
        return XmlName{"", qualified};
    }
    return element_name(qualified);
}

} // namespace tqm
