// The directory of a store: its lock, and its one file. Bytes in, bytes out; what they say is another's business.
#ifndef ROUTER_STORE_FILE_H
#define ROUTER_STORE_FILE_H

#include "router/datastore.h"
#include "router/error.h"

#include <optional>
#include <string>
#include <string_view>

namespace router
{

// An open file descriptor, closed with the object; -1 for none.
class Descriptor
{
public:
    explicit Descriptor(int fd = -1) : fd_(fd) {}
    Descriptor(Descriptor &&other) noexcept;
    Descriptor &operator=(Descriptor &&other) noexcept;
    ~Descriptor();

    int get() const { return fd_; }
    explicit operator bool() const { return fd_ >= 0; }

private:
    int fd_;
};

class StoreFile
{
public:
    // For Access::write makes the directory (0700) if it is missing and takes the lock, waiting for a writer before us.
    static Expected<StoreFile> open(const std::string &directory, Access access);

    const std::string &path() const { return path_; }

    // All of the file, or nothing if there is none.
    Expected<std::optional<std::string>> load() const;

    // Puts `content` in the file's place, so that after a crash there is the old one or the new one. Mode 0600.
    Expected<void> save(std::string_view content) const;

private:
    StoreFile(std::string directory, Descriptor lock);

    std::string directory_;
    std::string path_;
    Descriptor lock_;
};

} // namespace router

#endif
