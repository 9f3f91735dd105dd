// What the framework must know of the data models: which paths are lists, by which leaves they are keyed, and which
// paths are leaf-lists, leaves and containers. Where that knowledge comes from is left to whoever fills it.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace tqm
{

/// How a value stands in a JSON document (RFC 7951, section 6).
enum class JsonType {
    text,
    number,  ///< of 32 bits at most: longer ones are texts
    boolean, ///< true or false
    empty,   ///< [null]
};

/// Paths are absolute, without keys and prefixes, as "/macsec/policy-names/policy-name". One schema serves all models:
/// their paths do not overlap.
class Schema
{
public:
    /// Declares the list at `path` with the tags of its key leaves, in schema order (none: a keyless list).
    void add_list(std::string path, std::vector<std::string> keys);
    /// Declares the leaf-list at `path`.
    void add_leaf_list(std::string path);

    /// Declares the leaf at `path`: it stands once, and has no children.
    void add_leaf(std::string path);

    /// Declares the container at `path`: in a document an empty one looks like a leaf whose presence says all.
    void add_container(std::string path);

    /// Says that the node at `path` is state (config false, RFC 7950, section 7.21.1).
    void add_state(std::string path);

    /// Declares a module, by whose name JSON documents call its namespace.
    void add_module(std::string name, std::string ns);
    /// Declares how JSON documents show the values of the leaf or leaf-list at `path`, if not as texts.
    void add_json_type(std::string path, JsonType type);

    /// The namespace of a module; null if there is none of that name.
    const char *module_ns(std::string_view name) const;
    /// The module of a namespace; the namespace itself if no module has it.
    std::string_view module_of(std::string_view ns) const;
    JsonType json_type(std::string_view path) const;

    /// The key leaves of the list at `path`; null if there is no list at that path.
    const std::vector<std::string> *list_keys(std::string_view path) const;
    bool is_state(std::string_view path) const;
    bool is_leaf_list(std::string_view path) const;
    bool is_leaf(std::string_view path) const;
    bool is_container(std::string_view path) const;
    /// Paths of all nodes, in no order.
    std::vector<std::string_view> paths() const;

private:
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>{}(text); }
    };
    template <class Value>
    using Map = std::unordered_map<std::string, Value, Hash, std::equal_to<>>;
    using Paths = std::unordered_set<std::string, Hash, std::equal_to<>>;

    Map<std::vector<std::string>> lists_;
    Map<std::string> module_ns_;
    Map<std::string> ns_module_;
    Map<JsonType> json_types_;
    Paths state_;
    Paths leaf_lists_;
    Paths leaves_;
    Paths containers_;
};

} // namespace tqm
