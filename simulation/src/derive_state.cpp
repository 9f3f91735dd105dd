// State from configuration. Each list of the operational model has one function here that makes an entry of it. Which
// counters there are, and what the value of an enumeration is called on the other side, is the models' to say.
#include "simulation/derive_state.h"

#include <libyang/libyang.h>

#include <array>
#include <cstdlib>
#include <ctime>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>

namespace simulation
{

namespace
{

using router::Shown;
using router::Tree;

// What is in force where nothing is configured. No native model says it.
struct Default {
    std::string_view leaf;
    const char *value;
};
constexpr Default defaults[] = {
    {"key-server-priority", "16"},
    {"confidentiality-offset", "zero-bytes"},
    {"delay-protection", "false"},
    {"include-icv-indicator", "true"},
    {"sak-rekey-interval", "0"},
    {"valid-date-time", "VALID_IMMEDIATELY"},
    {"expiration-date-time", "NO_EXPIRATION"},
};

const char *default_of(std::string_view leaf)
{
    for (const Default &known : defaults) {
        if (known.leaf == leaf) {
            return known.value;
        }
    }
    return nullptr;
}

const lyd_node *find(const lyd_node *siblings, std::string_view name)
{
    for (const lyd_node *node = siblings; node; node = node->next) {
        if (LYD_NAME(node) == name) {
            return node;
        }
    }
    return nullptr;
}

// What `names` lead to from among `siblings`; null if it is not there.
const lyd_node *descend(const lyd_node *siblings, std::initializer_list<std::string_view> names)
{
    const lyd_node *node = nullptr;
    for (const std::string_view name : names) {
        node = find(siblings, name);
        siblings = node ? lyd_child(node) : nullptr;
    }
    return node;
}

const lyd_node *leaf_of(const lyd_node *parent, std::string_view name)
{
    return parent ? find(lyd_child(parent), name) : nullptr;
}

// Value of a leaf, or null.
const char *value(const lyd_node *parent, std::string_view name)
{
    const lyd_node *leaf = leaf_of(parent, name);
    return leaf ? lyd_get_value(leaf) : nullptr;
}

// What a leaf counts: a number, or which value of its enumeration it has, from 0.
std::optional<long> number(const lyd_node *parent, std::string_view name)
{
    const lyd_node *leaf = leaf_of(parent, name);
    if (!leaf) {
        return std::nullopt;
    }
    const lyd_value &held = reinterpret_cast<const lyd_node_term *>(leaf)->value;
    return held.realtype->basetype == LY_TYPE_ENUM ? held.enum_item->value
                                                   : std::strtol(lyd_get_value(leaf), nullptr, 10);
}

// Of a flag, which is on where it is empty: some clients write "false" and "False" out.
const char *boolean(const char *flag)
{
    if (!flag) {
        return nullptr;
    }
    return *flag == '\0' ? "true" : "false";
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

    // Without a text the leaf has its default, and is left out if there is none.
    void leaf(lyd_node *parent, const char *name, const char *text)
    {
        text = text ? text : default_of(name);
        good_ = good_ && (!text || !lyd_new_term(parent, module_, name, text, 0, nullptr));
    }

    // The value of the leaf's enumeration that has the place which `configured` has in its own: both sides' models
    // count the same things in the same order.
    void leaf_at_place(lyd_node *parent, const char *name, std::optional<long> configured)
    {
        leaf(parent, name, configured && good_ ? name_at(parent->schema, name, *configured) : nullptr);
    }

    void counters(lyd_node *parent)
    {
        lyd_node *counters = container(parent, "counters");
        const lysc_node *counter = nullptr;
        while (good_ && (counter = lys_getnext(counter, counters->schema, nullptr, 0)) != nullptr) {
            leaf(counters, counter->name, "0");
        }
    }

    bool good() const { return good_; }

private:
    static const lysc_type *type_of(const lysc_node *leaf)
    {
        return leaf->nodetype == LYS_LEAFLIST ? reinterpret_cast<const lysc_node_leaflist *>(leaf)->type
                                              : reinterpret_cast<const lysc_node_leaf *>(leaf)->type;
    }

    const char *name_at(const lysc_node *parent, const char *name, long place) const
    {
        const lysc_node *leaf = lys_find_child(parent, module_, name, 0, 0, 0);
        const lysc_type *type = leaf ? type_of(leaf) : nullptr;
        if (!type || type->basetype != LY_TYPE_ENUM) {
            return nullptr;
        }
        const lysc_type_bitenum_item *const enums = reinterpret_cast<const lysc_type_enum *>(type)->enums;
        for (LY_ARRAY_COUNT_TYPE i = 0; i < LY_ARRAY_COUNT(enums); ++i) {
            if (enums[i].value == place) {
                return enums[i].name;
            }
        }
        return nullptr;
    }

    const lys_module *module_;
    bool good_ = true;
};

void add_policy(Writer &out, lyd_node *policies, const lyd_node *policy)
{
    constexpr long seconds_a_minute = 60;
    const char *name = value(policy, "name");
    const std::optional<long> minutes = number(policy, "sak-rekey-interval");
    const char *seconds = value(policy, "sak-rekey-interval-sec");

    lyd_node *state = out.container(out.entry(policies, "policy", name), "state");
    out.leaf(state, "name", name);
    out.leaf(state, "key-server-priority", value(policy, "key-server-priority"));
    out.leaf_at_place(state, "confidentiality-offset", number(policy, "conf-offset"));
    out.leaf(state, "delay-protection", boolean(value(policy, "delay-protection")));
    out.leaf(state, "include-icv-indicator", boolean(value(policy, "include-icv-indicator")));
    out.leaf(state, "sak-rekey-interval", minutes ? std::to_string(*minutes * seconds_a_minute).c_str() : seconds);
    out.leaf_at_place(state, "macsec-cipher-suite", number(policy, "cipher-suite"));
}

// The six leaves of a start or an end; nothing unless all are there.
std::optional<std::tm> date_of(const lyd_node *lifetime, const std::string &side)
{
    static constexpr struct {
        const char *leaf;
        int std::tm::*part;
        int offset; // of what std::tm counts from
    } parts[] = {{"-year", &std::tm::tm_year, 1900}, {"-month", &std::tm::tm_mon, 0},
                 {"-date", &std::tm::tm_mday, 0},    {"-hour", &std::tm::tm_hour, 0},
                 {"-minutes", &std::tm::tm_min, 0},  {"-seconds", &std::tm::tm_sec, 0}};

    std::tm date{};
    for (const auto &part : parts) {
        const std::optional<long> found = number(lifetime, side + part.leaf);
        if (!found) {
            return std::nullopt;
        }
        date.*part.part = static_cast<int>(*found) - part.offset;
    }
    return date;
}

// Nothing for no date, and for a year that a date cannot be written with.
std::optional<std::string> date_text(const std::optional<std::tm> &date)
{
    constexpr int last_year = 9999 - 1900;
    std::array<char, sizeof "9999-12-31T23:59:59"> text{};
    if (!date || date->tm_year > last_year ||
        std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &*date) == 0) {
        return std::nullopt;
    }
    return text.data();
}

std::optional<std::tm> later(std::tm date, long seconds)
{
    const std::time_t end = std::mktime(&date) + seconds;
    return localtime_r(&end, &date) ? std::optional(date) : std::nullopt;
}

// A key's end is a duration from its start, a date or, where it is neither, none: the model admits one of them.
void add_end(Writer &out, lyd_node *state, const lyd_node *lifetime, const std::optional<std::tm> &start)
{
    const long duration = number(lifetime, "life-time").value_or(0); // 0 counts as not set
    const bool follows = duration != 0 && start;
    const std::optional<std::string> text = date_text(follows ? later(*start, duration) : date_of(lifetime, "end"));
    if (text || !follows) { // an end that no date can tell is not told
        out.leaf(state, "expiration-date-time", text ? text->c_str() : nullptr);
    }
}

void add_key(Writer &out, lyd_node *keys, const lyd_node *key)
{
    const char *id = value(key, "key-id");
    const lyd_node *lifetime = leaf_of(key, "macsec-lifetime");
    const std::optional<std::tm> start = date_of(lifetime, "start");
    const std::optional<std::string> start_text = date_text(start);

    lyd_node *state = out.container(out.entry(keys, "mka-key", id), "state");
    out.leaf(state, "id", id);
    out.leaf_at_place(state, "cryptographic-algorithm",
                      number(leaf_of(key, "macsec-key-string"), "cryptographic-algorithm"));
    out.leaf(state, "valid-date-time", start_text ? start_text->c_str() : nullptr);
    add_end(out, state, lifetime, start);
}

void add_key_chain(Writer &out, lyd_node *chains, const lyd_node *chain)
{
    const char *name = value(chain, "chain-name");
    const lyd_node *native_keys = descend(lyd_child(chain), {"macsec-keychain", "macsec-keys"});

    lyd_node *entry = out.entry(chains, "key-chain", name);
    out.leaf(out.container(entry, "state"), "name", name);
    lyd_node *keys = out.container(entry, "mka-keys");
    for (const lyd_node *key = native_keys ? lyd_child(native_keys) : nullptr; key; key = key->next) {
        add_key(out, keys, key);
    }
}

void add_interface(Writer &out, lyd_node *interfaces, const lyd_node *interface)
{
    const lyd_node *attachment = descend(lyd_child(interface), {"macsec", "psk-key-chain"});

    lyd_node *entry = out.entry(interfaces, "interface", value(interface, "interface-name"));
    out.counters(out.container(entry, "interfaces-state"));
    lyd_node *state = out.container(out.container(entry, "interfaces-mka"), "state");
    out.counters(state);
    out.leaf(state, "mka-policy", value(attachment, "policy-name"));
    out.leaf(state, "key-chain", value(attachment, "key-chain-name"));
}

template <typename Add>
void for_each_shown(const lyd_node *list_parent, const Shown &is_shown, Add add)
{
    for (const lyd_node *entry = list_parent ? lyd_child(list_parent) : nullptr; entry; entry = entry->next) {
        if (is_shown(entry)) {
            add(entry);
        }
    }
}

} // namespace

