// The walkers alone, without documents and stores: time for each node of a request or answer, forward and reverse, with
// the log sinks off and on. The framework's operations are in these times, as no walk happens without them.
#include <benchmark/benchmark.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "model_schema.h"
#include "openconfig.h"
#include "tqm/plugin.h"
#include "tqm/request.h"

namespace
{

constexpr std::array entry_points = {"tqm_map_reg_ocmacsec_conf"};
constexpr const char *oc_ns = "http://openconfig.net/yang/macsec";
constexpr const char *mka_ns = "http://tarvex.example/ns/yang/Tarvex-crypto-macsec-mka-cfg";

struct Loaded {
    tqm::Plugin plugin;
    tqm::Schema schema;
};

Loaded load()
{
    auto plugin = tqm::Plugin::load(PLUGIN, entry_points);
    auto models = ocmap::load_models(YANG);
    if (!plugin || plugin->registrations().empty() || !models) {
        std::fprintf(stderr, "walk_bench: the plug-in or the models cannot be loaded\n");
        std::exit(1);
    }
    return {std::move(*plugin), ocmap::schema_of(*models)};
}

const Loaded &loaded()
{
    static const Loaded once = load();
    return once;
}

class Tree
{
public:
    Tree(tqm::TreeBuilder builder, const char *ns) : builder_(std::move(builder)), ns_(ns) {}
    Tree &open(const char *tag)
    {
        ++nodes_;
        builder_.open(ns_, tag);
        return *this;
    }
    Tree &leaf(const char *tag, const std::string &value)
    {
        ++nodes_;
        builder_.leaf(ns_, tag, value);
        return *this;
    }
    Tree &close()
    {
        builder_.close();
        return *this;
    }
    tqm::TreeBuilder::Roots finish() { return builder_.finish(); }
    int64_t nodes() const { return nodes_; }

private:
    tqm::TreeBuilder builder_;
    const char *ns_;
    int64_t nodes_ = 0;
};

int64_t adopt_edit(tqm::Request &request, int64_t policies)
{
    Tree tree(request.builder(), oc_ns);
    tree.open("macsec").open("mka").open("policies");
    for (int64_t index = 0; index < policies; ++index) {
        const std::string name = "P" + std::to_string(index);
        tree.open("policy").leaf("name", name).open("config").leaf("name", name);
        tree.leaf("key-server-priority", "10").leaf("macsec-cipher-suite", "GCM_AES_XPN_256");
        tree.leaf("confidentiality-offset", "30_BYTES").leaf("delay-protection", "true");
        tree.leaf("include-icv-indicator", "true").leaf("sak-rekey-interval", "3600").close().close();
    }
    request.adopt(tree.close().close().close().finish());
    return tree.nodes();
}

int64_t adopt_answer(tqm::Request &request, int64_t policies)
{
    Tree tree(request.builder(), mka_ns);
    tree.open("macsec").open("policy-names");
    for (int64_t index = 0; index < policies; ++index) {
        tree.open("policy-name").leaf("name", "P" + std::to_string(index)).leaf("created", "");
        tree.leaf("key-server-priority", "10").leaf("cipher-suite", "gcm-aes-xpn-256");
        tree.leaf("conf-offset", "conf-off-set-30").leaf("delay-protection", "");
        tree.leaf("include-icv-indicator", "").leaf("sak-rekey-interval-sec", "3600").close();
    }
    request.adopt(tree.close().close().finish());
    return tree.nodes();
}

// The second argument switches both log sinks on; their lines go nowhere.
void walk(benchmark::State &state, tqm::Direction direction)
{
    const bool forward = direction == tqm::Direction::forward;
    tqm::Watch watch;
    watch.log_errors = watch.log_trace = watch.trace_on = state.range(1) != 0;
    int64_t nodes = 0;
    for ([[maybe_unused]] auto once : state) {
        state.PauseTiming();
        tqm::Request request(loaded().schema, loaded().plugin.registrations(), forward ? TQM_REQ_EDIT : TQM_REQ_GET,
                             direction, watch);
        nodes += forward ? adopt_edit(request, state.range(0)) : adopt_answer(request, state.range(0));
        const tqm_map_reg_info &tree = loaded().plugin.registrations().front();
        const tqm_map_function root = forward ? tree.forward_root : tree.reverse_root;
        state.ResumeTiming();
        if (root(request.ctx(), request.tree(), request.out()) != 0) {
            state.SkipWithError("the walk failed");
        }
        state.PauseTiming();
        benchmark::DoNotOptimize(request.out());
        state.ResumeTiming();
    }
    using benchmark::Counter;
    state.counters["node"] = Counter(static_cast<double>(nodes), Counter::kIsRate | Counter::kInvert);
}

BENCHMARK_CAPTURE(walk, forward, tqm::Direction::forward)
    ->ArgNames({"policies", "logs"})
    ->ArgsProduct({{1000, 10000}, {0, 1}})
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(walk, reverse, tqm::Direction::reverse)
    ->ArgNames({"policies", "logs"})
    ->ArgsProduct({{1000, 10000}, {0, 1}})
    ->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
