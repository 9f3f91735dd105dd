// The reverse mappers of key chains. The native module holds every key chain of the router; only those with a
// macsec-keychain container become OpenConfig key chains. The key text itself never comes back.
#include "date_time.h"
#include "namespaces.h"
#include "reverse_mapping.h"
#include "text.h"
#include "ymap_oc_macsec.h"

using namespace oc_macsec;

#define NATIVE_CHAIN "/keychains/keychain"
#define NATIVE_KEY NATIVE_CHAIN "/macsec-keychain/macsec-keys/macsec-key"
#define OC_CHAIN "/macsec/mka/key-chains/key-chain"
#define OC_KEY OC_CHAIN "/mka-keys/mka-key"

__attribute__((visibility("default"))) macsec_kc_record macsec_kc = {};

// ---- Key chains ----------------------------------------------------------------------------------------------------

namespace
{

constexpr oc_list key_chains = {OC_CHAIN, OC_CHAIN "[chain_name=%s]/", "chain_name"};

const char *chain_name(tqm_map_ctx ctx)
{
    const char *name = nullptr;
    (void)tqm_map_get_node_info(ctx, NATIVE_CHAIN, "chain-name", &name);
    return name;
}

// Outside a read only an entry that the OpenConfig tree has already is continued.
rcode continue_chain(tqm_map_ctx ctx, rdl_tqm_datatree *out)
{
    const char *const name = chain_name(ctx);
    if (name == nullptr) {
        return 0;
    }
    const rcode rc = search_oc_list(ctx, out, key_chains, name);
    return rc == 0 ? stitch_oc_list(ctx, out, key_chains, name) : rc;
}

rcode take_chain(tqm_map_ctx ctx, rdl_tqm_datatree *out)
{
    clear_memory(&macsec_kc, sizeof macsec_kc);
    macsec_kc.kc_active = 1;
    const char *const name = chain_name(ctx);
    copy_text(macsec_kc.kc_name, sizeof macsec_kc.kc_name, name, bounded_length(name, sizeof macsec_kc.kc_name));
    if (name != nullptr && search_oc_list(ctx, out, key_chains, name) == 0) {
        return stitch_oc_list(ctx, out, key_chains, name);
    }
    return add_oc_list_entry(ctx, out, OC_CHAIN, nullptr);
}

// A chain without macsec-keychain is not a MACsec chain: nothing is added for it.
rcode read_chain(tqm_map_ctx ctx, const rdl_tqm_datatree *node, rdl_tqm_datatree *out)
{
    const child_array children = children_of(node);
    if (children.missing()) {
        return TQM_ERR_NO_SUBTREE;
    }
    for (uint32_t index = 0; index < children.count; ++index) {
        const char *const tag = children.first[index].tag;
        if (tag == nullptr) {
            return TQM_ERR_NO_SUBTREE;
        }
        if (tqm_map_do_these_match(tag, "macsec-keychain") != 0) {
            return take_chain(ctx, out);
        }
    }
    return 0;
}

} // namespace

OC_MACSEC_EXPORT rcode ymap_to_ocmacsec_keychain_list_rev(MAPPER_PARAMETERS)
{
    ENTER_MAPPER(ctx, node, out);
    rcode rc = 0;
    if (tqm_map_is_request_delete(node) != 0) {
        rc = add_oc_list_entry(ctx, out, OC_CHAIN, node);
        if (rc != 0) {
            TQM_ERR(ctx, "map_datatree_add_path_flagged failed with errror %s", rcode_strerror(rc));
        }
    } else if (TQM_MAP_IS_READ(ctx)) {
        rc = read_chain(ctx, node, out);
    } else {
        rc = continue_chain(ctx, out);
    }
    LEAVE_MAPPER(ctx, rc);
}

OC_MACSEC_EXPORT rcode
ymap_to_oc_macsec_tarvexlibkeychaincfg_man_leaf_lvla_keychains_keychain_chainname(MAPPER_PARAMETERS)
{
    ENTER_MAPPER(ctx, node, out);
    rcode rc = 0;
    if (macsec_kc.kc_active == 1) {
        rc = add_oc_leaf(ctx, out, OC_CHAIN "/name", node->value);
        if (!TQM_MAP_SKIP_CONFIG_LEAF(ctx)) {
            rc = add_oc_leaf(ctx, out, OC_CHAIN "/config/name", node->value);
        }
        clear_memory(&macsec_kc, sizeof macsec_kc);
    }
    LEAVE_MAPPER(ctx, rc);
}

// ---- Keys ----------------------------------------------------------------------------------------------------------

