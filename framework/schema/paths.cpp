#include "schema/paths.h"

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
    static const SchemaNode unknown{};
    const SchemaNode *const known = schema_.find(info->text);
    info->schema = known == nullptr ? &unknown : known;
    info->list = info->is_list() ? info : (parent == nullptr ? nullptr : parent->list);
    info->is_key = parent != nullptr && parent->has_key(info->tag);
    info->below_value = parent != nullptr && (parent->is_leaf() || parent->is_leaf_list() || parent->below_value);

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
    if (info.is_list()) {
        return;
    }
    SchemaNode &made = made_lists_.emplace_back(*info.schema);
    made.kind = NodeKind::list;
    made.keys = {std::string(key)};
    info.schema = &made;
    info.list = &info;
    for (PathInfo *child = info.first_child; child != nullptr; child = child->next_sibling) {
        child->is_key = key == child->tag;
        if (!child->is_list()) {
            child->list = &info;
        }
    }
}

} // namespace tqm