Tree derive_state(const ly_ctx *context, const lyd_node *configuration, const Shown &is_shown)
{
    Writer out(ly_ctx_get_module_implemented_ns(context, router::ns::operational));
    Tree tree(out.container(nullptr, "oc-macsec"));
    lyd_node *macsec = out.container(tree.get(), "macsec");
    lyd_node *mka = out.container(macsec, "mka");

    lyd_node *policies = out.container(mka, "policies");
    for_each_shown(descend(configuration, {"macsec", "policy-names"}), is_shown,
                   [&](const lyd_node *policy) { add_policy(out, policies, policy); });
    out.counters(out.container(mka, "mka-state"));
    lyd_node *chains = out.container(mka, "key-chains");
    for_each_shown(find(configuration, "keychains"), is_shown,
                   [&](const lyd_node *chain) { add_key_chain(out, chains, chain); });
    lyd_node *interfaces = out.container(macsec, "interfaces");
    std::unordered_set<std::string_view> names;
    for_each_shown(find(configuration, "interface-configurations"), is_shown, [&](const lyd_node *interface) {
        // The same interface may be configured in several forms; the first one counts.
        if (names.insert(value(interface, "interface-name")).second) {
            add_interface(out, interfaces, interface);
        }
    });
    return out.good() ? std::move(tree) : nullptr;
}

} // namespace simulation
