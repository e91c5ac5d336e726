#include "engine/bytes.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

using namespace vantrel;

TEST(Bytes, LoadsLittleEndianAtAnyAlignment) {
    const uint8_t bytes[] = {0xFF, 0x01, 0x02, 0x83, 0x84, 0x05, 0x06, 0x07, 0x88};
    EXPECT_EQ(loadU16(bytes + 1), 0x0201);
    EXPECT_EQ(loadU32(bytes + 1), 0x84830201u);
    EXPECT_EQ(loadU64(bytes + 1), 0x8807060584830201u);
    EXPECT_EQ(loadI32(bytes + 1), -2071789055);
    EXPECT_EQ(loadI64(bytes + 1), -8644934338946596351);
}

TEST(Bytes, StoresLittleEndianAtAnyAlignmentAndNothingElse) {
    uint8_t bytes[10];
    memset(bytes, 0xEE, sizeof bytes);
    storeU16(bytes + 1, 0x0201);
    EXPECT_EQ(bytes[0], 0xEE);
    EXPECT_EQ(bytes[1], 0x01);
    EXPECT_EQ(bytes[2], 0x02);
    EXPECT_EQ(bytes[3], 0xEE);
    storeI32(bytes + 1, -2);
    const uint8_t afterI32[] = {0xEE, 0xFE, 0xFF, 0xFF, 0xFF, 0xEE};
    EXPECT_EQ(memcmp(bytes, afterI32, sizeof afterI32), 0);
    storeI64(bytes + 1, -2071789055);
    const uint8_t afterI64[] = {0xEE, 0x01, 0x02, 0x83, 0x84, 0xFF, 0xFF, 0xFF, 0xFF, 0xEE};
    EXPECT_EQ(memcmp(bytes, afterI64, sizeof afterI64), 0);
}

}  // namespace
