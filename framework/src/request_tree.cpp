// See request_tree.h. The document object is walked once and dropped; what stays is its buffer, which the tags and
// values point into.
#include "request_tree.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "document_content.h"
#include "read_tree.h"

namespace tqm
{

namespace
{

constexpr unsigned int depth_max = 256;

/// What a node without an operation of its own has from the nodes around it.
enum class Inherited { nothing, create, none };

bool is_blank(const char *text)
{
    return text[std::strspn(text, " \t\r\n")] == '\0';
}

const char *local_name(pugi::xml_node element)
{
    const char *colon = std::strchr(element.name(), ':');
    return colon == nullptr ? element.name() : colon + 1;
}

/// The number of child elements; `split` tells whether other children cut the text into pieces.
uint32_t count_elements(pugi::xml_node element, bool &split)
{
    uint32_t count = 0;
    for (pugi::xml_node child = element.first_child(); child; child = child.next_sibling()) {
        if (child.type() == pugi::node_element) {
            ++count;
        } else {
            split = true;
        }
    }
    return count;
}

void replace_all(Request::Impl &request);

class Converter
{
public:
    Converter(Request::Impl &request, Document::Content &content)
        : request_(request), content_(content), scope_(content.scope), is_edit_(!request.is_read()),
          reverse_(request.direction == Direction::reverse), is_filter_(content.is_filter && !is_edit_ && !reverse_)
    {
    }

    Expected<void> run();

private:
    std::vector<pugi::xml_node> elements();
    bool is_registered(const XmlName &name, const char *&expected_ns) const;
    bool check_top(const XmlName &name, pugi::xml_node element);
    bool is_passed_over(const XmlName &name);
    bool convert(pugi::xml_node element, rdl_tqm_datatree &record, const PathInfo *parent, Inherited inherited,
                 unsigned int depth, bool &left_out);
    bool convert_children(pugi::xml_node element, rdl_tqm_datatree &record, const PathInfo *info, Inherited inherited,
                          unsigned int depth, uint32_t count);
    bool deletes_entry_only(pugi::xml_node element, const rdl_tqm_datatree &record, const PathInfo &list);
    void note_foreign(pugi::xml_node element, const rdl_tqm_datatree &record);
    bool attributes(pugi::xml_node element, rdl_tqm_datatree &record);
    bool operation(pugi::xml_node element, const char *value, rdl_tqm_datatree &record);
    void keep_deleted_text(pugi::xml_node element, const rdl_tqm_datatree &record, bool split, const PathInfo *info);
    Inherited take_operation(rdl_tqm_datatree &record, Inherited inherited, bool is_key) const;
    bool text(pugi::xml_node element, rdl_tqm_datatree &record, uint32_t child_elements, bool split,
              const PathInfo *info);
    const char *whole_text(pugi::xml_node element, bool split);
    const char *trimmed(const char *value);
    std::optional<XmlName> name_of(pugi::xml_node element);
    const char *kept_ns(const char *ns);
    bool check_child(pugi::xml_node element, const rdl_tqm_datatree &child, const rdl_tqm_datatree &parent,
                     const PathInfo &parent_info);
    std::string path_of(pugi::xml_node element) const;
    bool fail(ErrorTag tag, std::string text, pugi::xml_node element, std::string attribute = {});

