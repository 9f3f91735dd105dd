// Finding and loading what the commands work with.
#include "environment.h"

#include <array>
#include <system_error>
#include <utility>
#include <vector>

#include "model_schema.h"
#include "native_store.h"
#include "openconfig.h"
#include "schema_table.h"
#include "simulation/derive_state.h"

namespace ocmap
{
namespace
{

constexpr std::array entry_points = {"tqm_map_reg_ocmacsec_conf", "tqm_map_reg_ocmacsec_conf_libkeychain",
                                     "tqm_map_reg_ocmacsec_ifmgr", "tqm_map_reg_ocmacsec_private_oper"};

} // namespace

Locations default_locations()
{
    std::error_code error;
    const std::filesystem::path bin = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
    const char *const plugin = "libymap_oc_macsec.so";
    if (std::filesystem::exists(bin / plugin, error)) { // a build tree, with a link to the sources' models
        return {bin / plugin, bin / "yang", true};
    }
    return {(bin / INSTALLED_LIBRARIES / plugin).lexically_normal(), (bin / INSTALLED_MODELS).lexically_normal(), true};
}

Environment::Environment(std::optional<router::Setup> native, tqm::Plugin plugin)
    : native_(std::move(native)), plugin_(std::move(plugin)),
      schema_(native_ ? schema_of(native_->models()) : built_in_schema())
{
}

tqm::Expected<Environment> Environment::load(const Locations &locations, Needs needs)
{
    std::optional<router::Models> models;
    if (needs != Needs::schema || !locations.yang_is_own) {
        auto loaded = load_models(locations.yang.string());
        if (!loaded) {
            return tl::unexpected(from_router(loaded.error()));
        }
        models = std::move(*loaded);
    }
    auto plugin = tqm::Plugin::load(locations.plugin, entry_points);
    if (!plugin) {
        return tl::unexpected(plugin.error());
    }
    if (plugin->registrations().empty()) {
        return tl::unexpected(tqm::Error{"the plug-in has registered nothing: /pkg/yang/openconfig-macsec.yang is "
                                         "missing; 'sudo make model' installs it"});
    }
    if (!models) {
        return Environment(std::nullopt, std::move(*plugin));
    }
    auto native = router::Setup::make(std::move(*models), visible_lists(), simulation::derive_state);
    if (!native) {
        return tl::unexpected(from_router(native.error()));
    }
    return Environment(std::move(*native), std::move(*plugin));
}

} // namespace ocmap
