// The names of the members of JSON objects.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>
#include <unordered_set>

namespace tqm
{

/// Names of the members of one object, which others keep. It is used for one object after another, as its memory stays.
class NameSet
{
public:
    bool insert(std::string_view name)
    {
        const auto few_end = few_.begin() + static_cast<std::ptrdiff_t>(count_);
        if (std::find(few_.begin(), few_end, name) != few_end) {
            return false;
        }
        if (count_ == few_.size()) {
            return many_.emplace(name).second;
        }
        few_[count_++] = name;
        return true;
    }
    void clear()
    {
        count_ = 0;
        if (!many_.empty()) {
            many_ = {};
        }
    }

private:
    std::array<std::string_view, 16> few_;
    std::size_t count_ = 0;
    std::unordered_set<std::string_view> many_;
};

/// Bytes of identifiers (RFC 7950, section 6.2).
class NameBytes
{
public:
    constexpr explicit NameBytes(std::string_view others)
    {
        for (std::size_t c = 0; c < has_.size(); ++c) {
            has_[c] = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                      others.find(static_cast<char>(c)) != std::string_view::npos;
        }
    }
    constexpr bool has(char c) const { return has_[static_cast<unsigned char>(c)]; }

private:
    std::array<bool, 256> has_{};
};

/// What ends up as the name of an element.
inline bool is_identifier(std::string_view name)
{
    static constexpr NameBytes first("_");
    static constexpr NameBytes any("_-.0123456789");
    return !name.empty() && first.has(name.front()) && std::ranges::all_of(name, [](char c) { return any.has(c); });
}

} // namespace tqm
