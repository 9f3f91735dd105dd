// The two buffers that the mappers of keys take from the heap: what a request becomes when one cannot be had, and that
// the one that held a key text holds nothing when it is given back.
#include <algorithm>
#include <atomic>

#include "keychain_documents.h"

namespace
{

std::atomic<std::size_t> failing_size = 0;
std::atomic<std::size_t> watched_size = 0;
std::atomic<unsigned char *> watched = nullptr;
enum class Freed { not_yet, clear, with_content };
std::atomic<Freed> freed = Freed::not_yet;

} // namespace

// The heap behind the stand-ins below.
#ifdef __SANITIZE_ADDRESS__
#define HEAP(operation) __interceptor_##operation
#else
#define HEAP(operation) __libc_##operation
#endif
extern "C" {
void *HEAP(calloc)(std::size_t count, std::size_t size);
void HEAP(free)(void *memory);

void *calloc(std::size_t count, std::size_t size) noexcept
{
    std::size_t bytes = count * size;
    if (bytes != 0 && failing_size.compare_exchange_strong(bytes, 0)) {
        return nullptr;
    }
    void *const memory = HEAP(calloc)(count, size);
    bytes = count * size;
    if (bytes != 0 && watched_size.compare_exchange_strong(bytes, 0)) {
        watched = static_cast<unsigned char *>(memory);
    }
    return memory;
}

void free(void *memory) noexcept
{
    if (memory != nullptr && memory == watched) {
        const unsigned char *const bytes = watched.exchange(nullptr);
        freed = std::all_of(bytes, bytes + 1000, [](unsigned char byte) { return byte == 0; }) ? Freed::clear
                                                                                              : Freed::with_content;
    }
    HEAP(free)(memory);
}
}

using namespace test;

namespace
{

std::string with_text(const std::string &text)
{
    return chain(key("<config>" + leaf("key-clear-text", text) + "</config>"));
}

TEST(KeyAllocation, WithoutABufferAKeyTextIsRefused)
{
    Walk walk = edit().trace();
    walk.request();
    failing_size = 1000;
    walk.forward(with_text("0123456789"));
    EXPECT_EQ(failing_size.exchange(0), 0u);
    EXPECT_EQ(walk.rc, TQM_ERR_INVALID_REQUEST);
    EXPECT_EQ(walk.message(), "No memory for key-clear-text");
    EXPECT_EQ(walk.built().back(), native_key + "/key-id=01");
    EXPECT_EQ(walk.texts_of("ymap_ot_ocmacsec_key_clear_text_fwd"), (Lines{"Start", "End"}));
}

TEST(KeyAllocation, ABufferOfAKeyTextIsClearedBeforeItIsFreed)
{
    for (const std::size_t length : {10u, 998u, 999u}) {
        Walk walk = edit();
        walk.request();
        freed = Freed::not_yet;
        watched_size = 1000;
        walk.forward(with_text(std::string(length, 'k')));
        EXPECT_EQ(watched_size.exchange(0), 0u);
        EXPECT_EQ(freed, Freed::clear) << length;
    }
}

TEST(KeyAllocation, WithoutABufferAnEndByDurationFails)
{
    const std::string leaves = "<start-year>2024</start-year><start-month>jan</start-month><start-date>1</start-date>"
                               "<start-hour>1</start-hour><start-minutes>2</start-minutes>"
                               "<start-seconds>3</start-seconds><life-time>60</life-time>";
    Walk walk = answer();
    walk.request();
    failing_size = sizeof(std::tm);
    walk.reverse(native_chains(macsec_chain("C1", native_macsec_key("01", "<macsec-lifetime>" + leaves +
                                                                              "</macsec-lifetime>"))),
                 native_chains_root);
    EXPECT_EQ(failing_size.exchange(0), 0u);
    EXPECT_EQ(walk.rc, TQM_ERR_INVALID_REQUEST);
    EXPECT_EQ(walk.message(), "No memory for expiration-date-time");
    EXPECT_EQ(walk.adds().back(), oc_key + "/config/valid-date-time=\"2024-01-01T01:02:03\"");
}

} // namespace
