#include "embedded/operation/engine_session.h"

namespace {

using namespace vantrel::test;

class StatisticsTest : public testing::Test {
  protected:
    StatisticsTest() {
        EXPECT_EQ(
            session.create(path, createRequest(3, variableLength,
                                               {{{0, 1, extendedType, unsignedType}},
                                                {{1, 1, duplicates}, {2, 1, duplicates | descending}}})),
            0);
        EXPECT_EQ(session.open(&block, path), 0);
    }

    std::string statistics() { return session.call(15, &block, std::string(65535, '\xEE'), "\x7F", -1).data; }
    std::string extended(uint32_t subFunction, uint32_t length) {
        Reply reply = session.call(65, &block, "ExSt" + u32(subFunction), "", 0, length);
        EXPECT_EQ(reply.status, 0) << subFunction;
        return reply.data;
    }

    TemporaryDirectory directory;
    std::string path = directory / "file";
    EngineSession session{1};
    EngineSession::PositionBlock block{};
};

TEST_F(StatisticsTest, CountsAreExact) {
    auto counts = [&] {
        std::string reply = statistics();
        return std::vector<uint64_t>{number(reply, 8, 8), number(reply, 40, 8), number(reply, 64, 8),
                                     number(reply, 88, 8)};
    };
    EXPECT_EQ(counts(), (std::vector<uint64_t>{0, 0, 0, 0}));
    for (const char *record : {"axx", "bxx", "cxy", "dzy"})
        ASSERT_EQ(session.call(2, &block, record, "", -1).status, 0);
    EXPECT_EQ(counts(), (std::vector<uint64_t>{4, 4, 3, 3}));
    ASSERT_EQ(session.call(5, &block, "", "a", 0, 3).status, 0);
    ASSERT_EQ(session.call(4, &block).status, 0);
    EXPECT_EQ(counts(), (std::vector<uint64_t>{3, 3, 3, 3}));
    ASSERT_EQ(session.call(5, &block, "", "b", 0, 3).status, 0);
    ASSERT_EQ(session.call(4, &block).status, 0);
    EXPECT_EQ(counts(), (std::vector<uint64_t>{2, 2, 2, 2}));
}

TEST_F(StatisticsTest, DescribeTheFileAndItsSegments) {
    std::string reply = statistics();
    EXPECT_EQ(number(reply, 0, 2), 3u);
    EXPECT_EQ(number(reply, 2, 2), 4096u);
    EXPECT_EQ(number(reply, 4, 2), 1u);
    EXPECT_EQ(number(reply, 16, 2), 2u);
    EXPECT_EQ(number(reply, 32, 2), 1u);
    EXPECT_EQ(number(reply, 36, 2), 0x0100u);
    EXPECT_EQ(number(reply, 60, 2), 0x0011u);
    EXPECT_EQ(number(reply, 84, 2), 0x0041u);
    EXPECT_EQ(number(reply, 52, 2), 0u);
    EXPECT_EQ(number(reply, 76, 2), 1u);
    EXPECT_EQ(number(reply, 100, 2), 1u);
}

TEST_F(StatisticsTest, AReplyIsACreateRequestForAnEqualFile) {
    ASSERT_EQ(session.call(2, &block, "axx", "", -1).status, 0);
    ASSERT_EQ(session.call(32, &block, "", "", 0).status, 0);
    std::string reply = statistics();
    ASSERT_EQ(session.create(directory / "copy", reply), 0);
    EngineSession::PositionBlock copy{};
    ASSERT_EQ(session.open(&copy, directory / "copy"), 0);
    std::string copied = session.call(15, &copy, std::string(65535, '\0'), "k", -1).data;
    reply.replace(8, 8, u64(0));
    reply.replace(22, 2, u16(0));
    for (size_t segment = 0; segment < 2; ++segment)
        reply.replace(40 + 24 * segment, 8, u64(0));
    EXPECT_EQ(copied, reply);
    EXPECT_EQ(session.call(12, &copy, "", "kk", 1, 3).status, 9);
    EXPECT_EQ(session.call(12, &copy, "", "kk", 0, 3).status, 6);
}

TEST_F(StatisticsTest, SetTheKeyBufferToNotSegmented) {
    Reply reply = session.call(15, &block, std::string(200, '\0'), "\x7F\x7F", -1);
    EXPECT_EQ(reply.key, std::string("\0\x7F", 2));
    Reply cut = session.call(15, &block, std::string(40, '\0'), "", -1);
    EXPECT_EQ(cut.status, 22);
    EXPECT_EQ(cut.data.size(), 40u);
}

TEST_F(StatisticsTest, ExtendedRepliesHaveTheirLengths) {
    EXPECT_EQ(extended(3, 10), std::string(10, '\0'));
    EXPECT_EQ(extended(5, 72), std::string(72, '\0'));
    EXPECT_EQ(extended(6, 104), std::string(104, '\0'));
    EXPECT_EQ(extended(8, 267), std::string(267, '\0'));
    EXPECT_EQ(extended(2, 8), std::string("\0\0\1\0\0\0\0\0", 8));
    EXPECT_EQ(extended(4, 20).size(), 20u);
}

TEST_F(StatisticsTest, UsageCountsHandlesOfAllSessions) {
    EXPECT_EQ(number(extended(4, 20), 4, 4), 1u);
    EngineSession other(2);
    EngineSession::PositionBlock second{}, third{};
    ASSERT_EQ(session.open(&second, path, -2), 0);
    ASSERT_EQ(other.open(&third, path), 0);
    std::string usage = extended(4, 20);
    EXPECT_EQ(number(usage, 4, 4), 3u);
    EXPECT_EQ(number(usage, 16, 2), 0u);
    Reply readOnly = session.call(65, &second, "ExSt" + u32(4), "", 0, 20);
    EXPECT_EQ(number(readOnly.data, 16, 2), 0x0004u);
    EXPECT_EQ(number(readOnly.data, 0, 4), number(usage, 0, 4));
    ASSERT_EQ(other.call(1, &third).status, 0);
    ASSERT_EQ(session.call(1019, nullptr).status, 0);
    ASSERT_EQ(session.call(2, &block, "axx", "", -1).status, 0);
    ASSERT_EQ(session.call(205, &block, "", "a", 0, 3).status, 0);
    usage = extended(4, 20);
    EXPECT_EQ(number(usage, 4, 4), 2u);
    EXPECT_EQ(number(usage, 16, 2), 0x0003u);
}

TEST_F(StatisticsTest, SecurityGivesRightsAndNames) {
    ASSERT_EQ(session.call(78, nullptr, "", std::string("vantrel://ann@/stock") + '\0', 0).status, 0);
    std::string reply = extended(7, 1000);
    EXPECT_EQ(reply, std::string(8, '\0') + u32(0x3FF) + u16(6) + u16(5) + u16(4) + u16(6) + u16(4) +
                         std::string("stock\0file\0ann\0stock\0ann\0", 25));
    EngineSession::PositionBlock readOnly{};
    ASSERT_EQ(session.open(&readOnly, path, -2), 0);
    EXPECT_EQ(session.call(65, &readOnly, "ExSt" + u32(7), "", 0, 1000).data.substr(8, 4), u32(1));
}

TEST_F(StatisticsTest, SegmentFilesGiveThePath) {
    std::string resolved = path;
    EXPECT_EQ(extended(1, 1000),
              u32(2) + u32(1) + u32(static_cast<uint32_t>(resolved.size() + 1)) + resolved + '\0');
}

TEST_F(StatisticsTest, MalformedRequestsAreRefused) {
    EXPECT_EQ(session.call(65, &block, "ExSx" + u32(3), "", 0, 20).status, 22);
    EXPECT_EQ(session.call(65, &block, "ExSt123", "", 0).status, 22);
    EXPECT_EQ(session.call(65, &block, "ExSt" + u32(0), "", 0, 20).status, 41);
    EXPECT_EQ(session.call(65, &block, "ExSt" + u32(9), "", 0, 20).status, 41);
    Reply cut = session.call(65, &block, "ExSt" + u32(4), "", 0, 19);
    EXPECT_EQ(cut.status, 22);
    EXPECT_EQ(cut.data.size(), 19u);
}

}  // namespace
