// Texts of errors. libyang's own messages quote what they were given, so only those pass that cannot quote a key.
#include "report.h"

#include <cstring>
#include <string_view>
#include <utility>

namespace router
{

namespace
{

void append_step(std::string &path, const lyd_node *node)
{
    path += '/';
    path += LYD_NAME(node);
    if (!node->schema || node->schema->nodetype != LYS_LIST) {
        return;
    }
    for (const lyd_node *key = lyd_child(node); key && lysc_is_key(key->schema); key = key->next) {
        path += '[';
        path += LYD_NAME(key);
        path += "='";
        path += lyd_get_value(key);
        path += "']";
    }
}

// "0, 30..65535", from libyang's parts of an unsigned range or a length.
std::string range_text(const lysc_range *range)
{
    std::string text;
    LY_ARRAY_COUNT_TYPE part;
    LY_ARRAY_FOR(range->parts, part)
    {
        const auto &bounds = range->parts[part];
        text += (text.empty() ? "" : ", ") + std::to_string(bounds.min_u64);
        if (bounds.min_u64 != bounds.max_u64) {
            text += ".." + std::to_string(bounds.max_u64);
        }
    }
    return text;
}

std::string enum_text(const lysc_type_enum *type)
{
    std::string text;
    LY_ARRAY_COUNT_TYPE item;
    LY_ARRAY_FOR(type->enums, item)
    {
        text += text.empty() ? "" : ", ";
        text += type->enums[item].name;
    }
    return text;
}

std::string number_rule(const lysc_type_num *type)
{
    if (type->range) {
        return "a number in " + range_text(type->range);
    }
    switch (type->basetype) {
    case LY_TYPE_UINT8:
        return "a number in 0..255";
    case LY_TYPE_UINT16:
        return "a number in 0..65535";
    case LY_TYPE_UINT32:
        return "a number in 0..4294967295";
    default:
        return "a number of 64 bits";
    }
}

std::string string_rule(const lysc_type_str *type)
{
    std::string text = "text";
    if (type->length) {
        std::string length = range_text(type->length);
        if (const size_t open_end = length.find("..18446744073709551615"); open_end != std::string::npos) {
            length = "at least " + length.substr(0, open_end);
        }
        text += " of length " + length;
    }
    LY_ARRAY_COUNT_TYPE item;
    LY_ARRAY_FOR(type->patterns, item)
    {
        text += std::string(" that matches ") + type->patterns[item]->expr;
    }
    return text;
}

std::string rule_of(const lysc_type *type)
{
    switch (type->basetype) {
    case LY_TYPE_BOOL:
        return "true or false";
    case LY_TYPE_EMPTY:
        return "empty";
    case LY_TYPE_ENUM:
        return "one of " + enum_text(reinterpret_cast<const lysc_type_enum *>(type));
    case LY_TYPE_STRING:
        return string_rule(reinterpret_cast<const lysc_type_str *>(type));
    case LY_TYPE_UNION: {
        std::string text;
        const auto *members = reinterpret_cast<const lysc_type_union *>(type)->types;
        LY_ARRAY_COUNT_TYPE item;
        LY_ARRAY_FOR(members, item)
        {
            text += (text.empty() ? "" : ", or ") + rule_of(members[item]);
        }
        return text;
    }
    case LY_TYPE_LEAFREF:
        return rule_of(reinterpret_cast<const lysc_type_leafref *>(type)->realtype);
    case LY_TYPE_UINT8:
    case LY_TYPE_UINT16:
    case LY_TYPE_UINT32:
    case LY_TYPE_UINT64:
        return number_rule(reinterpret_cast<const lysc_type_num *>(type));
    default:
        return "a value of the leaf's type";
    }
}

// The last name of a place as libyang describes it: "Data location "/module:keychains/keychain[chain-name='KC']/...",
// line number 3". Empty if it names no node. The way to it may lack nodes, where an entry is not yet in its tree.
std::string last_name(std::string_view place)
{
    const size_t begin = place.find("\"/");
    std::string name;
    char quote = '\0';
    bool in_predicate = false;
    for (size_t at = begin == std::string_view::npos ? place.size() : begin + 1; at < place.size(); ++at) {
        const char character = place[at];
        if (quote != '\0') { // the value of a key may hold any character but the quote around it
            quote = character == quote ? '\0' : quote;
        } else if (in_predicate) {
            quote = character == '\'' || character == '"' ? character : '\0';
            in_predicate = character != ']';
        } else if (character == '"') {
            break;
        } else if (character == '/' || character == ':') {
            name.clear();
        } else if (character == '[') {
            in_predicate = true;
        } else {
            name += character;
        }
    }
    return name;
}

bool has_secret_named(const lysc_node *siblings, const std::string &name)
{
    for (const lysc_node *node = siblings; node; node = node->next) {
        if ((node->name == name && is_secret(node)) || has_secret_named(lysc_node_child(node), name)) {
            return true;
        }
    }
    return false;
}

bool names_secret(const ly_ctx *context, const std::string &name)
{
    uint32_t index = 0;
    while (const lys_module *module = ly_ctx_get_module_iter(context, &index)) {
        if (module->compiled && has_secret_named(module->compiled->data, name)) {
            return true;
        }
    }
    return false;
}

std::string without_final_stop(std::string_view sentence)
{
    if (!sentence.empty() && sentence.back() == '.') {
        sentence.remove_suffix(1);
    }
    return std::string(sentence);
}

} // namespace

std::string path_of(const lyd_node *node)
{
    if (!node) {
        return "";
    }
    std::string path = path_of(lyd_parent(node));
    append_step(path, node);
    return path;
}

tl::unexpected<Error> refuse(Fault fault, std::string path, std::string reason, const void *origin)
{
    return tl::unexpected(Error{std::move(reason), std::move(path), fault, origin});
}

tl::unexpected<Error> failure(std::string reason)
{
    return refuse(Fault::failed, "", std::move(reason));
}

bool is_secret(const lysc_node *node)
{
    LY_ARRAY_COUNT_TYPE item;
    LY_ARRAY_FOR(node->exts, item)
    {
        const lysc_ext &extension = *node->exts[item].def;
        if (std::strcmp(extension.name, "secret") == 0 &&
            std::strcmp(extension.module->name, "tarvex-extensions") == 0) {
            return true;
        }
    }
    return false;
}

std::string value_refused(const lysc_node *leaf, const char *value)
{
    const std::string rule = rule_of(reinterpret_cast<const lysc_node_leaf *>(leaf)->type);
    if (!value) {
        return "it has no value, and must be " + rule;
    }
    return (is_secret(leaf) ? std::string("the key text") : "'" + std::string(value) + "'") + " must be " + rule;
}

std::string document_fault(const ly_ctx *context)
{
    const ly_err_item *item = ly_err_last(context);
    if (!item || !item->msg) {
        return "libyang gives no reason";
    }
    const std::string place = item->path ? without_final_stop(item->path) : "";
    const std::string name = last_name(place);
    // Faults of syntax quote the document from where they are found, which may be in the middle of a key.
    const bool is_syntax = item->vecode == LYVE_SYNTAX || item->vecode == LYVE_SYNTAX_XML;
    std::string fault;
    if (is_syntax || name.empty()) {
        fault = "not well-formed, or out of place";
    } else if (names_secret(context, name)) {
        fault = "key text that is not valid";
    } else {
        fault = without_final_stop(item->msg);
    }
    return place.empty() ? fault : fault + " (" + place + ")";
}

} // namespace router
