// State from configuration. Each list of the operational model has one function here that makes an entry of it.
#include "operational.h"

#include "router/models.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_set>

namespace router
{

namespace
{

struct Form {
    std::string_view configured;
    const char *operational;
};

constexpr Form cipher_suites[] = {{"gcm-aes-128", "gcm-aes128"},
                                  {"gcm-aes-256", "gcm-aes256"},
                                  {"gcm-aes-xpn-128", "gcm-aes-xpn128"},
                                  {"gcm-aes-xpn-256", "gcm-aes-xpn256"}};
constexpr Form offsets[] = {
    {"conf-off-set-0", "zero-bytes"}, {"conf-off-set-30", "thirty-bytes"}, {"conf-off-set-50", "fifty-bytes"}};
constexpr Form algorithms[] = {{"aes-128-cmac", "aes128-cmac"}, {"aes-256-cmac", "aes256-cmac"}};
// Leaves of type empty; some clients write "false" and "False" out.
constexpr Form flags[] = {{"", "true"}};

constexpr std::array<std::string_view, 12> months = {"jan", "feb", "mar", "apr", "may", "jun",
                                                     "jul", "aug", "sep", "oct", "nov", "dec"};

constexpr const char *default_priority = "16";
constexpr const char *default_offset = "zero-bytes";
constexpr const char *default_start = "VALID_IMMEDIATELY";
constexpr const char *no_end = "NO_EXPIRATION";

const lyd_node *child(const lyd_node *parent, const char *name)
{
    for (const lyd_node *node = lyd_child(parent); node; node = node->next) {
        if (std::strcmp(LYD_NAME(node), name) == 0) {
            return node;
        }
    }
    return nullptr;
}

const lyd_node *root(const lyd_node *top, const char *name)
{
    for (const lyd_node *node = top; node; node = node->next) {
        if (std::strcmp(LYD_NAME(node), name) == 0) {
            return node;
        }
    }
    return nullptr;
}

const lyd_node *descend(const lyd_node *node, std::initializer_list<const char *> names)
{
    for (const char *name : names) {
        node = node ? child(node, name) : nullptr;
    }
    return node;
}

// Value of a leaf, or null.
const char *value(const lyd_node *parent, const char *name)
{
    const lyd_node *leaf = parent ? child(parent, name) : nullptr;
    return leaf ? lyd_get_value(leaf) : nullptr;
}

const char *operational_form(std::span<const Form> forms, const char *configured, const char *otherwise)
{
    for (const Form &form : forms) {
        if (configured && form.configured == configured) {
            return form.operational;
        }
    }
    return otherwise;
}

// Writes into the state tree, and remembers if libyang ever refused.
class Writer
{
public:
    explicit Writer(const lys_module *module) : module_(module) {}

    lyd_node *container(lyd_node *parent, const char *name)
    {
        lyd_node *node = nullptr;
        good_ = good_ && !lyd_new_inner(parent, module_, name, 0, &node);
        return node;
    }

    lyd_node *entry(lyd_node *parent, const char *name, const char *key)
    {
        lyd_node *node = nullptr;
        good_ = good_ && !lyd_new_list(parent, module_, name, 0, &node, key);
        return node;
    }

    // A null value leaves the leaf out.
    void leaf(lyd_node *parent, const char *name, const char *text)
    {
        good_ = good_ && (!text || !lyd_new_term(parent, module_, name, text, 0, nullptr));
    }

    void counters(lyd_node *parent, std::initializer_list<const char *> names)
    {
        lyd_node *counters = container(parent, "counters");
        for (const char *name : names) {
            leaf(counters, name, "0");
        }
    }

