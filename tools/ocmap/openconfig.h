// The model that clients speak: its names, which the layers below are told and do not know.
#pragma once

#include <string>

#include "router/client_model.h"
#include "router/models.h"

namespace ocmap
{

inline constexpr const char *openconfig_ns = "http://openconfig.net/yang/macsec";
inline constexpr const char *openconfig_module = "openconfig-macsec";
inline constexpr const char *deviations_module = "tarvex-openconfig-macsec-deviations";

/// All six models. Fails as router::Models::load does.
inline router::Expected<router::Models> load_models(const std::string &yang_directory)
{
    return router::Models::load(yang_directory, {openconfig_module});
}

/// The client's model with this router's deviations. Fails as router::ClientModel::load does.
inline router::Expected<router::ClientModel> load_client_model(const router::Models &models,
                                                               const std::string &yang_directory)
{
    return router::ClientModel::load(models, yang_directory, openconfig_module, deviations_module);
}

} // namespace ocmap
