// RFC 6241, section 7.2, on the configuration part of openconfig-macsec: what an edit leaves, or why it is refused. The
// judge of the property test: it knows neither the plug-in nor the router, nor how they work. Where the RFC leaves a
// choice, or this router forces an exception, docs/clients.md says so, and the place here names it.
#pragma once

#include <compare>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tqm/error.h"

namespace test
{

enum class Operation { merge, replace, create, delete_, remove, none };

inline bool deletes(Operation operation)
{
    return operation == Operation::delete_ || operation == Operation::remove;
}

/// A key_copy is the leaf in an entry's config that repeats its key. A secret is a leaf that no read gives back.
enum class Kind { container, list, key, key_copy, leaf, secret, leaf_list };

struct Schema {
    std::string name;
    Kind kind = Kind::container;
    std::vector<std::string> values = {}; ///< of leaves, and of a list's key: those that random edits choose from
    std::vector<Schema> children = {};    ///< a list's first one is its key
};

/// `macsec`, the top: what can be edited and is supported.
const Schema &schema();

/// One element of an edit.
struct Element {
    const Schema *schema;
    std::string value = {}; ///< of a leaf; of an entry, and of containers in it, that of its key
    std::optional<Operation> operation = {};
    std::vector<Element> children = {};

    /// Its last step in a path: "/policy[name='P0']", "/macsec-cipher-suite[.='GCM_AES_128']", "/config".
    std::string step() const;
};

struct Edit {
    Operation default_operation = Operation::merge; ///< merge, replace or none
    Element top;
    bool grouped = false; ///< elements of one name stand together, as JSON cannot do otherwise
};

/// A configuration: values of the leaves by path. What is shown exists, and nothing else (RFC 7950, section 7.5.1, of
/// containers without presence).
using Leaves = std::map<std::string, std::string>;

/// Whether `tree` has the node at `path`: the leaf itself, or anything below the container or entry.
bool exists(const Leaves &tree, const std::string &path);

/// What an error must say. Without a tag: any error.
struct Refusal {
    std::optional<tqm::ErrorTag> tag = {};
    std::string app_tag = {};
    friend auto operator<=>(const Refusal &, const Refusal &) = default;
};

/// Applies `edit` to `tree`, secrets included. Empty: it is done. Otherwise `tree` is as it was, and the server may
/// give any of these errors.
std::set<Refusal> edit_config(const Edit &edit, Leaves &tree);

} // namespace test
