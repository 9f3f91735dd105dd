#include "documents/element_reader.h"

#include <algorithm>
#include <cstring>

namespace tqm
{

namespace
{

const char *local_name(pugi::xml_node element)
{
    const char *colon = std::strchr(element.name(), ':');
    return colon == nullptr ? element.name() : colon + 1;
}

} // namespace

ElementReader::ElementReader(const LoadRules &rules, const LoadTarget &target, const DocumentContent &content)
    : rules_(rules), target_(target), holder_(content.holder), scope_(content.scope), is_edit_(!rules.kind.is_read()),
      is_reverse_(!rules.kind.is_forward()), is_json_(content.json),
      is_filter_(content.is_filter && !is_edit() && !is_reverse())
{
}

InstancePath ElementReader::place_of(pugi::xml_node element) const
{
    std::vector<pugi::xml_node> elements;
    for (; element && element != holder_ && element.type() == pugi::node_element; element = element.parent()) {
        elements.push_back(element);
    }
    InstancePath place;
    std::string schema_path;
    for (; !elements.empty(); elements.pop_back()) {
        place.enter(local_name(elements.back()));
        schema_path.append("/").append(local_name(elements.back()));
        const SchemaNode *const node = rules_.schema.find(schema_path);
        for (const std::string &name : node == nullptr ? std::vector<std::string>() : node->keys) {
            const auto key =
                elements.back().find_child([&](pugi::xml_node child) { return name == local_name(child); });
            if (*key.child_value() != '\0') {
                place.key(name, key.child_value());
            }
        }
    }
    return place;
}

bool ElementReader::fail(ErrorTag tag, std::string text, pugi::xml_node element, std::string attribute)
{
    error_.text = std::move(text);
    error_.at(place_of(element));
    error_.error_tag = tag;
    error_.type = tag == ErrorTag::malformed_message ? ErrorType::rpc : ErrorType::application;
    if (tag != ErrorTag::malformed_message && tag != ErrorTag::too_big) {
        error_.bad_element = local_name(element);
    }
    error_.bad_attribute = std::move(attribute);
    return false;
}

std::optional<XmlName> ElementReader::name_of(pugi::xml_node element)
{
    auto name = scope_.element_name(element.name());
    if (!name) {
        fail(ErrorTag::malformed_message, std::string("the prefix of element <") + element.name() + "> is not declared",
             element);
        return std::nullopt;
    }
    if (name->ns != raw_ns_) {
        const char *ns = name->ns;
        if (is_json_ && *ns != '\0' && std::strcmp(ns, netconf_ns) != 0) {
            const SchemaModule *const module = rules_.schema.module_named(ns);
            if (module == nullptr && !is_filter_) {
                fail(ErrorTag::unknown_namespace, std::string("there is no module '") + ns + "' here", element);
                return std::nullopt;
            }
            ns = module == nullptr ? ns : module->ns.c_str(); // a module's name is no namespace, and selects nothing
        }
        raw_ns_ = name->ns;
        ns_ = target_.namespaces.intern(ns);
    }
    name->ns = ns_;
    return name;
}

bool ElementReader::attributes(pugi::xml_node element, rdl_tqm_datatree &record)
{
    for (pugi::xml_attribute attribute : element.attributes()) {
        if (XmlScope::is_declaration(attribute.name())) {
            continue;
        }
        const auto name = scope_.attribute_name(attribute.name());
        if (!name) {
            return fail(ErrorTag::malformed_message,
                        std::string("the prefix of attribute '") + attribute.name() + "' is not declared", element);
        }
        const bool is_netconf = std::strcmp(name->ns, netconf_ns) == 0;
        const bool is_operation = std::strcmp(name->local, "operation") == 0;
        if (is_netconf && is_operation) {
            if ((record.present & TQM_PRESENT_OPERATION) != 0) {
                return fail(ErrorTag::bad_attribute, "the attribute 'operation' is given twice", element, "operation");
            }
            if (!operation(element, attribute.value(), record)) {
                return false;
            }
        } else if (is_operation) {
            return fail(ErrorTag::unknown_attribute,
                        std::string("the attribute 'operation' must be in namespace ") + netconf_ns, element,
                        attribute.name());
        } else if (is_edit() && std::strncmp(attribute.name(), "xml:", 4) != 0) {
            return fail(ErrorTag::unknown_attribute, std::string("unknown attribute '") + attribute.name() + "'",
                        element, attribute.name());
        } else if (!is_edit() && std::strncmp(attribute.name(), "xml:", 4) != 0) {
            return fail(ErrorTag::operation_not_supported,
                        std::string("attribute '") + attribute.name() +
                            "': attribute match expressions are not supported",
                        element, attribute.name());
        }
    }
    return true;
}

bool ElementReader::operation(pugi::xml_node element, const char *value, rdl_tqm_datatree &record)
{
    if (!is_edit()) {
        return fail(ErrorTag::bad_attribute, "an operation attribute has no place in a read", element, "operation");
    }
    const auto known = std::ranges::find(operation_names, std::string_view(value));
    if (known == operation_names.end()) {
        return fail(ErrorTag::bad_attribute,
                    std::string("operation '") + value + "' is none of merge, replace, create, delete and remove",
                    element, "operation");
    }
    record.operation = static_cast<uint32_t>(known - operation_names.begin());
    record.present |= TQM_PRESENT_OPERATION;
    return true;
}

const char *ElementReader::joined_text(pugi::xml_node element)
{
    const char *const text = element.value();
    const pugi::xml_node piece = element.first_child();
    if (*text == '\0' && !piece.next_sibling()) {
        return piece.value();
    }
    std::string whole = text;
    for (pugi::xml_node child : element.children()) {
        if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata) {
            whole += child.value();
        }
    }
    return target_.arena.copy(whole);
}

const char *ElementReader::trimmed(const char *text)
{
    const char *begin = text;
    while (is_white_space(*begin)) {
        ++begin;
    }
    const std::size_t size = std::strlen(begin);
    const char *end = begin + size;
    while (end != begin && is_white_space(end[-1])) {
        --end;
    }
    const auto left = static_cast<std::size_t>(end - begin);
    return begin == text && left == size ? kept(text) : target_.arena.copy({begin, left});
}

} // namespace tqm
