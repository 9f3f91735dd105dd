// One layer's record of a node made into the other's.
#include "model_schema.h"

#include <string>
#include <utility>

namespace ocmap
{
namespace
{

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

// Key chains of MACsec, and interfaces in use that have one. An edit may take an interface into MACsec; a key chain of
// another protocol is none of its business.
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
    if (tqm::SchemaNode *const duration = schema.find(lifetime + "life-time")) {
        for (const char *part : {"year", "month", "date", "hour", "minutes", "seconds"}) {
            duration->companions.push_back(lifetime + "start-" + part);
        }
    }
    return schema;
}

} // namespace ocmap
