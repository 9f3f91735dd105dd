#include "tqm/plugin.h"

#include <cerrno>
#include <cstring>
#include <new>
#include <string>

#include <dlfcn.h>

namespace tqm
{

namespace
{

bool is_empty(const tqm_map_reg_info &registration)
{
    return registration.tree_name[0] == '\0' && registration.native_ns[0] == '\0' && registration.oc_ns[0] == '\0' &&
           registration.native_top[0] == '\0' && registration.oc_top[0] == '\0' &&
           registration.forward_root == nullptr && registration.reverse_root == nullptr;
}

bool is_terminated(const char (&text)[TQM_REG_TEXT_SIZE])
{
    return text[0] != '\0' && strnlen(text, sizeof text) < sizeof text;
}

bool is_whole(const tqm_map_reg_info &registration)
{
    return is_terminated(registration.native_ns) && is_terminated(registration.oc_ns) &&
           is_terminated(registration.native_top) && is_terminated(registration.oc_top) &&
           registration.forward_root != nullptr && registration.reverse_root != nullptr;
}

} // namespace

Expected<Plugin> Plugin::load(const std::filesystem::path &library, std::span<const char *const> entry_points)
{
    errno = 0;
    void *handle = dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr && errno == ENOMEM) {
        throw std::bad_alloc();
    }
    if (handle == nullptr) {
        return tl::unexpected(Error{"cannot load the plug-in: " + std::string(dlerror())});
    }
    Plugin plugin;
    plugin.handle_ = {handle, [](void *opened) { dlclose(opened); }};
    for (const char *name : entry_points) {
        const auto entry = reinterpret_cast<void (*)(tqm_map_reg_info *)>(plugin.symbol(name));
        if (entry == nullptr) {
            return tl::unexpected(Error{"the plug-in " + library.string() + " has no entry point '" + name + "'"});
        }
        tqm_map_reg_info registration{};
        entry(&registration);
        if (is_empty(registration)) {
            continue;
        }
        if (!is_whole(registration)) {
            return tl::unexpected(Error{std::string("the entry point '") + name + "' of the plug-in " +
                                        library.string() + " left its registration half filled"});
        }
        plugin.registrations_.push_back(registration);
    }
    return plugin;
}

void *Plugin::symbol(const char *name) const
{
    return handle_ == nullptr ? nullptr : dlsym(handle_.get(), name);
}

} // namespace tqm
