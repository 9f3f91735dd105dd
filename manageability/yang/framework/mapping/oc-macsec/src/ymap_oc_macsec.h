// What the plug-in exports beside its mappers and walkers, whose signatures are the families of tqm_map.h.
#pragma once

#include "tqm_map.h"

extern "C" {

// The entry points by which a framework finds the plug-in, one for each native tree. Each fills `info`, which stays the
// framework's; without /pkg/yang/openconfig-macsec.yang it leaves the record as it was.
void tqm_map_reg_ocmacsec_conf(tqm_map_reg_info *info);
void tqm_map_reg_ocmacsec_conf_libkeychain(tqm_map_reg_info *info);
void tqm_map_reg_ocmacsec_ifmgr(tqm_map_reg_info *info);
void tqm_map_reg_ocmacsec_private_oper(tqm_map_reg_info *info);

// Row selection functions: set `enabled` in a table of two rows, by the kind of the request. `direction` plays no part.
rcode ymap_ot_ocmacsec_policy_sak_rekey_interval_fwd(tqm_map_ctx ctx, int direction, xpath_list_type_t *rows);
rcode ymap_to_ocmacsec_policy_sak_rekey_interval_rev(tqm_map_ctx ctx, int direction, xpath_list_type_t *rows);

// "jan" gives 1, "dec" 12, anything else 0.
unsigned int convert_month_to_number(const char *month);

// The key chain that a read is mapping. The only data of the plug-in that outlives a call: a list entry and its name
// leaf are mapped by two functions, and the second must know whether the first took the entry in.
struct macsec_kc_record {
    char kc_name[50];  // bounded copy of the chain's name
    int32_t kc_active; // 1 from the entry of a MACsec chain to its chain-name leaf
};
extern macsec_kc_record macsec_kc;
}
