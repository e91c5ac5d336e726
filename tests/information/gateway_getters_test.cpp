#include "information/information_test.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

constexpr NumberCase gatewayNumbers[] = {
    {"major version", VantrelFileInformationGetGatewayMajorVersion, gatewayArea},
    {"minor version", VantrelFileInformationGetGatewayMinorVersion, gatewayArea + 2},
    {"patch level", VantrelFileInformationGetGatewayPatchLevel, gatewayArea + 4},
    {"platform", VantrelFileInformationGetGatewayPlatform, gatewayArea + 6},
};

class GatewayGettersTest : public InformationTest {};

TEST_F(GatewayGettersTest, MissingHandles) {
    for (const NumberCase &number : gatewayNumbers)
        EXPECT_EQ(number.get(nullptr), number.nullValue) << number.name;
}

TEST_F(GatewayGettersTest, Numbers) {
    for (const NumberCase &number : gatewayNumbers) {
        SCOPED_TRACE(number.name);
        expectEveryWord(number.get, number.offset, [](uint16_t value) { return value; });
    }
}

TEST_F(GatewayGettersTest, NameNeeds64Bytes) {
    expectFixedText(VantrelFileInformationGetGatewayName, gatewayArea + 8, 64);
}

}  // namespace
