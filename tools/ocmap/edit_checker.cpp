// One walk over the edit beside the model.
#include "edit_checker.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include "tqm/tree.h"

namespace ocmap
{
namespace
{

using Node = router::ClientModel::Node;

// The number of letters to add, drop or change that makes one text of the other.
std::size_t distance(std::string_view a, std::string_view b)
{
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) {
        row[j] = j;
    }
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t change = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, change});
        }
    }
    return row[b.size()];
}

// The one that a name was meant to be; nothing if none is near.
std::optional<std::string> nearest(std::string_view name, const std::vector<std::string> &names)
{
    constexpr std::size_t longest = 64;
    std::optional<std::string> found;
    std::size_t least = std::min(name.size(), longest) / 3 + 1;
    for (const std::string &candidate : names) {
        const std::size_t far = name.size() > longest ? least : distance(name, candidate);
        if (far < least) {
            least = far;
            found = candidate;
        }
    }
    return found;
}

// What stands around a node: the keys of its list entry, if that is its container's parent.
struct Around {
    std::vector<std::pair<std::string, std::string>> keys = {}; // of the entry around the container
    bool is_entry = false;                                      // the node around is that entry itself
};

class Walk
{
public:
    Walk(const router::ClientModel &model, const tqm::EditTree &edit, std::vector<std::string> &notes)
        : model_(model), edit_(edit), notes_(notes)
    {
    }

    tqm::Expected<void> run()
    {
        const rdl_tqm_datatree &top = edit_.top();
        const Node schema = model_.top(top.ns, top.tag);
        if (schema != nullptr && !check(top, schema, {})) {
            return tl::unexpected(*error_);
        }
        return {};
    }

private:
    bool refuse(tqm::ErrorTag tag, const std::string &reason, std::string_view bad_element = {})
    {
        error_ = tqm::Error{place_.text() + ": " + reason};
        error_->at(place_).error_tag = tag;
        error_->bad_element = bad_element;
        return false;
    }

    bool check(const rdl_tqm_datatree &node, Node schema, const Around &around)
    {
        place_.enter(node.tag);
        const bool good = router::ClientModel::has_values(schema) ? check_value(node, schema, around)
                                                                  : check_inner(node, schema, around);
        if (good) {
            place_.leave();
        }
        return good;
    }

    bool check_inner(const rdl_tqm_datatree &node, Node schema, const Around &around)
    {
        if (!router::ClientModel::is_list(schema)) {
            return check_children(node, schema, {around.is_entry ? around.keys : decltype(around.keys)(), false});
        }
        Around entry{{}, true};
        std::optional<std::string> lacking;
        for (const std::string &key : router::ClientModel::keys(schema)) {
            const char *value = nullptr;
            edit_.for_each_child(node, [&](const rdl_tqm_datatree &child) {
                value = key == child.tag ? edit_.text(child) : nullptr;
                return value == nullptr;
            });
            if (value != nullptr) {
                place_.key(key, value);
                entry.keys.emplace_back(key, value);
            } else if (!lacking) {
                lacking = key;
            }
        }
        if (lacking) {
            return refuse(tqm::ErrorTag::missing_element, "the entry lacks its key '" + *lacking + "'", *lacking);
        }
        return check_children(node, schema, entry);
    }

    // What a deletion names beside keys is not looked at: it is refused as a whole. Elements of other modules are
    // refused by whoever knows those.
    bool check_children(const rdl_tqm_datatree &node, Node schema, const Around &around)
    {
        if (tqm::takes_away(node) && !router::ClientModel::is_list(schema)) {
            return true;
        }
        std::set<std::pair<Node, std::string>> seen;
        return edit_.for_each_child(node, [&](const rdl_tqm_datatree &child) {
            return std::strcmp(child.ns, node.ns) != 0 || check_child(child, schema, around, seen);
        });
    }

    bool check_child(const rdl_tqm_datatree &child, Node parent, const Around &around,
                     std::set<std::pair<Node, std::string>> &seen)
    {
        const Node schema = model_.child(parent, child.tag);
        const bool good = schema != nullptr && !router::ClientModel::is_state(schema) && model_.is_supported(schema);
        if (good) {
            return check(child, schema, around) && check_once(child, schema, seen);
        }
        place_.enter(child.tag);
        if (schema == nullptr) {
            const auto meant = nearest(child.tag, model_.editable_children(parent));
            return refuse(tqm::ErrorTag::unknown_element,
                          meant ? "there is no such node; did you mean '" + *meant + "'?" : "there is no such node",
                          child.tag);
        }
        const bool is_state = router::ClientModel::is_state(schema);
        return refuse(tqm::ErrorTag::unknown_element,
                      is_state ? "it is state, and cannot be edited" : "this router does not support it", child.tag);
    }

    // Entries of a list differ in their keys, values of a leaf-list in themselves (RFC 7950, sections 7.7 and 7.8.2).
    bool check_once(const rdl_tqm_datatree &child, Node schema, std::set<std::pair<Node, std::string>> &seen)
    {
        tqm::InstancePath name;
        name.enter(child.tag);
        if (router::ClientModel::is_leaf_list(schema)) {
            const char *const text = edit_.text(child);
            name.key(".", text == nullptr ? "" : text);
        } else if (router::ClientModel::is_list(schema)) {
            name.keys(child, router::ClientModel::keys(schema));
        } else {
            return true;
        }
        if (seen.emplace(schema, name.text()).second) {
            return true;
        }
        place_.enter(child.tag);
        for (const auto &[key, value] : name.steps().back().keys) {
            place_.key(key, value);
        }
        return refuse(tqm::ErrorTag::bad_element, "it stands twice", child.tag);
    }

    bool check_value(const rdl_tqm_datatree &node, Node schema, const Around &around)
    {
        const bool goes = tqm::takes_away(node);
        const char *const value = edit_.text(node);
        const auto key = std::ranges::find(around.keys, node.tag, [](const auto &known) { return known.first; });
        const bool repeats_key = !around.is_entry && key != around.keys.end();
        if (repeats_key && goes) {
            return refuse(tqm::ErrorTag::operation_not_supported,
                          "it repeats the key of its entry and goes with it: delete the entry");
        }
        // What is taken away needs no value, but for one of several.
        if (goes && !router::ClientModel::is_leaf_list(schema)) {
            return true;
        }
        if (const auto fault = model_.value_fault(schema, value)) {
            return refuse(tqm::ErrorTag::invalid_value, *fault);
        }
        if (repeats_key && (value == nullptr || key->second != value)) {
            return refuse(tqm::ErrorTag::invalid_value, std::string("'") + (value == nullptr ? "" : value) +
                                                            "' must be '" + key->second + "', the key of its entry");
        }
        if (value != nullptr && !goes && edit_.takes_part(node) && model_.drops_zone(schema, value)) {
            notes_.push_back(place_.text() + ": of '" + value +
                             "' the fraction of a second, the zone and the offset are dropped");
        }
        return true;
    }

    const router::ClientModel &model_;
    const tqm::EditTree &edit_;
    std::vector<std::string> &notes_;
    tqm::InstancePath place_;
    std::optional<tqm::Error> error_;
};

} // namespace

tqm::Expected<void> ModelChecker::check(const tqm::EditTree &edit)
{
    notes_.clear();
    return Walk(model_, edit, notes_).run();
}

} // namespace ocmap
