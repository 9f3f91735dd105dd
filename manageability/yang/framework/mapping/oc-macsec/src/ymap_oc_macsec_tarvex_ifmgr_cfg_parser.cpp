// The walkers of Tarvex-ifmgr-cfg (interfaces), children before their parents. The hook of the interface list, which
// lets the MACsec module's children in, stands in the _man file.
#define REVERSE_MODULE tarvexifmgrcfg
#define REVERSE_HOOK DEFAULT_HOOK
#include "reverse_tables.h"

static constexpr oc_macsec::reverse_module module = {IFMGR_CFG_NS, false};

// The tables keep one child a line.
// clang-format off

CONTAINER (lvla_interfaceconfigurations_interfaceconfiguration_dampening)
LIST      (lvla_interfaceconfigurations_mtus_mtu, "/interface-configurations/interface-configuration/mtus/mtu", KEYS("owner"))
CONTAINER (lvla_interfaceconfigurations_interfaceconfiguration_mtus,
           LIST_CHILD("mtu", lvla_interfaceconfigurations_mtus_mtu))
CONTAINER (lvla_interfaceconfigurations_interfaceconfiguration_encapsulation)
LEAF      (lvla_interfaceconfigurations_interfaceconfiguration_interfacename)
LIST      (lvla_interfaceconfigurations_interfaceconfiguration, "/interface-configurations/interface-configuration", KEYS("active", "interface-name"),
           CHILD    ("dampening",      lvla_interfaceconfigurations_interfaceconfiguration_dampening),
           CHILD    ("mtus",           lvla_interfaceconfigurations_interfaceconfiguration_mtus),
           CHILD    ("encapsulation",  lvla_interfaceconfigurations_interfaceconfiguration_encapsulation),
           KEY_CHILD("interface-name", lvla_interfaceconfigurations_interfaceconfiguration_interfacename))
CONTAINER (lvla_interfaceconfigurations,
           LIST_CHILD("interface-configuration", lvla_interfaceconfigurations_interfaceconfiguration))
CONTAINER (lvla_globalinterfaceconfiguration)
