// An object that a router's own build might add to the plug-in: definitions under generated names take their place.
#include "frame.h"

OC_MACSEC_EXPORT rcode ymap_ot_oc_macsec_openconfigmacsec_leaf_lvla_macsec_config_useupdatedethheader(MAPPER_PARAMETERS)
{
    return tqm_map_datatree_add_path(ctx, out, "/overridden/leaf", "ns", node->value, node, nullptr, 0);
}

OC_MACSEC_EXPORT rcode ymap_ot_oc_macsec_openconfigmacsec_lvla_macsec_mka_parse_augments(MAPPER_PARAMETERS)
{
    return tqm_map_datatree_add_path(ctx, out, "/overridden/hook", "ns", node->tag, node, nullptr, 0);
}
