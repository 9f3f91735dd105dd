// The namespaces of the six modules. The native ones are the vendor's prefix, "/ns/yang/" and the module's name.
#pragma once

#define OC_MACSEC_NS "http://openconfig.net/yang/macsec"

#define OC_MACSEC_VENDOR_NS(module) "http://tarvex.example/ns/yang/" module
#define MKA_CFG_NS OC_MACSEC_VENDOR_NS("Tarvex-crypto-macsec-mka-cfg")
#define MKA_IF_CFG_NS OC_MACSEC_VENDOR_NS("Tarvex-crypto-macsec-mka-if-cfg")
#define IFMGR_CFG_NS OC_MACSEC_VENDOR_NS("Tarvex-ifmgr-cfg")
#define KEYCHAIN_CFG_NS OC_MACSEC_VENDOR_NS("Tarvex-lib-keychain-cfg")
#define OPER_NS OC_MACSEC_VENDOR_NS("Tarvex-PRIVATE-oc-macsec-oper")
