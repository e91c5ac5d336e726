#include "record/record_fixture.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

class CursorPositionTest : public RecordTest {};

TEST_F(CursorPositionTest, GivesTheEnginesEightBytes) {
    engine.reply({.data = {1, 2, 3, 4, 5, 6, 7, 0x88}});
    EXPECT_EQ(VantrelFileGetCursorPosition(file), static_cast<int64_t>(0x8807060504030201));
    EXPECT_EQ(fileStatus(), 0);

    const EngineCall &call = engine.onlyCall();
    expectCall(call, 22, 0);
    EXPECT_EQ(call.dataBytes, Bytes(8, 0));
    expectNoKey(call);
    expectCachedKey(3, 5);
}

TEST_F(CursorPositionTest, AFailureGivesMinusOne) {
    engine.reply({.status = 8, .data = {1}});
    EXPECT_EQ(VantrelFileGetCursorPosition(file), -1);
    EXPECT_EQ(fileStatus(), 8);
    engine.reset();
    engine.reply({.status = 22, .data = {1}});
    EXPECT_EQ(VantrelFileGetCursorPosition(file), -1);
    EXPECT_EQ(fileStatus(), 22);
}

TEST_F(CursorPositionTest, RefusesAMissingFileAndAFileWithoutAClient) {
    EXPECT_EQ(VantrelFileGetCursorPosition(nullptr), -1);
    expectRefused(untouchedStatus);
    makeFileUnusable();
    EXPECT_EQ(VantrelFileGetCursorPosition(file), -1);
    expectRefused(2007);
}

}  // namespace
