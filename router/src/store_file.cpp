#include "store_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <utility>

namespace router
{

namespace
{

constexpr mode_t file_mode = 0600;

Expected<std::string> read_all(int fd, const std::string &path)
{
    struct stat status = {};
    if (fstat(fd, &status)) {
        return system_error("read", path);
    }
    if (!S_ISREG(status.st_mode)) {
        return tl::unexpected(Error{"cannot read " + path + ": not a regular file"});
    }
    std::string content(static_cast<size_t>(status.st_size) + 1, '\0');
    size_t length = 0;
    for (;;) {
        const ssize_t got = uninterrupted([&] { return read(fd, content.data() + length, content.size() - length); });
        if (got < 0) {
            return system_error("read", path);
        }
        length += static_cast<size_t>(got);
        if (got == 0) {
            content.resize(length);
            return content;
        }
        if (length == content.size()) {
            content.resize(2 * content.size());
        }
    }
}

Expected<void> require_directory(const std::string &directory)
{
    struct stat status = {};
    if (stat(directory.c_str(), &status)) {
        return system_error("use the store", directory);
    }
    if (!S_ISDIR(status.st_mode)) {
        return tl::unexpected(Error{"the store " + directory + " is not a directory"});
    }
    return {};
}

} // namespace

StoreFile::StoreFile(std::string directory, std::optional<StoreLock> lock)
    : directory_(std::move(directory)), path_(directory_ + "/native.xml"), lock_(std::move(lock))
{
}

Expected<StoreFile> StoreFile::open(const std::string &directory, Access access, const LockWait &wait)
{
    if (access == Access::write) {
        auto lock = StoreLock::take(directory, wait);
        if (!lock) {
            return tl::unexpected(lock.error());
        }
        return StoreFile(directory, std::move(*lock));
    }
    struct stat status = {};
    if (stat(directory.c_str(), &status) && errno == ENOENT) {
        return StoreFile(directory, std::nullopt);
    }
    if (auto usable = require_directory(directory); !usable) {
        return tl::unexpected(usable.error());
    }
    return StoreFile(directory, std::nullopt);
}

void StoreFile::keep_directory()
{
    if (lock_) {
        lock_->keep();
    }
}

Expected<std::optional<std::string>> StoreFile::load() const
{
    const Descriptor file(::open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file && errno == ENOENT) {
        return std::nullopt;
    }
    if (!file) {
        return system_error("read", path_);
    }
    return read_all(file.get(), path_);
}

Expected<void> StoreFile::save(std::string_view content) const
{
    const std::string temporary = path_ + ".tmp";
    // One that a crash left behind; the lock says that nobody is writing it.
    unlink(temporary.c_str());
    Descriptor file(::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, file_mode));
    if (!file) {
        return system_error("write", temporary);
    }
    if (!write_all(file.get(), content) || fsync(file.get()) || rename(temporary.c_str(), path_.c_str())) {
        auto error = system_error("write", path_);
        unlink(temporary.c_str());
        return error;
    }
    // The new file is in place; a directory that cannot be synced takes nothing of that back.
    const Descriptor directory(::open(directory_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (directory) {
        fsync(directory.get());
    }
    return {};
}

} // namespace router
