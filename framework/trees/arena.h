// Memory of one request. Nothing in it is freed before the request ends, so that nodes and texts keep their addresses.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace tqm
{

/// Memory for std::free; where it is large, in huge pages. Null if there is none.
char *allocate_large(std::size_t size);

class Arena
{
public:
    Arena() = default;
    ~Arena();
    Arena(const Arena &) = delete;
    Arena &operator=(const Arena &) = delete;

    /// `size` bytes, aligned for records.
    void *allocate(std::size_t size)
    {
        size = (size + alignment - 1) & ~(alignment - 1);
        if (static_cast<std::size_t>(end_ - next_) < size) {
            grow(size);
        }
        char *memory = next_;
        next_ += size;
        return memory;
    }
    /// Destructors of what is made here never run.
    template <class T>
    T *make()
    {
        static_assert(std::is_trivially_destructible_v<T> && alignof(T) <= alignment);
        return new (allocate(sizeof(T))) T{};
    }
    template <class T>
    T *make_array(std::size_t count)
    {
        static_assert(std::is_trivially_destructible_v<T> && alignof(T) <= alignment);
        T *array = static_cast<T *>(allocate(count * sizeof(T)));
        for (std::size_t i = 0; i < count; ++i) {
            new (array + i) T{};
        }
        return array;
    }
    /// A null-terminated copy.
    const char *copy(std::string_view text)
    {
        if (static_cast<std::size_t>(text_end_ - text_next_) <= text.size()) {
            grow_text(text.size() + 1);
        }
        char *memory = text_next_;
        text_next_ += text.size() + 1;
        std::memcpy(memory, text.data(), text.size());
        memory[text.size()] = '\0';
        return memory;
    }
    /// `text`, copied unless it already lies in this arena's memory or in memory that keep_alive was told of.
    const char *keep(const char *text)
    {
        if (text == nullptr || holds(text)) {
            return text;
        }
        return copy(text);
    }
    /// Says that [begin, begin + size) lives as long as this arena.
    void keep_alive(const char *begin, std::size_t size) { add_range({begin, begin + size}); }

private:
    struct Range {
        const char *begin;
        const char *end;
    };
    static constexpr std::size_t alignment = alignof(void *);

    void add_range(Range range)
    {
        all_ = ranges_.empty() ? range : Range{std::min(all_.begin, range.begin), std::max(all_.end, range.end)};
        ranges_.push_back(range);
    }
    bool holds(const char *text) const
    {
        // Stacks and libraries lie apart from what is allocated.
        if (text < all_.begin || text >= all_.end) {
            return false;
        }
        for (const Range &range : ranges_) {
            if (text >= range.begin && text < range.end) {
                return true;
            }
        }
        return false;
    }
    void grow(std::size_t at_least);
    void grow_text(std::size_t at_least);
    char *new_chunk(std::size_t size);

    char *next_ = nullptr;
    char *end_ = nullptr;
    char *text_next_ = nullptr;
    char *text_end_ = nullptr;
    std::size_t chunk_size_ = 32 * 1024;
    std::size_t text_chunk_size_ = 4 * 1024;
    std::vector<char *> chunks_;
    std::vector<Range> ranges_;
    Range all_{nullptr, nullptr}; ///< from the first byte of them to the last
};

} // namespace tqm
