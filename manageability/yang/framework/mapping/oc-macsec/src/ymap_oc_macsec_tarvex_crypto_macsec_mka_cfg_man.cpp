// The reverse mappers of MKA policies: entries of policy-name become entries of OpenConfig's policy list, with their
// config leaves. State comes from the operational model.
#include <stdio.h>

#include "namespaces.h"
#include "reverse_mapping.h"
#include "text.h"
#include "ymap_oc_macsec.h"

using namespace oc_macsec;

#define NATIVE_POLICY "/macsec/policy-names/policy-name"
#define OC_POLICY "/macsec/mka/policies/policy"

OC_MACSEC_EXPORT rcode ymap_to_ocmacsec_policy_list_rev(MAPPER_PARAMETERS)
{
    static constexpr oc_list policies = {OC_POLICY, OC_POLICY "[name=%s]/", "name"};
    ENTER_MAPPER(ctx, node, out);
    if (tqm_map_is_request_delete(node) != 0) {
        const rcode rc = add_oc_list_entry(ctx, out, OC_POLICY, node);
        LEAVE_MAPPER(ctx, rc);
    }
    const char *name = nullptr;
    (void)tqm_map_get_node_info(ctx, NATIVE_POLICY, "name", &name);
    rcode rc = 0;
    if (name != nullptr && search_oc_list(ctx, out, policies, name) == 0) {
        rc = stitch_oc_list(ctx, out, policies, name);
    } else {
        rc = add_oc_list_entry(ctx, out, OC_POLICY, nullptr);
    }
    LEAVE_MAPPER(ctx, rc);
}

OC_MACSEC_EXPORT rcode
ymap_to_oc_macsec_tarvexcryptomacsecmkacfg_man_leaf_lvla_macsec_policyname_name(MAPPER_PARAMETERS)
{
    ENTER_MAPPER(ctx, node, out);
    rcode rc = add_oc_leaf(ctx, out, OC_POLICY "/name", node->value);
    if (!TQM_MAP_SKIP_CONFIG_LEAF(ctx)) {
        rc = add_oc_leaf(ctx, out, OC_POLICY "/config/name", node->value);
    }
    LEAVE_MAPPER(ctx, rc);
}

namespace
{

// A leaf that is added twice: as it came, where the request wants configuration, and then in OpenConfig's form, which
// is the one that stays.
struct two_step_leaf {
    const char *native_leaf;
    const char *oc_path;
};

rcode read_native(tqm_map_ctx ctx, const two_step_leaf &leaf, const rdl_tqm_datatree *node, rdl_tqm_datatree *out,
                  const char **value)
{
    (void)add_gated_oc_leaf(ctx, out, leaf.oc_path, node->value);
    return tqm_map_get_node_info(ctx, NATIVE_POLICY, leaf.native_leaf, value);
}

// A native leaf that is there, and empty, is a true boolean.
rcode map_presence_leaf(const two_step_leaf &leaf, MAPPER_PARAMETERS)
{
    const char *value = nullptr;
    const rcode rc = read_native(ctx, leaf, node, out, &value);
    if (rc == 0 && text_equals(value, "", 10)) {
        rdl_tqm_datatree *added = nullptr;
        (void)add_oc_leaf(ctx, out, leaf.oc_path, "true", &added);
    }
    return rc;
}

// A text outside the table is added once more as it came if the leaf `keeps_unknown` texts, and else without a value.
template <size_t count>
rcode map_table_leaf(const two_step_leaf &leaf, const value_pair (&table)[count], bool keeps_unknown, MAPPER_PARAMETERS)
{
    const char *value = nullptr;
    const rcode rc = read_native(ctx, leaf, node, out, &value);
    if (rc != 0 || value == nullptr) {
        return rc;
    }
    if (const char *const translated = translate(table, value, 32)) {
        rdl_tqm_datatree *added = nullptr;
        (void)add_oc_leaf(ctx, out, leaf.oc_path, translated, &added);
    } else {
        (void)add_oc_leaf(ctx, out, leaf.oc_path, keeps_unknown ? node->value : nullptr);
    }
    return rc;
}

} // namespace

OC_MACSEC_EXPORT rcode ymap_to_ocmacsec_delay_protection_rev(MAPPER_PARAMETERS)
{
    ENTER_MAPPER(ctx, node, out);
    const rcode rc = map_presence_leaf({"delay-protection", OC_POLICY "/config/delay-protection"}, ctx, node, out);
    LEAVE_MAPPER(ctx, rc);
}

OC_MACSEC_EXPORT rcode ymap_to_ocmacsec_include_icv_indicator_rev(MAPPER_PARAMETERS)
{
    ENTER_MAPPER(ctx, node, out);
    const rcode rc =
        map_presence_leaf({"include-icv-indicator", OC_POLICY "/config/include-icv-indicator"}, ctx, node, out);
    LEAVE_MAPPER(ctx, rc);
}

