// See random_edits.h.
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
    Edit made = edit(tree);
    const bool may_be_refused = one_in(4);
    for (int attempt = 0; attempt < 12 && !may_be_refused; ++attempt) {
        Leaves after = tree;
        if (edit_config(made, after).empty() && after != tree) {
            break;
        }
        made = edit(tree);
    }
    return made;
}

Edit RandomEdits::edit(const Leaves &tree)
{
    const bool grouped = one_in(4);
    const std::size_t kind = below(10);
    const Operation by_default = kind == 0 ? Operation::replace : kind < 4 ? Operation::none : Operation::merge;
    return {by_default, element(schema(), "", "", tree, grouped), grouped};
}

std::optional<Operation> RandomEdits::operation(Kind kind, bool there)
{
    const bool none = !one_in(kind == Kind::container ? 8 : kind == Kind::list ? 4 : 3);
    if (none || kind == Kind::key) {
        return std::nullopt;
    }
    const auto chosen = static_cast<Operation>(below(5));
    const bool fails = (chosen == Operation::create && there) || (chosen == Operation::delete_ && !there);
    if (fails && !one_in(4)) {
        return there ? Operation::replace : Operation::remove;
    }
    return chosen;
}

Element RandomEdits::element(const Schema &schema, const std::string &value, const std::string &parent,
                             const Leaves &tree, bool grouped)
{
    Element made{&schema, value};
    const std::string path = parent + made.step();
    made.operation = operation(schema.kind, exists(tree, path));
    if (!made.operation || !deletes(*made.operation) || one_in(30)) {
        made.children = children(made, path, tree, grouped);
    } else if (schema.kind == Kind::list) {
        made.children = {{&schema.children.front(), value}};
    } else if (schema.kind != Kind::leaf_list && one_in(2)) {
        made.value.clear();
    }
    return made;
}

std::vector<Element> RandomEdits::children(const Element &parent, const std::string &path, const Leaves &tree,
                                           bool grouped)
{
    std::vector<Element> made;
    const auto add = [&](const Schema &schema, const std::string &value) {
        made.push_back(element(schema, value, path, tree, grouped));
    };
    for (const Schema &child : parent.schema->children) {
        if (child.kind == Kind::list || child.kind == Kind::leaf_list) {
            for (const std::string &value : child.kind == Kind::list ? child.children.front().values : child.values) {
                if (one_in(child.kind == Kind::list ? 3 : 6)) {
                    add(child, value);
                }
            }
        } else if (child.kind == Kind::container && !one_in(3)) {
            add(child, parent.value);
        } else if (child.kind == Kind::key || (child.kind == Kind::key_copy && one_in(2))) {
            add(child, parent.value);
        } else if (child.kind >= Kind::leaf && one_in(3)) {
            add(child, child.values[below(child.values.size())]);
        }
    }
    std::ranges::shuffle(made, random_);
    if (grouped) {
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
