#include "schema/paths.h"

#include "schema/schema_access.h"

namespace tqm
{

namespace
{

constexpr std::size_t fewest_slots = 64;

std::string_view without_slash(std::string_view path)
{
    if (!path.empty() && path.front() == '/') {
        path.remove_prefix(1);
    }
    return path;
}

bool is_path(std::string_view path)
{
    return !path.empty() && path.front() != '/' && path.back() != '/' && path.find("//") == std::string_view::npos;
}

/// Eight bytes a step: paths are 30 to 90 bytes long.
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

const SchemaNode &unknown_node()
{
    static const SchemaNode unknown{};
    return unknown;
}

/// What follows from the nodes above.
void derive(PathInfo &info)
{
    const PathInfo *const parent = info.parent;
    info.list = info.is_list() ? &info : (parent == nullptr ? nullptr : parent->list);
    info.is_key = parent != nullptr && parent->has_key(info.tag);
    info.below_value = parent != nullptr && (parent->is_leaf() || parent->is_leaf_list() || parent->below_value);
}

void derive_below(PathInfo &info)
{
    derive(info);
    for (PathInfo *child = info.first_child; child != nullptr; child = child->next_sibling) {
        derive_below(*child);
    }
}

/// Fills the record of `text`, which stays, below `parent`.
void describe(PathInfo &info, std::string_view text, const PathInfo *parent)
{
    info.text = text;
    info.tag = text.data() + text.rfind('/') + 1;
    info.tag_length = static_cast<uint32_t>(text.data() + text.size() - info.tag);
    info.parent = parent;
    info.depth = parent == nullptr ? 1 : parent->depth + 1;
    info.schema = &unknown_node();
    info.usual.info = &info;
}

void append_child(PathInfo &parent, PathInfo &child)
{
    child.next_sibling = parent.first_child;
    parent.first_child = &child;
}

} // namespace

// ---- The index ----

PathInfo *PathIndex::find(std::string_view path) const
{
    if (slots_.empty()) {
        return nullptr;
    }
    for (std::size_t at = hash_of(path);; ++at) {
        PathInfo *info = slots_[at & (slots_.size() - 1)];
        if (info == nullptr || info->text.substr(1) == path) {
            return info;
        }
    }
}

PathInfo *&PathIndex::slot_for(std::string_view path)
{
    std::size_t at = hash_of(path);
    while (slots_[at & (slots_.size() - 1)] != nullptr) {
        ++at;
    }
    return slots_[at & (slots_.size() - 1)];
}

void PathIndex::insert(PathInfo &info)
{
    if ((count_ + 1) * 2 > slots_.size()) {
        std::vector<PathInfo *> old(std::max(fewest_slots, slots_.size() * 2));
        old.swap(slots_);
        for (PathInfo *known : old) {
            if (known != nullptr) {
                slot_for(known->text.substr(1)) = known;
            }
        }
    }
    ++count_;
    slot_for(info.text.substr(1)) = &info;
}

// ---- The paths of a schema ----

bool SchemaPaths::add(const SchemaNode &node)
{
    const std::string_view path = without_slash(node.path);
    if (!is_path(path)) {
        return false;
    }
    PathInfo *const known = index_.find(path);
    PathInfo &info = known == nullptr ? insert(path) : *known;
    if (info.schema != &unknown_node()) {
        return false;
    }
    info.schema = &node;
    info.usual.ns = find_namespace(node.ns);
    if (info.usual.ns == nullptr) {
        info.usual.ns = namespaces_.emplace_back(node.ns).c_str();
    }
    derive_below(info);
    return true;
}

PathInfo &SchemaPaths::insert(std::string_view path)
{
    const std::size_t slash = path.rfind('/');
    PathInfo *parent = nullptr;
    if (slash != std::string_view::npos) {
        const std::string_view above = path.substr(0, slash);
        parent = index_.find(above);
        parent = parent == nullptr ? &insert(above) : parent;
    }
    const std::string &text = texts_.emplace_back("/").append(path);
    PathInfo &info = infos_.emplace_back();
    describe(info, text, parent);
    derive(info);
    if (parent != nullptr) {
        append_child(*parent, info);
    }
    index_.insert(info);
    return info;
}

const PathInfo *SchemaPaths::find(std::string_view path) const
{
    return index_.find(without_slash(path));
}

const char *SchemaPaths::find_namespace(std::string_view ns) const
{
    const auto found = std::ranges::find(namespaces_, ns);
    return found == namespaces_.end() ? nullptr : found->c_str();
}

// ---- The paths of a request ----

PathTable::PathTable(const Schema &schema, Arena &arena) : known_(SchemaAccess::paths(schema)), arena_(arena) {}

const PathInfo *PathTable::find(std::string_view path) const
{
    const PathInfo *const known = known_.find(path);
    return known == nullptr ? own_.find(without_slash(path)) : known;
}

const PathInfo *PathTable::intern(std::string_view path)
{
    const PathInfo *const info = find(path);
    path = without_slash(path);
    return info == nullptr && is_path(path) ? intern_own(path) : info;
}

/// The slot that has `path`, or is to have it.
PathTable::Literal &PathTable::literal_at(const char *path)
{
    constexpr uint64_t factor = 0x9e3779b97f4a7c15u;
    std::size_t at = reinterpret_cast<std::uintptr_t>(path) * factor >> 32;
    while (true) {
        Literal &literal = literals_[at++ & (literals_.size() - 1)];
        if (literal.address == path || literal.info == nullptr) {
            return literal;
        }
    }
}

// The text is compared on each hit, as an address may hold several texts one after another.
const PathInfo *PathTable::intern_literal(const char *path)
{
    const Literal &literal = literal_at(path);
    const bool is_known = literal.info != nullptr && std::strcmp(literal.info->text.data(), path) == 0;
    return is_known ? literal.info : note_literal(path);
}

const PathInfo *PathTable::note_literal(const char *path)
{
    const PathInfo *const info = intern(path);
    if (info == nullptr) {
        return nullptr;
    }
    if (literal_at(path).info == nullptr && (literal_count_ + 1) * 2 > literals_.size()) {
        const bool is_full = literals_.size() == most_literals;
        std::vector<Literal> old(is_full ? literals_.size() : literals_.size() * 2);
        old.swap(literals_);
        literal_count_ = is_full ? 0 : literal_count_;
        for (const Literal &literal : old) {
            if (literal.info != nullptr && !is_full) {
                literal_at(literal.address) = literal;
            }
        }
    }
    Literal &literal = literal_at(path);
    literal_count_ += literal.info == nullptr ? 1 : 0;
    literal = {path, info};
    return info;
}

PathInfo *PathTable::intern_own(std::string_view path)
{
    if (PathInfo *const known = own_.find(path)) {
        return known;
    }
    const std::size_t slash = path.rfind('/');
    const PathInfo *const parent = slash == std::string_view::npos ? nullptr : intern(path.substr(0, slash));
    char *text = static_cast<char *>(arena_.allocate(path.size() + 2));
    text[0] = '/';
    std::memcpy(text + 1, path.data(), path.size());
    text[path.size() + 1] = '\0';
    auto *info = arena_.make<PathInfo>();
    // A path of the schema is not written to: it finds its request's own children by their texts.
    PathInfo *const own_parent = parent == nullptr ? nullptr : own_.find(parent->text.substr(1));
    describe(*info, {text, path.size() + 1}, parent);
    derive(*info);
    if (own_parent != nullptr) {
        append_child(*own_parent, *info);
    }
    own_.insert(*info);
    return info;
}

const PathInfo *PathTable::as_list(const PathInfo *info, std::string_view key)
{
    if (info == nullptr || info->is_list()) {
        return info;
    }
    PathInfo *const own = own_.find(info->text.substr(1));
    if (own == nullptr) {
        return nullptr;
    }
    SchemaNode &made = made_lists_.emplace_back(*own->schema);
    made.kind = NodeKind::list;
    made.keys = {std::string(key)};
    own->schema = &made;
    derive_below(*own);
    return own;
}

const PathInfo *PathTable::find_child(const PathInfo &parent, std::string_view tag) const
{
    const PathInfo *const known = parent.child(tag);
    if (known != nullptr || own_.size() == 0) {
        return known;
    }
    return own_.find(std::string(parent.text.substr(1)) + '/' + std::string(tag));
}

const PathInfo *PathTable::intern_child(const PathInfo *parent, std::string_view tag)
{
    if (parent == nullptr) {
        return intern(tag);
    }
    const PathInfo *const known = find_child(*parent, tag);
    return known != nullptr ? known : intern(std::string(parent->text) + '/' + std::string(tag));
}

} // namespace tqm
