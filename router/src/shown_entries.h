// Which entries of the lists others see, as the datastore was told.
#pragma once

#include "router/edit_node.h"
#include "router/error.h"
#include "router/setup.h"

#include <libyang/libyang.h>

#include <string>
#include <utility>
#include <vector>

namespace router
{

class ShownEntries
{
public:
    /// Fails if a record names a node that is not there.
    static Expected<ShownEntries> make(const ly_ctx *context, const std::vector<Visibility> &visible);

    /// True for all nodes but entries that are not shown.
    bool shown(const lyd_node *node) const;

    /// Why an edit may change nothing of an entry that is not shown; null where it may.
    const std::string *refusal(const lysc_node *list) const;

    /// The node that makes a shown entry one, as a filter that fetches as little else as can be; null where every
    /// entry is shown.
    const EditNode *marker(const lysc_node *list) const;

private:
    struct Rule {
        const lysc_node *list;
        std::vector<const lysc_node *> marker; ///< and what leads to it from the entry
        std::vector<std::pair<const lysc_node *, std::string>> keys;
        std::string refusal;
        std::vector<EditNode> filter; ///< each is the next one's parent
    };

    const Rule *rule_of(const lysc_node *list) const;

    std::vector<Rule> rules_; ///< few
};

} // namespace router
