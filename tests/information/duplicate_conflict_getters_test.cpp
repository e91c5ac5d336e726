#include "information/information_test.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

class DuplicateConflictGettersTest : public InformationTest {};

TEST_F(DuplicateConflictGettersTest, MissingHandles) {
    EXPECT_EQ(VantrelFileInformationGetDuplicateRecordConflictCursorPosition(nullptr), -1);
    EXPECT_EQ(VantrelFileInformationGetDuplicateRecordConflictIndex(nullptr), -7);
}

TEST_F(DuplicateConflictGettersTest, CursorPosition) {
    expectLongLong(VantrelFileInformationGetDuplicateRecordConflictCursorPosition, duplicateConflictArea);
}

TEST_F(DuplicateConflictGettersTest, IndexIsNotChecked) {
    expectEveryWord(VantrelFileInformationGetDuplicateRecordConflictIndex, duplicateConflictArea + 8,
                    [](uint16_t value) { return value; });
}

}  // namespace