    Request::Impl &request_;
    Document::Content &content_;
    XmlScope scope_;
    bool is_edit_;
    bool reverse_;
    bool is_filter_; ///< of a client's read: it may have several top elements, also those of models that are not here
    Error error_;
    const char *raw_ns_ = nullptr;
    const char *ns_ = nullptr;
    const char *top_ns_ = nullptr;
};

/// With the keys that are given so far as text.
std::string Converter::path_of(pugi::xml_node element) const
{
    std::vector<pugi::xml_node> elements;
    for (; element && element != content_.holder && element.type() == pugi::node_element; element = element.parent()) {
        elements.push_back(element);
    }
    std::string path;
    std::string schema_path;
    for (; !elements.empty(); elements.pop_back()) {
        const std::string step = std::string("/") + local_name(elements.back());
        path += step;
        schema_path += step;
        const SchemaNode *const node = request_.schema.find(schema_path);
        for (const std::string &name : node == nullptr ? std::vector<std::string>() : node->keys) {
            const auto key =
                elements.back().find_child([&](pugi::xml_node child) { return name == local_name(child); });
            if (*key.child_value() != '\0') {
                append_key(path, name, key.child_value());
            }
        }
    }
    return path;
}

bool Converter::fail(ErrorTag tag, std::string text, pugi::xml_node element, std::string attribute)
{
    error_.text = std::move(text);
    error_.path = path_of(element);
    error_.error_tag = tag;
    error_.type = tag == ErrorTag::malformed_message ? ErrorType::rpc : ErrorType::application;
    if (tag != ErrorTag::malformed_message && tag != ErrorTag::too_big) {
        error_.bad_element = local_name(element);
    }
    error_.bad_attribute = std::move(attribute);
    return false;
}

std::vector<pugi::xml_node> Converter::elements()
{
    std::vector<pugi::xml_node> elements;
    if (content_.single) {
        elements.push_back(content_.single);
    }
    for (pugi::xml_node child : content_.holder.children()) {
        if (child.type() == pugi::node_element) {
            elements.push_back(child);
        }
    }
    return elements;
}

Expected<void> Converter::run()
{
    const std::vector<pugi::xml_node> tops = elements();
    auto *trees = request_.arena.make_array<rdl_tqm_datatree>(tops.size());
    if (content_.holder && !is_blank(content_.holder.child_value())) {
        fail(ErrorTag::bad_element, "there is text between the elements", content_.holder);
    }
    if (error_.text.empty() && !reverse_ && !is_filter_ && tops.size() > 1) {
        fail(ErrorTag::bad_element, std::string("a request has one tree, and <") + tops[1].name() + "> is a second one",
             tops[1]);
    }
    for (const SchemaNode &node : request_.schema.nodes()) {
        request_.paths.intern(node.path);
    }
    Inherited inherited = Inherited::nothing;
    if (is_edit_ && content_.default_operation == DefaultOperation::none) {
        inherited = Inherited::none;
    }

    uint32_t count = 0;
    for (std::size_t i = 0; error_.text.empty() && i < tops.size(); ++i) {
        if (content_.single) {
            scope_.leave(0); // the element's declarations are taken in again below
        }
        const std::size_t mark = scope_.enter(tops[i]);
        const auto name = name_of(tops[i]);
        const bool passed_over = name && is_passed_over(*name);
        const bool good = passed_over || (name && check_top(*name, tops[i]));
        scope_.leave(mark);
        if (passed_over) {
            continue;
        }
        if (good && is_filter_ && count != 0 && std::strcmp(name->local, trees[0].tag) != 0) {
            fail(ErrorTag::bad_element,
                 std::string("a request has one tree, and <") + tops[i].name() + "> is a second one", tops[i]);
        }
        bool left_out = false;
        if (!error_.text.empty() || !convert(tops[i], trees[count], nullptr, inherited, 1, left_out)) {
            break;
        }
        if (is_edit_ && content_.default_operation == DefaultOperation::replace &&
            (trees[count].present & TQM_PRESENT_OPERATION) == 0) {
            trees[count].operation = TQM_OP_REPLACE;
            trees[count].present |= TQM_PRESENT_OPERATION;
        }
        ++count;
    }
    if (!error_.text.empty()) {
        return tl::unexpected(error_);
    }
    if (count == 0 && is_edit_ && !reverse_ && content_.default_operation == DefaultOperation::replace) {
        replace_all(request_); // an empty <config> takes everything's place
        return {};
    }
    request_.trees = {trees, count};
    return {};
}

/// Native modules may register a top tag of their own on the OpenConfig side, too: it names no tree of a client.
bool is_client_top(const tqm_map_reg_info &registration)
{
    return std::strcmp(registration.oc_top, registration.native_top) != 0;
}

/// `expected_ns` is the namespace in which the tag is registered, null if it is in none.
bool Converter::is_registered(const XmlName &name, const char *&expected_ns) const
{
    const auto &registrations = request_.registrations;
    const bool any_client_top = std::ranges::any_of(registrations, is_client_top);
    expected_ns = nullptr;
    for (const tqm_map_reg_info &registration : registrations) {
        if (!reverse_ && any_client_top && !is_client_top(registration)) {
            continue;
        }
        if (std::strcmp(name.local, reverse_ ? registration.native_top : registration.oc_top) != 0) {
            continue;
        }
        expected_ns = reverse_ ? registration.native_ns : registration.oc_ns;
        // A filter's element without a namespace is meant in every namespace (RFC 6241, section 6.2.1).
        if (std::strcmp(name.ns, expected_ns) == 0 || (!is_edit_ && *name.ns == '\0')) {
            return true;
        }
    }
    return false;
}

bool Converter::check_top(const XmlName &name, pugi::xml_node element)
{
    const char *expected_ns = nullptr;
    if (is_registered(name, expected_ns)) {
        return true;
    }
    if (expected_ns != nullptr) {
        error_.bad_namespace = name.ns;
        return fail(ErrorTag::unknown_namespace,
                    std::string("<") + name.local + "> is in namespace '" + name.ns + "', not in '" + expected_ns + "'",
                    element);
    }
    return fail(ErrorTag::unknown_element, std::string("no mapping is registered for the element <") + name.local + ">",
                element);
}

/// A filter's top element of a model that is not here selects nothing (RFC 6241, section 6.2.1).
bool Converter::is_passed_over(const XmlName &name)
{
    const char *expected_ns = nullptr;
    if (!is_filter_ || is_registered(name, expected_ns)) {
        return false;
    }
    if (request_.watch.observer != nullptr) {
        rdl_tqm_datatree top{};
        top.tag = request_.arena.keep(name.local);
        top.ns = kept_ns(name.ns);
        request_.left_out.push_back({nullptr, 0, top, "it is of another module, and selects nothing"});
    }
    return true;
}

bool Converter::convert(pugi::xml_node element, rdl_tqm_datatree &record, const PathInfo *parent, Inherited inherited,
                        unsigned int depth, bool &left_out)
{
    if (depth > depth_max) {
        return fail(ErrorTag::too_big, "the request is nested deeper than " + std::to_string(depth_max) + " elements",
                    element.parent());
    }
    const bool has_attributes = static_cast<bool>(element.first_attribute());
    const std::size_t mark = has_attributes ? scope_.enter(element) : 0;
    if (has_attributes && scope_.overfull()) {
        return fail(ErrorTag::too_big, "too many namespaces are declared", element);
    }
    const auto name = name_of(element);
    if (!name) {
        return false;
    }
    record.tag = request_.arena.keep(name->local);
    record.ns = kept_ns(name->ns);
    if (has_attributes && !attributes(element, record)) {
        return false;
    }
    if (depth == 1) {
        top_ns_ = record.ns;
    } else if (is_edit_ && !reverse_ && record.ns != top_ns_) {
        note_foreign(element, record);
    }

    bool split = false;
    const uint32_t child_elements = count_elements(element, split);
    const bool is_key = parent != nullptr && parent->is_list() && parent->has_key(name->local);
    const bool has_operation = (record.present & TQM_PRESENT_OPERATION) != 0;
    const bool deleted = is_edit_ && !reverse_ && tqm_map_is_request_delete(&record) != 0;
    if (is_key && has_operation && !deleted && !reverse_) {
        return fail(ErrorTag::bad_attribute, "the key of a list entry carries no operation of its own", element,
                    "operation");
    }
    // Under the default-operation none a leaf that says nothing is not part of the edit.
    left_out = inherited == Inherited::none && !has_operation && child_elements == 0 && !is_key && depth > 1;
    inherited = take_operation(record, inherited, is_key);
    const PathInfo *info = depth == 1 ? request_.paths.find(name->local) : nullptr;
    if (parent != nullptr) {
        info = parent->child(name->local);
    }
    // What is deleted needs no value; a mapper that passed one on would set it.
    if (deleted && !is_key && child_elements == 0) {
        keep_deleted_text(element, record, split, info);
    } else if (!text(element, record, child_elements, split, info)) {
        return false;
    }
    if (child_elements != 0 && !convert_children(element, record, info, inherited, depth, child_elements)) {
        return false;
    }
    if (deleted && info != nullptr && info->is_list() && !deletes_entry_only(element, record, *info)) {
        return false;
    }
    if (has_attributes) {
        scope_.leave(mark);
    }
    return true;
}

/// A delete covers all that an entry holds; content beside the keys would be mapped as if it were to be merged.
bool Converter::deletes_entry_only(pugi::xml_node element, const rdl_tqm_datatree &record, const PathInfo &list)
{
    for (uint32_t i = 0; i < record.subtree_count; ++i) {
        if (std::ranges::find(list.keys(), record.subtree[i].tag) == list.keys().end()) {
            return fail(ErrorTag::invalid_value, "a list entry that is deleted names nothing but its keys", element);
        }
    }
    return true;
}

/// Leaves have no children, and only lists and leaf-lists more than one instance (RFC 7950, section 3). A filter may
/// name a node again, and what matches nothing; an element of another module may have a known name; keys of a request
/// are counted by the walkers.
bool Converter::check_child(pugi::xml_node element, const rdl_tqm_datatree &child, const rdl_tqm_datatree &parent,
                            const PathInfo &parent_info)
{
    PathInfo *const info = parent_info.child(child.tag);
    const bool is_filter = !is_edit_ && !reverse_;
    if (is_filter || info == nullptr) {
        return true;
    }
    if ((info->is_leaf() || info->is_leaf_list()) && child.subtree_count != 0 && child.ns == parent.ns) {
        return fail(ErrorTag::bad_element, "a leaf holds no child elements", element);
    }
    const bool is_single = info->is_container() || (info->is_leaf() && (reverse_ || !info->is_key));
    if (!is_single) {
        return true;
    }
    const PathInfo::Place place{&parent, child.ns};
    if (std::exchange(info->last_seen, place) == place) {
        return fail(ErrorTag::bad_element, std::string("the element <") + child.tag + "> stands twice", element);
    }
    return true;
}

void Converter::note_foreign(pugi::xml_node element, const rdl_tqm_datatree &record)
{
    if (request_.foreign) {
        return;
    }
    request_.foreign_tag = record.tag;
    request_.foreign = Error{std::string("<") + record.tag + "> is in namespace '" + record.ns + "', not in '" +
                                 top_ns_ + "', and no other module can be edited here",
                             path_of(element), record.tag, TQM_ERR_AUGMENT, ErrorTag::unknown_namespace};
    request_.foreign->bad_element = record.tag;
    request_.foreign->bad_namespace = record.ns;
}

bool Converter::convert_children(pugi::xml_node element, rdl_tqm_datatree &record, const PathInfo *info,
                                 Inherited inherited, unsigned int depth, uint32_t count)
{
    auto *children = request_.arena.make_array<rdl_tqm_datatree>(count);
    uint32_t filled = 0;
    for (pugi::xml_node child = element.first_child(); child; child = child.next_sibling()) {
        if (child.type() != pugi::node_element) {
            continue;
        }
        bool left_out = false;
        children[filled] = {};
        if (!convert(child, children[filled], info, inherited, depth + 1, left_out)) {
            return false;
        }
        if (info != nullptr && !check_child(child, children[filled], record, *info)) {
            return false;
        }
        if (!left_out) {
            ++filled;
        } else {
            request_.left_out.push_back({&record, filled, children[filled]});
        }
    }
    record.subtree = children;
    record.subtree_count = filled;
    record.present |= TQM_PRESENT_SUBTREE;
    return true;
}

Inherited Converter::take_operation(rdl_tqm_datatree &record, Inherited inherited, bool is_key) const
{
    if ((record.present & TQM_PRESENT_OPERATION) != 0) {
        return record.operation == TQM_OP_CREATE ? Inherited::create : Inherited::nothing;
    }
    if (inherited == Inherited::none) {
        record.operation = operation_none;
    } else if (inherited == Inherited::create && !is_key) {
        record.operation = TQM_OP_CREATE;
    } else {
        return inherited;
    }
    record.present |= TQM_PRESENT_OPERATION;
    return inherited;
}

bool Converter::attributes(pugi::xml_node element, rdl_tqm_datatree &record)
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
        } else if (is_edit_ && std::strncmp(attribute.name(), "xml:", 4) != 0) {
            return fail(ErrorTag::unknown_attribute, std::string("unknown attribute '") + attribute.name() + "'",
                        element, attribute.name());
        } else if (!is_edit_ && std::strncmp(attribute.name(), "xml:", 4) != 0) {
            return fail(ErrorTag::operation_not_supported,
                        std::string("attribute '") + attribute.name() +
                            "': attribute match expressions are not supported",
                        element, attribute.name());
        }
    }
    return true;
}

