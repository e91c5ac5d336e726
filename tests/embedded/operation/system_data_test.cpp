#include "embedded/operation/engine_session.h"

namespace {

using namespace vantrel::test;

constexpr uint16_t systemData = 0x0200, noSystemData = 0x1200, version2 = 0x4200;

class SystemDataTest : public testing::Test {
  protected:
    void open(uint16_t fileFlags, const std::vector<std::vector<SegmentRequest>> &indexes) {
        ASSERT_EQ(session.create(path, createRequest(2, fileFlags, indexes)), 0);
        ASSERT_EQ(session.open(&block, path), 0);
        for (const char *record : {"b1", "a1", "c1"})
            ASSERT_EQ(session.call(2, &block, record, "", -1).status, 0);
    }
    std::string walk(int32_t index) {
        std::string walked;
        Reply reply = session.call(12, &block, "", std::string(8, '?'), index, 2);
        for (; reply.status == 0; reply = session.call(6, &block, "", std::string(8, '?'), index, 2))
            walked += reply.data + ' ';
        return walked + std::to_string(reply.status);
    }
    std::string systemDataReply() { return session.call(65, &block, "ExSt" + u32(2), "", 0, 8).data; }

    TemporaryDirectory directory;
    std::string path = directory / "file";
    EngineSession session{1};
    EngineSession::PositionBlock block{};
};

TEST_F(SystemDataTest, TheCreationTimeIsAnIndex) {
    open(systemData, {{{0, 1}}});
    EXPECT_EQ(walk(125), "b1 a1 c1 9");
    EXPECT_EQ(walk(124), "6");
    EXPECT_EQ(systemDataReply(), std::string("\1\1\1\x7D\x8\0\1\0", 8));
    Reply first = session.call(12, &block, "", std::string(8, '?'), 125, 2);
    std::string times = session.call(22, &block, "SysD" + std::string(20, '\0'), "", -3).data;
    EXPECT_EQ(first.key, times.substr(8, 8));
    EXPECT_EQ(session.call(5, &block, "", first.key, 125, 2).data, "b1");
    EXPECT_EQ(session.call(8, &block, "", first.key, 125, 2).data, "a1");
    EXPECT_EQ(session.call(5, &block, "", "short", 125, 2).status, 21);
}

TEST_F(SystemDataTest, Version2IndexesTheUpdateTimeToo) {
    open(version2, {{{0, 1}}});
    EXPECT_EQ(walk(124), "b1 a1 c1 9");
    ASSERT_EQ(session.call(5, &block, "", "b", 0, 2).status, 0);
    ASSERT_EQ(session.call(3, &block, "b2", "", -1).status, 0);
    EXPECT_EQ(walk(124), "a1 c1 b2 9");
    EXPECT_EQ(walk(125), "b2 a1 c1 9");
    EXPECT_EQ(systemDataReply(), std::string("\1\1\1\x7D\x8\0\2\0", 8));
    ASSERT_EQ(session.call(5, &block, "", "a", 0, 2).status, 0);
    ASSERT_EQ(session.call(4, &block).status, 0);
    EXPECT_EQ(walk(124), "c1 b2 9");
    EXPECT_EQ(walk(125), "b2 c1 9");
}

TEST_F(SystemDataTest, ByDefaultFilesWithoutAUniqueIndexHaveIt) {
    open(0, {{{0, 1, duplicates}}});
    EXPECT_EQ(walk(125), "b1 a1 c1 9");
    ASSERT_EQ(session.call(31, &block, segmentBytes({0, 1}), "", 0).status, 0);
    EXPECT_EQ(walk(125), "b1 a1 c1 9");
}

TEST_F(SystemDataTest, ByDefaultFilesWithAUniqueIndexHaveNot) {
    open(0, {{{0, 1}}});
    EXPECT_EQ(walk(125), "6");
    EXPECT_EQ(systemDataReply(), std::string("\0\0\1\0\0\0\0\0", 8));
}

TEST_F(SystemDataTest, CanBeSwitchedOff) {
    open(noSystemData, {{{0, 1, duplicates}}});
    EXPECT_EQ(walk(125), "6");
    EXPECT_EQ(systemDataReply(), std::string(8, '\0'));
}

TEST_F(SystemDataTest, StatisticsDoNotCountTheIndexes) {
    open(version2, {{{0, 1}}});
    std::string reply = session.call(15, &block, std::string(500, '\0'), "", -1).data;
    EXPECT_EQ(number(reply, 16, 2), 1u);
    EXPECT_EQ(session.call(32, &block, "", "", 125).status, 6);
}

TEST_F(SystemDataTest, AnAbortTakesItsEntriesBack) {
    open(version2, {{{0, 1}}});
    ASSERT_EQ(session.call(1019, nullptr).status, 0);
    ASSERT_EQ(session.call(2, &block, "d1", "", -1).status, 0);
    ASSERT_EQ(session.call(5, &block, "", "b", 0, 2).status, 0);
    ASSERT_EQ(session.call(3, &block, "b2", "", -1).status, 0);
    EXPECT_EQ(walk(124), "a1 c1 d1 b2 9");
    ASSERT_EQ(session.call(21, nullptr).status, 0);
    EXPECT_EQ(walk(124), "b1 a1 c1 9");
    EXPECT_EQ(walk(125), "b1 a1 c1 9");
}

TEST_F(SystemDataTest, ACopyHasTheTimesThatItsModelHas) {
    open(0, {});
    ASSERT_EQ(session.call(31, &block, segmentBytes({0, 1}), "", 0).status, 0);
    ASSERT_EQ(systemDataReply(), std::string("\1\1\1\x7D\x8\0\1\0", 8));
    std::string definition = session.call(15, &block, std::string(65535, '\0'), "k").data;
    ASSERT_EQ(session.create(directory / "copy", definition), 0);
    ASSERT_EQ(session.open(&block, directory / "copy"), 0);
    EXPECT_EQ(systemDataReply(), std::string("\1\1\1\x7D\x8\0\1\0", 8));
    ASSERT_EQ(session.call(2, &block, "d1", "", -1).status, 0);
    EXPECT_EQ(walk(125), "d1 9");
}

TEST_F(SystemDataTest, ACopyLacksTheTimesThatItsModelLacks) {
    open(0, {{{0, 1}}});
    ASSERT_EQ(session.call(32, &block, "", "", 0).status, 0);
    std::string definition = session.call(15, &block, std::string(65535, '\0'), "k").data;
    ASSERT_EQ(session.create(directory / "copy", definition), 0);
    ASSERT_EQ(session.open(&block, directory / "copy"), 0);
    EXPECT_EQ(walk(125), "6");
    EXPECT_EQ(systemDataReply(), std::string(8, '\0'));
}

}  // namespace
