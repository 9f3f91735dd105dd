// What every command needs around it: the plug-in, the schema that the framework is told of, and, for those that check
// or keep data, the models. Where they lie follows from where the program lies, so that a build tree and an
// installation both work without a setting.
#pragma once

#include <filesystem>
#include <optional>

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
    bool yang_is_own = false;     ///< which are those that the program was built with
};

/// Where the files of the build tree or installation that the running program belongs to are.
Locations default_locations();

/// What a command asks of the models.
enum class Needs {
    schema, ///< names, kinds and types of their nodes
    data,   ///< libyang with the modules, too, which keeps native data
    checks  ///< the client's model with its deviations, too, by which edits are judged
};

class Environment
{
public:
    /// Loads models and plug-in. The schema of the program's own modules is a part of it, and no file is read for it;
    /// the client's model is left to those who judge edits. Fails if a file cannot be loaded, and if the plug-in
    /// registers nothing because /pkg/yang/openconfig-macsec.yang is missing; the text says what installs it.
    static tqm::Expected<Environment> load(const Locations &locations, Needs needs = Needs::data);

    const tqm::Plugin &plugin() const { return plugin_; }
    const tqm::Schema &schema() const { return schema_; }
    /// Only where data were asked for, as what the router's datastores are opened with.
    const router::Models &models() const { return native().models(); }
    const router::Setup &native() const { return native_.value(); }

private:
    Environment(std::optional<router::Setup> native, tqm::Plugin plugin);

    std::optional<router::Setup> native_;
    tqm::Plugin plugin_;
    tqm::Schema schema_;
};

} // namespace ocmap