    bool good() const { return good_; }

private:
    const lys_module *module_;
    bool good_ = true;
};

std::string rekey_seconds(const lyd_node *policy)
{
    if (const char *seconds = value(policy, "sak-rekey-interval-sec")) {
        return seconds;
    }
    const char *minutes = value(policy, "sak-rekey-interval");
    return minutes ? std::to_string(60 * std::strtoul(minutes, nullptr, 10)) : "0";
}

void add_policy(Writer &out, lyd_node *policies, const lyd_node *policy)
{
    const char *name = value(policy, "name");
    const char *priority = value(policy, "key-server-priority");
    const char *delay_protection = value(policy, "delay-protection");
    const char *icv_indicator = value(policy, "include-icv-indicator");

    lyd_node *state = out.container(out.entry(policies, "policy", name), "state");
    out.leaf(state, "name", name);
    out.leaf(state, "key-server-priority", priority ? priority : default_priority);
    out.leaf(state, "confidentiality-offset", operational_form(offsets, value(policy, "conf-offset"), default_offset));
    out.leaf(state, "delay-protection", operational_form(flags, delay_protection, "false"));
    out.leaf(state, "include-icv-indicator", icv_indicator ? operational_form(flags, icv_indicator, "false") : "true");
    out.leaf(state, "sak-rekey-interval", rekey_seconds(policy).c_str());
    out.leaf(state, "macsec-cipher-suite", operational_form(cipher_suites, value(policy, "cipher-suite"), nullptr));
}

// The six leaves of a start or an end; nothing unless all are there.
std::optional<std::tm> date_of(const lyd_node *lifetime, const char *side)
{
    static constexpr std::array<const char *, 6> parts = {"-year", "-month", "-date", "-hour", "-minutes", "-seconds"};

    std::array<int, 6> numbers{};
    for (size_t i = 0; i < parts.size(); ++i) {
        const char *text = value(lifetime, (std::string(side) + parts[i]).c_str());
        if (!text) {
            return std::nullopt;
        }
        const auto month = std::find(months.begin(), months.end(), text);
        numbers[i] = month != months.end() ? static_cast<int>(month - months.begin())
                                           : static_cast<int>(std::strtol(text, nullptr, 10));
    }
    std::tm date{};
    date.tm_year = numbers[0] - 1900;
    date.tm_mon = numbers[1];
    date.tm_mday = numbers[2];
    date.tm_hour = numbers[3];
    date.tm_min = numbers[4];
    date.tm_sec = numbers[5];
    return date;
}

std::string date_text(const std::tm &date)
{
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02d-%02dT%02d:%02d:%02d", date.tm_year + 1900, date.tm_mon + 1,
                  date.tm_mday, date.tm_hour, date.tm_min, date.tm_sec);
    return text.data();
}

// Nothing where the end lies beyond the years that a date can be written with.
std::optional<std::string> expiration(const lyd_node *lifetime, std::optional<std::tm> start)
{
    constexpr int last_year = 9999;
    const char *infinite = value(lifetime, "infinite-flag");
    if (infinite && std::strcmp(infinite, "true") == 0) {
        return no_end;
    }
    const char *duration = value(lifetime, "life-time");
    if (duration && std::strtoul(duration, nullptr, 10) != 0 && start) {
        const std::time_t end = std::mktime(&*start) + static_cast<std::time_t>(std::strtoul(duration, nullptr, 10));
        std::tm date{};
        if (!localtime_r(&end, &date) || date.tm_year + 1900 > last_year) {
            return std::nullopt;
        }
        return date_text(date);
    }
    const std::optional<std::tm> end = date_of(lifetime, "end");
    return end ? date_text(*end) : no_end;
}

void add_key(Writer &out, lyd_node *keys, const lyd_node *key)
{
    const char *id = value(key, "key-id");
    const char *algorithm = value(child(key, "macsec-key-string"), "cryptographic-algorithm");
    const lyd_node *lifetime = child(key, "macsec-lifetime");
    const std::optional<std::tm> start = date_of(lifetime, "start");
    const std::optional<std::string> end = expiration(lifetime, start);

    lyd_node *state = out.container(out.entry(keys, "mka-key", id), "state");
    out.leaf(state, "id", id);
    out.leaf(state, "cryptographic-algorithm", operational_form(algorithms, algorithm, nullptr));
    out.leaf(state, "valid-date-time", start ? date_text(*start).c_str() : default_start);
    out.leaf(state, "expiration-date-time", end ? end->c_str() : nullptr);
}

void add_key_chain(Writer &out, lyd_node *chains, const lyd_node *chain)
{
    const char *name = value(chain, "chain-name");
    const lyd_node *native_keys = descend(chain, {"macsec-keychain", "macsec-keys"});

    lyd_node *entry = out.entry(chains, "key-chain", name);
    out.leaf(out.container(entry, "state"), "name", name);
    lyd_node *keys = out.container(entry, "mka-keys");
    for (const lyd_node *key = native_keys ? lyd_child(native_keys) : nullptr; key; key = key->next) {
        add_key(out, keys, key);
    }
}

void add_interface(Writer &out, lyd_node *interfaces, const lyd_node *interface)
{
    const lyd_node *attachment = descend(interface, {"macsec", "psk-key-chain"});

    lyd_node *entry = out.entry(interfaces, "interface", value(interface, "interface-name"));
    out.counters(out.container(entry, "interfaces-state"),
                 {"tx-untagged-pkts", "rx-untagged-pkts", "rx-badtag-pkts", "rx-unknownsci-pkts", "rx-nosci-pkts"});
    lyd_node *state = out.container(out.container(entry, "interfaces-mka"), "state");
    out.counters(state, {"in-mkpdu", "in-sak-mkpdu", "out-mkpdu", "out-sak-mkpdu"});
    out.leaf(state, "mka-policy", value(attachment, "policy-name"));
    out.leaf(state, "key-chain", value(attachment, "key-chain-name"));
}

void add_mka_counters(Writer &out, lyd_node *mka)
{
    out.counters(out.container(mka, "mka-state"),
                 {"out-mkpdu-errors", "in-mkpdu-icv-verification-errors", "in-mkpdu-validation-errors",
                  "in-mkpdu-bad-peer-errors", "in-mkpdu-peer-list-errors", "sak-generation-errors", "sak-hash-errors",
                  "sak-encryption-errors", "sak-decryption-errors", "sak-cipher-mismatch-errors"});
}

template <typename Add>
void for_each_shown(const lyd_node *list_parent, const Visibility &visibility, Add add)
{
    for (const lyd_node *entry = list_parent ? lyd_child(list_parent) : nullptr; entry; entry = entry->next) {
        if (visibility.shown(entry)) {
            add(entry);
        }
    }
}

} // namespace

