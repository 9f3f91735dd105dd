// The forward mappers: what an OpenConfig node becomes on the native side, where more than a plain copy is needed. Each
// sorts a call into read, delete (the node's own operation) or edit; the result is that of its last add.
#include <stdio.h>
#include <stdlib.h>
#include <strings.h>
#include <sys/time.h>

#include "date_time.h"
#include "frame.h"
#include "namespaces.h"
#include "text.h"
#include "ymap_oc_macsec.h"

using namespace oc_macsec;

namespace
{

// What an add carries besides its path.
struct add {
    const char *value = nullptr;
    const rdl_tqm_datatree *source = nullptr;
    uint32_t list_entry = 0;
    uint32_t flags = TQM_ADD_PLAIN;
};

rcode add_flagged(tqm_map_ctx ctx, rdl_tqm_datatree *out, const char *path, const char *ns, const add &what)
{
    return tqm_map_datatree_add_path_flagged(ctx, out, path, ns, what.value, what.source, nullptr, what.list_entry,
                                             what.flags);
}

rcode add_plain(tqm_map_ctx ctx, rdl_tqm_datatree *out, const char *path, const char *ns, const char *value,
                const rdl_tqm_datatree *source)
{
    return tqm_map_datatree_add_path(ctx, out, path, ns, value, source, nullptr, 0);
}

// The entry of a list in a read: once for the configuration, where it is wanted, and once more in a read of state.
rcode read_list_entry(tqm_map_ctx ctx, const rdl_tqm_datatree *node, rdl_tqm_datatree *out, const char *path,
                      const char *ns)
{
    rcode rc = 0;
    if (!TQM_MAP_SKIP_CONFIG_LEAF(ctx)) {
        rc = add_flagged(ctx, out, path, ns, {.list_entry = 1});
    }
    if (TQM_MAP_KIND(ctx) == TQM_REQ_GET) {
        rc = add_flagged(ctx, out, path, ns, {.value = node->value, .list_entry = 1});
    }
    return rc;
}

// Whether the request creates the entry that every router has of its own.
bool creates_default(const rdl_tqm_datatree *node, const char *name)
{
    return node->operation == TQM_OP_CREATE && name != nullptr && strcasecmp(name, "default") == 0;
}

} // namespace

// ---- Policies ------------------------------------------------------------------------------------------------------

#define POLICY_LIST "/macsec/policy-names/policy-name"

OC_MACSEC_EXPORT rcode ymap_ot_ocmacsec_policyname_fwd(MAPPER_PARAMETERS)
{
    const char *name = nullptr;
    (void)tqm_map_get_node_info(ctx, "/macsec/mka/policies/policy", "name", &name);
    ENTER_MAPPER(ctx, node, out);
    if (creates_default(node, name)) {
        TQM_ERR(ctx, "Invalid request :  default policy can not be created");
        set_error_message(ctx, "Invalid request : default policy can not be created", TQM_MAP_OWNER);
        LEAVE_MAPPER(ctx, TQM_ERR_INVALID_REQUEST);
    }
    rcode rc = 0;
    if (tqm_map_is_request_delete(node) != 0) {
        // A remove is carried by the leaves: a replace removes what an entry holds before it merges, not the entry.
        if (name != nullptr && node->operation == TQM_OP_DELETE) {
            rc = add_flagged(ctx, out, POLICY_LIST, MKA_CFG_NS, {.source = node, .list_entry = 1});
        }
    } else if (TQM_MAP_IS_READ(ctx)) {
        rc = read_list_entry(ctx, node, out, POLICY_LIST, MKA_CFG_NS);
    } else {
        rc = add_flagged(ctx, out, POLICY_LIST, MKA_CFG_NS, {.list_entry = 1});
    }
    LEAVE_MAPPER(ctx, rc);
}

