// Which data an edit or a filter means: schema nodes by name, list entries by all, some or none of their keys. Search
// by keys is by hash throughout.
#pragma once

#include "router/edit_node.h"
#include "shown_entries.h"
#include "tree.h"

#include <array>
#include <map>
#include <string>
#include <tuple>
#include <unordered_map>
#include <vector>

namespace router
{

/// Schema node that `node` names below `parent` (null: top level); null if there is none.
const lysc_node *find_schema(const ly_ctx *context, const lysc_node *parent, const EditNode &node);

/// Whether the node is of a module whose data are configuration of the router.
bool is_native_configuration(const lysc_node *node);

/// Whether the node is of a module whose data are state of the router.
bool is_state(const lysc_node *node);

/// Instance of a container or leaf among the children of `parent`, or among `top` if that is null. Null if there is
/// none, or only the empty container that libyang supposes everywhere.
lyd_node *find_single(const lyd_node *parent, const lyd_node *top, const lysc_node *schema);

/// The keys that an entry of an edit or filter gives, in schema order; null where it gives none.
struct Keys {
    static constexpr size_t most = 2; ///< modules with longer lists of keys are not loaded
    std::array<const char *, most> values{};
    size_t wanted = 0;
    size_t given = 0;

    bool all() const { return given == wanted; }
    bool none() const { return given == 0; }
};
Keys keys_of(const lysc_node *list, const EditNode &entry);

/// The values of all keys in one text, by which entries of one list are told apart.
std::string text_of(const Keys &keys);
std::string text_of_keys(const lyd_node *entry);

/// Adds an entry, with all keys, below `parent`; null if libyang refuses.
lyd_node *new_entry(lyd_node *parent, const lysc_node *list, const Keys &keys);

/// Finds entries by all or some of their keys, of any number of lists, in constant time each. Whoever adds or takes
/// away entries of the tree meanwhile says so.
class EntryFinder
{
public:
    /// The one entry of all keys, or null.
    lyd_node *find(const lyd_node *parent, const lysc_node *list, const Keys &keys);
    /// Entries that agree with some keys.
    std::vector<lyd_node *> matching(const lyd_node *parent, const lysc_node *list, const Keys &keys);
    void added(lyd_node *entry);
    void removing(lyd_node *node); ///< with all below it

private:
    using Place = std::tuple<const lyd_node *, const lysc_node *, unsigned>; ///< parent, list, mask of keys
    using Index = std::unordered_map<std::string, std::vector<lyd_node *>>;

    std::map<Place, Index> indexes_;
    /// For each list an empty copy of its parent, where entries to search with are made.
    std::unordered_map<const lysc_node *, Detached> scratch_;
};

/// Entries below `parent` that agree with the keys, where those are not all: with none, the ones that are shown.
std::vector<lyd_node *> matching_entries(const lyd_node *parent, const lysc_node *list, const Keys &keys,
                                         const ShownEntries &shown_entries, EntryFinder &finder);

} // namespace router
