#include <sys/types.h>

#include <cstddef>
#include <ctime>

#include "engine/c_caller.h"
#include "engine/records.h"
#include "support/client_test.h"

namespace {

using namespace vantrel::test;

constexpr bool has32BitPointers = sizeof(void *) == 4;

TEST(PlatformTest, AClientRecordIsTheSameEverywhere) {
    EXPECT_EQ(offsetof(VantrelClient, reserved), 0u);
    EXPECT_EQ(offsetof(VantrelClient, serviceAgentIdentifier), 12u);
    EXPECT_EQ(offsetof(VantrelClient, clientIdentifier), 14u);
    EXPECT_EQ(offsetof(VantrelClient, lastStatus), 16u);
    EXPECT_EQ(sizeof(VantrelClient), 20u);
    EXPECT_EQ(alignof(VantrelClient), 1u);
}

TEST(PlatformTest, AFileRecordGrowsWithThePointerInIt) {
    EXPECT_EQ(offsetof(VantrelFile, positionBlock), 0u);
    EXPECT_EQ(offsetof(VantrelFile, lastStatus), 128u);
    EXPECT_EQ(offsetof(VantrelFile, client), 132u);
    EXPECT_EQ(offsetof(VantrelFile, cachedKeyNumber), has32BitPointers ? 136u : 140u);
    EXPECT_EQ(offsetof(VantrelFile, cachedKeyLength), has32BitPointers ? 140u : 144u);
    EXPECT_EQ(offsetof(VantrelFile, keyBuffer), has32BitPointers ? 144u : 148u);
    EXPECT_EQ(offsetof(VantrelFile, savedCursorPosition), has32BitPointers ? 1168u : 1172u);
    EXPECT_EQ(sizeof(VantrelFile), has32BitPointers ? 1176u : 1180u);
    EXPECT_EQ(alignof(VantrelFile), 1u);
}

TEST(PlatformTest, NumbersHaveTheWidthsOfTheInterface) {
    EXPECT_EQ(sizeof(VantrelStatus), 4u);
    EXPECT_EQ(sizeof(VantrelIndex), 4u);
    EXPECT_EQ(sizeof(VantrelLockMode), 4u);
    EXPECT_EQ(sizeof(VantrelDataType), 4u);
    EXPECT_EQ(sizeof(VantrelCursorPosition), 8u);
    EXPECT_EQ(sizeof(VantrelTimestamp), 8u);
    EXPECT_EQ(sizeof(off_t), 8u);
    EXPECT_EQ(sizeof(time_t), 8u);
}

class CCallerTest : public FileTest {};

TEST_F(CCallerTest, A64BitArgumentBehindOneOf32BitsArrivesWhole) {
    uint8_t record[8] = {};
    retrieveFarRecordFromC(file, record, sizeof record);
    const EngineCall &call = engine.onlyCall();
    EXPECT_EQ(call.operation, 23u);
    EXPECT_EQ(call.keyNumber, 5);
    EXPECT_EQ(Bytes(call.dataBytes.begin(), call.dataBytes.begin() + 8),
              (Bytes{0xEF, 0xCD, 0xAB, 0x89, 0x67, 0x45, 0x23, 0x01}));
}

TEST_F(CCallerTest, A64BitArgumentOnTheStackArrivesWhole) {
    numeratorOfFarRecordFromC(file, 0x76543210);
    const EngineCall &call = engine.onlyCall();
    EXPECT_EQ(call.operation, 45u);
    EXPECT_EQ(
        Bytes(call.dataBytes.begin(), call.dataBytes.begin() + 16),
        (Bytes{0xEF, 0xCD, 0xAB, 0x89, 0x67, 0x45, 0x23, 0x01, 'E', 'x', 'P', 'c', 0x10, 0x32, 0x54, 0x76}));
}

}  // namespace
