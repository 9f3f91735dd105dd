// The document object is walked once and dropped; what stays is its buffer, which the tags and values point into.
#include "documents/tree_loader.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "documents/element_reader.h"
#include "documents/read_tree.h"

namespace tqm
{

namespace
{

constexpr unsigned int depth_max = 256;

/// What a node without an operation of its own has from the nodes around it.
enum class Inherited { nothing, create, none };

void replace_all(const LoadRules &rules, const LoadTarget &target);

/// What an element stands in.
struct Around {
    const rdl_tqm_datatree *record; ///< null at the top
    const PathInfo *info;           ///< null where nothing is known
    Inherited inherited;
    unsigned int depth;     ///< of the element, from 1
    std::size_t first_seen; ///< of its siblings, among all that are seen
};

class TreeLoader
{
public:
    TreeLoader(const LoadRules &rules, const LoadTarget &target, const DocumentContent &content)
        : rules_(rules), target_(target), content_(content), reader_(rules, target, content),
          is_client_edit_(reader_.is_edit() && !reader_.is_reverse())
    {
    }

    Expected<void> run();

private:
    std::vector<pugi::xml_node> elements();
    bool is_registered(const XmlName &name, const char *&expected_ns) const;
    bool check_top(const XmlName &name, pugi::xml_node element);
    bool is_passed_over(const XmlName &name);
    bool convert(pugi::xml_node element, rdl_tqm_datatree &record, const Around &around, bool &left_out);
    bool name(pugi::xml_node element, rdl_tqm_datatree &record, const Around &around, const PathInfo *&info);
    bool push_children(pugi::xml_node element);
    bool convert_children(rdl_tqm_datatree &record, const Around &around, std::size_t first);
    bool deletes_entry_only(pugi::xml_node element, const rdl_tqm_datatree &record, const PathInfo &list);
    void note_foreign(pugi::xml_node element, const rdl_tqm_datatree &record);
    void keep_deleted_text(pugi::xml_node element, const rdl_tqm_datatree &record, bool split, const PathInfo *info);
    Inherited take_operation(rdl_tqm_datatree &record, Inherited inherited, bool is_key) const;
    bool text(pugi::xml_node element, rdl_tqm_datatree &record, bool has_children, bool split, const PathInfo *info);
    bool check_place(pugi::xml_node element, const rdl_tqm_datatree &record, const PathInfo &info,
                     const Around &around);
    bool is_repeated(const PathInfo &info, const char *ns, std::size_t first_seen);
    bool fail(ErrorTag tag, std::string text, pugi::xml_node element, std::string attribute = {})
    {
        return reader_.fail(tag, std::move(text), element, std::move(attribute));
    }

    const LoadRules &rules_;
    const LoadTarget &target_;
    const DocumentContent &content_;
    ElementReader reader_;
    const bool is_client_edit_;
    const char *top_ns_ = nullptr;

