// The two buffers that the mappers of keys take from the heap: what becomes of a request when one cannot be had, and
// that the one of a key text holds nothing when it is given back.
#include <algorithm>

#include "keychain_documents.h"

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

using namespace test;

namespace
{

TEST(KeyAllocation, WithoutABufferAKeyTextIsRefused)
{
    Walk walk = edit();
    walk.request();
    failing_size = 1000;
    walk.forward(chain(key("<config>" + leaf("key-clear-text", "0123456789") + "</config>")));
    EXPECT_EQ(failing_size, 0u);
    EXPECT_EQ(walk.rc, TQM_ERR_INVALID_REQUEST);
    EXPECT_EQ(walk.message(), "No memory for key-clear-text");
    EXPECT_EQ(walk.built().back(), native_key + "/key-id=01");
}

TEST(KeyAllocation, TheBufferOfAKeyTextIsClearedBeforeItIsFreed)
{
    for (const std::size_t length : {10u, 998u, 999u}) {
        Walk walk = edit();
        walk.request();
        freed_clear = false;
        watched_size = 1000;
        walk.forward(chain(key("<config>" + leaf("key-clear-text", std::string(length, 'k')) + "</config>")));
        EXPECT_EQ(watched_size, 0u);
        EXPECT_TRUE(freed_clear) << length;
    }
}

TEST(KeyAllocation, WithoutABufferAnEndByDurationFails)
{
    const std::string lifetime = six("start", "2024 jan 1 1 2 3") + leaf("life-time", "60");
    Walk walk = answer();
    walk.request();
    failing_size = sizeof(std::tm);
    walk.reverse(native_chains(macsec_chain("C1", native_macsec_key("01", leaf("macsec-lifetime", lifetime)))),
                 native_chains_root);
    EXPECT_EQ(failing_size, 0u);
    EXPECT_EQ(walk.rc, TQM_ERR_INVALID_REQUEST);
    EXPECT_EQ(walk.message(), "No memory for expiration-date-time");
    EXPECT_EQ(walk.adds().back(), oc_key + "/config/valid-date-time=\"2024-01-01T01:02:03\"");
}

} // namespace

#endif
