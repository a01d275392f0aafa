#include <gtest/gtest.h>

#include <cstring>

#include <Corrade/Utility/MurmurHash2.h>

using namespace Corrade;

TEST(MurmurHash2Test, Vectors) {
    /* MurmurHash64A with seed 0, produced with the reference implementation */
    const struct { const char* key; unsigned long long hash; } vectors[]{
        {"", 0x0000000000000000ull},
        {"a", 0x071717d2d36b6b11ull},
        {"ab", 0x62be85b2fe53d1f8ull},
        {"abc", 0x9cc9c33498a95efbull},
        {"objects", 0xdcf2f7f2a57cee5full},
        {"skins", 0x03ab8a0df148bf7eull},
        {"a1b2c3d4", 0x6b76c0b4d39663fcull},
        {"K1", 0x60206de8f1e2126cull},
        {"0123456789abcdef", 0x93a92d1a91a24bc7ull},
        {"hello world!", 0x64db099bd1512951ull},
        {"obj-12345678901234567890", 0x8f129d9e0e3695dfull},
    };
    /* One byte of offset makes every 8-byte block read unaligned */
    char unaligned[64];
    for(const auto& row: vectors) {
        SCOPED_TRACE(row.key);
        const std::size_t size = std::strlen(row.key);
        std::memcpy(unaligned + 1, row.key, size);
        EXPECT_EQ(Utility::Implementation::MurmurHash2<8>{}(0, unaligned + 1, size), row.hash);
        EXPECT_EQ(Utility::MurmurHash2{}(row.key, size), Utility::MurmurHash2::Digest::fromByteArray(reinterpret_cast<const char*>(&row.hash)));
    }
}
