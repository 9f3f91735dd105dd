// One walk runs at a time in a process, however many frameworks there are.
#include <atomic>
#include <chrono>
#include <thread>

#include <gtest/gtest.h>

#include "support.h"

namespace
{

using namespace test;
using tqm::Document;

constexpr int threads = 4;
constexpr int walks = 50;

std::atomic<int> inside = 0;
std::atomic<int> most_inside = 0;
std::atomic<int> walked = 0;

/// Stays inside long enough for another to come in, if it can.
rcode counting_root(tqm_map_ctx, const rdl_tqm_datatree *, rdl_tqm_datatree *)
{
    const int now = ++inside;
    for (int most = most_inside; now > most && !most_inside.compare_exchange_weak(most, now);) {
    }
    std::this_thread::sleep_for(std::chrono::microseconds(200));
    ++walked;
    --inside;
    return 0;
}

TEST(OneWalk, runs_at_a_time_in_a_process)
{
    std::vector<tqm_map_reg_info> maps = registrations();
    for (tqm_map_reg_info &map : maps) {
        map.forward_root = counting_root;
        map.reverse_root = counting_root;
    }
    const tqm::Schema models = schema();
    const tqm::Plugin plugin(maps);
    const auto run = [&](bool forward) {
        tqm::Framework framework(plugin, models);
        for (int walk = 0; walk < walks; ++walk) {
            const std::string tag = forward ? "oc" : "pol";
            const std::string ns = forward ? oc_ns : native_ns;
            Document document = Document::parse("<" + tag + " xmlns=\"" + ns + "\"/>").value();
            const auto trees =
                forward ? framework.forward(std::move(document)) : framework.reverse(std::move(document));
            EXPECT_TRUE(trees.has_value());
        }
    };
    std::vector<std::thread> running;
    for (int i = 0; i < threads; ++i) {
        running.emplace_back(run, i % 2 == 0); // both directions share the one lock
    }
    for (std::thread &thread : running) {
        thread.join();
    }
    EXPECT_EQ(walked, threads * walks);
    EXPECT_EQ(most_inside, 1);
}

} // namespace
