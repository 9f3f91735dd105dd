// Chunks double in size, so that a request of any size has few of them; large ones ask for huge pages, which spares a
// big request most of its page faults.
#include "trees/arena.h"

#include <algorithm>
#include <cstdlib>
#include <new>

#include <sys/mman.h>

namespace tqm
{

namespace
{
constexpr std::size_t huge_page = 2 * 1024 * 1024;
constexpr std::size_t largest_chunk = 32 * 1024 * 1024;
} // namespace

char *allocate_large(std::size_t size)
{
    if (size < huge_page) {
        return static_cast<char *>(std::malloc(size));
    }
    size = (size + huge_page - 1) & ~(huge_page - 1);
    void *memory = std::aligned_alloc(huge_page, size);
    if (memory != nullptr) {
        madvise(memory, size, MADV_HUGEPAGE);
    }
    return static_cast<char *>(memory);
}

Arena::~Arena()
{
    for (char *chunk : chunks_) {
        std::free(chunk);
    }
}

char *Arena::new_chunk(std::size_t size)
{
    chunks_.push_back(nullptr);
    chunks_.back() = allocate_large(size);
    if (chunks_.back() == nullptr) {
        throw std::bad_alloc();
    }
    return chunks_.back();
}

void Arena::grow(std::size_t at_least)
{
    const std::size_t size = std::max(chunk_size_, at_least);
    next_ = new_chunk(size);
    end_ = next_ + size;
    chunk_size_ = std::min(chunk_size_ * 2, largest_chunk);
}

// Without a largest size: keep() looks through the text chunks, so they must stay few.
void Arena::grow_text(std::size_t at_least)
{
    const std::size_t size = std::max(text_chunk_size_, at_least);
    text_next_ = new_chunk(size);
    text_end_ = text_next_ + size;
    add_range({text_next_, text_end_});
    text_chunk_size_ *= 2;
}

} // namespace tqm
