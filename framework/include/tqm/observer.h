// What a walk does, as it does it, and which function of the plug-in does it: for those who explain a mapping. A
// journal is the same told in lines for people.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tqm/export.h"
#include "tqm/tree.h"

namespace tqm
{

/// A function of the plug-in at work. Nodes are those of the request tree: walkers may move a node's record, but never
/// the text of its tag, whose address is what a node is known by.
struct Call {
    std::string function;         ///< as it names itself in its log lines; "" for a root walker that writes none
    const char *tag = nullptr;    ///< of the node that it works for; null if there is none
    const Call *caller = nullptr; ///< the function that has called it; null for a root walker
    bool has_added = false;       ///< it has added something itself
};

/// One add of a mapper, once it has found its place.
struct Added {
    const char *path;  ///< as the mapper gave it, without keys
    const char *value; ///< null: none. Secrets are as they are: whoever shows them masks them (Schema::hides)
    std::optional<uint32_t> operation; ///< TQM_OP_* or operation_none of the node after the add; none in reads and
                                       ///< where the list walker has yet to say it
    const OutputNode *node;            ///< null if the add was refused. Lives as long as the request
    rcode code;                        ///< 0, or why it was refused
};

/// Is told of a walk in its order. Who reads or adds is null before the first function has named itself. Calls last as
/// long as the event. Events come on the thread of the walk.
class TQM_EXPORT Observer
{
public:
    virtual ~Observer() = default;
    /// The walk has come to the node with this tag.
    virtual void reached(const char *tag) = 0;
    /// A function begins to work for a node. Of a root walker this is told once it has come to its node.
    virtual void called(const Call &call) = 0;
    /// A function has looked up the value of `node`, or what it called has, for the key of an entry.
    virtual void read(const Call *by, const rdl_tqm_datatree &node) = 0;
    virtual void added(const Call *by, const Added &add) = 0;
};

} // namespace tqm
