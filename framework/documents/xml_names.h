// XML namespaces: which prefixes mean what at an element. The parser below knows qualified names only.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <pugixml.hpp>

namespace tqm
{

inline constexpr const char *netconf_ns = "urn:ietf:params:xml:ns:netconf:base:1.0";

struct XmlName {
    const char *ns; ///< "" without a namespace
    const char *local;
};

class XmlScope
{
public:
    /// Takes in the declarations of `element`. Gives what leave() is to be given.
    std::size_t enter(pugi::xml_node element);
    void leave(std::size_t mark);

    /// The name of an element; nothing if its prefix is unknown.
    std::optional<XmlName> element_name(const char *qualified) const;
    /// The same of an attribute: without a prefix it has no namespace.
    std::optional<XmlName> attribute_name(const char *qualified) const;
    /// The namespace of elements without a prefix, at one address until another declaration is in force.
    const char *default_ns() const { return default_ns_; }
    /// More declarations than any client makes: each look-up would read them all.
    bool overfull() const { return bindings_.size() > 256; }

    static bool is_declaration(const char *attribute_name);

private:
    struct Binding {
        std::string_view prefix;
        const char *uri;
    };
    const char *find(std::string_view prefix) const;

    std::vector<Binding> bindings_;
    const char *default_ns_ = "";
};

} // namespace tqm