    /// A node that is one in its parent, and the namespace that it had last.
    struct Seen {
        const PathInfo *info;
        const char *ns;
    };
    std::vector<pugi::xml_node> children_; ///< elements of all nodes that are being converted, innermost last
    std::vector<Seen> seen_;               ///< the same of the nodes that were
};

std::vector<pugi::xml_node> TreeLoader::elements()
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

Expected<void> TreeLoader::run()
{
    const std::vector<pugi::xml_node> tops = elements();
    auto *trees = target_.arena.make_array<rdl_tqm_datatree>(tops.size());
    if (content_.holder && !is_blank(content_.holder.child_value())) {
        fail(ErrorTag::bad_element, "there is text between the elements", content_.holder);
    }
    if (!reader_.has_failed() && !reader_.is_reverse() && !reader_.is_filter() && tops.size() > 1) {
        fail(ErrorTag::bad_element, std::string("a request has one tree, and <") + tops[1].name() + "> is a second one",
             tops[1]);
    }
    Inherited inherited = Inherited::nothing;
    if (reader_.is_edit() && content_.default_operation == DefaultOperation::none) {
        inherited = Inherited::none;
    }
    const Around top{nullptr, nullptr, inherited, 1, 0};

    uint32_t count = 0;
    for (std::size_t i = 0; !reader_.has_failed() && i < tops.size(); ++i) {
        if (content_.single) {
            reader_.leave(0); // the element's declarations are taken in again below
        }
        const std::size_t mark = reader_.enter(tops[i]);
        const auto name = reader_.name_of(tops[i]);
        const bool passed_over = name && is_passed_over(*name);
        const bool good = passed_over || (name && check_top(*name, tops[i]));
        reader_.leave(mark);
        if (passed_over) {
            continue;
        }
        if (good && reader_.is_filter() && count != 0 && std::strcmp(name->local, trees[0].tag) != 0) {
            fail(ErrorTag::bad_element,
                 std::string("a request has one tree, and <") + tops[i].name() + "> is a second one", tops[i]);
        }
        bool left_out = false;
        if (reader_.has_failed() || !convert(tops[i], trees[count], top, left_out)) {
            break;
        }
        if (reader_.is_edit() && content_.default_operation == DefaultOperation::replace &&
            (trees[count].present & TQM_PRESENT_OPERATION) == 0) {
            trees[count].operation = TQM_OP_REPLACE;
            trees[count].present |= TQM_PRESENT_OPERATION;
        }
        ++count;
    }
    if (reader_.has_failed()) {
        return tl::unexpected(reader_.error());
    }
    if (count == 0 && reader_.is_edit() && !reader_.is_reverse() &&
        content_.default_operation == DefaultOperation::replace) {
        replace_all(rules_, target_); // an empty <config> takes everything's place
        return {};
    }
    target_.tree.adopt({trees, count});
    return {};
}

/// Native modules may register a top tag of their own on the OpenConfig side, too: it names no tree of a client.
bool is_client_top(const tqm_map_reg_info &registration)
{
    return std::strcmp(registration.oc_top, registration.native_top) != 0;
}

/// `expected_ns` is the namespace in which the tag is registered, null if it is in none.
bool TreeLoader::is_registered(const XmlName &name, const char *&expected_ns) const
{
    const auto &registrations = rules_.registrations;
    const bool any_client_top = std::ranges::any_of(registrations, is_client_top);
    expected_ns = nullptr;
    for (const tqm_map_reg_info &registration : registrations) {
        if (!reader_.is_reverse() && any_client_top && !is_client_top(registration)) {
            continue;
        }
        if (std::strcmp(name.local, reader_.is_reverse() ? registration.native_top : registration.oc_top) != 0) {
            continue;
        }
        expected_ns = reader_.is_reverse() ? registration.native_ns : registration.oc_ns;
        // A filter's element without a namespace is meant in every namespace (RFC 6241, section 6.2.1).
        if (std::strcmp(name.ns, expected_ns) == 0 || (!reader_.is_edit() && *name.ns == '\0')) {
            return true;
        }
    }
    return false;
}

bool TreeLoader::check_top(const XmlName &name, pugi::xml_node element)
{
    const char *expected_ns = nullptr;
    if (is_registered(name, expected_ns)) {
        return true;
    }
    if (expected_ns != nullptr) {
        reader_.error().bad_namespace = name.ns;
        return fail(ErrorTag::unknown_namespace,
                    std::string("<") + name.local + "> is in namespace '" + name.ns + "', not in '" + expected_ns + "'",
                    element);
    }
    return fail(ErrorTag::unknown_element, std::string("no mapping is registered for the element <") + name.local + ">",
                element);
}

/// A filter's top element of a model that is not here selects nothing (RFC 6241, section 6.2.1).
bool TreeLoader::is_passed_over(const XmlName &name)
{
    const char *expected_ns = nullptr;
    if (!reader_.is_filter() || is_registered(name, expected_ns)) {
        return false;
    }
    if (rules_.keeps_left_out) {
        rdl_tqm_datatree top{};
        top.tag = target_.arena.keep(name.local);
        top.ns = name.ns;
        target_.tree.leave_out({nullptr, 0, top, "it is of another module, and selects nothing"});
    }
    return true;
}

/// Gives `record` its tag, at an address that no other element's has (walks tell nodes by it), and its namespace.
bool TreeLoader::name(pugi::xml_node element, rdl_tqm_datatree &record, const Around &around, const PathInfo *&info)
{
    // The common case: no tag of a schema holds a colon, so what has the name of a known child has no prefix.
    const char *const qualified = element.name();
    info = around.info == nullptr ? nullptr : around.info->child(qualified);
    if (info != nullptr && reader_.default_ns() != nullptr) {
        record.tag = reader_.kept(qualified);
        record.ns = reader_.default_ns();
        return true;
    }
    const auto name = reader_.name_of(element);
    if (!name) {
        return false;
    }
    if (around.depth == 1) {
        info = target_.paths.find(name->local);
    } else if (around.info != nullptr) {
        info = around.info->child(name->local);
    }
    record.tag = reader_.kept(name->local);
    record.ns = name->ns;
    return true;
}

bool TreeLoader::convert(pugi::xml_node element, rdl_tqm_datatree &record, const Around &around, bool &left_out)
{
    const unsigned int depth = around.depth;
    if (depth > depth_max) {
        return fail(ErrorTag::too_big, "the request is nested deeper than " + std::to_string(depth_max) + " elements",
                    element.parent());
    }
    const bool has_attributes = static_cast<bool>(element.first_attribute());
    const std::size_t mark = has_attributes ? reader_.enter(element) : 0;
    if (has_attributes && reader_.declares_too_much()) {
        return fail(ErrorTag::too_big, "too many namespaces are declared", element);
    }
    const PathInfo *info = nullptr;
    if (!name(element, record, around, info)) {
        return false;
    }
    if (has_attributes && !reader_.attributes(element, record)) {
        return false;
    }
    if (depth == 1) {
        top_ns_ = record.ns;
    } else if (is_client_edit_ && record.ns != top_ns_) {
        note_foreign(element, record);
    }

    const std::size_t first_child = children_.size();
    const bool split = push_children(element);
    const bool has_children = children_.size() != first_child;
    const bool is_key = info != nullptr ? info->is_key : around.info != nullptr && around.info->has_key(record.tag);
    const bool has_operation = (record.present & TQM_PRESENT_OPERATION) != 0;
    const bool deleted = is_client_edit_ && tqm_map_is_request_delete(&record) != 0;
    if (is_key && has_operation && !deleted && !reader_.is_reverse()) {
        return fail(ErrorTag::bad_attribute, "the key of a list entry carries no operation of its own", element,
                    "operation");
    }
    // Under the default-operation none a leaf that says nothing is not part of the edit.
    left_out = around.inherited == Inherited::none && !has_operation && !has_children && !is_key && depth > 1;
    const Inherited inherited = take_operation(record, around.inherited, is_key);
    // What is deleted needs no value; a mapper that passed one on would set it.
    if (deleted && !is_key && !has_children) {
        keep_deleted_text(element, record, split, info);
    } else if (!text(element, record, has_children, split, info)) {
        return false;
    }
    if (has_children && !convert_children(record, {&record, info, inherited, depth + 1, seen_.size()}, first_child)) {
        return false;
    }
    if (deleted && info != nullptr && info->is_list() && !deletes_entry_only(element, record, *info)) {
        return false;
    }
    if (has_attributes) {
        reader_.leave(mark);
    }
    return depth == 1 || info == nullptr || check_place(element, record, *info, around);
}

/// Puts the child elements of `element` on top of the others. True if other children cut its text into pieces.
bool TreeLoader::push_children(pugi::xml_node element)
{
    bool split = false;
    for (pugi::xml_node child = element.first_child(); child; child = child.next_sibling()) {
        if (child.type() == pugi::node_element) {
            children_.push_back(child);
        } else {
            split = true;
        }
    }
    return split;
}

/// A delete covers all that an entry holds; content beside the keys would be mapped as if it were to be merged.
bool TreeLoader::deletes_entry_only(pugi::xml_node element, const rdl_tqm_datatree &record, const PathInfo &list)
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
bool TreeLoader::check_place(pugi::xml_node element, const rdl_tqm_datatree &record, const PathInfo &info,
                             const Around &around)
{
    const bool is_filter = !reader_.is_edit() && !reader_.is_reverse();
    if (is_filter) {
        return true;
    }
    if (record.subtree_count != 0 && (info.is_leaf() || info.is_leaf_list()) && record.ns == around.record->ns) {
        return fail(ErrorTag::bad_element, "a leaf holds no child elements", element);
    }
    const bool is_single = info.is_container() || (info.is_leaf() && (reader_.is_reverse() || !info.is_key));
    if (is_single && is_repeated(info, record.ns, around.first_seen)) {
        return fail(ErrorTag::bad_element, std::string("the element <") + record.tag + "> stands twice", element);
    }
    return true;
}

/// A node has few single children, however many entries it has: they are looked through.
bool TreeLoader::is_repeated(const PathInfo &info, const char *ns, std::size_t first_seen)
{
    for (std::size_t i = first_seen; i < seen_.size(); ++i) {
        if (seen_[i].info == &info) {
            return std::exchange(seen_[i].ns, ns) == ns;
        }
    }
    seen_.push_back({&info, ns});
    return false;
}

void TreeLoader::note_foreign(pugi::xml_node element, const rdl_tqm_datatree &record)
{
    if (target_.tree.foreign()) {
        return;
    }
    Error error{std::string("<") + record.tag + "> is in namespace '" + record.ns + "', not in '" + top_ns_ +
                    "', and no other module can be edited here",
                {},
                record.tag,
                TQM_ERR_AUGMENT,
                ErrorTag::unknown_namespace};
    error.at(reader_.place_of(element));
    error.bad_element = record.tag;
    error.bad_namespace = record.ns;
    target_.tree.note_foreign(record.tag, std::move(error));
}

/// `first`: where the children of the node begin among those that are being converted.
bool TreeLoader::convert_children(rdl_tqm_datatree &record, const Around &around, std::size_t first)
{
    const std::size_t count = children_.size() - first;
    auto *children = target_.arena.make_array<rdl_tqm_datatree>(count);
    uint32_t filled = 0;
    for (std::size_t i = 0; i < count; ++i) {
        bool left_out = false;
        if (!convert(children_[first + i], children[filled], around, left_out)) {
            return false;
        }
        if (!left_out) {
            ++filled;
        } else {
            target_.tree.leave_out({&record, filled, std::exchange(children[filled], {})});
        }
    }
    children_.resize(first);
    seen_.resize(around.first_seen);
    record.subtree = children;
    record.subtree_count = filled;
    record.present |= TQM_PRESENT_SUBTREE;
    return true;
}

Inherited TreeLoader::take_operation(rdl_tqm_datatree &record, Inherited inherited, bool is_key) const
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

void TreeLoader::keep_deleted_text(pugi::xml_node element, const rdl_tqm_datatree &record, bool split,
                                   const PathInfo *info)
{
    const char *const value = reader_.whole_text(element, split);
    if (is_blank(value)) {
        return;
    }
    target_.tree.keep_deleted_text(record, info != nullptr && info->schema->unspaced ? reader_.trimmed(value)
                                                                                     : reader_.kept(value));
}

bool TreeLoader::text(pugi::xml_node element, rdl_tqm_datatree &record, bool has_children, bool split,
                      const PathInfo *info)
{
    const bool is_container = info != nullptr && info->is_container();
    const char *value = reader_.whole_text(element, split);
    // White space is the value of a text (RFC 7950, section 9.4), where an edit gives it to one.
    const bool holds_text = info != nullptr && (info->is_leaf() || info->is_leaf_list()) && !info->schema->unspaced;
    const bool is_text = is_client_edit_ && holds_text && *value != '\0' && !has_children;
    if (!is_text && is_blank(value)) {
        // Of an answer an empty element may be a leaf whose presence says all; of a request it has no value.
        if (!reader_.is_reverse() || has_children || is_container) {
            return true;
        }
        value = "";
    } else if (has_children) {
        return fail(ErrorTag::bad_element, "an element holds text beside its child elements", element);
    } else if (is_container) {
        return fail(ErrorTag::bad_element, "a container holds no text", element);
    }
    const bool as_it_is = reader_.is_filter() || info == nullptr || !info->schema->unspaced;
    record.value = as_it_is ? reader_.kept(value) : reader_.trimmed(value);
    record.present |= TQM_PRESENT_VALUE;
    return true;
}

/// The tree of a read without a filter: the client's top node alone.
void select_all(const LoadRules &rules, const LoadTarget &target)
{
    auto top = std::ranges::find_if(rules.registrations, is_client_top);
    if (top == rules.registrations.end()) {
        top = rules.registrations.begin();
    }
    if (top == rules.registrations.end()) {
        return;
    }
    auto *tree = target.arena.make<rdl_tqm_datatree>();
    tree->tag = target.arena.copy(top->oc_top);
    tree->ns = target.namespaces.intern(top->oc_ns);
    target.tree.adopt({tree, 1});
}

/// The tree of an edit that leaves nothing.
void replace_all(const LoadRules &rules, const LoadTarget &target)
{
    select_all(rules, target);
    const RequestTree::Roots &roots = target.tree.roots();
    for (rdl_tqm_datatree &top : std::span(roots.nodes, roots.count)) {
        top.operation = TQM_OP_REPLACE;
        top.present |= TQM_PRESENT_OPERATION;
    }
}

} // namespace

Expected<void> load_tree(Document document, const LoadRules &rules, const LoadTarget &target)
{
    std::unique_ptr<DocumentContent> content = DocumentAccess::take(std::move(document));
    if (content->selects_all) {
        select_all(rules, target);
        return {};
    }
    target.tree.own(content->buffer);
    target.arena.keep_alive(content->buffer.get(), content->size);
    Expected<void> loaded = TreeLoader(rules, target, *content).run();
    DocumentAccess::drop(std::move(content));
    if (loaded && rules.kind.is_forward() && rules.kind.is_read()) {
        target.tree.keep_filter();
        make_read_tree(rules, target);
    }
    return loaded;
}

} // namespace tqm
