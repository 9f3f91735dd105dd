// Writes built trees as XML: straight to its sink, as the native tree of a large edit would fill memory twice as a
// document object.
#pragma once

#include <cstdio>
#include <functional>
#include <string>
#include <string_view>

#include "tqm/tree.h"

namespace tqm
{

using Sink = std::function<bool(std::string_view)>;

/// What a document says of a node's operation.
struct WrittenOperation {
    const char *name;   ///< null: nothing is written
    uint32_t effective; ///< what nodes below that say nothing have
};

/// An operation is written where it is not the one that the node has from the nodes around it. Merge is not written on
/// keys, which only name their entry, nor in what goes away as a whole.
WrittenOperation written_operation(const OutputNode &node, uint32_t outer_operation);

class XmlWriter
{
public:
    explicit XmlWriter(Sink sink) : sink_(std::move(sink)) {}

    /// The start tag of the wrapper with `attributes` (ready-made text, with its leading blank), the trees, the end
    /// tag. `with_operations` writes nc:operation attributes: the prefix nc must then be among the attributes. False
    /// if the sink failed.
    bool write(std::string_view wrapper, std::string_view attributes, const std::vector<const OutputNode *> &trees,
               bool with_operations);

private:
    void node(const OutputNode &node, const char *outer_ns, uint32_t outer_operation, unsigned int level);
    void escaped(std::string_view text, bool in_attribute);
    void flush();

    Sink sink_;
    std::string buffer_;
    bool with_operations_ = false;
    bool good_ = true;
};

} // namespace tqm