OC_MACSEC_EXPORT rcode ymap_to_ocmacsec_policy_confidentiality_offset_rev(MAPPER_PARAMETERS)
{
    static constexpr value_pair offsets[] = {
        {"conf-off-set-0", "0_BYTES"},
        {"conf-off-set-30", "30_BYTES"},
        {"conf-off-set-50", "50_BYTES"},
    };
    ENTER_MAPPER(ctx, node, out);
    const rcode rc =
        map_table_leaf({"conf-offset", OC_POLICY "/config/confidentiality-offset"}, offsets, false, ctx, node, out);
    LEAVE_MAPPER(ctx, rc);
}

OC_MACSEC_EXPORT rcode ymap_to_ocmacsec_policy_macsec_cipher_suite_rev(MAPPER_PARAMETERS)
{
    static constexpr value_pair suites[] = {
        {"gcm-aes-128", "GCM_AES_128"},
        {"gcm-aes-256", "GCM_AES_256"},
        {"gcm-aes-xpn-128", "GCM_AES_XPN_128"},
        {"gcm-aes-xpn-256", "GCM_AES_XPN_256"},
    };
    ENTER_MAPPER(ctx, node, out);
    const rcode rc =
        map_table_leaf({"cipher-suite", OC_POLICY "/config/macsec-cipher-suite"}, suites, true, ctx, node, out);
    LEAVE_MAPPER(ctx, rc);
}

// ---- SAK rekey interval: two native leaves, in minutes and in seconds, of one OpenConfig leaf ----------------------

namespace
{

constexpr xpath_list_type_t sak_rekey_rows[] = {
    {OC_POLICY "/config/sak-rekey-interval", OC_MACSEC_NS, value_of, 0, TQM_ADD_PLAIN, "NULL"},
    {"NULL", "NULL", value_of, 0, TQM_ADD_PLAIN, "None"},
};

rcode add_row(tqm_map_ctx ctx, rdl_tqm_datatree *out, const xpath_list_type_t &row, const char *value,
              const rdl_tqm_datatree *source)
{
    return tqm_map_datatree_add_path_flagged(ctx, out, row.path, row.ns, value, source, nullptr, 0, row.flags);
}

// Outside a read the text passes through, in minutes as in seconds.
rcode add_row_of_edit(tqm_map_ctx ctx, const rdl_tqm_datatree *node, rdl_tqm_datatree *out,
                      const xpath_list_type_t &row)
{
    if (row.enabled == 0) {
        return 0;
    }
    const char *const value = tqm_map_is_request_delete(node) != 0 ? nullptr : row.convert(node);
    return add_row(ctx, out, row, value, node);
}

} // namespace

OC_MACSEC_EXPORT rcode ymap_to_ocmacsec_policy_sak_rekey_interval_rev(tqm_map_ctx ctx, int, xpath_list_type_t *rows)
{
    ASSERT_CONTEXT(ctx, ROW_SELECTION_SIGNATURE);
    TQM_TRC(ctx, "Start");
    REJECT_NULL_ARGUMENTS(ctx, rows == nullptr);
    rows[0].enabled = 1;
    rows[1].enabled = 1;
    LEAVE_MAPPER(ctx, 0);
}

OC_MACSEC_EXPORT rcode
ymap_to_oc_macsec_tarvexcryptomacsecmkacfg_leaf_lvla_macsec_policyname_sakrekeyinterval(MAPPER_PARAMETERS)
{
    ENTER_MAPPER(ctx, node, out);
    xpath_list_type_t rows[2];
    copy_rows(rows, sak_rekey_rows);
    (void)ymap_to_ocmacsec_policy_sak_rekey_interval_rev(ctx, 0, rows);
    if (!TQM_MAP_IS_READ(ctx)) {
        const rcode rc = add_row_of_edit(ctx, node, out, rows[0]);
        LEAVE_MAPPER(ctx, rc);
    }
    char text[128] = {};
    (void)tqm_strcpy_s(__func__, text, sizeof text, node->value);
    const uint32_t seconds = static_cast<uint32_t>(number_of(text)) * 60u;
    clear_memory(text, sizeof text);
    (void)snprintf(text, sizeof text, "%u", seconds);
    const rcode rc = add_row(ctx, out, rows[0], text, nullptr);
    if (rc != 0) {
        TQM_TRC(ctx, "rc: %d, %s", static_cast<int>(rc), rcode_strerror(rc));
    }
    LEAVE_MAPPER(ctx, rc);
}

OC_MACSEC_EXPORT rcode
ymap_to_oc_macsec_tarvexcryptomacsecmkacfg_leaf_lvla_macsec_policyname_sakrekeyintervalsec(MAPPER_PARAMETERS)
{
    ENTER_MAPPER(ctx, node, out);
    xpath_list_type_t rows[2];
    copy_rows(rows, sak_rekey_rows);
    (void)ymap_to_ocmacsec_policy_sak_rekey_interval_rev(ctx, 0, rows);
    if (!TQM_MAP_IS_READ(ctx)) {
        const rcode rc = add_row_of_edit(ctx, node, out, rows[0]);
        LEAVE_MAPPER(ctx, rc);
    }
    const rcode rc = add_row(ctx, out, rows[0], node->value, nullptr);
    if (rc != 0) {
        TQM_TRC(ctx, "rc: %d, %s", static_cast<int>(rc), rcode_strerror(rc));
    }
    LEAVE_MAPPER(ctx, rc);
}
