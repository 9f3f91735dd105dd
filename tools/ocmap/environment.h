// What every command needs around it: the plug-in, the models and the schema that the framework takes from them. Where
// they lie follows from where the program lies, so that a build tree and an installation both work without a setting.
#pragma once

#include <filesystem>
#include <string>

#include "router/models.h"
#include "router/setup.h"
#include "tqm/error.h"
#include "tqm/plugin.h"
#include "tqm/schema.h"

namespace ocmap
{

struct Locations {
    std::filesystem::path plugin; ///< libymap_oc_macsec.so
    std::filesystem::path yang;   ///< directory of the six modules
};

/// Where the files of the build tree or installation that the running program belongs to are.
Locations default_locations();

/// What the framework is to know of the models: their nodes, and what the mapping says of some of them.
tqm::Schema schema_of(const router::Models &models);

class Environment
{
public:
    /// Loads models and plug-in. Fails if a file cannot be loaded, and if the plug-in registers nothing because
    /// /pkg/yang/openconfig-macsec.yang is missing; the text says what installs it.
    static tqm::Expected<Environment> load(const Locations &locations);

    const tqm::Plugin &plugin() const { return plugin_; }
    const tqm::Schema &schema() const { return schema_; }
    const router::Models &models() const { return native_.models(); }
    /// What the router's datastores are opened with.
    const router::Setup &native() const { return native_; }

private:
    Environment(router::Setup native, tqm::Plugin plugin);

    router::Setup native_;
    tqm::Plugin plugin_;
    tqm::Schema schema_;
};

} // namespace ocmap