OC_MACSEC_EXPORT rcode ymap_ot_tv_policy_name_fwd(MAPPER_PARAMETERS)
{
    static constexpr const char *path = POLICY_LIST "/name";
    ENTER_MAPPER(ctx, node, out);
    rcode rc = 0;
    if (TQM_MAP_IS_READ(ctx)) {
        if (!TQM_MAP_SKIP_CONFIG_LEAF(ctx)) {
            rc = add_flagged(ctx, out, path, MKA_CFG_NS, {.value = node->value});
        }
        if (TQM_MAP_KIND(ctx) == TQM_REQ_GET) {
            rc = add_flagged(ctx, out, path, MKA_CFG_NS, {.value = node->value});
        }
    } else {
        rc = add_flagged(ctx, out, path, MKA_CFG_NS, {.value = node->value, .source = node});
        if (tqm_map_is_request_delete(node) == 0) {
            rc = add_flagged(ctx, out, POLICY_LIST "/created", MKA_CFG_NS, {}); // makes the native entry exist
        }
    }
    LEAVE_MAPPER(ctx, rc);
}

// The policy's name has no native leaf of its own beside the key.
OC_MACSEC_EXPORT rcode ymap_ot_ocmacsec_policyname_name_fwd(tqm_map_ctx ctx, const rdl_tqm_datatree *,
                                                            rdl_tqm_datatree *)
{
    ASSERT_CONTEXT(ctx, MAPPER_SIGNATURE);
    TQM_TRC(ctx, "Start");
    LEAVE_MAPPER(ctx, 0);
}

OC_MACSEC_EXPORT rcode ymap_ot_ocmacsec_policyname_ciper_suite_fwd(MAPPER_PARAMETERS)
{
    static constexpr const char *path = POLICY_LIST "/cipher-suite";
    static constexpr value_pair suites[] = {
        {"GCM_AES_128", "gcm-aes-128"},
        {"GCM_AES_256", "gcm-aes-256"},
        {"GCM_AES_XPN_128", "gcm-aes-xpn-128"},
        {"GCM_AES_XPN_256", "gcm-aes-xpn-256"},
    };
    ENTER_MAPPER(ctx, node, out);
    rcode rc = 0;
    if (TQM_MAP_IS_READ(ctx)) {
        rc = add_plain(ctx, out, path, MKA_CFG_NS, node->value, node);
    } else if (tqm_map_is_request_delete(node) != 0) {
        rc = add_plain(ctx, out, path, MKA_CFG_NS, nullptr, node);
    } else if (node->value != nullptr) {
        const char *const native = translate(suites, node->value, 32);
        rc = add_plain(ctx, out, path, MKA_CFG_NS, native != nullptr ? native : node->value, node);
        if (rc != 0) {
            TQM_TRC(ctx, "rc = %d, %s", static_cast<int>(rc), rcode_strerror(rc));
        }
    }
    LEAVE_MAPPER(ctx, rc);
}

OC_MACSEC_EXPORT rcode ymap_ot_ocmacsec_policyname_conf_offset_fwd(MAPPER_PARAMETERS)
{
    static constexpr const char *path = POLICY_LIST "/conf-offset";
    static constexpr value_pair offsets[] = {
        {"0_BYTES", "conf-off-set-0"},
        {"30_BYTES", "conf-off-set-30"},
        {"50_BYTES", "conf-off-set-50"},
    };
    ENTER_MAPPER(ctx, node, out);
    rcode rc = 0;
    if (TQM_MAP_IS_READ(ctx)) {
        rc = add_plain(ctx, out, path, MKA_CFG_NS, node->value, node);
        if (rc != 0) {
            TQM_TRC(ctx, "rc = %d, %s", static_cast<int>(rc), rcode_strerror(rc));
        }
    } else if (tqm_map_is_request_delete(node) != 0) {
        rc = add_plain(ctx, out, path, MKA_CFG_NS, nullptr, node);
    } else if (node->value != nullptr) {
        const char *const native = translate(offsets, node->value, 16);
        rc = add_plain(ctx, out, path, MKA_CFG_NS, native != nullptr ? native : node->value, node);
    }
    LEAVE_MAPPER(ctx, rc);
}

namespace
{

// The value of a native leaf that is there, and empty, where OpenConfig's boolean is true.
const char *presence_value(const char *boolean)
{
    if (boolean == nullptr) {
        return "False";
    }
    return text_equals(boolean, "true", 10) ? "" : boolean;
}

bool deletes(tqm_map_ctx ctx, const rdl_tqm_datatree *node)
{
    return !TQM_MAP_IS_READ(ctx) && tqm_map_is_request_delete(node) != 0;
}

rcode add_presence_leaf(tqm_map_ctx ctx, const rdl_tqm_datatree *node, rdl_tqm_datatree *out, const char *path,
                        bool deleted)
{
    if (TQM_MAP_IS_READ(ctx)) {
        return add_flagged(ctx, out, path, MKA_CFG_NS, {.value = node->value});
    }
    const char *const value = deleted ? nullptr : presence_value(node->value);
    return add_flagged(ctx, out, path, MKA_CFG_NS, {.value = value, .source = node});
}

} // namespace

