// An open file, and what its users share.
#pragma once

#include "router/error.h"

#include <cerrno>
#include <cstring>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <unistd.h>
#include <utility>

namespace router
{

/// An open file descriptor, closed with the object; -1 for none.
class Descriptor
{
public:
    explicit Descriptor(int fd = -1) : fd_(fd) {}
    Descriptor(Descriptor &&other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    Descriptor &operator=(Descriptor &&other) noexcept
    {
        std::swap(fd_, other.fd_);
        return *this;
    }
    ~Descriptor()
    {
        if (fd_ >= 0) {
            close(fd_);
        }
    }

    int get() const { return fd_; }
    explicit operator bool() const { return fd_ >= 0; }

private:
    int fd_;
};

/// Calls again what a signal has interrupted.
template <typename Call>
auto uninterrupted(Call call)
{
    auto result = call();
    while (result < 0 && errno == EINTR) {
        result = call();
    }
    return result;
}

/// Writes all of the text, or fails and leaves the reason in errno.
inline bool write_all(int fd, std::string_view content)
{
    while (!content.empty()) {
        const ssize_t written = uninterrupted([&] { return write(fd, content.data(), content.size()); });
        if (written < 0) {
            return false;
        }
        content.remove_prefix(static_cast<size_t>(written));
    }
    return true;
}

/// The error that errno says.
inline tl::unexpected<Error> system_error(const std::string &what, const std::string &path)
{
    return tl::unexpected(Error{"cannot " + what + " " + path + ": " + std::strerror(errno)});
}

} // namespace router
