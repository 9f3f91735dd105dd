// Want of memory inside libyang, which does not always say so: a printer leaves a text out, a parser a node, and the
// call succeeds. The allocator, though, leaves ENOMEM in errno, which nothing takes back.
#pragma once

#include <libyang/libyang.h>

#include <cerrno>
#include <new>
#include <stdexcept>

namespace router
{

/// Watches the calls of libyang that are made while it lives, none of which may be an editor's of files.
class MemoryWatch
{
public:
    MemoryWatch() : before_(errno) { errno = 0; }
    MemoryWatch(const MemoryWatch &) = delete;
    MemoryWatch &operator=(const MemoryWatch &) = delete;
    ~MemoryWatch() { errno = before_; }

    /// Throws std::bad_alloc, as the standard library does, if memory has run out since.
    void check() const
    {
        if (errno == ENOMEM) {
            throw std::bad_alloc();
        }
    }

    /// The reason of a call that has failed in `context`. Files that are read on the way change errno; but a failure
    /// whose reason could not even be kept is want of memory.
    const char *reason(const ly_ctx *context) const
    {
        check();
        if (ly_errmsg(context) == nullptr || ly_errcode(context) == LY_EMEM) {
            throw std::bad_alloc();
        }
        return ly_errmsg(context);
    }

private:
    int before_;
};

/// The answer of one of libyang's searches. What is neither found nor not there is an error, and thrown.
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