OC_MACSEC_EXPORT rcode ymap_ot_ocmacsec_delay_protection_fwd(MAPPER_PARAMETERS)
{
    ENTER_MAPPER(ctx, node, out);
    const bool deleted = deletes(ctx, node);
    const rcode rc = add_presence_leaf(ctx, node, out, POLICY_LIST "/delay-protection", deleted);
    if (rc != 0 && !deleted) {
        TQM_TRC(ctx, "rc = %d, %s", static_cast<int>(rc), rcode_strerror(rc));
    }
    LEAVE_MAPPER(ctx, rc);
}

OC_MACSEC_EXPORT rcode ymap_ot_ocmacsec_include_icv_indicator_fwd(MAPPER_PARAMETERS)
{
    ENTER_MAPPER(ctx, node, out);
    const bool deleted = deletes(ctx, node);
    const rcode rc = add_presence_leaf(ctx, node, out, POLICY_LIST "/include-icv-indicator", deleted);
    if (rc != 0 && !deleted) {
        TQM_TRC(ctx, "rc = %d, %s", static_cast<int>(rc), rcode_strerror(rc));
    }
    LEAVE_MAPPER(ctx, rc);
}

namespace
{

// The native leaves of the rekey interval. Reads ask for both, edits write the one in seconds.
constexpr xpath_list_type_t sak_rekey_rows[] = {
    {POLICY_LIST "/sak-rekey-interval", MKA_CFG_NS, value_of, 0, TQM_ADD_PLAIN, "NULL"},
    {POLICY_LIST "/sak-rekey-interval-sec", MKA_CFG_NS, value_of, 0, TQM_ADD_PLAIN, "NULL"},
    {"NULL", "NULL", value_of, 0, TQM_ADD_PLAIN, "None"},
};
constexpr size_t sak_rekey_row_count = sizeof sak_rekey_rows / sizeof sak_rekey_rows[0];

} // namespace

OC_MACSEC_EXPORT rcode ymap_ot_ocmacsec_policy_sak_rekey_interval_fwd(tqm_map_ctx ctx, int, xpath_list_type_t *rows)
{
    ASSERT_CONTEXT(ctx, ROW_SELECTION_SIGNATURE);
    TQM_TRC(ctx, "Start");
    REJECT_NULL_ARGUMENTS(ctx, rows == nullptr);
    rows[0].enabled = TQM_MAP_IS_READ(ctx) ? 1 : 0;
    rows[1].enabled = 1;
    LEAVE_MAPPER(ctx, 0);
}

OC_MACSEC_EXPORT rcode ymap_ot_oc_macsec_openconfigmacsec_leaf_lvla_macsec_config_sakrekeyinterval(MAPPER_PARAMETERS)
{
    xpath_list_type_t rows[sak_rekey_row_count];
    copy_rows(rows, sak_rekey_rows);
    ENTER_MAPPER(ctx, node, out);
    (void)ymap_ot_ocmacsec_policy_sak_rekey_interval_fwd(ctx, 0, rows);
    const bool read = TQM_MAP_IS_READ(ctx);
    rcode rc = 0;
    if (!read && tqm_map_is_request_delete(node) == 0) {
        rc = add_plain(ctx, out, POLICY_LIST "/sak-rekey-interval-sec", MKA_CFG_NS, node->value, nullptr);
        if (rc != 0) {
            TQM_TRC(ctx, "rc = %d %s", static_cast<int>(rc), rcode_strerror(rc));
        }
        LEAVE_MAPPER(ctx, rc);
    }
    for (size_t index = 0; index + 1 < sak_rekey_row_count; ++index) {
        const xpath_list_type_t &row = rows[index];
        if (row.enabled == 0) {
            continue;
        }
        if (read) {
            rc = add_flagged(ctx, out, row.path, row.ns, {.value = row.convert(node), .flags = row.flags});
        } else {
            rc = add_flagged(ctx, out, row.path, row.ns, {.source = node, .flags = row.flags});
            if (rc != 0) {
                TQM_TRC(ctx, "rc = %d %s", static_cast<int>(rc), rcode_strerror(rc));
            }
        }
    }
    LEAVE_MAPPER(ctx, rc);
}

