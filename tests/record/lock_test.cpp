#include "record/record_fixture.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

class UnlockTest : public RecordTest {};

TEST_F(UnlockTest, ModesHaveTheirKeyNumbers) {
    const struct { int32_t mode, keyNumber; } rows[] = {{0, 0}, {1, -2}};
    for (auto row : rows) {
        engine.reset();
        engine.reply({.status = 81});
        EXPECT_EQ(VantrelFileRecordUnlock(file, row.mode), 81);
        EXPECT_EQ(fileStatus(), 81);
        expectCall(engine.onlyCall(), 27, row.keyNumber);
        expectData(engine.onlyCall(), nullptr, 0);
        expectNoKey(engine.onlyCall());
        expectCachedKey(3, 5);
    }
}

TEST_F(UnlockTest, RefusesOtherModes) {
    for (int32_t mode : {2, -1, -2, INT_MIN, INT_MAX}) {
        EXPECT_EQ(VantrelFileRecordUnlock(file, mode), 2002);
        expectRefused(2002);
    }
}

TEST_F(UnlockTest, ChecksTheClientBeforeTheMode) {
    EXPECT_EQ(VantrelFileRecordUnlock(nullptr, 2), 3);
    expectRefused(untouchedStatus);
    makeFileUnusable();
    EXPECT_EQ(VantrelFileRecordUnlock(file, 2), 2007);
    expectRefused(2007);
    EXPECT_EQ(VantrelFileRecordUnlock(file, 0), 2007);
    expectRefused(2007);
}

TEST_F(UnlockTest, ReleasesTheLockOnOnePosition) {
    engine.reply({.status = 81});
    EXPECT_EQ(VantrelFileUnlockCursorPosition(file, static_cast<int64_t>(0x8807060504030201)), 81);
    EXPECT_EQ(fileStatus(), 81);
    expectCall(engine.onlyCall(), 27, -1);
    EXPECT_EQ(engine.onlyCall().dataBytes, (Bytes{1, 2, 3, 4, 5, 6, 7, 0x88}));
    expectNoKey(engine.onlyCall());
    expectCachedKey(3, 5);
}

TEST_F(UnlockTest, OnePositionNeedsAnOpenFile) {
    EXPECT_EQ(VantrelFileUnlockCursorPosition(nullptr, 1), 3);
    expectRefused(untouchedStatus);
    makeFileUnusable();
    EXPECT_EQ(VantrelFileUnlockCursorPosition(file, 1), 2007);
    expectRefused(2007);
}

class OwnerTest : public RecordTest {};

TEST_F(OwnerTest, ModesHaveTheirKeyNumbers) {
    for (int32_t mode = 1; mode <= 4; ++mode) {
        const char name[] = "abc", again[] = "defg";
        engine.reset();
        engine.reply({.status = 51});
        EXPECT_EQ(VantrelFileSetOwner(file, mode, name, again, 0), 51);
        EXPECT_EQ(fileStatus(), 51);

        const EngineCall &call = engine.onlyCall();
        expectCall(call, 29, mode - 1);
        expectData(call, name, 4);
        EXPECT_EQ(call.dataBytes, (Bytes{'a', 'b', 'c', 0}));
        EXPECT_EQ(call.key, again);
        EXPECT_EQ(call.keyLength, 5);
        EXPECT_EQ(call.keyBytes, (Bytes{'d', 'e', 'f', 'g', 0}));
        expectCachedKey(3, 5);
        EXPECT_EQ(keyBuffer(), Bytes(1024, 0x4B));
    }
}

TEST_F(OwnerTest, AnyFlagButZeroMakesALongName) {
    for (int32_t flag : {1, 2, -1}) {
        engine.reset();
        EXPECT_EQ(VantrelFileSetOwner(file, 1, "abc", "abc", flag), 0);
        expectCall(engine.onlyCall(), 17029, 0);
    }
}

TEST_F(OwnerTest, NamesOfAnyLengthAreSent) {
    std::string name(3000, 'n');
    EXPECT_EQ(VantrelFileSetOwner(file, 1, name.c_str(), "", 1), 0);
    EXPECT_EQ(engine.onlyCall().dataLength, 3001u);
    EXPECT_EQ(engine.onlyCall().keyLength, 1);
}

TEST_F(OwnerTest, ModeNoneClearsTheOwnerWhateverTheNames) {
    engine.reply({.status = 41});
    EXPECT_EQ(VantrelFileSetOwner(file, 0, nullptr, nullptr, 1), 41);
    EXPECT_EQ(fileStatus(), 41);
    expectCall(engine.onlyCall(), 30, 0);
    expectData(engine.onlyCall(), nullptr, 0);
    expectNoKey(engine.onlyCall());
    expectCachedKey(3, 5);
}

TEST_F(OwnerTest, RefusesMissingNamesBeforeOtherModes) {
    for (int32_t mode : {1, 4, 5, -1}) {
        EXPECT_EQ(VantrelFileSetOwner(file, mode, nullptr, "abc", 0), 2007);
        expectRefused(2007);
        EXPECT_EQ(VantrelFileSetOwner(file, mode, "abc", nullptr, 0), 2007);
        expectRefused(2007);
    }
    for (int32_t mode : {5, -1, INT_MIN, INT_MAX}) {
        EXPECT_EQ(VantrelFileSetOwner(file, mode, "abc", "abc", 0), 2002);
        expectRefused(2002);
    }
}

TEST_F(OwnerTest, RefusesAMissingFileAndAFileWithoutAClient) {
    EXPECT_EQ(VantrelFileSetOwner(nullptr, 5, nullptr, nullptr, 0), 3);
    expectRefused(untouchedStatus);
    makeFileUnusable();
    for (int32_t mode : {0, 1, 5}) {
        EXPECT_EQ(VantrelFileSetOwner(file, mode, "abc", "abc", 0), 2007);
        expectRefused(2007);
    }
}

}  // namespace
