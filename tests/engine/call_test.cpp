#include "engine/call.h"

#include "support/client_test.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

class CallTest : public ClientTest {};

TEST_F(CallTest, PassesEveryArgumentInItsPlace) {
    uint8_t positionBlock[128] = {9, 8, 7};
    uint8_t data[] = {1, 2, 3, 4};
    uint8_t key[] = {5, 6};
    uint32_t dataLength = 4;
    engine.reply({.status = 84});
    EXPECT_EQ(callVantrel(0x12345678, positionBlock, data, &dataLength, key, 2, -128, client), 84);

    const EngineCall &call = engine.onlyCall();
    EXPECT_EQ(call.operation, 0x12345678u);
    EXPECT_EQ(call.positionBlock, positionBlock);
    EXPECT_EQ(call.data, data);
    EXPECT_EQ(call.dataLength, 4u);
    EXPECT_EQ(call.dataBytes, (Bytes{1, 2, 3, 4}));
    EXPECT_EQ(call.key, key);
    EXPECT_EQ(call.keyLength, 2);
    EXPECT_EQ(call.keyNumber, -128);
    EXPECT_EQ(call.clientIdentifier, client);
    EXPECT_EQ(call.clientIdentifierBytes, (Bytes{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2, 1, 4, 3}));
}

TEST_F(CallTest, PassesLengthsAbove65535InBothDirections) {
    std::vector<uint8_t> data(70000);
    uint32_t dataLength = 70000;
    engine.reply({.dataLength = 0x12345678});
    callVantrel(2, nullptr, data.data(), &dataLength, nullptr, 0, 0, client);
    EXPECT_EQ(engine.onlyCall().dataLength, 70000u);
    EXPECT_EQ(dataLength, 0x12345678u);
}

TEST_F(CallTest, OffersNoBytesWithoutALengthAndLeavesTheStatusAlone) {
    engine.reply({.status = -3, .dataLength = 12});
    EXPECT_EQ(callVantrel(28, nullptr, nullptr, nullptr, nullptr, 0, 0, client), -3);
    EXPECT_EQ(engine.onlyCall().dataLength, 0u);
    EXPECT_EQ(lastStatus(client), untouchedStatus);
}

}  // namespace