// ---- Key chains ----------------------------------------------------------------------------------------------------

#define CHAIN_LIST "/keychains/keychain"
#define KEY_LIST CHAIN_LIST "/macsec-keychain/macsec-keys/macsec-key"
#define KEY_STRING KEY_LIST "/macsec-key-string"
#define OC_KEY_LIST "/macsec/mka/key-chains/key-chain/mka-keys/mka-key"

namespace
{

// The shape that the two lists of this module share: delete is tested before the kind of the request.
rcode add_list_entry(tqm_map_ctx ctx, const rdl_tqm_datatree *node, rdl_tqm_datatree *out, const char *path)
{
    if (tqm_map_is_request_delete(node) != 0) {
        return add_flagged(ctx, out, path, KEYCHAIN_CFG_NS, {.source = node, .list_entry = 1});
    }
    if (TQM_MAP_IS_READ(ctx)) {
        return read_list_entry(ctx, node, out, path, KEYCHAIN_CFG_NS);
    }
    return add_flagged(ctx, out, path, KEYCHAIN_CFG_NS, {.list_entry = 1});
}

// A list key carries its value also in a delete.
rcode add_key_leaf(tqm_map_ctx ctx, const rdl_tqm_datatree *node, rdl_tqm_datatree *out, const char *path)
{
    if (!TQM_MAP_IS_READ(ctx)) {
        return add_flagged(ctx, out, path, KEYCHAIN_CFG_NS, {.value = node->value, .source = node});
    }
    if (TQM_MAP_SKIP_CONFIG_LEAF(ctx)) {
        return 0;
    }
    return add_flagged(ctx, out, path, KEYCHAIN_CFG_NS, {.value = node->value});
}

rcode add_config_leaf(tqm_map_ctx ctx, const rdl_tqm_datatree *node, rdl_tqm_datatree *out, const char *path)
{
    if (TQM_MAP_IS_READ(ctx)) {
        return add_flagged(ctx, out, path, KEYCHAIN_CFG_NS, {.value = node->value});
    }
    const char *const value = tqm_map_is_request_delete(node) != 0 ? nullptr : node->value;
    return add_flagged(ctx, out, path, KEYCHAIN_CFG_NS, {.value = value, .source = node});
}

} // namespace

OC_MACSEC_EXPORT rcode ymap_ot_ocmacsec_macsec_keychain_list_fwd(MAPPER_PARAMETERS)
{
    const char *name = nullptr;
    (void)tqm_map_get_node_info(ctx, "/macsec/mka/key-chains/key-chain", "name", &name);
    ENTER_MAPPER(ctx, node, out);
    if (creates_default(node, name)) {
        TQM_ERR(ctx, "Invalid request :  default keychain can not be created");
        set_error_message(ctx, "Invalid request : default keychain can not be created", TQM_MAP_OWNER);
        LEAVE_MAPPER(ctx, TQM_ERR_INVALID_REQUEST);
    }
    const rcode rc = add_list_entry(ctx, node, out, CHAIN_LIST);
    LEAVE_MAPPER(ctx, rc);
}

OC_MACSEC_EXPORT rcode ymap_ot_ocmacsec_keychain_name_fwd(MAPPER_PARAMETERS)
{
    ENTER_MAPPER(ctx, node, out);
    const rcode rc = add_key_leaf(ctx, node, out, CHAIN_LIST "/chain-name");
    LEAVE_MAPPER(ctx, rc);
}

OC_MACSEC_EXPORT rcode ymap_ot_ocmacsec_tv_keychain_name_fwd(MAPPER_PARAMETERS)
{
    ENTER_MAPPER(ctx, node, out);
    const bool creating = !TQM_MAP_IS_READ(ctx) && tqm_map_is_request_delete(node) == 0;
    const rcode rc = add_config_leaf(ctx, node, out, CHAIN_LIST "/chain-name");
    if (creating) {
        TQM_TRC(ctx, "OC MACSEC Creating key chain name %s", node->value != nullptr ? node->value : "(null)");
    }
    LEAVE_MAPPER(ctx, rc);
}

