// The two buffers that the mappers of keys take from the heap: what becomes of a request when one cannot be had, and
// that the one of a key text holds nothing when it is given back.
#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>

#include "support/walk.h"

// A sanitizer has a heap of its own, which these functions cannot stand before.
#ifndef __SANITIZE_ADDRESS__

namespace
{

std::size_t failing_size = 0; // the next calloc of so many bytes fails
std::size_t watched_size = 0; // the next calloc of so many bytes is looked at when it is freed
const unsigned char *watched = nullptr;
bool freed_clear = false;

bool takes(std::size_t &awaited, std::size_t bytes)
{
    const bool met = awaited != 0 && awaited == bytes;
    awaited = met ? 0 : awaited;
    return met;
}

} // namespace

extern "C" {
void *__libc_calloc(std::size_t count, std::size_t size);
void __libc_free(void *memory);

void *calloc(std::size_t count, std::size_t size) noexcept
{
    if (takes(failing_size, count * size)) {
        return nullptr;
    }
    void *const memory = __libc_calloc(count, size);
    if (takes(watched_size, count * size)) {
        watched = static_cast<unsigned char *>(memory);
    }
    return memory;
}

void free(void *memory) noexcept
{
    if (memory != nullptr && memory == watched) {
        freed_clear = std::all_of(watched, watched + 1000, [](unsigned char byte) { return byte == 0; });
        watched = nullptr;
    }
    __libc_free(memory);
}
}

namespace
{

using namespace test;

Walk with_key_text(std::size_t length)
{
    const std::string path = "mka/key-chains/key-chain[name=C1]/mka-keys/mka-key[id=01]/config/key-clear-text";
    Walk walk(TQM_REQ_EDIT, Direction::forward);
    walk.load(document(TQM_REQ_EDIT, Direction::forward, wrap(path, std::string(length, 'k'))));
    return walk;
}

TEST(Allocation, WithoutABufferAKeyTextIsRefused)
{
    Walk walk = with_key_text(10);
    failing_size = 1000;
    EXPECT_EQ(walk.run().outcome(), "INVALID_REQUEST, \"No memory for key-clear-text\"");
    EXPECT_EQ(failing_size, 0u);
    EXPECT_EQ(walk.calls_of("tqm_map_datatree_add_path").size(), 0u);
}

TEST(Allocation, TheBufferOfAKeyTextIsClearedBeforeItIsFreed)
{
    for (const std::size_t length : {10u, 998u, 999u}) {
        Walk walk = with_key_text(length);
        freed_clear = false;
        watched_size = 1000;
        walk.run();
        EXPECT_EQ(watched_size, 0u);
        EXPECT_TRUE(freed_clear) << length;
    }
}

TEST(Allocation, WithoutABufferAnEndByDurationFails)
{
    std::string leaves = "<start-month>jan</start-month><life-time>60</life-time>";
    for (const char *part : {"start-year", "start-date", "start-hour", "start-minutes", "start-seconds"}) {
        leaves += wrap(part, "1");
    }
    Walk walk(TQM_REQ_GET, Direction::reverse);
    walk.load(document(TQM_REQ_GET, Direction::reverse,
                       wrap("keychains/keychain/macsec-keychain/macsec-keys/macsec-key/macsec-lifetime", leaves)));
    failing_size = sizeof(std::tm);
    EXPECT_EQ(walk.run().outcome(), "INVALID_REQUEST, \"No memory for expiration-date-time\"");
    EXPECT_EQ(failing_size, 0u);
}

} // namespace

#endif
