// Want of memory inside libyang, which does not always say so: a printer leaves a text out, a parser a node, and the
// call succeeds. The allocator, though, leaves ENOMEM in errno, which nothing takes back.
#pragma once

#include <libyang/libyang.h>

#include <cerrno>
#include <new>
#include <stdexcept>

namespace router
{

// Watches the calls of libyang that are made while it lives, none of which may be an editor's of files.
class MemoryWatch
{
public:
    MemoryWatch() : before_(errno) { errno = 0; }
    MemoryWatch(const MemoryWatch &) = delete;
    MemoryWatch &operator=(const MemoryWatch &) = delete;
    ~MemoryWatch() { errno = before_; }

    // Throws std::bad_alloc, as the standard library does, if memory has run out since.
    void check() const
    {
        if (errno == ENOMEM) {
            throw std::bad_alloc();
        }
    }

private:
    int before_;
};

// The answer of one of libyang's searches. What is neither found nor not there is an error, and thrown.
inline bool found(LY_ERR code)
{
    if (code == LY_EMEM) {
        throw std::bad_alloc();
    }
    if (code != LY_SUCCESS && code != LY_ENOTFOUND) {
        throw std::runtime_error("libyang cannot search its data");
    }
    return code == LY_SUCCESS;
}

} // namespace router