OC_MACSEC_EXPORT rcode ymap_ot_ocmacsec_macsec_key_list_fwd(MAPPER_PARAMETERS)
{
    // The model has no such leaf: only a request that strays from it can be refused here.
    const char *name = nullptr;
    (void)tqm_map_get_node_info(ctx, OC_KEY_LIST, "name", &name);
    ENTER_MAPPER(ctx, node, out);
    if (name != nullptr && tqm_map_is_request_delete(node) != 0 && node->operation == TQM_OP_DELETE) {
        TQM_ERR(ctx, "Attempt to delete a Non existent keychain key");
        set_error_message(ctx, "Attempt to delete a Non existent keychain key", TQM_MAP_OWNER);
        LEAVE_MAPPER(ctx, TQM_ERR_INVALID_REQUEST);
    }
    const rcode rc = add_list_entry(ctx, node, out, KEY_LIST);
    LEAVE_MAPPER(ctx, rc);
}

// A forward mapper, whatever its prefix says: the name is the exported one.
OC_MACSEC_EXPORT rcode ymap_to_ocmacsec_tv_key_id_fwd(MAPPER_PARAMETERS)
{
    ENTER_MAPPER(ctx, node, out);
    const rcode rc = add_key_leaf(ctx, node, out, KEY_LIST "/key-id");
    LEAVE_MAPPER(ctx, rc);
}

OC_MACSEC_EXPORT rcode ymap_ot_ocmacsec_macsec_key_id_fwd(MAPPER_PARAMETERS)
{
    ENTER_MAPPER(ctx, node, out);
    const rcode rc = add_config_leaf(ctx, node, out, KEY_LIST "/key-id");
    LEAVE_MAPPER(ctx, rc);
}

namespace
{

// Holds the leading "!", the key and the terminator.
constexpr size_t key_buffer_size = 1000;
constexpr size_t longest_key = key_buffer_size - 2;

rcode refuse_key_text(tqm_map_ctx ctx, const char *reason)
{
    set_error_message(ctx, reason, TQM_MAP_OWNER);
    return TQM_ERR_INVALID_REQUEST;
}

// The native string is "!" and the clear text. The buffer is a secret's: it is cleared before it is given back.
rcode add_key_text(tqm_map_ctx ctx, const rdl_tqm_datatree *node, rdl_tqm_datatree *out)
{
    const char *key = nullptr;
    (void)tqm_map_get_node_info(ctx, OC_KEY_LIST "/config", "key-clear-text", &key);
    char *const buffer = static_cast<char *>(calloc(1, key_buffer_size));
    if (buffer == nullptr) {
        return refuse_key_text(ctx, "No memory for key-clear-text");
    }
    buffer[0] = '!';
    const size_t length = bounded_length(key, key_buffer_size);
    rcode rc = 0;
    if (length > longest_key) {
        rc = refuse_key_text(ctx, "Invalid request : key-clear-text is longer than 998 bytes");
    } else {
        copy_bytes(buffer + 1, key_buffer_size - 1, key, length);
        (void)add_plain(ctx, out, KEY_STRING "/string", KEYCHAIN_CFG_NS, buffer, node);
        rc = add_plain(ctx, out, KEY_STRING "/encryption-type", KEYCHAIN_CFG_NS, "type7", node);
    }
    clear_memory(buffer, key_buffer_size);
    free(buffer);
    return rc;
}

} // namespace

OC_MACSEC_EXPORT rcode ymap_ot_ocmacsec_key_clear_text_fwd(MAPPER_PARAMETERS)
{
    ENTER_MAPPER(ctx, node, out);
    rcode rc = 0;
    if (TQM_MAP_IS_READ(ctx) || tqm_map_is_request_delete(node) != 0) {
        // No source, so a delete carries no operation: the string goes with its key entry alone.
        rc = add_flagged(ctx, out, KEY_STRING "/string", KEYCHAIN_CFG_NS, {.value = node->value});
    } else {
        rc = add_key_text(ctx, node, out);
    }
    LEAVE_MAPPER(ctx, rc);
}