OC_MACSEC_EXPORT rcode ymap_to_ocmacsec_mka_keys_list_rev(MAPPER_PARAMETERS)
{
    static constexpr oc_list keys = {OC_KEY, OC_KEY "[id=%s]/", "key-id"};
    ENTER_MAPPER(ctx, node, out);
    if (tqm_map_is_request_delete(node) != 0) {
        const rcode rc = add_oc_list_entry(ctx, out, OC_KEY, node);
        LEAVE_MAPPER(ctx, rc);
    }
    const char *id = nullptr;
    (void)tqm_map_get_node_info(ctx, NATIVE_KEY, "key-id", &id);
    rcode rc = 0;
    if (id != nullptr && search_oc_list(ctx, out, keys, id) == 0) {
        rc = stitch_oc_list(ctx, out, keys, id);
    } else {
        rc = add_oc_list_entry(ctx, out, OC_KEY, nullptr);
    }
    LEAVE_MAPPER(ctx, rc);
}

OC_MACSEC_EXPORT rcode ymap_to_oc_macsec_tarvexlibkeychaincfg_man_leaf_lvla_keychains_macseckey_keyid(MAPPER_PARAMETERS)
{
    ENTER_MAPPER(ctx, node, out);
    rcode rc = add_oc_leaf(ctx, out, OC_KEY "/id", node->value);
    if (!TQM_MAP_SKIP_CONFIG_LEAF(ctx)) {
        rc = add_oc_leaf(ctx, out, OC_KEY "/config/id", node->value);
    }
    LEAVE_MAPPER(ctx, rc);
}

namespace
{

#define OC_ALGORITHM OC_KEY "/config/cryptographic-algorithm"

// A text outside the table gives the container's own value in place of the leaf's. False ends the loop over children.
bool map_algorithm(tqm_map_ctx ctx, const rdl_tqm_datatree *node, rdl_tqm_datatree *out, rcode *rc)
{
    static constexpr value_pair algorithms[] = {
        {"aes-128-cmac", "AES_128_CMAC"},
        {"aes-256-cmac", "AES_256_CMAC"},
    };
    const char *value = nullptr;
    *rc = tqm_map_get_node_info(ctx, NATIVE_KEY "/macsec-key-string", "cryptographic-algorithm", &value);
    if (*rc != 0 || value == nullptr) {
        return false;
    }
    if (const char *const translated = translate(algorithms, value, 32)) {
        rdl_tqm_datatree *added = nullptr;
        *rc = add_oc_leaf(ctx, out, OC_ALGORITHM, translated, &added);
    } else {
        *rc = add_oc_leaf(ctx, out, OC_ALGORITHM, node->value);
    }
    return *rc == 0;
}

} // namespace

OC_MACSEC_EXPORT rcode ymap_to_ocmacsec_key_clear_text_rev(CONTAINER_PARAMETERS)
{
    ENTER_FUNCTION(ctx, node, out, CONTAINER_SIGNATURE);
    rcode rc = add_gated_oc_leaf(ctx, out, OC_ALGORITHM, node->value);
    if (child_count == 0) {
        TQM_TRC(ctx, "No subtrees");
        rc = tqm_map_datatree_add_path_flagged(ctx, out, OC_KEY "/config/key-clear-text", OC_MACSEC_NS, nullptr, node,
                                               nullptr, 1, TQM_ADD_PLAIN);
        LEAVE_MAPPER(ctx, rc);
    }
    const child_array children = children_of(node);
    if (children.missing()) {
        LEAVE_MAPPER(ctx, TQM_ERR_NO_SUBTREE);
    }
    for (uint32_t index = 0; index < children.count && rc == 0; ++index) {
        const char *const tag = children.first[index].tag;
        if (tag == nullptr) {
            TQM_ERR(ctx, "Tag name is not available!");
            rc = TQM_ERR_NO_SUBTREE;
        } else if (tqm_map_do_these_match(tag, "cryptographic-algorithm") != 0 && !map_algorithm(ctx, node, out, &rc)) {
            break;
        }
    }
    LEAVE_MAPPER(ctx, rc);
}

// ---- Key lifetimes -------------------------------------------------------------------------------------------------

OC_MACSEC_EXPORT unsigned int convert_month_to_number(const char *month)
{
    for (unsigned int number = 1; number <= 12; ++number) {
        if (text_equals(month, month_names[number - 1], 3)) {
            return number;
        }
    }
    return 0;
}

namespace
{

#define NATIVE_LIFETIME NATIVE_KEY "/macsec-lifetime"
#define OC_VALID OC_KEY "/config/valid-date-time"
#define OC_EXPIRATION OC_KEY "/config/expiration-date-time"

// One end of a lifetime, as texts that point into the tree.
struct date_time_texts {
    const char *year = nullptr;
    const char *month = nullptr;
    const char *date = nullptr;
    const char *hour = nullptr;
    const char *minutes = nullptr;
    const char *seconds = nullptr;

