// See support.h.
#include "support.h"

#include <regex>

namespace test
{

const tqm::Schema &schema()
{
    static const tqm::Schema schema = [] {
        tqm::Schema made;
        made.add({.path = "/macsec/mka/policies/policy", .kind = tqm::NodeKind::list, .keys = {"name"}});
        made.add({.path = "/macsec/mka/key-chains/key-chain", .kind = tqm::NodeKind::list, .keys = {"name"}});
        made.add(
            {.path = "/macsec/mka/key-chains/key-chain/mka-keys/mka-key", .kind = tqm::NodeKind::list, .keys = {"id"}});
        made.add({.path = "/macsec/interfaces/interface", .kind = tqm::NodeKind::list, .keys = {"name"}});
        made.add(
            {.path = "/macsec/interfaces/interface/scsa-tx/scsa-tx", .kind = tqm::NodeKind::list, .keys = {"sci-tx"}});
        made.add(
            {.path = "/macsec/interfaces/interface/scsa-rx/scsa-rx", .kind = tqm::NodeKind::list, .keys = {"sci-rx"}});
        made.add({.path = "/macsec/mka/policies/policy/config/macsec-cipher-suite", .kind = tqm::NodeKind::leaf_list});
        made.add({.path = "/macsec/mka/policies/policy/state/macsec-cipher-suite", .kind = tqm::NodeKind::leaf_list});
        made.add({.path = "/macsec/policy-names/policy-name", .kind = tqm::NodeKind::list, .keys = {"name"}});
        made.add({.path = "/keychains/keychain", .kind = tqm::NodeKind::list, .keys = {"chain-name"}});
        made.add({.path = "/keychains/keychain/macsec-keychain/macsec-keys/macsec-key",
                  .kind = tqm::NodeKind::list,
                  .keys = {"key-id"}});
        made.add({.path = "/keychains/keychain/keys/key", .kind = tqm::NodeKind::list, .keys = {"key-id"}});
        made.add({.path = "/macsec/mka/key-chains/key-chain/mka-keys/mka-key/config/key-clear-text", .secret = true});
        made.add({.path = "/keychains/keychain/macsec-keychain/macsec-keys/macsec-key/macsec-key-string/string",
                  .secret = true});
        made.add({.path = "/interface-configurations/interface-configuration",
                  .kind = tqm::NodeKind::list,
                  .keys = {"active", "interface-name"}});
        made.add({.path = "/oc-macsec/macsec/mka/policies/policy", .kind = tqm::NodeKind::list, .keys = {"name"}});
        made.add({.path = "/oc-macsec/macsec/mka/key-chains/key-chain", .kind = tqm::NodeKind::list, .keys = {"name"}});
        made.add({.path = "/oc-macsec/macsec/mka/key-chains/key-chain/mka-keys/mka-key",
                  .kind = tqm::NodeKind::list,
                  .keys = {"id"}});
        made.add({.path = "/oc-macsec/macsec/interfaces/interface", .kind = tqm::NodeKind::list, .keys = {"name"}});
        made.add({.path = "/oc-macsec/macsec/interfaces/interface/scsa-txes/scsa-tx",
                  .kind = tqm::NodeKind::list,
                  .keys = {"sci-tx"}});
        made.add({.path = "/oc-macsec/macsec/interfaces/interface/scsa-rxes/scsa-rx",
                  .kind = tqm::NodeKind::list,
                  .keys = {"sci-rx"}});
        made.add({.path = "/oc-macsec/macsec/mka/policies/policy/state/macsec-cipher-suite",
                  .kind = tqm::NodeKind::leaf_list});
        return made;
    }();
    return schema;
}

const std::vector<tqm_map_reg_info> &registrations()
{
    static const std::vector<tqm_map_reg_info> made = [] {
        const auto tree = [](const char *ns, const char *top, const char *oc_top) {
            tqm_map_reg_info info{};
            std::snprintf(info.native_ns, sizeof info.native_ns, "http://tarvex.example/ns/yang/%s", ns);
            std::snprintf(info.oc_ns, sizeof info.oc_ns, "%s", oc_ns);
            std::snprintf(info.native_top, sizeof info.native_top, "%s", top);
            std::snprintf(info.oc_top, sizeof info.oc_top, "%s", oc_top);
            return info;
        };
        return std::vector{tree("Tarvex-crypto-macsec-mka-cfg", "macsec", "macsec"),
                           tree("Tarvex-lib-keychain-cfg", "keychains", "macsec"),
                           tree("Tarvex-ifmgr-cfg", "interface-configurations", "macsec"),
                           tree("Tarvex-PRIVATE-oc-macsec-oper", "oc-macsec", "oc-macsec")};
    }();
    return made;
}

struct Walk::State {
    uint32_t kind;
    tqm::Direction direction;
    tqm::Faults faults = {};
    tqm::Watch watch = {};
    bool questions = false;
    bool no_configuration = false;
    rcode rc = 0;
    Lines calls = {};
    Lines traces = {};
    Lines logs = {};
    std::unique_ptr<tqm::Journal> journal = {};
    std::unique_ptr<tqm::Request> request = {};
};

Walk::Walk(uint32_t kind, tqm::Direction direction)
    : state_(std::make_shared<State>(State{kind, direction})), rc(state_->rc), calls(state_->calls),
      traces(state_->traces), logs(state_->logs)
{
}

Walk &Walk::fault(const Fault &fault)
{
    state_->faults.fail(fault.operation, fault.nth, fault.code);
    state_->watch.faults = &state_->faults;
    return *this;
}

Walk &Walk::trace()
{
    state_->watch.trace_on = true;
    state_->watch.trace = [&lines = traces](std::string_view line) { lines.emplace_back(line); };
    return *this;
}

Walk &Walk::log()
{
    state_->watch.log_errors = true;
    state_->watch.log_trace = true;
    state_->watch.log = [&lines = logs](uint32_t, std::string_view line) { lines.emplace_back(line); };
    return *this;
}

Walk &Walk::questions()
{
    state_->questions = true;
    return *this;
}

Walk &Walk::without_configuration()
{
    state_->no_configuration = true;
    return *this;
}

tqm::Request &Walk::request()
{
    State &state = *state_;
    if (!state.request) {
        state.journal = std::make_unique<tqm::Journal>(
            [&lines = calls](std::string_view line) { lines.emplace_back(line); }, state.questions);
        state.watch.journal = state.journal.get();
        state.request =
            std::make_unique<tqm::Request>(schema(), registrations(), state.kind, state.direction, state.watch);
        if (state.no_configuration) {
            state.request->header().option_group_5 = 0x2000;
            state.request->header().data_selector = TQM_DATA_SELECTOR_NO_CONFIG;
        }
    }
    return *state.request;
}

Walk &Walk::run(tqm_map_function function, const rdl_tqm_datatree *node)
{
    rc = function(request().ctx(), node, request().out());
    return *this;
}

Walk &Walk::forward(std::string_view inside_macsec)
{
    const bool read = state_->kind == TQM_REQ_GET || state_->kind == TQM_REQ_GET_CONFIG;
    const std::string wrapper = read ? "filter" : "config";
    const std::string text = "<" + wrapper + " xmlns:nc='urn:ietf:params:xml:ns:netconf:base:1.0'><macsec xmlns='" +
                             oc_ns + "'>" + std::string(inside_macsec) + "</macsec></" + wrapper + ">";
    auto document = tqm::Document::parse(text);
    EXPECT_TRUE(document) << document.error().text;
    const auto loaded = request().load(std::move(*document));
    EXPECT_TRUE(loaded) << loaded.error().text;
    return run(ymap_ot_oc_macsec_openconfigmacsec_lvla_macsec, request().tree());
}

Walk &Walk::reverse(std::string_view native, tqm_map_function root)
{
    auto document = tqm::Document::parse("<data>" + std::string(native) + "</data>");
    EXPECT_TRUE(document) << document.error().text;
    const auto loaded = request().load(std::move(*document));
    EXPECT_TRUE(loaded) << loaded.error().text;
    return run(root, request().tree());
}

Lines Walk::lines_of(std::string_view operation) const
{
    Lines found;
    for (const std::string &call : calls) {
        if (call.starts_with(std::string(operation) + "(")) {
            found.push_back(call.substr(operation.size()));
        }
    }
    return found;
}

Lines Walk::adds() const
{
    static const std::regex form(
        R"re((?:\w+)\("([^"]*)".*value=([^,]*), source=([^,]*), .*list_entry=(\d).*\) = (.*))re");
    Lines found;
    for (const std::string &call : calls) {
        std::smatch match;
        if (call.starts_with("tqm_map_datatree_add_path") && std::regex_match(call, match, form)) {
            found.push_back(match[1].str() + "=" + match[2].str() +
                            (match[3] == "null" ? "" : " from " + match[3].str()) + (match[4] == "1" ? " entry" : "") +
                            (match[5] == "0" ? "" : " -> " + match[5].str()));
        }
    }
    return found;
}

Lines Walk::texts() const
{
    static const std::regex form(R"(#\d+: (TRC|ERR): (\w+):\d+ ctx=\S+?,(.*))");
    Lines found;
    for (const std::string &line : traces) {
        std::smatch match;
        EXPECT_TRUE(std::regex_match(line, match, form)) << line;
        found.push_back(match[2].str() + ": " + match[3].str());
    }
    return found;
}

Lines Walk::texts_of(const std::string &function) const
{
    Lines found;
    for (const std::string &text : texts()) {
        if (text.starts_with(function + ": ")) {
            found.push_back(text.substr(function.size() + 2));
        }
    }
    return found;
}

std::string Walk::tag()
{
    const char *const tag = request().record().error_tag;
    return tag == nullptr ? "" : tag;
}

std::string Walk::message()
{
    const char *const text = request().record().error_msg;
    return text == nullptr ? "" : text;
}

std::string Walk::error_path()
{
    return request().error_path();
}

namespace
{

void collect(const tqm::OutputNode &node, Lines &lines)
{
    if (node.is_list_entry() || node.children().empty()) {
        std::string line(node.path());
        if (node.value() != nullptr) {
            line += std::string("=") + node.value();
        }
        static constexpr const char *names[] = {"", ":replace", ":create", ":delete", ":remove", ":none"};
        line += names[node.operation().value_or(TQM_OP_MERGE)];
        lines.push_back(line);
    }
    for (const tqm::OutputNode &child : node.children()) {
        collect(child, lines);
    }
}

} // namespace

Lines Walk::built()
{
    Lines lines;
    for (const tqm::OutputNode *root : request().roots()) {
        collect(*root, lines);
    }
    return lines;
}

std::string policy(std::string_view inside, std::string_view operation, std::string_view name)
{
    const std::string attribute = operation.empty() ? "" : " nc:operation='" + std::string(operation) + "'";
    return "<mka><policies><policy" + attribute + "><name>" + std::string(name) + "</name>" + std::string(inside) +
           "</policy></policies></mka>";
}

std::string native_policies(std::string_view inside)
{
    return std::string("<macsec xmlns='") + mka_ns + "'><policy-names>" + std::string(inside) +
           "</policy-names></macsec>";
}

} // namespace test
