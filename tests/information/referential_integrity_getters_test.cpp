#include "information/information_test.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

class ReferentialIntegrityGettersTest : public InformationTest {};

TEST_F(ReferentialIntegrityGettersTest, MissingHandles) {
    EXPECT_EQ(VantrelFileInformationGetReferentialIntegrityOperationCode(nullptr), -1);
    EXPECT_EQ(VantrelFileInformationGetReferentialIntegrityCursorPosition(nullptr), -1);
}

TEST_F(ReferentialIntegrityGettersTest, Numbers) {
    expectLong(VantrelFileInformationGetReferentialIntegrityOperationCode, referentialIntegrityArea + 255);
    expectLongLong(VantrelFileInformationGetReferentialIntegrityCursorPosition,
                   referentialIntegrityArea + 259);
}

TEST_F(ReferentialIntegrityGettersTest, FileNameNeeds255Bytes) {
    expectFixedText(VantrelFileInformationGetReferentialIntegrityFileName, referentialIntegrityArea, 255);
}

}  // namespace