OC_MACSEC_EXPORT rcode ymap_ot_ocmacsec_crypto_alg_fwd(MAPPER_PARAMETERS)
{
    static constexpr const char *path = KEY_STRING "/cryptographic-algorithm";
    static constexpr value_pair algorithms[] = {
        {"AES_128_CMAC", "aes-128-cmac"},
        {"AES_256_CMAC", "aes-256-cmac"},
    };
    ENTER_MAPPER(ctx, node, out);
    rcode rc = 0;
    if (TQM_MAP_IS_READ(ctx)) {
        rc = add_flagged(ctx, out, path, KEYCHAIN_CFG_NS, {.value = node->value});
    } else if (tqm_map_is_request_delete(node) != 0) {
        rc = add_flagged(ctx, out, path, KEYCHAIN_CFG_NS, {.source = node});
    } else if (node->value != nullptr) {
        const char *const native = translate(algorithms, node->value, 32);
        rc = add_plain(ctx, out, path, KEYCHAIN_CFG_NS, native != nullptr ? native : node->value, node);
        if (rc != 0) {
            TQM_TRC(ctx, "rc = %d, %s", static_cast<int>(rc), rcode_strerror(rc));
        }
    }
    LEAVE_MAPPER(ctx, rc);
}

// ---- Key lifetimes -------------------------------------------------------------------------------------------------

#define LIFETIME KEY_LIST "/macsec-lifetime"

namespace
{

// The paths of the six leaves that hold one end of a lifetime, in the order in which an edit writes them.
struct lifetime_paths {
    const char *year;
    const char *month;
    const char *date;
    const char *hour;
    const char *minutes;
    const char *seconds;
};

constexpr lifetime_paths start_paths = {LIFETIME "/start-year", LIFETIME "/start-month",   LIFETIME "/start-date",
                                        LIFETIME "/start-hour", LIFETIME "/start-minutes", LIFETIME "/start-seconds"};
constexpr lifetime_paths end_paths = {LIFETIME "/end-year", LIFETIME "/end-month",   LIFETIME "/end-date",
                                      LIFETIME "/end-hour", LIFETIME "/end-minutes", LIFETIME "/end-seconds"};

date_time local_time_now()
{
    struct timeval now = {};
    (void)gettimeofday(&now, nullptr);
    date_time when;
    (void)local_date_time(now.tv_sec, &when);
    return when;
}

// A text that is too long for its buffer counts as badly formed, as does a missing one; it gives zeros, which the
// native side judges.
date_time start_time_of(const char *text)
{
    if (text_equals(text, "VALID_IMMEDIATELY", 19)) {
        return local_time_now();
    }
    char copy[100];
    copy_text(copy, sizeof copy, text, bounded_length(text, sizeof copy));
    return begins_with_date_time(copy) ? parse_date_time(copy) : date_time{};
}

rcode add_number(tqm_map_ctx ctx, const rdl_tqm_datatree *node, rdl_tqm_datatree *out, const char *path, long number)
{
    char text[24];
    clear_memory(text, sizeof text);
    (void)snprintf(text, sizeof text, "%ld", number);
    return add_plain(ctx, out, path, KEYCHAIN_CFG_NS, text, node);
}

rcode add_date_time(tqm_map_ctx ctx, const rdl_tqm_datatree *node, rdl_tqm_datatree *out, const lifetime_paths &paths,
                    const date_time &when)
{
    (void)add_number(ctx, node, out, paths.year, when.year);
    (void)add_plain(ctx, out, paths.month, KEYCHAIN_CFG_NS, month_name(when.month), node);
    (void)add_number(ctx, node, out, paths.date, when.date);
    (void)add_number(ctx, node, out, paths.hour, when.hour);
    (void)add_number(ctx, node, out, paths.minutes, when.minutes);
    return add_number(ctx, node, out, paths.seconds, when.seconds);
}

// Adds every path with one value and source, by the flagged operation; the result is the last add's.
template <size_t count>
rcode add_all(tqm_map_ctx ctx, rdl_tqm_datatree *out, const char *const (&paths)[count], const add &what)
{
    rcode rc = 0;
    for (const char *path : paths) {
        rc = add_flagged(ctx, out, path, KEYCHAIN_CFG_NS, what);
    }
    return rc;
}

} // namespace

