#include "walk/failure.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

namespace tqm
{

namespace
{

bool in_fill(const tqm_map_request &record)
{
    return record.fill_mode == 1;
}

/// Walkers have one code for what is no node, for state in an edit, and for what the router does not support.
const char *why_unsupported(const PathInfo &parent, std::string_view tag)
{
    const PathInfo *const info = parent.child(tag);
    if (info == nullptr) {
        return "there is no such node";
    }
    return info->schema->config ? "this router does not support it" : "it is state, and cannot be edited";
}

} // namespace

Failure::~Failure()
{
    std::free(record_.error_tag);
    std::free(record_.error_msg);
}

char *Failure::duplicate(const char *text)
{
    if (text == nullptr) {
        return nullptr;
    }
    std::unique_ptr<char, decltype(&std::free)> copy(strdup(text), &std::free);
    if (copy == nullptr) {
        throw std::bad_alloc();
    }
    if (in_fill(record_)) {
        fill_texts_.insert(copy.get());
    }
    return copy.release();
}

void Failure::free_text(void *text)
{
    const std::unique_ptr<char, decltype(&std::free)> owned(static_cast<char *>(text), &std::free);
    const char *const given = owned.get();
    if (in_fill(record_) && given != nullptr && given == record_.error_tag && !is_of_fill(given)) {
        refused_tag_ = given;
    }
    fill_texts_.erase(given);
}

void Failure::refuse(const std::string &text)
{
    if (record_.error_msg == nullptr) {
        record_.error_msg = duplicate(text.c_str());
    }
    note_path();
}

void Failure::note_path()
{
    hierarchy_.copy_to(noted_);
    if (in_fill(record_)) {
        return;
    }
    refused_ = noted_;
    refused_at_ = hierarchy_.empty() ? nullptr : hierarchy_.top().path;
}

/// A mapper may say why it refuses, and not where: at the node on top, or at the leaf in it that was matched last.
void Failure::note_place_of_message()
{
    if (!refused_.empty() || is_of_fill(record_.error_msg)) {
        return;
    }
    hierarchy_.copy_to(refused_);
    if (hierarchy_.top_has_leaf(hierarchy_.matched_tag())) {
        refused_tag_ = hierarchy_.matched_tag();
    }
}

void Failure::check_memory() const
{
    if (out_of_memory_) {
        throw std::bad_alloc();
    }
}

Error Failure::error(rcode code) const
{
    check_memory();
    const bool has_message = !is_of_fill(record_.error_msg);
    Error error{has_message ? record_.error_msg : rcode_strerror(code)};
    error.at(place_of(refused_));
    error.tag = is_of_fill(record_.error_tag) ? refused_tag_ : record_.error_tag;
    error.code = code;
    if (!has_message && code == TQM_ERR_UNSUPPORTED && refused_at_ != nullptr && !error.tag.empty()) {
        error.text = error.tag + ": " + why_unsupported(*refused_at_, error.tag);
    }
    error.error_tag = tag_of(code);
    error.bad_element = error.tag;
    return error;
}

} // namespace tqm