Tree derive_state(const ly_ctx *context, const Visibility &visibility, const lyd_node *configuration)
{
    Writer out(ly_ctx_get_module_implemented_ns(context, ns::operational));
    Tree tree(out.container(nullptr, "oc-macsec"));
    lyd_node *macsec = out.container(tree.get(), "macsec");
    lyd_node *mka = out.container(macsec, "mka");

    lyd_node *policies = out.container(mka, "policies");
    for_each_shown(descend(root(configuration, "macsec"), {"policy-names"}), visibility,
                   [&](const lyd_node *policy) { add_policy(out, policies, policy); });
    add_mka_counters(out, mka);
    lyd_node *chains = out.container(mka, "key-chains");
    for_each_shown(root(configuration, "keychains"), visibility,
                   [&](const lyd_node *chain) { add_key_chain(out, chains, chain); });
    lyd_node *interfaces = out.container(macsec, "interfaces");
    std::unordered_set<std::string_view> names;
    for_each_shown(root(configuration, "interface-configurations"), visibility, [&](const lyd_node *interface) {
        // The same interface may be configured in several forms; the first one counts.
        if (names.insert(value(interface, "interface-name")).second) {
            add_interface(out, interfaces, interface);
        }
    });
    return out.good() ? std::move(tree) : nullptr;
}

} // namespace router
