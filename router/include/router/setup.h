// What a datastore is told by those who open it: its models, what is to be seen of its lists, and where its operational
// data come from.
#pragma once

#include "router/error.h"
#include "router/models.h"
#include "router/tree.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace router
{

/// Which entries of a list those see who read and edit the datastore: the ones that hold a certain node, and have
/// certain values for keys. The others are the router's own. Of lists without such a record all entries are seen.
struct Visibility {
    struct Key {
        std::string name;
        std::string value;
    };
    std::string ns;        ///< URI of the module that the list's tree is of
    std::string list;      ///< absolute schema path without prefixes
    std::string marker;    ///< path of the node from the list, without prefixes: a container or a leaf
    std::vector<Key> keys; ///< values that a shown entry has for these keys
    /// Why an edit may change nothing of an entry that is not shown. Empty: it may, and so may bring it into view.
    std::string refusal;
};

/// Answers whether an entry is seen.
using Shown = std::function<bool(const lyd_node *entry)>;

/// Makes the operational data that follow from a configuration (its first top-level node; null: it is empty). They tell
/// of entries that are shown, and of no others. Null if libyang cannot make them.
using OperationalSource =
    std::function<Tree(const ly_ctx *context, const lyd_node *configuration, const Shown &is_shown)>;

class ShownEntries;

/// Movable handle; copies share what it holds. Any number of datastores may be opened with one.
class Setup
{
public:
    /// Without a source there are no operational data but those that a document brings. Fails if a record of `visible`
    /// names a node that is not there, saying which.
    static Expected<Setup> make(Models models, const std::vector<Visibility> &visible, OperationalSource source = {});

    const Models &models() const { return models_; }

    /// For the router's own use.
    const ShownEntries &shown_entries() const { return *shown_entries_; }
    const OperationalSource &source() const { return source_; }

private:
    Setup(Models models, std::shared_ptr<const ShownEntries> shown_entries, OperationalSource source)
        : models_(std::move(models)), shown_entries_(std::move(shown_entries)), source_(std::move(source))
    {
    }

    Models models_;
    std::shared_ptr<const ShownEntries> shown_entries_;
    OperationalSource source_;
};

} // namespace router
