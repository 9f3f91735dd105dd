// What a document says, as walkers walk it, and beside it what the walkers do not get.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <unordered_map>
#include <vector>

#include "tqm/error.h"
#include "tqm/request.h"

namespace tqm
{

class RequestTree
{
public:
    using Roots = TreeBuilder::Roots;

    /// The walked trees.
    const Roots &roots() const { return roots_; }
    void adopt(Roots roots) { roots_ = roots; }
    /// Forward reads: the client's filter as it came. What is walked is made of it.
    const Roots &filter() const { return filter_; }
    void keep_filter() { filter_ = roots_; }

    /// Memory that the trees point into.
    void own(std::shared_ptr<void> buffer) { buffers_.push_back(std::move(buffer)); }

    void leave_out(LeftOut node) { left_out_.push_back(node); }
    std::span<const LeftOut> left_out() const { return left_out_; }

    /// Walkers do not get the text of a deleted node, as mappers would set it.
    void keep_deleted_text(const rdl_tqm_datatree &node, const char *text) { deleted_texts_.emplace(&node, text); }
    /// Null where there is none.
    const char *deleted_text(const rdl_tqm_datatree &node) const
    {
        const auto found = deleted_texts_.find(&node);
        return found == deleted_texts_.end() ? nullptr : found->second;
    }

    /// Edits: the first element of another namespace. The plug-in refuses those whose tag it does not know; the request
    /// is not good with one whose tag it does.
    void note_foreign(const char *tag, Error error)
    {
        foreign_tag_ = tag;
        foreign_ = std::move(error);
    }
    const std::optional<Error> &foreign() const { return foreign_; }
    const char *foreign_tag() const { return foreign_tag_; }

private:
    Roots roots_;
    Roots filter_;
    std::vector<std::shared_ptr<void>> buffers_;
    std::vector<LeftOut> left_out_;
    std::unordered_map<const rdl_tqm_datatree *, const char *> deleted_texts_;
    std::optional<Error> foreign_;
    const char *foreign_tag_ = nullptr;
};

} // namespace tqm
