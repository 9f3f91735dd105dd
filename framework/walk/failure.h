// Why a walk has failed, and where: what plug-ins leave behind - a message, a tag, the place at which they noted it -
// and what the client is told of it. A walk that has failed may fill yet, and a fill notes places and tags of its own:
// they say nothing about the failure.
#pragma once

#include <string>
#include <unordered_set>

#include "tqm/error.h"
#include "walk/hierarchy.h"

namespace tqm
{

class Failure
{
public:
    /// `record` holds the plug-in's message and tag, `hierarchy` says where it stands. Both outlive this.
    Failure(tqm_map_request &record, Hierarchy &hierarchy) : record_(record), hierarchy_(hierarchy) {}
    ~Failure();
    Failure(const Failure &) = delete;
    Failure &operator=(const Failure &) = delete;

    /// A copy of `text` for the plug-in, from malloc; null for null.
    char *duplicate(const char *text);
    /// Frees what duplicate() gave.
    void free_text(void *text);

    /// The plug-in has failed at the node on top of the hierarchy, for the reason `text`, unless it has given one.
    void refuse(const std::string &text);
    /// The plug-in says that the node on top of the hierarchy is where it has failed.
    void note_path();
    /// The path noted last, with keys, whether it was in a fill or not; empty if none was.
    std::string path() const { return place_of(noted_).text(); }
    /// A node is about to be left: a message without a place belongs to it.
    void note_place_of_message();

    /// An operation could not get memory. It has not told its caller, which may be a mapper that knows no exceptions.
    void note_want_of_memory() { out_of_memory_ = true; }
    bool is_out_of_memory() const { return out_of_memory_; }
    /// Throws std::bad_alloc if memory has run out.
    void check_memory() const;

    /// What the client is told of a walk that has returned `code`.
    Error error(rcode code) const;

private:
    bool is_of_fill(const char *text) const { return text == nullptr || fill_texts_.contains(text); }

    tqm_map_request &record_;
    Hierarchy &hierarchy_;
    WalkSteps noted_;
    // What was noted outside fills.
    WalkSteps refused_;
    const PathInfo *refused_at_ = nullptr; ///< the schema node of refused_
    std::string refused_tag_;
    std::unordered_set<const char *> fill_texts_;
    bool out_of_memory_ = false;
};

} // namespace tqm
