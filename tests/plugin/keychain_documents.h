// Key chains as requests give them and as the native side answers them, and the zone that lifetimes are read in.
#pragma once

#include <cstdlib>
#include <ctime>
#include <iterator>
#include <optional>
#include <sstream>
#include <string>

#include "support.h"
#include "ymap_oc_macsec.h"

extern "C" {
rcode ymap_to_oc_macsec_tarvexlibkeychaincfg_lvla_keychains(tqm_map_ctx, const rdl_tqm_datatree *, rdl_tqm_datatree *);
}

namespace test
{

inline const std::string native_chain = "/keychains/keychain";
inline const std::string native_key = native_chain + "/macsec-keychain/macsec-keys/macsec-key";
inline const std::string oc_chain = "/macsec/mka/key-chains/key-chain";
inline const std::string oc_key = oc_chain + "/mka-keys/mka-key";

/// Text or elements in an element.
inline std::string leaf(const std::string &name, const std::string &text)
{
    return "<" + name + ">" + text + "</" + name + ">";
}

inline std::string element(const std::string &name, const std::string &operation, const std::string &inside)
{
    const std::string attribute = operation.empty() ? "" : " nc:operation='" + operation + "'";
    return "<" + name + attribute + ">" + inside + "</" + name + ">";
}

/// Texts between blanks.
inline Lines words(const std::string &text)
{
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

inline const Lines months = words("jan feb mar apr may jun jul aug sep oct nov dec");
inline const Lines date_parts = {"year", "month", "date", "hour", "minutes", "seconds"};

/// The six native leaves of the start or the end from "2024 mar 5 7 8 9".
inline std::string six(const std::string &end, const std::string &values)
{
    std::string leaves;
    for (std::size_t index = 0; index < date_parts.size(); ++index) {
        leaves += leaf(end + "-" + date_parts[index], words(values)[index]);
    }
    return leaves;
}

/// OpenConfig: `inside` in one key chain, and `inside` in the keys of a chain.
inline std::string chain(const std::string &inside, const std::string &operation = "", const std::string &name = "C1")
{
    return leaf("mka", leaf("key-chains", element("key-chain", operation, leaf("name", name) + inside)));
}
inline std::string key(const std::string &inside, const std::string &operation = "", const std::string &id = "01")
{
    return leaf("mka-keys", element("mka-key", operation, leaf("id", id) + inside));
}

/// Native: whole document, chain, MACsec part of a chain, key.
inline std::string native_chains(const std::string &inside)
{
    return "<keychains xmlns='http://tarvex.example/ns/yang/Tarvex-lib-keychain-cfg' "
           "xmlns:nc='urn:ietf:params:xml:ns:netconf:base:1.0'>" +
           inside + "</keychains>";
}
inline std::string macsec(const std::string &keys)
{
    return leaf("macsec-keychain", leaf("macsec-keys", keys));
}
inline std::string macsec_chain(const std::string &name, const std::string &keys)
{
    return leaf("keychain", leaf("chain-name", name) + macsec(keys));
}
inline std::string native_macsec_key(const std::string &id, const std::string &inside)
{
    return leaf("macsec-key", leaf("key-id", id) + inside);
}

inline constexpr tqm_map_function native_chains_root = ymap_to_oc_macsec_tarvexlibkeychaincfg_lvla_keychains;

/// The tree of a native document, not walked yet: for what no document can say.
inline rdl_tqm_datatree *loaded(Walk &walk, const std::string &native)
{
    auto document = tqm::Document::parse("<data>" + native + "</data>");
    EXPECT_TRUE(document) << document.error().text;
    const auto done = walk.request().load(std::move(*document));
    EXPECT_TRUE(done) << done.error().text;
    return walk.request().tree();
}

/// The local time zone, for as long as this lives.
class Zone
{
    std::optional<std::string> before_;

public:
    explicit Zone(const char *zone)
    {
        if (const char *const before = std::getenv("TZ")) {
            before_ = before;
        }
        setenv("TZ", zone, 1);
        tzset();
    }
    ~Zone()
    {
        before_ ? setenv("TZ", before_->c_str(), 1) : unsetenv("TZ");
        tzset();
    }
    Zone(const Zone &) = delete;
    Zone &operator=(const Zone &) = delete;
};

// Zones by their rules: a minimal system knows no names.
inline constexpr const char *utc = "UTC0";
inline constexpr const char *berlin = "CET-1CEST,M3.5.0,M10.5.0/3";
inline constexpr const char *kathmandu = "<+0545>-5:45";

} // namespace test
