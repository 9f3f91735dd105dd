// Finding and loading what the commands work with.
#include "environment.h"

#include <array>
#include <system_error>
#include <utility>
#include <vector>

#include "native_store.h"
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

tqm::JsonType json_type(router::ValueForm form)
{
    switch (form) {
    case router::ValueForm::number:
        return tqm::JsonType::number;
    case router::ValueForm::boolean:
        return tqm::JsonType::boolean;
    case router::ValueForm::empty:
        return tqm::JsonType::empty;
    }
    return tqm::JsonType::text;
}

} // namespace

Locations default_locations()
{
    std::error_code error;
    const std::filesystem::path bin = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
    const char *const plugin = "libymap_oc_macsec.so";
    if (std::filesystem::exists(bin / plugin, error)) { // a build tree, inside the sources
        return {bin / plugin, bin.parent_path() / "yang"};
    }
    return {(bin / INSTALLED_LIBRARIES / plugin).lexically_normal(), (bin / INSTALLED_MODELS).lexically_normal()};
}

Environment::Environment(router::Setup native, tqm::Plugin plugin)
    : native_(std::move(native)), plugin_(std::move(plugin))
{
    for (router::ListInfo &list : models().lists()) {
        schema_.add_list(std::move(list.path), std::move(list.keys));
    }
    for (router::ListInfo &leaf_list : models().leaf_lists()) {
        schema_.add_leaf_list(std::move(leaf_list.path));
    }
    for (router::ModuleInfo &module : models().modules()) {
        for (router::NodeInfo &node : models().nodes(module.ns.c_str())) {
            add_node(std::move(node));
        }
        schema_.add_module(std::move(module.name), std::move(module.ns), std::move(module.prefix));
    }
    for (const router::Visibility &list : visible_lists()) {
        schema_.add_marker(list.list, list.list + "/" + list.marker);
    }
    // An end that is kept as a duration is told from the start.
    const std::string lifetime = "/keychains/keychain/macsec-keychain/macsec-keys/macsec-key/macsec-lifetime/";
    for (const char *part : {"year", "month", "date", "hour", "minutes", "seconds"}) {
        schema_.add_companion(lifetime + "life-time", lifetime + "start-" + part);
    }
    for (router::LeafForm &leaf : models().leaf_forms()) {
        schema_.add_json_type(std::move(leaf.path), json_type(leaf.form));
    }
    for (std::string &path : models().leaves()) {
        schema_.add_leaf(std::move(path));
    }
    for (std::string &path : models().secrets()) {
        schema_.add_secret(std::move(path));
    }
    for (std::string &path : models().containers()) {
        schema_.add_container(std::move(path));
    }
}

void Environment::add_node(router::NodeInfo node)
{
    schema_.add_ns(node.path, node.ns);
    if (node.unspaced) {
        schema_.add_unspaced(node.path);
    }
    if (!node.config) {
        schema_.add_state(std::move(node.path));
    }
}

tqm::Expected<Environment> Environment::load(const Locations &locations)
{
    auto models = router::Models::load(locations.yang.string());
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
