// What the framework knows of the data models: one record for each schema node, one table that holds them. Where that
// knowledge comes from is left to whoever fills it.
#pragma once

#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "tqm/export.h"

namespace tqm
{

/// What a schema node is (RFC 7950, section 4.2.2). Choices and cases are no data nodes, and stand nowhere here.
enum class NodeKind {
    unknown, ///< no schema has it
    container,
    list,
    leaf,
    leaf_list,
};

/// How a value stands in a JSON document (RFC 7951, section 6).
enum class ValueForm {
    text,
    number,  ///< of 32 bits at most: longer ones are texts
    boolean, ///< true or false
    empty,   ///< [null]
};

/// All that is known of one schema node. Paths are absolute, without keys and prefixes, as
/// "/macsec/policy-names/policy-name".
struct SchemaNode {
    std::string path;
    std::string ns = {}; ///< namespace URI of the node itself
    NodeKind kind = NodeKind::unknown;
    std::vector<std::string> keys = {}; ///< of a list: tags of its key leaves, in schema order; none: a keyless list
    ValueForm form = ValueForm::text;   ///< of a leaf or leaf-list
    bool config = true;                 ///< false for state data, which no edit can name
    /// White space around its values is no part of them: numbers, booleans, enumerations and identities (RFC 7950,
    /// section 9), but no texts.
    bool unspaced = false;
    bool secret = false;      ///< its values are shown in no journal, page or error
    std::string leafref = {}; ///< path of the node that its values refer to; empty where it is no leafref
    /// Of a native list: path of the container below it that makes an entry the client's. An edit that makes an entry,
    /// or lets one stay, gives it that container; only the entry's own delete takes it away. Empty where entries need
    /// none.
    std::string marker = {};
    /// Of a native leaf: paths of the leaves beside it that its form in the client's model depends on. Who reads it for
    /// an answer reads them, too.
    std::vector<std::string> companions = {};

    bool is_list() const { return kind == NodeKind::list; }
    bool is_leaf() const { return kind == NodeKind::leaf; }
    bool is_leaf_list() const { return kind == NodeKind::leaf_list; }
    bool is_container() const { return kind == NodeKind::container; }
};

/// A YANG module, as JSON documents and instance-identifiers call its namespace.
struct SchemaModule {
    std::string name;
    std::string ns;
    std::string prefix = {};
};

class SchemaPaths;

/// One schema serves all models: their paths do not overlap but in their top nodes, which what is below tells apart.
/// Filled once, and only read afterwards, by any number of threads. Records keep their addresses while it lives.
class TQM_EXPORT Schema
{
public:
    Schema();
    Schema(Schema &&) noexcept;
    Schema &operator=(Schema &&) noexcept;
    ~Schema();

    /// The record, to which more may be added; its path, kind and keys stay. Of nodes with one path the first counts.
    SchemaNode &add(SchemaNode node);
    void add_module(SchemaModule module);

    /// The record of `path`; null if no schema has it.
    const SchemaNode *find(std::string_view path) const;
    SchemaNode *find(std::string_view path);
    /// In the order in which they were added: of one model parents before their children.
    const std::deque<SchemaNode> &nodes() const { return nodes_; }

    /// The module of this name; null if there is none.
    const SchemaModule *module_named(std::string_view name) const;
    /// The module of this namespace; null if there is none.
    const SchemaModule *module_of(std::string_view ns) const;

    /// True if no value of the node at `path` may be shown: that is a secret, or no leaf or leaf-list, as a secret
    /// under a misspelt name would be. A schema without leaves does not tell names from misspelt ones.
    bool hides(std::string_view path) const;
    /// True if a secret has this tag: for those who know no more of a leaf.
    bool is_secret_tag(std::string_view tag) const;

private:
    friend struct SchemaAccess;

    std::deque<SchemaNode> nodes_;
    std::deque<SchemaModule> modules_;
    std::unique_ptr<SchemaPaths> paths_;
    std::unordered_set<std::string_view> secret_tags_;
    bool knows_leaves_ = false;
};

} // namespace tqm
