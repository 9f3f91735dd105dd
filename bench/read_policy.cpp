// Reads one policy by its name, as many times as asked, through a framework that stays: what a read costs a server that
// has loaded models and plug-in long ago. The native side here answers out of hand, so that no store's work is in it.
#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>

#include "environment.h"
#include "tqm/framework.h"

namespace
{

constexpr const char *filter = R"(<filter xmlns="urn:ietf:params:xml:ns:netconf:base:1.0">
  <macsec xmlns="http://openconfig.net/yang/macsec"><mka><policies><policy><name>P1</name></policy></policies></mka></macsec>
</filter>)";
constexpr const char *mka_ns = "http://tarvex.example/ns/yang/Tarvex-crypto-macsec-mka-cfg";
constexpr std::array<std::pair<const char *, const char *>, 8> leaves = {{{"name", "P1"},
                                                                          {"created", ""},
                                                                          {"key-server-priority", "1"},
                                                                          {"cipher-suite", "gcm-aes-xpn-256"},
                                                                          {"conf-offset", "conf-off-set-30"},
                                                                          {"delay-protection", ""},
                                                                          {"include-icv-indicator", ""},
                                                                          {"sak-rekey-interval-sec", "3600"}}};

class OnePolicy final : public tqm::NativeSide
{
public:
    tl::expected<void, tqm::NativeError> edit(std::span<const tqm::OutputNode *const>) override
    {
        return tl::unexpected(tqm::NativeError{.text = "nothing is edited here", .path = ""});
    }
    tqm::Expected<void> read(const tqm::OutputNode &, tqm::TreeBuilder &answer) override
    {
        answer.open(mka_ns, "macsec");
        answer.open(mka_ns, "policy-names");
        answer.open(mka_ns, "policy-name");
        for (const auto &[tag, value] : leaves) {
            answer.leaf(mka_ns, tag, value);
        }
        answer.close();
        answer.close();
        answer.close();
        return {};
    }
};

tqm::Expected<std::string> read_policy(tqm::Framework &framework, tqm::NativeSide &native)
{
    auto document = tqm::Document::parse(filter);
    if (!document) {
        return tl::unexpected(document.error());
    }
    const auto answer = framework.get_config(std::move(*document), native);
    if (!answer) {
        return tl::unexpected(answer.error());
    }
    std::string text;
    answer->print(text);
    return text;
}

int fail(const tqm::Error &error)
{
    std::fprintf(stderr, "error: %s\n", error.text.c_str());
    return 1;
}

} // namespace

int main(int count, char **arguments)
{
    if (count != 2) {
        std::fprintf(stderr, "usage: read_policy TIMES\n");
        return 2;
    }
    auto environment = ocmap::Environment::load({PLUGIN, YANG, true}, ocmap::Needs::schema);
    if (!environment) {
        return fail(environment.error());
    }
    tqm::Framework framework(environment->plugin(), environment->schema());
    OnePolicy native;
    std::string last;
    for (int times = std::atoi(arguments[1]); times > 0; --times) {
        auto text = read_policy(framework, native);
        if (!text) {
            return fail(text.error());
        }
        last = std::move(*text);
    }
    return std::fputs(last.c_str(), stdout) >= 0 ? 0 : 1;
}
