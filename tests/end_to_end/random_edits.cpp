#include "random_edits.h"

#include <algorithm>
#include <array>

namespace test
{
namespace
{

constexpr std::array operation_names = {"merge", "replace", "create", "delete", "remove", "none"};

std::string name_of(Operation operation)
{
    return operation_names.at(static_cast<std::size_t>(operation));
}

void print(const Element &element, std::string &text)
{
    const std::string &name = element.schema->name;
    text += "<" + name + (name == "macsec" ? " xmlns='http://openconfig.net/yang/macsec'" : "");
    text += element.operation ? " nc:operation='" + name_of(*element.operation) + "'>" : ">";
    text += element.schema->kind >= Kind::key ? element.value : "";
    for (const Element &child : element.children) {
        print(child, text);
    }
    text += "</" + name + ">";
}

/// Takes the operation or the element away that the count `n` comes to; false if there are fewer.
bool simplify(Element &element, std::size_t &n)
{
    const bool needs_value = element.schema->kind >= Kind::key && element.value.empty();
    if (element.operation && !needs_value && n-- == 0) {
        element.operation.reset();
        return true;
    }
    for (auto child = element.children.begin(); child != element.children.end(); ++child) {
        if (child->schema->kind != Kind::key && n-- == 0) {
            element.children.erase(child);
            return true;
        }
        if (simplify(*child, n)) {
            return true;
        }
    }
    return false;
}

} // namespace

Edit RandomEdits::next(const Leaves &tree)
{
    const bool to_be_refused = one_in(6);
    Edit made = edit(tree);
    for (int attempt = 0; attempt < 12; ++attempt) {
        Leaves after = tree;
        const std::size_t refusals = edit_config(made, after).size();
        if (to_be_refused ? refusals == 1 : refusals == 0 && after != tree) {
            break;
        }
        made = edit(tree);
    }
    return made;
}

Edit RandomEdits::edit(const Leaves &tree)
{
    const bool grouped = one_in(4);
    const std::size_t kind = below(40);
    const Operation by_default = kind == 0 ? Operation::replace : kind < 15 ? Operation::none : Operation::merge;
    return {by_default, element(schema(), "", {"", tree, by_default == Operation::none, grouped}), grouped};
}

std::optional<Operation> RandomEdits::operation(Kind kind, const Place &place)
{
    // Above the entries an operation takes so much away that what is below would never grow.
    const bool above_entries = place.path.find('[') == std::string::npos;
    const bool there = exists(place.tree, place.path);
    const bool needed = place.none && !there && kind != Kind::container && !one_in(40);
    if (!needed && !one_in(above_entries ? 30 : kind < Kind::key ? 12 : 3)) {
        return std::nullopt;
    }
    const auto chosen = static_cast<Operation>(below(5));
    const bool fails =
        kind == Kind::key_copy ? deletes(chosen) : chosen == (there ? Operation::create : Operation::delete_);
    if (fails && !one_in(kind == Kind::key_copy ? 30 : 10)) {
        return there || kind == Kind::key_copy ? Operation::replace : Operation::remove;
    }
    return chosen;
}

Element RandomEdits::element(const Schema &schema, const std::string &value, const Place &parent)
{
    Element made{&schema, value};
    Place place = parent;
    place.path += made.step();
    if (schema.kind == Kind::key) {
        return made;
    }
    made.operation = operation(schema.kind, place);
    if (!made.operation || !deletes(*made.operation) || one_in(100)) {
        static const Leaves nothing;
        const bool emptied = made.operation == Operation::replace;
        made.children = children(
            made, {place.path, emptied ? nothing : parent.tree, parent.none && !made.operation, parent.grouped});
    } else if (schema.kind == Kind::list) {
        made.children = {{&schema.children.front(), value}};
    } else if (schema.kind != Kind::leaf_list && one_in(2)) {
        made.value.clear();
    }
    return made;
}

std::vector<Element> RandomEdits::children(const Element &parent, const Place &place)
{
    std::vector<Element> made;
    const auto add = [&](const Schema &schema, const std::string &value) {
        made.push_back(element(schema, value, place));
    };
    for (const Schema &child : parent.schema->children) {
        if (child.kind == Kind::list || child.kind == Kind::leaf_list) {
            for (const std::string &value : child.kind == Kind::list ? child.children.front().values : child.values) {
                if (one_in(child.kind == Kind::list ? 2 : 8)) {
                    add(child, value);
                }
            }
        } else if (child.kind == Kind::container ? !one_in(4) : child.kind == Kind::key || one_in(2)) {
            const bool has_own_values = child.kind == Kind::leaf || child.kind == Kind::secret;
            add(child, has_own_values ? child.values[below(child.values.size())] : parent.value);
        }
    }
    std::ranges::shuffle(made, random_);
    if (place.grouped) {
        std::ranges::stable_sort(made, {}, [](const Element &child) { return child.schema->name; });
    }
    return made;
}

std::string to_xml(const Edit &edit)
{
    std::string text = "<edit-config xmlns='urn:ietf:params:xml:ns:netconf:base:1.0' "
                       "xmlns:nc='urn:ietf:params:xml:ns:netconf:base:1.0'><target><running/></target>"
                       "<default-operation>" +
                       name_of(edit.default_operation) + "</default-operation><config>";
    print(edit.top, text);
    return text + "</config></edit-config>";
}

std::vector<Edit> shrunk(std::vector<Edit> edits, const std::function<bool(const std::vector<Edit> &)> &fails)
{
    for (std::size_t i = edits.size(); i-- > 0;) {
        std::vector<Edit> fewer = edits;
        fewer.erase(fewer.begin() + static_cast<std::ptrdiff_t>(i));
        edits = fails(fewer) ? fewer : edits;
    }
    for (std::size_t i = 0; i < edits.size(); ++i) {
        for (std::size_t n = 0;;) {
            std::vector<Edit> smaller = edits;
            std::size_t at = n;
            if (!simplify(smaller[i].top, at)) {
                break;
            }
            const bool still = fails(smaller);
            edits = still ? smaller : edits;
            n += still ? 0 : 1;
        }
    }
    return edits;
}

} // namespace test
