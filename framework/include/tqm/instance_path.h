// The way to one node of a client's data, step by step: what the place of an error is made of.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tqm/export.h"
#include "tqm_map.h"

namespace tqm
{

/// One node on the way.
struct PathStep {
    std::string name;
    std::vector<std::pair<std::string, std::string>> keys = {}; ///< of a list entry: name and value, in schema order;
                                                                ///< of a leaf-list's value: "." and the value
    std::string ns = {};                                        ///< namespace URI; empty until a schema has been asked
    std::string module = {}; ///< name of the namespace's module; empty if no schema has it
    std::string prefix = {}; ///< that module's prefix; empty with it
};

/// From a top node down. Made where an error is found, while the tree is walked; namespaces are added by whoever knows
/// the schema (RFC 7950, section 9.13 is about the written form).
class TQM_EXPORT InstancePath
{
public:
    InstancePath() = default;

    /// One step down; a null name is a fault of whoever made the tree, and stands as "?".
    InstancePath &enter(const char *name);
    /// And back.
    void leave() { steps_.pop_back(); }
    /// A key of the entry, or "." for the value of the leaf-list, that was entered last.
    InstancePath &key(std::string_view name, std::string_view value);
    /// Those of the keys that `entry` has as children with a value.
    InstancePath &keys(const rdl_tqm_datatree &entry, const std::vector<std::string> &names);

    bool empty() const { return steps_.empty(); }
    const std::vector<PathStep> &steps() const { return steps_; }
    /// For people: with keys and without prefixes, as "/macsec/mka/policies/policy[name='P1']"; empty with the path.
    std::string text() const;

private:
    std::vector<PathStep> steps_;
};

} // namespace tqm