OC_MACSEC_EXPORT rcode ymap_ot_ocmacsec_macsec_keychain_start_time_fwd(MAPPER_PARAMETERS)
{
    static constexpr const char *leaves[] = {start_paths.hour, start_paths.minutes, start_paths.seconds,
                                             start_paths.date, start_paths.month,   start_paths.year};
    ENTER_MAPPER(ctx, node, out);
    rcode rc = 0;
    if (TQM_MAP_IS_READ(ctx)) {
        rc = add_all(ctx, out, leaves, {.value = node->value});
    } else if (tqm_map_is_request_delete(node) != 0) {
        rc = add_all(ctx, out, leaves, {.source = node});
    } else {
        const char *text = nullptr;
        (void)tqm_map_get_node_info(ctx, OC_KEY_LIST "/config", "valid-date-time", &text);
        rc = add_date_time(ctx, node, out, start_paths, start_time_of(text));
    }
    LEAVE_MAPPER(ctx, rc);
}

namespace
{

rcode delete_end_time(tqm_map_ctx ctx, const rdl_tqm_datatree *node, rdl_tqm_datatree *out)
{
    static constexpr const char *leaves[] = {
        end_paths.year,    end_paths.month,           end_paths.date,       end_paths.hour, end_paths.minutes,
        end_paths.seconds, LIFETIME "/infinite-flag", LIFETIME "/life-time"};
    rcode rc = 0;
    for (const char *path : leaves) {
        rc = add_plain(ctx, out, path, KEYCHAIN_CFG_NS, nullptr, node);
    }
    return rc;
}

} // namespace

OC_MACSEC_EXPORT rcode ymap_ot_ocmacsec_macsec_keychain_end_time_fwd(MAPPER_PARAMETERS)
{
    static constexpr const char *read_leaves[] = {
        end_paths.hour,  end_paths.minutes, end_paths.seconds,         end_paths.date,
        end_paths.month, end_paths.year,    LIFETIME "/infinite-flag", LIFETIME "/life-time"};
    ENTER_MAPPER(ctx, node, out);
    if (TQM_MAP_IS_READ(ctx)) {
        const rcode rc = add_all(ctx, out, read_leaves, {.value = node->value});
        LEAVE_MAPPER(ctx, rc);
    }
    if (tqm_map_is_request_delete(node) != 0) {
        const rcode rc = delete_end_time(ctx, node, out);
        LEAVE_MAPPER(ctx, rc);
    }
    const char *text = nullptr;
    (void)tqm_map_get_node_info(ctx, OC_KEY_LIST "/config", "expiration-date-time", &text);
    rcode rc = 0;
    if (text_equals(text, "NO_EXPIRATION", 14)) {
        rc = add_plain(ctx, out, LIFETIME "/infinite-flag", KEYCHAIN_CFG_NS, "true", node);
    } else if (begins_with_date_time(text)) {
        rc = add_date_time(ctx, node, out, end_paths, parse_date_time(text));
    } else {
        TQM_TRC(ctx, "Invalid expiration-date-time string(not OC complaint)");
        set_error_message(ctx, "Invalid expiration-date-time(not OC complaint)", "TQM_MAP");
        rc = TQM_ERR_INVALID_REQUEST;
    }
    LEAVE_MAPPER(ctx, rc);
}

// ---- Interfaces ----------------------------------------------------------------------------------------------------

#define INTERFACE_LIST "/interface-configurations/interface-configuration"

namespace
{

// OpenConfig knows an interface by its name alone; the second native key always has this value.
rcode add_active_key(tqm_map_ctx ctx, rdl_tqm_datatree *out)
{
    return add_flagged(ctx, out, INTERFACE_LIST "/active", IFMGR_CFG_NS, {.value = "act", .list_entry = 1});
}

} // namespace

OC_MACSEC_EXPORT rcode ymap_ot_ocmacsce_intconfig_list_fwd(MAPPER_PARAMETERS)
{
    ASSERT_CONTEXT(ctx, MAPPER_SIGNATURE);
    if (node == nullptr || out == nullptr) {
        TQM_ERR(ctx, "%s:%d, NULL arguments passed", __func__, __LINE__);
        LEAVE_MAPPER(ctx, TQM_ERR_NO_SUBTREE);
    }
    TQM_TRC(ctx, "Start");
    rcode rc = 0;
    if (TQM_MAP_IS_READ(ctx)) {
        rc = add_flagged(ctx, out, INTERFACE_LIST, IFMGR_CFG_NS, {.value = node->value, .list_entry = 1});
    } else if (tqm_map_is_request_delete(node) != 0) {
        // The interface itself is not OpenConfig's to delete.
        TQM_TRC(ctx, "%s: %d: TQM_MAP_IS_REQUEST_DELETE operation - rc %d:%s", __func__, __LINE__, static_cast<int>(rc),
                rcode_strerror(rc));
    } else {
        (void)add_flagged(ctx, out, INTERFACE_LIST, IFMGR_CFG_NS, {.value = node->value, .list_entry = 1});
        rc = add_active_key(ctx, out);
        TQM_TRC(ctx, "%s:%d TQM_MAP_IS_EDIT operation - rc %d:%s", __func__, __LINE__, static_cast<int>(rc),
                rcode_strerror(rc));
    }
    LEAVE_MAPPER(ctx, rc);
}