bool Converter::operation(pugi::xml_node element, const char *value, rdl_tqm_datatree &record)
{
    if (!is_edit_) {
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

void Converter::keep_deleted_text(pugi::xml_node element, const rdl_tqm_datatree &record, bool split,
                                  const PathInfo *info)
{
    const char *const value = whole_text(element, split);
    if (is_blank(value)) {
        return;
    }
    request_.deleted_texts.emplace(&record, info != nullptr && info->schema->unspaced ? trimmed(value)
                                                                                      : request_.arena.keep(value));
}

bool Converter::text(pugi::xml_node element, rdl_tqm_datatree &record, uint32_t child_elements, bool split,
                     const PathInfo *info)
{
    const bool is_container = info != nullptr && info->is_container();
    const char *value = whole_text(element, split);
    // White space is the value of a text (RFC 7950, section 9.4), where an edit gives it to one.
    const bool holds_text = info != nullptr && (info->is_leaf() || info->is_leaf_list()) && !info->schema->unspaced;
    const bool is_text = is_edit_ && !reverse_ && holds_text && *value != '\0' && child_elements == 0;
    if (is_blank(value) && !is_text) {
        // Of an answer an empty element may be a leaf whose presence says all; of a request it has no value.
        if (!reverse_ || child_elements != 0 || is_container) {
            return true;
        }
        value = "";
    } else if (child_elements != 0) {
        return fail(ErrorTag::bad_element, "an element holds text beside its child elements", element);
    } else if (is_container) {
        return fail(ErrorTag::bad_element, "a container holds no text", element);
    }
    const bool as_it_is = is_filter_ || info == nullptr || !info->schema->unspaced;
    record.value = as_it_is ? request_.arena.keep(value) : trimmed(value);
    record.present |= TQM_PRESENT_VALUE;
    return true;
}

/// Comments and CDATA sections cut a text into pieces.
const char *Converter::whole_text(pugi::xml_node element, bool split)
{
    if (!split) {
        return element.child_value();
    }
    std::string text = element.value();
    for (pugi::xml_node child : element.children()) {
        if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata) {
            text += child.value();
        }
    }
    return request_.arena.copy(text);
}

const char *Converter::trimmed(const char *value)
{
    std::string_view text = value;
    text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
    text.remove_suffix(text.size() - text.find_last_not_of(" \t\r\n") - 1);
    return text.size() == std::strlen(value) ? request_.arena.keep(value) : request_.arena.copy(text);
}

/// Fails where there is no such prefix, or no such module.
std::optional<XmlName> Converter::name_of(pugi::xml_node element)
{
    auto name = scope_.element_name(element.name());
    if (!name) {
        fail(ErrorTag::malformed_message, std::string("the prefix of element <") + element.name() + "> is not declared",
             element);
    } else if (content_.json && *name->ns != '\0' && std::strcmp(name->ns, netconf_ns) != 0) {
        const SchemaModule *const module = request_.schema.module_named(name->ns);
        if (module == nullptr && !is_filter_) {
            fail(ErrorTag::unknown_namespace, std::string("there is no module '") + name->ns + "' here", element);
            return std::nullopt;
        }
        name->ns =
            module == nullptr ? name->ns : module->ns.c_str(); // a module's name is no namespace, and selects nothing
    }
    return name;
}

const char *Converter::kept_ns(const char *ns)
{
    if (ns != raw_ns_) {
        raw_ns_ = ns;
        ns_ = request_.intern_ns(ns);
    }
    return ns_;
}

/// The tree of a read without a filter: the client's top node alone.
void select_all(Request::Impl &request)
{
    const auto &registrations = request.registrations;
    auto top = std::ranges::find_if(registrations, is_client_top);
    if (top == registrations.end()) {
        top = registrations.begin();
    }
    if (top == registrations.end()) {
        return;
    }
    auto *tree = request.arena.make<rdl_tqm_datatree>();
    tree->tag = request.arena.copy(top->oc_top);
    tree->ns = request.intern_ns(top->oc_ns);
    request.trees = {tree, 1};
}

/// The tree of an edit that leaves nothing.
void replace_all(Request::Impl &request)
{
    select_all(request);
    for (uint32_t i = 0; i < request.trees.count; ++i) {
        request.trees.nodes[i].operation = TQM_OP_REPLACE;
        request.trees.nodes[i].present |= TQM_PRESENT_OPERATION;
    }
}

} // namespace

Expected<void> load_request_tree(Request::Impl &request, std::unique_ptr<Document::Content> content)
{
    if (content->selects_all) {
        select_all(request);
        return {};
    }
    request.buffers.push_back(content->buffer);
    request.arena.keep_alive(content->buffer.get(), content->size);
    if (Expected<void> converted = Converter(request, *content).run(); !converted) {
        return converted;
    }
    if (request.is_read() && request.direction == Direction::forward) {
        request.filter = request.trees;
        make_read_tree(request);
    }
    return {};
}

} // namespace tqm
