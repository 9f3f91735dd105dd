// See paths.h.
#include "paths.h"

#include <algorithm>
#include <cstring>

namespace tqm
{

namespace
{

std::string_view without_slash(std::string_view path)
{
    if (!path.empty() && path.front() == '/') {
        path.remove_prefix(1);
    }
    return path;
}

/// Eight bytes a step: paths are 30 to 90 bytes long and looked up once for each add.
std::size_t hash_of(std::string_view text)
{
    constexpr uint64_t factor = 0x9e3779b97f4a7c15u;
    uint64_t hash = text.size();
    const char *at = text.data();
    std::size_t left = text.size();
    for (; left >= 8; at += 8, left -= 8) {
        uint64_t word;
        std::memcpy(&word, at, 8);
        hash = (hash ^ word) * factor;
        hash ^= hash >> 32;
    }
    uint64_t word = 0;
    std::memcpy(&word, at, left);
    hash = (hash ^ word) * factor;
    return static_cast<std::size_t>(hash ^ (hash >> 29));
}

} // namespace

void append_key(std::string &path, std::string_view key, std::string_view value)
{
    const char quote = value.find('\'') == std::string_view::npos ? '\'' : '"';
    path.append("[").append(key).append("=").append(1, quote);
    for (const char c : value) {
        if (quote == '"' && (c == '"' || c == '\\')) {
            path += '\\';
        }
        path += c;
    }
    path.append(1, quote).append("]");
}

PathInfo *PathTable::find(std::string_view path) const
{
    path = without_slash(path);
    for (std::size_t at = hash_of(path);; ++at) {
        PathInfo *info = slots_[at & (slots_.size() - 1)];
        if (info == nullptr || info->text.substr(1) == path) {
            return info;
        }
    }
}

PathInfo *PathTable::intern(std::string_view path)
{
    if (PathInfo *info = find(path)) {
        return info;
    }
    path = without_slash(path);
    if (path.empty() || path.front() == '/' || path.back() == '/' || path.find("//") != std::string_view::npos) {
        return nullptr;
    }
    return insert(path);
}

PathInfo *PathTable::insert(std::string_view path)
{
    const std::size_t slash = path.rfind('/');
    PathInfo *parent = slash == std::string_view::npos ? nullptr : intern(path.substr(0, slash));
    auto *info = arena_.make<PathInfo>();
    char *text = static_cast<char *>(arena_.allocate(path.size() + 2));
    text[0] = '/';
    std::memcpy(text + 1, path.data(), path.size());
    text[path.size() + 1] = '\0';
    info->text = {text, path.size() + 1};
    info->tag = text + (slash == std::string_view::npos ? 1 : slash + 2);
    info->parent = parent;
    info->depth = parent == nullptr ? 1 : parent->depth + 1;
    PathInfo *&siblings = parent == nullptr ? first_top_ : parent->first_child;
    info->next_sibling = siblings;
    siblings = info;
    info->keys = schema_.list_keys(info->text);
    info->is_list = info->keys != nullptr;
    info->is_leaf_list = schema_.is_leaf_list(info->text);
    info->is_leaf = schema_.is_leaf(info->text);
    info->is_container = schema_.is_container(info->text);
    info->secret = info->is_leaf && schema_.hides(info->text);
    info->is_state = schema_.is_state(info->text);
    info->is_unspaced = schema_.is_unspaced(info->text);
    info->companions = schema_.companions(info->text);
    info->marker = info->is_list ? schema_.marker(info->text) : nullptr;
    info->list = info->is_list ? info : (parent == nullptr ? nullptr : parent->list);
    info->is_key = parent != nullptr && parent->is_list &&
                   std::find(parent->keys->begin(), parent->keys->end(), info->tag) != parent->keys->end();
    info->below_value = parent != nullptr && (parent->is_leaf || parent->is_leaf_list || parent->below_value);

    if (++count_ * 2 > slots_.size()) {
        rehash();
    }
    std::size_t at = hash_of(path);
    while (slots_[at & (slots_.size() - 1)] != nullptr) {
        ++at;
    }
    slots_[at & (slots_.size() - 1)] = info;
    return info;
}

void PathTable::rehash()
{
    std::vector<PathInfo *> old(slots_.size() * 2);
    old.swap(slots_);
    for (PathInfo *info : old) {
        if (info == nullptr) {
            continue;
        }
        std::size_t at = hash_of(info->text.substr(1));
        while (slots_[at & (slots_.size() - 1)] != nullptr) {
            ++at;
        }
        slots_[at & (slots_.size() - 1)] = info;
    }
}

PathInfo *PathTable::intern_child(PathInfo *parent, std::string_view tag)
{
    if (parent != nullptr) {
        if (PathInfo *info = parent->child(tag)) {
            return info;
        }
        return intern(std::string(parent->text) + '/' + std::string(tag));
    }
    return intern(tag);
}

void PathTable::make_list(PathInfo &info, std::string_view key)
{
    if (info.is_list) {
        return;
    }
    made_keys_.push_back(std::make_unique<std::vector<std::string>>(1, std::string(key)));
    info.keys = made_keys_.back().get();
    info.is_list = true;
    info.list = &info;
    for (PathInfo *child = info.first_child; child != nullptr; child = child->next_sibling) {
        child->is_key = key == child->tag;
        if (!child->is_list) {
            child->list = &info;
        }
    }
}

} // namespace tqm
