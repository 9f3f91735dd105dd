// Finding and loading what the commands work with.
#include "environment.h"

#include <array>
#include <system_error>
#include <utility>
#include <vector>

#include "native_store.h"
#include "openconfig.h"
#include "simulation/derive_state.h"

namespace ocmap
{
namespace
{

constexpr std::array entry_points = {"tqm_map_reg_ocmacsec_conf", "tqm_map_reg_ocmacsec_conf_libkeychain",
                                     "tqm_map_reg_ocmacsec_ifmgr", "tqm_map_reg_ocmacsec_private_oper"};

// What OpenConfig sees of the router's lists: key chains of MACsec, and interfaces in use that have one. An edit may
// take an interface into MACsec; a key chain of another protocol is none of its business.
std::vector<router::Visibility> visible_lists()
{
    return {{.ns = router::ns::keychains,
             .list = "/keychains/keychain",
             .marker = "macsec-keychain",
             .keys = {},
             .refusal = "the key chain belongs to the router, and is not one of MACsec"},
            {.ns = router::ns::interfaces,
             .list = "/interface-configurations/interface-configuration",
             .marker = "macsec/psk-key-chain",
             .keys = {{"active", "act"}},
             .refusal = ""}};
}

tqm::NodeKind kind_of(router::NodeKind kind)
{
    switch (kind) {
    case router::NodeKind::container:
        return tqm::NodeKind::container;
    case router::NodeKind::list:
        return tqm::NodeKind::list;
    case router::NodeKind::leaf:
        return tqm::NodeKind::leaf;
    case router::NodeKind::leaf_list:
        return tqm::NodeKind::leaf_list;
    }
    return tqm::NodeKind::unknown;
}

tqm::ValueForm form_of(router::ValueForm form)
{
    switch (form) {
    case router::ValueForm::number:
        return tqm::ValueForm::number;
    case router::ValueForm::boolean:
        return tqm::ValueForm::boolean;
    case router::ValueForm::empty:
        return tqm::ValueForm::empty;
    case router::ValueForm::text:
        break;
    }
    return tqm::ValueForm::text;
}

} // namespace

Locations default_locations()
{
    std::error_code error;
    const std::filesystem::path bin = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
    const char *const plugin = "libymap_oc_macsec.so";
    if (std::filesystem::exists(bin / plugin, error)) { // a build tree, with a link to the sources' models
        return {bin / plugin, bin / "yang"};
    }
    return {(bin / INSTALLED_LIBRARIES / plugin).lexically_normal(), (bin / INSTALLED_MODELS).lexically_normal()};
}

tqm::Schema schema_of(const router::Models &models)
{
    tqm::Schema schema;
    for (router::ModuleInfo &module : models.modules()) {
        schema.add_module({std::move(module.name), std::move(module.ns), std::move(module.prefix)});
    }
    for (router::SchemaNode &node : models.nodes()) {
        schema.add({.path = std::move(node.path),
                    .ns = std::move(node.ns),
                    .kind = kind_of(node.kind),
                    .keys = std::move(node.keys),
                    .form = form_of(node.form),
                    .config = node.config,
                    .unspaced = node.unspaced,
                    .secret = node.secret,
                    .leafref = std::move(node.leafref)});
    }
    for (const router::Visibility &list : visible_lists()) {
        schema.find(list.list)->marker = list.list + "/" + list.marker;
    }
    // An end that is kept as a duration is told from the start.
    const std::string lifetime = "/keychains/keychain/macsec-keychain/macsec-keys/macsec-key/macsec-lifetime/";
    for (const char *part : {"year", "month", "date", "hour", "minutes", "seconds"}) {
        schema.find(lifetime + "life-time")->companions.push_back(lifetime + "start-" + part);
    }
    return schema;
}

Environment::Environment(router::Setup native, tqm::Plugin plugin)
    : native_(std::move(native)), plugin_(std::move(plugin)), schema_(schema_of(models()))
{
}

tqm::Expected<Environment> Environment::load(const Locations &locations)
{
    auto models = load_models(locations.yang.string());
    if (!models) {
        return tl::unexpected(from_router(models.error()));
    }
    auto plugin = tqm::Plugin::load(locations.plugin, entry_points);
    if (!plugin) {
        return tl::unexpected(plugin.error());
    }
    if (plugin->registrations().empty()) {
        return tl::unexpected(tqm::Error{"the plug-in has registered nothing: /pkg/yang/openconfig-macsec.yang is "
                                         "missing; 'sudo make model' installs it"});
    }
    auto native = router::Setup::make(std::move(*models), visible_lists(), simulation::derive_state);
    if (!native) {
        return tl::unexpected(from_router(native.error()));
    }
    return Environment(std::move(*native), std::move(*plugin));
}

} // namespace ocmap
