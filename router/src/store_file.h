// The one file of a store. Bytes in, bytes out; what they say is another's business.
#pragma once

#include "router/datastore.h"
#include "router/error.h"
#include "store_lock.h"

#include <optional>
#include <string>
#include <string_view>

namespace router
{

class StoreFile
{
public:
    /// For Access::write makes the directory if it is missing and takes its lock.
    static Expected<StoreFile> open(const std::string &directory, Access access, const LockWait &wait);

    /// A directory that open() made stays.
    void keep_directory();

    const std::string &path() const { return path_; }

    /// All of the file, or nothing if there is none.
    Expected<std::optional<std::string>> load() const;

    /// Puts `content` in the file's place, so that after a crash there is the old one or the new one. Mode 0600.
    Expected<void> save(std::string_view content) const;

private:
    StoreFile(std::string directory, std::optional<StoreLock> lock);

    std::string directory_;
    std::string path_;
    std::optional<StoreLock> lock_; ///< none for a reader
};

} // namespace router
