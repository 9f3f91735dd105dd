// A loaded mapping plug-in: the library handle and the registration records that its entry points filled. Which library
// and which entry points is left to the caller.
#pragma once

#include <filesystem>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "tqm/error.h"
#include "tqm/export.h"
#include "tqm_map.h"

namespace tqm
{

/// Copies share the library, which is closed with the last of them. Only read once it is there, by any number of
/// threads; its functions are not, and run one walk at a time (Framework).
class TQM_EXPORT Plugin
{
public:
    /// Loads `library` and calls each of `entry_points` once with a zeroed record. An entry point that leaves its
    /// record empty registers nothing. Fails if the library cannot be loaded, an entry point is missing, or a record is
    /// only half filled. The calling program must export the framework's operations (link libtqm.so).
    static Expected<Plugin> load(const std::filesystem::path &library, std::span<const char *const> entry_points);

    /// A plug-in without a library behind it: its functions must outlive it.
    explicit Plugin(std::vector<tqm_map_reg_info> registrations) : registrations_(std::move(registrations)) {}

    /// In the order of the entry points; empty when the plug-in did not find what it needs on this system.
    std::span<const tqm_map_reg_info> registrations() const { return registrations_; }

    /// Address of an exported symbol of the library, null if there is none.
    void *symbol(const char *name) const;

private:
    Plugin() = default;

    std::shared_ptr<void> handle_;
    std::vector<tqm_map_reg_info> registrations_;
};

} // namespace tqm
