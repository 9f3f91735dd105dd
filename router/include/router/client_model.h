// The model that clients speak, as it is published and as this router keeps it: what judges an edit by names and types
// before anything is made of it.
#pragma once

#include "router/error.h"
#include "router/models.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

struct lysc_node;

namespace router
{

/// Movable handle; copies share what was loaded. Only read after it is loaded, by any number of threads in turn.
class ClientModel
{
public:
    /// Adds to the published model, the module `module` of `models`, what the module `deviations` of the directory
    /// says. Fails, with libyang's reason, if that one is not there or does not parse.
    static Expected<ClientModel> load(const Models &models, const std::string &yang_directory,
                                      const std::string &module, const std::string &deviations);

    /// A schema node; null where there is none.
    using Node = const lysc_node *;
    Node top(std::string_view ns, std::string_view name) const;
    Node child(Node parent, std::string_view name) const;
    /// Names of the children that an edit may set, in schema order.
    std::vector<std::string> editable_children(Node parent) const;

    static bool is_state(Node node);
    static bool is_list(Node node);
    static bool is_leaf_list(Node node);
    /// True for leaves and leaf-lists.
    static bool has_values(Node node);
    static std::vector<std::string> keys(Node list);

    /// False where the deviations say that the router does not support it.
    bool is_supported(Node node) const;
    /// Why a leaf or leaf-list does not take `value` (null: it has none): the value, unless it is a secret, and the
    /// rule. Nothing where it does. The type is that of the deviations.
    std::optional<std::string> value_fault(Node node, const char *value) const;
    /// True where the router keeps less of a date and time than `value` says: it knows no fraction and no zone.
    bool drops_zone(Node node, std::string_view value) const;

private:
    struct Loaded;
    explicit ClientModel(std::shared_ptr<const Loaded> loaded) : loaded_(std::move(loaded)) {}

    std::shared_ptr<const Loaded> loaded_;
};

} // namespace router
