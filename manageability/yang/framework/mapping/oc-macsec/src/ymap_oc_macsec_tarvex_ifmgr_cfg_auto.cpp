// The node functions of Tarvex-ifmgr-cfg. A node without a mapping is another name of the module's default function.
#define REVERSE_MODULE tarvexifmgrcfg
#define REVERSE_NODE_LINES start_and_end
#define REVERSE_LEAF_BY_LINES start_and_end
#include "reverse_tables.h"

// The tables keep one node a line.
// clang-format off

DUCK_MAP_FUNCTIONS

// ---- interface-configurations/interface-configuration ---------------------------------------------------------------
EMPTY_CONTAINER (lvla_interfaceconfigurations)
LIST_BY         (lvla_interfaceconfigurations_interfaceconfiguration,               ymap_to_ocmacsec_interfaces_list_rev)
DUCK_LEAF       (lvla_interfaceconfigurations_interfaceconfiguration_active)
LEAF_BY         (lvla_interfaceconfigurations_interfaceconfiguration_interfacename, ymap_to_oc_macsec_tarvexifmgrcfg_man_leaf_lvla_interfaceconfigurations_interfaceconfiguration_interfacename)
DUCK_LEAF       (lvla_interfaceconfigurations_interfaceconfiguration_description)
DUCK_LEAF       (lvla_interfaceconfigurations_interfaceconfiguration_bandwidth)
DUCK_LEAF       (lvla_interfaceconfigurations_interfaceconfiguration_shutdown)
DUCK_LEAF       (lvla_interfaceconfigurations_interfaceconfiguration_linkstatus)
DUCK_LEAF       (lvla_interfaceconfigurations_interfaceconfiguration_secondaryadminstate)
DUCK_LEAF       (lvla_interfaceconfigurations_interfaceconfiguration_interfacevirtual)
DUCK_LEAF       (lvla_interfaceconfigurations_interfaceconfiguration_interfacemodenonphysical)
DUCK_CONTAINER  (lvla_interfaceconfigurations_interfaceconfiguration_dampening)
DUCK_LEAF       (lvla_interfaceconfigurations_dampening_args)
DUCK_LEAF       (lvla_interfaceconfigurations_dampening_halflife)
DUCK_LEAF       (lvla_interfaceconfigurations_dampening_restartpenalty)
DUCK_LEAF       (lvla_interfaceconfigurations_dampening_reusethreshold)
DUCK_LEAF       (lvla_interfaceconfigurations_dampening_suppressthreshold)
DUCK_LEAF       (lvla_interfaceconfigurations_dampening_suppresstime)
DUCK_CONTAINER  (lvla_interfaceconfigurations_interfaceconfiguration_mtus)
DUCK_LIST       (lvla_interfaceconfigurations_mtus_mtu)
DUCK_LEAF       (lvla_interfaceconfigurations_mtu_owner)
DUCK_LEAF       (lvla_interfaceconfigurations_mtu_mtu)
DUCK_CONTAINER  (lvla_interfaceconfigurations_interfaceconfiguration_encapsulation)
DUCK_LEAF       (lvla_interfaceconfigurations_encapsulation_encapsulation)
DUCK_LEAF       (lvla_interfaceconfigurations_encapsulation_capsulationoptions)

// ---- global-interface-configuration ---------------------------------------------------------------------------------
DUCK_CONTAINER (lvla_globalinterfaceconfiguration)
DUCK_LEAF      (lvla_globalinterfaceconfiguration_linkstatus)