OC_MACSEC_EXPORT rcode ymap_ot_ocmacsec_tv_interface_name_fwd(MAPPER_PARAMETERS)
{
    static constexpr const char *path = INTERFACE_LIST "/interface-name";
    ENTER_MAPPER(ctx, node, out);
    rcode rc = 0;
    if (TQM_MAP_IS_READ(ctx)) {
        (void)add_flagged(ctx, out, path, IFMGR_CFG_NS, {.value = node->value, .list_entry = 1});
        rc = add_active_key(ctx, out);
    } else if (tqm_map_is_request_delete(node) == 0) {
        rc = add_flagged(ctx, out, path, IFMGR_CFG_NS, {.value = node->value, .source = node, .list_entry = 1});
    }
    LEAVE_MAPPER(ctx, rc);
}

// The key leaf carries the name already.
OC_MACSEC_EXPORT rcode ymap_ot_ocmacsec_interface_name_fwd(MAPPER_PARAMETERS)
{
    ENTER_MAPPER(ctx, node, out);
    LEAVE_MAPPER(ctx, 0);
}

OC_MACSEC_EXPORT rcode ymap_ot_ifmgr_interfaceconfigurations_interfaceconfiguration_macsec_fwd(CONTAINER_PARAMETERS)
{
    ENTER_FUNCTION(ctx, node, out, CONTAINER_SIGNATURE);
    rcode rc = 0;
    if (child_count != 0) {
        TQM_TRC(ctx, "%s:%d, No mapping done for this node", __func__, __LINE__);
    } else {
        TQM_TRC(ctx, "No subtrees");
        rc = add_flagged(ctx, out, INTERFACE_LIST "/macsec/psk-key-chain", MKA_IF_CFG_NS,
                         {.value = node->value, .source = node, .flags = TQM_ADD_OTHER_MODULE});
    }
    LEAVE_MAPPER(ctx, rc);
}

// ---- State ---------------------------------------------------------------------------------------------------------
// These three give their paths without a leading slash.

#define OPER_POLICY_STATE "oc-macsec/macsec/mka/policies/policy/state"
#define OPER_KEY_STATE "oc-macsec/macsec/mka/key-chains/key-chain/mka-keys/mka-key/state"

OC_MACSEC_EXPORT rcode ymap_ot_ocmacsec_cipher_suite_oper_fwd(MAPPER_PARAMETERS)
{
    ENTER_MAPPER(ctx, node, out);
    rcode rc = 0;
    if (TQM_MAP_IS_READ(ctx)) {
        rc = add_plain(ctx, out, OPER_POLICY_STATE "/macsec-cipher-suite", OPER_NS, node->value, node);
    }
    LEAVE_MAPPER(ctx, rc);
}

OC_MACSEC_EXPORT rcode ymap_ot_ocmacsec_conf_offset_oper_fwd(MAPPER_PARAMETERS)
{
    ENTER_MAPPER(ctx, node, out);
    rcode rc = 0;
    if (TQM_MAP_IS_READ(ctx)) {
        rc = add_plain(ctx, out, OPER_POLICY_STATE "/confidentiality-offset", OPER_NS, node->value, node);
    }
    LEAVE_MAPPER(ctx, rc);
}

OC_MACSEC_EXPORT rcode ymap_ot_ocmacsec_kc_crypto_algo_fwd(MAPPER_PARAMETERS)
{
    ENTER_MAPPER(ctx, node, out);
    rcode rc = 0;
    if (TQM_MAP_IS_READ(ctx)) {
        rc = add_flagged(ctx, out, OPER_KEY_STATE "/cryptographic-algorithm", OPER_NS, {});
    }
    LEAVE_MAPPER(ctx, rc);
}
