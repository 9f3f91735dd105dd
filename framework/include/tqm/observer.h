// What a walk does, as it does it: for those who explain a mapping. A journal is the same told in lines for people.
#pragma once

#include <cstdint>
#include <optional>

#include "tqm/export.h"
#include "tqm/tree.h"

namespace tqm
{

/// One add of a mapper, once it has found its place.
struct Added {
    const char *path;  ///< as the mapper gave it, without keys
    const char *value; ///< null: none. Secrets are as they are: whoever shows them masks them (Schema::hides)
    std::optional<uint32_t> operation; ///< TQM_OP_* or operation_none of the node after the add; none in reads and
                                       ///< where the list walker has yet to say it
    const OutputNode *node;            ///< null if the add was refused. Lives as long as the request
    rcode code;                        ///< 0, or why it was refused
};

/// Nodes are those of the request tree. Walkers may move a node's record, but never the text of its tag: its address
/// is what a node is known by.
class TQM_EXPORT Observer
{
public:
    virtual ~Observer() = default;
    /// A walker has found that `tag` is that of a child which it knows.
    virtual void matched(const char *tag) = 0;
    /// A walker stands at a container or list entry now.
    virtual void entered(const rdl_tqm_datatree &node) = 0;
    /// A mapper has looked up the value of `node`, or what it called has, for the key of an entry.
    virtual void read(const rdl_tqm_datatree &node) = 0;
    virtual void added(const Added &add) = 0;
};

} // namespace tqm
