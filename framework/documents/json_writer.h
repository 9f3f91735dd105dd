// Writes built trees as JSON (RFC 7951, with operations as metadata of RFC 7952), straight to its sink.
#pragma once

#include <string_view>
#include <vector>

#include "documents/text_buffer.h"
#include "tqm/schema.h"
#include "trees/output.h"

namespace tqm
{

class JsonWriter
{
public:
    JsonWriter(const Schema &schema, Sink sink) : schema_(schema), text_(std::move(sink)) {}

    /// One object with the member "ietf-netconf:<wrapper>", which holds the trees, or, if `wrapper` is empty, with the
    /// trees themselves. False if the sink failed.
    bool write(std::string_view wrapper, const std::vector<const OutputNode *> &trees, bool with_operations);

private:
    struct Place {
        const char *ns; ///< of the node around; null: outermost
        uint32_t operation;
        unsigned int level;
    };
    void members(const OutputRecord &node, Place place);
    void member(const OutputRecord &node, Place place);
    void array(const OutputRecord &first, Place place);
    void object(const OutputRecord &node, const WrittenOperation &operation, Place place);
    void leaf_annotations(const OutputRecord &first, Place place, bool is_array);
    void name(const OutputRecord &node, Place place, std::string_view mark = {});
    void value(const OutputRecord &leaf);
    void next(unsigned int level, std::size_t room = 0);
    void end_line(unsigned int level);
    WrittenOperation operation_of(const OutputRecord &node, Place place) const;

    const Schema &schema_;
    TextBuffer text_;
    bool with_operations_ = false;
    bool after_value_ = false; ///< the next member or element needs a comma
};

} // namespace tqm
