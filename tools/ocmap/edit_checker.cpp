// See edit_checker.h. One walk over the edit beside the model.
#include "edit_checker.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <string_view>

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
        if (schema != nullptr && !check(top, schema)) {
            return tl::unexpected(*error_);
        }
        return {};
    }

private:
    bool refuse(tqm::ErrorTag tag, const std::string &reason, std::string_view bad_element = {})
    {
        error_ = tqm::Error{path_ + ": " + reason, path_};
        error_->error_tag = tag;
        error_->bad_element = bad_element;
        return false;
    }

    bool check(const rdl_tqm_datatree &node, Node schema)
    {
        const std::size_t outer = path_.size();
        path_.append("/").append(node.tag);
        const bool good = router::ClientModel::has_values(schema)
                              ? check_value(node, schema)
                              : check_keys(node, schema) && check_children(node, schema);
        path_.resize(good ? outer : path_.size());
        return good;
    }

    bool check_keys(const rdl_tqm_datatree &node, Node schema)
    {
        if (!router::ClientModel::is_list(schema)) {
            return true;
        }
        std::optional<std::string> lacking;
        for (const std::string &key : router::ClientModel::keys(schema)) {
            const char *value = nullptr;
            edit_.for_each_child(node, [&](const rdl_tqm_datatree &child) {
                value = key == child.tag ? edit_.text(child) : nullptr;
                return value == nullptr;
            });
            if (value != nullptr) {
                tqm::append_key(path_, key, value);
            } else if (!lacking) {
                lacking = key;
            }
        }
        return !lacking ||
               refuse(tqm::ErrorTag::missing_element, "the entry lacks its key '" + *lacking + "'", *lacking);
    }

    // What a deletion names beside keys is not looked at: it is refused as a whole.
    bool check_children(const rdl_tqm_datatree &node, Node schema)
    {
        return tqm::takes_away(node) || edit_.for_each_child(node, [&](const rdl_tqm_datatree &child) {
            // Elements of other modules are refused by whoever knows those.
            return std::strcmp(child.ns, node.ns) != 0 || check_child(child, schema);
        });
    }

    bool check_child(const rdl_tqm_datatree &child, Node parent)
    {
        const Node schema = model_.child(parent, child.tag);
        const bool good = schema != nullptr && !router::ClientModel::is_state(schema) && model_.is_supported(schema);
        if (good) {
            return check(child, schema);
        }
        path_.append("/").append(child.tag);
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

    // What is taken away needs no value, but for one of several.
    bool check_value(const rdl_tqm_datatree &node, Node schema)
    {
        const bool goes = tqm::takes_away(node);
        const char *const value = edit_.text(node);
        if (goes && !router::ClientModel::is_leaf_list(schema)) {
            return true;
        }
        if (const auto fault = model_.value_fault(schema, value)) {
            return refuse(tqm::ErrorTag::invalid_value, *fault, node.tag);
        }
        if (value != nullptr && !goes && model_.drops_zone(schema, value)) {
            notes_.push_back(path_ + ": of '" + value +
                             "' the fraction of a second, the zone and the offset are dropped");
        }
        return true;
    }

    const router::ClientModel &model_;
    const tqm::EditTree &edit_;
    std::vector<std::string> &notes_;
    std::string path_;
    std::optional<tqm::Error> error_;
};

} // namespace

tqm::Expected<void> ModelChecker::check(const tqm::EditTree &edit)
{
    notes_.clear();
    return Walk(model_, edit, notes_).run();
}

} // namespace ocmap
