// Writes built trees as XML: straight to its sink, as the native tree of a large edit would fill memory twice as a
// document object.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "documents/text_buffer.h"
#include "trees/output.h"

namespace tqm
{

class XmlWriter
{
public:
    explicit XmlWriter(Sink sink) : text_(std::move(sink)) {}

    /// The start tag of the wrapper with `attributes` (ready-made text, with its leading blank), the trees, the end
    /// tag. `with_operations` writes nc:operation attributes: the prefix nc must then be among the attributes. False
    /// if the sink failed.
    bool write(std::string_view wrapper, std::string_view attributes, const std::vector<const OutputNode *> &trees,
               bool with_operations);

    /// The trees alone, each with `attributes` in its start tag.
    bool write(std::string_view attributes, const std::vector<const OutputNode *> &trees, bool with_operations);

private:
    void node(const OutputRecord &node, const char *outer_ns, uint32_t outer_operation, unsigned int level);

    void declare(const char *ns);

    /// The namespaces that were declared last, as they are written: in most documents they take turns.
    struct Declaration {
        const char *ns = nullptr;
        std::string attribute = {};
    };
    std::array<Declaration, 2> declared_;
    TextBuffer text_;
    std::string_view top_attributes_; ///< of the trees' start tags
    bool with_operations_ = false;
};

} // namespace tqm
