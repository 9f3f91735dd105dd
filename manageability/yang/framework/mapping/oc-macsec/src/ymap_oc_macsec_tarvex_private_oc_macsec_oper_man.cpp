// The reverse mappers of the operational model's three enumerations. Their native texts are not those of the
// configuration models. A text outside the table, and a missing one, leaves the leaf out of the answer.
#include "reverse_mapping.h"
#include "text.h"

using namespace oc_macsec;

#define OC_POLICY_STATE "/macsec/mka/policies/policy/state"
#define OC_KEY_STATE "/macsec/mka/key-chains/key-chain/mka-keys/mka-key/state"

namespace
{

template <size_t count>
rcode add_translated(const value_pair (&table)[count], tqm_map_ctx ctx, const rdl_tqm_datatree *node,
                     rdl_tqm_datatree *out, const char *path)
{
    const char *const translated = translate(table, node->value, 32);
    return translated != nullptr ? add_oc_leaf(ctx, out, path, translated) : 0;
}

} // namespace

OC_MACSEC_EXPORT rcode ymap_to_ocmacsec_conf_offset_oper_rev(MAPPER_PARAMETERS)
{
    static constexpr value_pair offsets[] = {
        {"zero-bytes", "0_BYTES"},
        {"thirty-bytes", "30_BYTES"},
        {"fifty-bytes", "50_BYTES"},
    };
    ENTER_MAPPER(ctx, node, out);
    (void)add_translated(offsets, ctx, node, out, OC_POLICY_STATE "/confidentiality-offset");
    LEAVE_MAPPER(ctx, 0);
}

OC_MACSEC_EXPORT rcode ymap_to_ocmacsec_cipher_suite_oper_rev(MAPPER_PARAMETERS)
{
    static constexpr value_pair suites[] = {
        {"gcm-aes128", "GCM_AES_128"},
        {"gcm-aes256", "GCM_AES_256"},
        {"gcm-aes-xpn128", "GCM_AES_XPN_128"},
        {"gcm-aes-xpn256", "GCM_AES_XPN_256"},
    };
    ENTER_MAPPER(ctx, node, out);
    (void)add_translated(suites, ctx, node, out, OC_POLICY_STATE "/macsec-cipher-suite");
    LEAVE_MAPPER(ctx, 0);
}

OC_MACSEC_EXPORT rcode ymap_to_ocmacsec_kc_crypto_algo_rev(MAPPER_PARAMETERS)
{
    static constexpr value_pair algorithms[] = {
        {"aes128-cmac", "AES_128_CMAC"},
        {"aes256-cmac", "AES_256_CMAC"},
    };
    // The node function has tested the node.
    ENTER_MAPPER(ctx, out, out);
    const rcode rc =
        node != nullptr ? add_translated(algorithms, ctx, node, out, OC_KEY_STATE "/cryptographic-algorithm") : 0;
    LEAVE_MAPPER(ctx, rc);
}
