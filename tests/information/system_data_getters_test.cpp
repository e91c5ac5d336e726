#include "information/information_test.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

class SystemDataGettersTest : public InformationTest {};

TEST_F(SystemDataGettersTest, MissingHandles) {
    EXPECT_EQ(VantrelFileInformationGetSystemData(nullptr), -1);
    EXPECT_EQ(VantrelFileInformationGetSystemIndex(nullptr), -1);
    EXPECT_EQ(VantrelFileInformationGetLoggable(nullptr), -1);
    EXPECT_EQ(VantrelFileInformationGetLogIndex(nullptr), -7);
    EXPECT_EQ(VantrelFileInformationGetSystemIndexSize(nullptr), -1);
    EXPECT_EQ(VantrelFileInformationGetSystemIndexVersion(nullptr), -1);
}

TEST_F(SystemDataGettersTest, Numbers) {
    auto identity = [](uint16_t value) { return value; };
    expectEveryByte(VantrelFileInformationGetSystemData, systemDataArea, identity);
    expectEveryByte(VantrelFileInformationGetSystemIndex, systemDataArea + 1, identity);
    expectEveryByte(VantrelFileInformationGetLogIndex, systemDataArea + 3, identity);
    expectEveryWord(VantrelFileInformationGetSystemIndexSize, systemDataArea + 4, identity);
    expectEveryWord(VantrelFileInformationGetSystemIndexVersion, systemDataArea + 6, identity);
}

TEST_F(SystemDataGettersTest, LoggableIsAnyNonzeroByte) {
    expectEveryByte(VantrelFileInformationGetLoggable, systemDataArea + 2,
                    [](uint16_t value) { return value == 0 ? 0 : 1; });
}

}  // namespace
