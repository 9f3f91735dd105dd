// What the framework must know of the data models: which paths are lists, by which leaves they are keyed, which paths
// are leaf-lists, leaves and containers, and which leaves are secrets. Where that knowledge comes from is left to
// whoever fills it.
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

    /// Declares that the node at `path` holds state data: no edit can name it.
    void add_state(std::string path);
    /// Declares that white space around the values of the leaf or leaf-list at `path` is no part of them: numbers,
    /// booleans, enumerations and identities (RFC 7950, section 9), but no texts.
    void add_unspaced(std::string path);
    /// Declares that an entry of the native list at `path` is the client's where it holds the container at `marker`, a
    /// path below the list. An edit that makes an entry, or lets one stay, gives it that container; only the entry's
    /// own delete takes it away.
    void add_marker(std::string path, std::string marker);

    /// Declares that the client's form of the native leaf at `path` depends on that at `companion` beside it: who reads
    /// the one for an answer reads the other, too.
    void add_companion(std::string path, std::string companion);

    /// Declares a module, by whose name JSON documents call its namespace, with the prefix that instance-identifiers
    /// have for it.
    void add_module(std::string name, std::string ns, std::string prefix = {});
    /// Declares the namespace of the node at `path`. Top nodes of several models may share their path: what is below
    /// tells them apart.
    void add_ns(std::string path, const std::string &ns);
    /// Declares that the values of the leaf at `path` are secrets: no journal, page or error shows one.
    void add_secret(std::string path);

    /// Declares how JSON documents show the values of the leaf or leaf-list at `path`, if not as texts.
    void add_json_type(std::string path, JsonType type);

    /// The namespace of a module; null if there is none of that name.
    const char *module_ns(std::string_view name) const;
    /// The module of a namespace; the namespace itself if no module has it.
    std::string_view module_of(std::string_view ns) const;
    /// The prefix of a namespace's module; empty if none was declared.
    std::string_view prefix_of(std::string_view ns) const;
    /// The namespace that was declared for the node at `path`; null if none was.
    const char *ns_of(std::string_view path) const;
    JsonType json_type(std::string_view path) const;

    /// The key leaves of the list at `path`; null if there is no list at that path.
    const std::vector<std::string> *list_keys(std::string_view path) const;
    bool is_state(std::string_view path) const;
    bool is_leaf_list(std::string_view path) const;
    bool is_leaf(std::string_view path) const;
    bool is_container(std::string_view path) const;
    bool is_unspaced(std::string_view path) const;
    /// Paths of the companions of the leaf at `path`; null if it has none.
    const std::vector<std::string> *companions(std::string_view path) const;
    /// The marker of the native list at `path`; null if its entries need none.
    const char *marker(std::string_view path) const;
    /// True if no value of the node at `path` may be shown: that is a secret, or no leaf or leaf-list, as a secret
    /// under a misspelt name would be. A schema without leaves does not tell names from misspelt ones.
    bool hides(std::string_view path) const;
    /// True if a secret has this tag: for those who know no more of a leaf.
    bool is_secret_tag(std::string_view tag) const;
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
    Map<std::string> ns_prefix_;
    Map<std::string> node_ns_;
    Map<std::string> markers_;
    Map<std::vector<std::string>> companions_;
    Map<JsonType> json_types_;
    Paths state_;
    Paths leaf_lists_;
    Paths leaves_;
    Paths containers_;
    Paths unspaced_;
    Paths secrets_;
    Paths secret_tags_;
};

} // namespace tqm
