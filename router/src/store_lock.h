// A writer's hold on the directory of a store: the lock, and the directory itself where there was none. What lies in
// the directory beside the lock is another's business.
#pragma once

#include "descriptor.h"
#include "router/datastore.h"
#include "router/error.h"

#include <string>

namespace router
{

class StoreLock
{
public:
    /// Makes the directory (0700) if it is missing, and takes its lock. Fails with Fault::busy when `wait` ends
    /// before the writer who has it does; then, as after any failure, nothing is left of what this call made.
    static Expected<StoreLock> take(const std::string &directory, const LockWait &wait);

    StoreLock(StoreLock &&other) noexcept;
    StoreLock &operator=(StoreLock &&) = delete;
    /// Takes away a directory that take() made, unless keep() was called or somebody has put something into it.
    ~StoreLock();

    void keep() { made_directory_ = false; }

private:
    StoreLock(const std::string &directory, bool made_directory);

    std::string directory_;
    std::string path_; ///< of the lock
    Descriptor lock_;  ///< none until it is taken
    bool made_directory_;
};

} // namespace router
