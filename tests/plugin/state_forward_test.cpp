// State, OpenConfig to native: every leaf is a read of one leaf of the private operational model, or is refused.
#include <dlfcn.h>

#include <algorithm>
#include <iterator>
#include <sstream>

#include "support.h"

using namespace test;

namespace
{

Lines components; // of the last read: the root, then the components themselves

} // namespace

// Stands before the framework's operation to see the components that its journal joins.
extern "C" rcode tqm_map_add_leaf_from_xpath(tqm_map_ctx ctx, const rdl_tqm_datatree *node, rdl_tqm_datatree *out,
                                             const char *root, const char *ns, const char *const *parts, uint32_t count)
{
    static const auto framework =
        reinterpret_cast<decltype(&tqm_map_add_leaf_from_xpath)>(dlsym(RTLD_NEXT, "tqm_map_add_leaf_from_xpath"));
    components.assign({root});
    components.insert(components.end(), parts, parts + count);
    return framework(ctx, node, out, root, ns, parts, count);
}

namespace
{

Lines words(const std::string &text)
{
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

/// Leaves of one OpenConfig container: those that are read below a native container, as one path of `depth`
/// components each, and those that have no native counterpart.
const struct Group {
    std::string container;
    std::string native;
    size_t depth;
    std::string read;
    std::string unsupported;
} groups[] = {
    {"mka/policies/policy/state", "/oc-macsec/macsec/mka/policies/policy/state", 7,
     "name key-server-priority delay-protection include-icv-indicator sak-rekey-interval",
     "sak-rekey-on-live-peer-loss use-updated-eth-header"},
    {"mka/key-chains/key-chain/state", "/oc-macsec/macsec/mka/key-chains/key-chain/state", 7, "name", ""},
    {"mka/key-chains/key-chain/mka-keys/mka-key/state",
     "/oc-macsec/macsec/mka/key-chains/key-chain/mka-keys/mka-key/state", 9, "id valid-date-time expiration-date-time",
     "key-clear-text"},
    {"mka/state/counters", "/oc-macsec/macsec/mka/mka-state/counters", 6,
     "out-mkpdu-errors in-mkpdu-icv-verification-errors in-mkpdu-validation-errors in-mkpdu-bad-peer-errors "
     "in-mkpdu-peer-list-errors sak-generation-errors sak-hash-errors sak-encryption-errors sak-decryption-errors "
     "sak-cipher-mismatch-errors",
     ""},
    {"interfaces/interface/state", "/oc-macsec/macsec/interfaces/interface", 5, "name", "enable replay-protection"},
    {"interfaces/interface/state/counters", "/oc-macsec/macsec/interfaces/interface/interfaces-state/counters", 7,
     "tx-untagged-pkts rx-untagged-pkts rx-badtag-pkts rx-unknownsci-pkts rx-nosci-pkts", ""},
    {"interfaces/interface/scsa-tx/scsa-tx/state", "/oc-macsec/macsec/interfaces/interface/scsa-txes/scsa-tx/state", 8,
     "sci-tx", ""},
    {"interfaces/interface/scsa-tx/scsa-tx/state/counters",
     "/oc-macsec/macsec/interfaces/interface/scsa-txes/scsa-tx/state/counters", 9, "sc-encrypted sa-encrypted",
     "sc-auth-only sa-auth-only"},
    {"interfaces/interface/scsa-rx/scsa-rx/state", "/oc-macsec/macsec/interfaces/interface/scsa-rxes/scsa-rx/state", 8,
     "sci-rx", ""},
    {"interfaces/interface/scsa-rx/scsa-rx/state/counters",
     "/oc-macsec/macsec/interfaces/interface/scsa-rxes/scsa-rx/state/counters", 9,
     "sc-invalid sc-valid sa-invalid sa-valid", ""},
    {"interfaces/interface/mka/state", "/oc-macsec/macsec/interfaces/interface/interfaces-mka/state", 7,
     "mka-policy key-chain", ""},
    {"interfaces/interface/mka/state/counters", "/oc-macsec/macsec/interfaces/interface/interfaces-mka/state/counters",
     8, "in-mkpdu in-sak-mkpdu out-mkpdu out-sak-mkpdu", "in-cak-mkpdu out-cak-mkpdu"},
};

/// Paths of the leaves that hand-written mappers read.
const std::string policy_path = "oc-macsec/macsec/mka/policies/policy/state";
const std::string key_path = "oc-macsec/macsec/mka/key-chains/key-chain/mka-keys/mka-key/state";

/// `inside` in the elements of `path`, with the keys of the lists that are on it; a state list has none.
std::string at(const std::string &path, const std::string &inside)
{
    const size_t end = path.rfind('/');
    const std::string tag = path.substr(end == std::string::npos ? 0 : end + 1);
    const std::string parent = end == std::string::npos ? "" : path.substr(0, end);
    std::string key;
    if (parent.ends_with("policies") || parent.ends_with("key-chains") || parent == "interfaces") {
        key = "<name>N1</name>";
    } else if (parent.ends_with("mka-keys")) {
        key = "<id>01</id>";
    }
    const std::string element = "<" + tag + ">" + key + inside + "</" + tag + ">";
    return parent.empty() ? element : at(parent, element);
}

std::string read_line(const std::string &path, const std::string &node)
{
    return "(\"" + path + "\", ns=Tarvex-PRIVATE-oc-macsec-oper, node=" + node + ") = 0";
}

/// The adds of the three leaves with mappers of their own, as `adds` gives them.
Lines mapped_adds(const Walk &walk)
{
    Lines found = walk.adds();
    std::erase_if(found, [](const std::string &add) { return !add.starts_with("oc-macsec/"); });
    return found;
}

TEST(StateForward, AFillFromTheRootReadsEveryLeafOnce)
{
    Lines expected;
    for (const Group &group : groups) {
        for (const std::string &leaf : words(group.read)) {
            expected.push_back(read_line(group.native + "/" + leaf, "macsec"));
        }
    }
    ASSERT_EQ(expected.size(), 39u);
    Walk walk = get().forward("");
    EXPECT_EQ(walk.rc, 0u);
    EXPECT_EQ(walk.tag(), "macsec"); // left by the leaves that were passed over
    Lines reads = walk.lines_of("tqm_map_add_leaf_from_xpath");
    std::ranges::sort(reads);
    std::ranges::sort(expected);
    EXPECT_EQ(reads, expected);
    EXPECT_EQ(mapped_adds(walk), (Lines{policy_path + "/macsec-cipher-suite=null from macsec",
                                        policy_path + "/confidentiality-offset=null from macsec",
                                        key_path + "/cryptographic-algorithm=null"}));

    Walk configuration = get_config().forward("");
    EXPECT_EQ(configuration.rc, 0u);
    EXPECT_EQ(configuration.lines_of("tqm_map_add_leaf_from_xpath"), Lines{});
    EXPECT_EQ(mapped_adds(configuration), Lines{});
}

TEST(StateForward, EachLeafByItsName)
{
    for (const Group &group : groups) {
        for (const std::string &leaf : words(group.read)) {
            const std::string path = group.native + "/" + leaf;
            const std::string inside = at(group.container, "<" + leaf + "/>");
            Walk walk = get().forward(inside);
            EXPECT_EQ(walk.rc, 0u) << path;
            EXPECT_EQ(walk.lines_of("tqm_map_add_leaf_from_xpath"), Lines{read_line(path, leaf)});
            EXPECT_EQ(walk.tag(), "") << path;
            // The root, then one component a level, each with its slash.
            Lines levels{"/oc-macsec"};
            for (size_t from = 0; from != std::string::npos;) {
                const size_t to = path.find('/', from + 1);
                levels.push_back(path.substr(from, to == std::string::npos ? to : to - from));
                from = to;
            }
            EXPECT_EQ(components, levels);
            EXPECT_EQ(components.size() - 1, group.depth) << path;
            // Nothing is read of the configuration's leaf of that name.
            EXPECT_TRUE(std::ranges::none_of(
                walk.adds(), [&](const std::string &add) { return add.ends_with("/" + leaf + "=null"); }));
            // In other requests state is unknown: ignored in a read, refused in an edit.
            Walk configuration = get_config().forward(inside);
            EXPECT_EQ(configuration.rc, 0u) << path;
            EXPECT_EQ(configuration.lines_of("tqm_map_add_leaf_from_xpath"), Lines{});
            Walk edited = edit().forward(inside);
            EXPECT_EQ(edited.rc, TQM_ERR_UNSUPPORTED) << path;
            EXPECT_EQ(edited.tag(), path.find("/scsa-tx") != std::string::npos   ? "scsa-tx"
                                    : path.find("/scsa-rx") != std::string::npos ? "scsa-rx"
                                                                                 : "state");
        }
    }
}

TEST(StateForward, UnsupportedLeavesAreRefusedByNameAndPassedOverInFills)
{
    for (const Group &group : groups) {
        for (const std::string &leaf : words(group.unsupported)) {
            Walk named = get().forward(at(group.container, "<" + leaf + "/>"));
            EXPECT_EQ(named.rc, TQM_ERR_UNSUPPORTED) << leaf;
            EXPECT_EQ(named.tag(), leaf);
            EXPECT_TRUE(named.error_path().ends_with(group.container.ends_with("/counters") ? "/counters" : "/state"))
                << named.error_path();
        }
        // Whole containers: the tag of the container is left where such a leaf was met.
        Walk whole = get().forward(at(group.container, ""));
        EXPECT_EQ(whole.rc, 0u);
        const bool met = std::ranges::any_of(groups, [&](const Group &below) {
            return below.container.starts_with(group.container) && !below.unsupported.empty();
        });
        EXPECT_EQ(whole.tag(), met ? group.container.substr(group.container.rfind('/') + 1) : "") << group.container;
    }
}

TEST(StateForward, MappedLeavesHandOnValueAndSource)
{
    const std::string policy_state = "mka/policies/policy/state";
    const std::string key_state = "mka/key-chains/key-chain/mka-keys/mka-key/state";
    const struct {
        const std::string &container;
        const char *element;
        std::string add;
    } cases[] = {
        {policy_state, "<macsec-cipher-suite/>", policy_path + "/macsec-cipher-suite=null from macsec-cipher-suite"},
        {policy_state, "<macsec-cipher-suite>GCM_AES_128</macsec-cipher-suite>",
         policy_path + "/macsec-cipher-suite=\"GCM_AES_128\" from macsec-cipher-suite"},
        {policy_state, "<confidentiality-offset>0_BYTES</confidentiality-offset><name/>",
         policy_path + "/confidentiality-offset=\"0_BYTES\" from confidentiality-offset"},
        {key_state, "<cryptographic-algorithm>AES_128_CMAC</cryptographic-algorithm><id/>",
         key_path + "/cryptographic-algorithm=null"},
    };
    for (const auto &one : cases) {
        Walk walk = get().forward(at(one.container, one.element));
        EXPECT_EQ(walk.rc, 0u);
        EXPECT_EQ(mapped_adds(walk), Lines{one.add});
    }
    // Paths with and without a slash in front come out in one entry.
    Walk native = get().forward(at(policy_state, "<confidentiality-offset/><name/>"));
    const Lines built = native.built();
    const std::string list = "/oc-macsec/macsec/mka/policies/policy";
    EXPECT_EQ(Lines(std::ranges::find(built, list), built.end()),
              (Lines{list, list + "/name=N1", list + "/state/confidentiality-offset", list + "/state/name"}));
}

TEST(StateForward, KeysOfSecureChannelsCannotBeNamed)
{
    const Lines reads[] = {
        {"/sci-tx", "/counters/sc-encrypted", "/counters/sa-encrypted"},
        {"/sci-rx", "/counters/sc-invalid", "/counters/sc-valid", "/counters/sa-invalid", "/counters/sa-valid"}};
    for (const std::string side : {"tx", "rx"}) {
        const std::string list = "scsa-" + side;
        const std::string key = "sci-" + side;
        const std::string path = "interfaces/interface/" + list + "/" + list;
        for (const std::string &element : {"<" + key + ">1</" + key + ">", "<" + key + "/>"}) {
            Walk named = get().forward(at(path, element + "<state/>"));
            EXPECT_EQ(named.rc, TQM_ERR_UNSUPPORTED);
            EXPECT_EQ(named.tag(), key);
            EXPECT_TRUE(named.error_path().starts_with("/macsec/interfaces/interface[name='N1']/" + list + "/" + list));
            EXPECT_EQ(named.lines_of("tqm_map_add_leaf_from_xpath"), Lines{});
            const rdl_tqm_datatree &interface = named.request().tree()->subtree[0].subtree[0];
            EXPECT_EQ(interface.subtree[1].subtree[0].subtree[0].is_key, 1);

            Walk configuration = get_config().forward(at(path, element));
            EXPECT_EQ(configuration.rc, 0u);
            EXPECT_EQ(configuration.tag(), "");
        }
        // Without a key, or by the state below it, the list is read.
        Lines expected;
        for (const std::string &leaf : reads[side == "tx" ? 0 : 1]) {
            expected.push_back(read_line(
                "/oc-macsec/macsec/interfaces/interface/scsa-" + side + "es/" + list + "/state" + leaf, list));
        }
        Walk keyless = get().forward(at(path, ""));
        EXPECT_EQ(keyless.rc, 0u);
        EXPECT_EQ(keyless.lines_of("tqm_map_add_leaf_from_xpath"), expected);
        EXPECT_EQ(keyless.tag(), list);
        Walk below = get().forward(at(path, "<state/>"));
        EXPECT_EQ(below.rc, 0u);
        EXPECT_EQ(below.lines_of("tqm_map_add_leaf_from_xpath").size(), expected.size());
        EXPECT_EQ(below.adds().back(), key + "=null"); // the filter has got the key that it did not name
    }
}

TEST(StateForward, AFailedReadEndsTheWalkWithItsCode)
{
    constexpr rcode failure = 0x1234;
    const std::string named = "<name/><delay-protection/><macsec-cipher-suite/><sak-rekey-interval/>";
    Walk walk = get().trace();
    walk.fault({"tqm_map_add_leaf_from_xpath", 2, failure}).forward(at("mka/policies/policy/state", named));
    EXPECT_EQ(walk.rc, failure);
    EXPECT_EQ(walk.lines_of("tqm_map_add_leaf_from_xpath").size(), 2u);
    EXPECT_EQ(mapped_adds(walk), Lines{});
    EXPECT_EQ(walk.texts_of("ymap_ot_oc_macsec_openconfigmacsec_leaf_lvla_macsec_state_name"), Lines{"Start"});

    Walk mapped = get().trace();
    mapped.fault({"tqm_map_datatree_add_path", 1, failure}).forward(at("mka/policies/policy/state", named));
    EXPECT_EQ(mapped.rc, failure);
    EXPECT_EQ(mapped.lines_of("tqm_map_add_leaf_from_xpath").size(), 2u);
    EXPECT_EQ(mapped.texts_of("ymap_ot_ocmacsec_cipher_suite_oper_fwd"), (Lines{"Start", "End"}));
}

} // namespace