    bool complete() const
    {
        return year != nullptr && month != nullptr && date != nullptr && hour != nullptr && minutes != nullptr &&
               seconds != nullptr;
    }
};

struct lifetime_texts {
    date_time_texts start;
    date_time_texts end;
    const char *infinite_flag = nullptr;
    const char *life_time = nullptr;
};

// Where the text of a leaf goes, or null for a tag that is none of the fourteen. Compared in this order.
const char **slot_of(lifetime_texts &texts, const char *tag)
{
    const struct {
        const char *tag;
        const char **slot;
    } leaves[] = {
        {"start-hour", &texts.start.hour},       {"start-minutes", &texts.start.minutes},
        {"start-seconds", &texts.start.seconds}, {"start-year", &texts.start.year},
        {"start-month", &texts.start.month},     {"start-date", &texts.start.date},
        {"end-date", &texts.end.date},           {"end-month", &texts.end.month},
        {"end-year", &texts.end.year},           {"end-hour", &texts.end.hour},
        {"end-minutes", &texts.end.minutes},     {"end-seconds", &texts.end.seconds},
        {"infinite-flag", &texts.infinite_flag}, {"life-time", &texts.life_time},
    };
    for (const auto &leaf : leaves) {
        if (tqm_map_do_these_match(tag, leaf.tag) != 0) {
            return leaf.slot;
        }
    }
    return nullptr;
}

enum class collected : unsigned char { done, no_tag, no_value };

// Takes the texts of the children. A child without a tag ends the collection; a leaf without a value ends the mapping,
// with the code that the lookup gave.
collected collect(tqm_map_ctx ctx, const child_array &children, lifetime_texts &texts, rcode *rc)
{
    for (uint32_t index = 0; index < children.count; ++index) {
        const char *const tag = children.first[index].tag;
        if (tag == nullptr) {
            return collected::no_tag;
        }
        if (const char **const slot = slot_of(texts, tag)) {
            const rcode found = tqm_map_get_node_info(ctx, NATIVE_LIFETIME, tag, slot);
            if (found != 0 || *slot == nullptr) {
                *rc = found;
                return collected::no_value;
            }
        }
    }
    return collected::done;
}

date_time parts_of(const date_time_texts &texts)
{
    return {number_of(texts.year),    static_cast<int>(convert_month_to_number(texts.month)),
            number_of(texts.date),    number_of(texts.hour),
            number_of(texts.minutes), number_of(texts.seconds)};
}

rcode add_expiration(tqm_map_ctx ctx, rdl_tqm_datatree *out, const char *text)
{
    rdl_tqm_datatree *added = nullptr;
    return add_oc_leaf(ctx, out, OC_EXPIRATION, text, &added);
}

} // namespace

OC_MACSEC_EXPORT rcode ymap_to_ocmacsec_keychain_valid_date_time_rev(CONTAINER_PARAMETERS)
{
    ENTER_FUNCTION(ctx, node, out, CONTAINER_SIGNATURE);
    (void)add_gated_oc_leaf(ctx, out, OC_VALID, node->value);
    rcode rc = add_gated_oc_leaf(ctx, out, OC_EXPIRATION, node->value);
    if (child_count == 0) {
        TQM_TRC(ctx, "No subtrees");
        LEAVE_MAPPER(ctx, rc);
    }
    TQM_TRC(ctx, "No mapping done for this node");
    const child_array children = children_of(node);
    if (children.missing()) {
        LEAVE_MAPPER(ctx, TQM_ERR_NO_SUBTREE);
    }
    lifetime_texts texts;
    if (rc == 0) {
        const collected how = collect(ctx, children, texts, &rc);
        if (how == collected::no_value) {
            LEAVE_MAPPER(ctx, rc);
        }
        if (how == collected::no_tag) {
            TQM_ERR(ctx, "Tag name is not available!");
        }
    }

    // A date with a part missing is not made up.
    char text[100];
    if (texts.start.complete()) {
        print_date_time(parts_of(texts.start), text, sizeof text);
        rdl_tqm_datatree *added = nullptr;
        (void)add_oc_leaf(ctx, out, OC_VALID, text, &added);
    }
    if (text_equals(texts.infinite_flag, "true", 4)) {
        rc = add_expiration(ctx, out, "NO_EXPIRATION");
    } else if (texts.life_time != nullptr && number_of(texts.life_time) != 0) {
        time_t start = 0;
        if (texts.start.complete() && !moment_of(parts_of(texts.start), &start)) {
            set_error_message(ctx, "No memory for expiration-date-time", TQM_MAP_OWNER);
            LEAVE_MAPPER(ctx, TQM_ERR_INVALID_REQUEST);
        }
        date_time end;
        if (texts.start.complete() && local_date_time(start + number_of(texts.life_time), &end)) {
            print_date_time(end, text, sizeof text);
            TQM_TRC(ctx, "%s:%d, life_time: %s, end_time: %s", __func__, __LINE__, texts.life_time, text);
            rc = add_expiration(ctx, out, text);
        }
    } else if (texts.end.complete()) {
        print_date_time(parts_of(texts.end), text, sizeof text);
        rc = add_expiration(ctx, out, text);
    }
    LEAVE_MAPPER(ctx, rc);
}
