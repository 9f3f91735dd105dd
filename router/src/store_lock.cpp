// The lock is a file of its own, since the data file is a new one after each save. Whoever holds it may take it away
// with its directory; so a lock counts only while its file is the one that the path names, which its holder alone
// changes.
#include "store_lock.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <dirent.h>
#include <fcntl.h>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>

namespace router
{

namespace
{

constexpr mode_t directory_mode = 0700;
constexpr mode_t file_mode = 0600;
constexpr std::string_view lock_name = "native.lock";

// A holder leaves its process id in the file.
std::string holder_of(int fd)
{
    std::array<char, 16> text = {};
    const ssize_t length = uninterrupted([&] { return pread(fd, text.data(), text.size(), 0); });
    pid_t holder = 0;
    const char *const end = text.data() + std::max<ssize_t>(length, 0);
    const auto read = std::from_chars(text.data(), end, holder);
    const bool known = read.ec == std::errc() && holder > 0;
    return known ? "process " + std::to_string(holder) : "another process";
}

// How far one writer's wait has come, over all files that it waits on.
class Patience
{
public:
    explicit Patience(const LockWait &wait) : wait_(wait) {}

    // Sleeps for a while, and says so when that has gone on for long; false when there is no time left.
    bool wait_for_holder_of(int fd)
    {
        using namespace std::chrono_literals;
        const auto waited = Clock::now() - start_;
        if (wait_.limit && waited >= *wait_.limit) {
            return false;
        }
        if (!told_ && waited >= 1s && wait_.notice) {
            told_ = true;
            wait_.notice(holder_of(fd));
        }
        Clock::duration nap = std::clamp<Clock::duration>(waited / 8, 1ms, 50ms);
        if (wait_.limit) {
            nap = std::min<Clock::duration>(nap, *wait_.limit - waited);
        }
        std::this_thread::sleep_for(nap);
        return true;
    }

private:
    using Clock = std::chrono::steady_clock;

    const LockWait &wait_;
    Clock::time_point start_ = Clock::now();
    bool told_ = false;
};

// Waits for the lock of the open file.
Expected<void> lock(int fd, const std::string &path, Patience &patience)
{
    while (uninterrupted([&] { return flock(fd, LOCK_EX | LOCK_NB); })) {
        if (errno != EWOULDBLOCK) {
            return system_error("lock the store with", path);
        }
        if (!patience.wait_for_holder_of(fd)) {
            const std::string directory = path.substr(0, path.size() - lock_name.size() - 1);
            return tl::unexpected(
                Error{"the store " + directory + " is in use: " + holder_of(fd) + " is editing it", "", Fault::busy});
        }
    }
    return {};
}

// The lock's file was opened at this path, and may have been taken away since.
bool is_still_at(const std::string &path, int fd)
{
    struct stat opened = {};
    struct stat named = {};
    return fstat(fd, &opened) == 0 && lstat(path.c_str(), &named) == 0 && opened.st_dev == named.st_dev &&
           opened.st_ino == named.st_ino;
}

bool is_symbolic_link(const std::string &path)
{
    struct stat status = {};
    return lstat(path.c_str(), &status) == 0 && S_ISLNK(status.st_mode);
}

// For those who wait. Without it they do not learn who it is, which is no reason to fail.
void leave_process_id(int fd)
{
    if (ftruncate(fd, 0) == 0) {
        write_all(fd, std::to_string(getpid()));
    }
}

// False also where that cannot be seen.
bool holds_nothing_but_the_lock(const char *directory) noexcept
{
    DIR *const entries = opendir(directory);
    if (!entries) {
        return false;
    }
    bool nothing_else = true;
    errno = 0;
    while (const dirent *entry = readdir(entries)) {
        const std::string_view name = entry->d_name;
        nothing_else = nothing_else && (name == "." || name == ".." || name == lock_name);
    }
    nothing_else = nothing_else && errno == 0;
    closedir(entries);
    return nothing_else;
}

} // namespace

Expected<StoreLock> StoreLock::take(const std::string &directory, const LockWait &wait)
{
    Patience patience(wait);
    for (;;) {
        const bool made = mkdir(directory.c_str(), directory_mode) == 0;
        if (!made && errno != EEXIST) {
            return system_error("make the store", directory);
        }
        // From here on it takes away what was made, with the lock only when that is ours.
        StoreLock taken(directory, made);
        const std::string &path = taken.path_;
        Descriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, file_mode));
        if (!file) {
            if (errno == ENOENT && !is_symbolic_link(directory)) {
                continue; // the directory has gone with another's refused edit
            }
            return errno == ENOTDIR ? tl::unexpected(Error{"the store " + directory + " is not a directory"})
                                    : system_error("lock the store with", path);
        }
        if (auto locked = lock(file.get(), path, patience); !locked) {
            return tl::unexpected(locked.error());
        }
        if (is_still_at(path, file.get())) {
            leave_process_id(file.get());
            taken.lock_ = std::move(file);
            return taken;
        }
    }
}

StoreLock::StoreLock(const std::string &directory, bool made_directory)
    : directory_(directory), path_(directory + "/" + std::string(lock_name)), made_directory_(made_directory)
{
}

StoreLock::StoreLock(StoreLock &&other) noexcept
    : directory_(std::move(other.directory_)), path_(std::move(other.path_)), lock_(std::move(other.lock_)),
      made_directory_(std::exchange(other.made_directory_, false))
{
}

StoreLock::~StoreLock()
{
    if (!made_directory_) {
        return;
    }
    // Another who opened the lock's file in the meantime will see that it is gone and begin anew. One who makes a new
    // file keeps the directory from going.
    if (lock_ && holds_nothing_but_the_lock(directory_.c_str())) {
        unlink(path_.c_str());
    }
    rmdir(directory_.c_str());
}

} // namespace router
