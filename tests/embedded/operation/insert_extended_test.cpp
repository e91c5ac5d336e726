#include "embedded/operation/engine_session.h"

namespace {

using namespace vantrel::test;

class InsertExtendedTest : public testing::Test {
  protected:
    InsertExtendedTest() {
        std::string request =
            createRequest(4, 0,
                          {{{0, 1, extendedType, unsignedType}},
                           {{1, 1, extendedType | duplicates | modifiable | nullIfAll, unsignedType}}});
        EXPECT_EQ(session.create(path, request), 0);
        EXPECT_EQ(session.open(&block, path), 0);
    }

    static std::string payload(const std::vector<std::string> &records) {
        std::string bytes = u32(static_cast<uint32_t>(records.size()));
        for (const std::string &record : records)
            bytes += u32(static_cast<uint32_t>(record.size())) + record;
        return bytes;
    }
    Reply insert(const std::string &request, int32_t keyNumber = -1, uint32_t offered = 4096) {
        return session.call(40, &block, request, keyNumber == -1 ? "" : "?", keyNumber, offered);
    }
    std::string read(uint32_t operation, const std::string &key = "?", int32_t index = 0) {
        Reply reply = session.call(operation, &block, "", key, index, 4);
        return reply.status == 0 ? reply.data : std::to_string(reply.status);
    }
    std::string letters() {
        std::string all;
        for (std::string record = read(12); record.size() == 4; record = read(6))
            all += record[0];
        return all;
    }

    TemporaryDirectory directory;
    std::string path = directory / "file";
    EngineSession session{1};
    EngineSession::PositionBlock block{};
};

TEST_F(InsertExtendedTest, AnswersWithTheAddresses) {
    Reply reply = insert(payload({"b1xx", "a2xx", "c3xx"}));
    EXPECT_EQ(reply.status, 0);
    EXPECT_EQ(reply.data, u32(3) + u64(1) + u64(2) + u64(3));
    EXPECT_EQ(letters(), "abc");
    EXPECT_EQ(read(5, "a"), "a2xx");
}

TEST_F(InsertExtendedTest, ARequestMayBeEmpty) {
    Reply reply = insert(payload({}), -1, 4);
    EXPECT_EQ(reply.status, 0);
    EXPECT_EQ(reply.data, u32(0));
    EXPECT_EQ(session.call(22, &block, "", "", 0, 8).status, 8);
}

TEST_F(InsertExtendedTest, TheLastRecordIsCurrent) {
    ASSERT_EQ(insert(payload({"b1xx", "c2xx", "a3xx"})).status, 0);
    EXPECT_EQ(session.call(22, &block, "", "", 0, 8).data, u64(3));
    EXPECT_EQ(read(6), "8");
    EXPECT_EQ(session.call(3, &block, "a4xx", "", -1).status, 0);
    Reply reply = insert(payload({"f1xx", "d2xx"}), 0);
    EXPECT_EQ(reply.key, "d");
    EXPECT_EQ(read(6), "f1xx");
    ASSERT_EQ(read(5, "a"), "a4xx");
    ASSERT_EQ(insert(payload({"g1xx"})).status, 0);
    EXPECT_EQ(read(6), "b1xx");
}

TEST_F(InsertExtendedTest, ARecordOutsideTheIndexNamedLeavesItsPlace) {
    ASSERT_EQ(insert(payload({"b1xx"}), 1).status, 0);
    ASSERT_EQ(insert(payload({std::string("c\0xx", 4)}), 1).status, 0);
    EXPECT_EQ(session.call(22, &block, "", "", 0, 8).data, u64(2));
    EXPECT_EQ(read(6, "?", 1), "9");
    EXPECT_EQ(read(13, "?", 1), "b1xx");
}

TEST_F(InsertExtendedTest, StopsAtTheFirstRecordThatFails) {
    Reply reply = insert(payload({"b1xx", "c2xx", "b3xx", "d4xx"}));
    EXPECT_EQ(reply.status, 5);
    EXPECT_EQ(reply.data, u32(2) + u64(1) + u64(2));
    EXPECT_EQ(session.call(22, &block, "", "", 0, 8).data, u64(2));
    EXPECT_EQ(letters(), "bc");
    reply = insert(payload({"d1xx", "e2x", "f4xx"}));
    EXPECT_EQ(reply.status, 22);
    EXPECT_EQ(reply.data, u32(1) + u64(3));
    reply = insert(payload({"b1xx", "x1xx"}));
    EXPECT_EQ(reply.status, 5);
    EXPECT_EQ(reply.data, u32(0));
    EXPECT_EQ(session.call(22, &block, "", "", 0, 8).data, u64(3));
    EXPECT_EQ(letters(), "bcd");
}

TEST_F(InsertExtendedTest, IllFormedRequestsInsertNothing) {
    std::string whole = payload({"a1xx", "b2xx"});
    for (uint32_t length = 4; length < whole.size(); ++length) {
        Reply reply = insert(whole.substr(0, length), -1, length);
        EXPECT_EQ(reply.status, 63) << length;
        EXPECT_EQ(reply.data, "");
        EXPECT_EQ(number(reply.buffer, 0, 4), 0u) << length;
    }
    for (uint32_t length = 0; length < 4; ++length)
        EXPECT_EQ(insert(whole.substr(0, length), -1, length).status, 22) << length;
    std::string tooLong = payload({"a1xx", "b2xx"});
    tooLong[15] = '\xFF';
    EXPECT_EQ(insert(tooLong).status, 63);
    EXPECT_EQ(insert(u32(UINT32_MAX)).status, 63);
    EXPECT_EQ(insert(u32(0x20000001) + "xxxxxxxx").status, 63);
    EXPECT_EQ(letters(), "");
}

TEST_F(InsertExtendedTest, TheReplyMustFit) {
    std::string variable = directory / "variable";
    ASSERT_EQ(session.create(variable, createRequest(1, variableLength, {})), 0);
    ASSERT_EQ(session.call(1, &block).status, 0);
    ASSERT_EQ(session.open(&block, variable), 0);
    std::string request = payload({"a", "b", "c"});
    ASSERT_EQ(request.size(), 19u);
    Reply reply = insert(request, -1, 27);
    EXPECT_EQ(reply.status, 63);
    EXPECT_EQ(number(reply.buffer, 0, 4), 0u);
    reply = insert(request, -1, 28);
    EXPECT_EQ(reply.status, 0);
    EXPECT_EQ(reply.data, u32(3) + u64(1) + u64(2) + u64(3));
    EXPECT_EQ(session.call(34, &block, "", "", -1, 4).data, "c");
}

TEST_F(InsertExtendedTest, RefusalsLeaveACountOfNone) {
    std::string request = payload({"a1xx"});
    EngineSession::PositionBlock closed{}, readOnly{};
    EXPECT_EQ(session.call(40, &closed, request, "", -1).status, 3);
    ASSERT_EQ(session.open(&readOnly, path, -2), 0);
    Reply reply = session.call(40, &readOnly, request, "", -1);
    EXPECT_EQ(reply.status, 46);
    EXPECT_EQ(number(reply.buffer, 0, 4), 0u);
    reply = insert(request, 2);
    EXPECT_EQ(reply.status, 6);
    EXPECT_EQ(number(reply.buffer, 0, 4), 0u);
    EXPECT_EQ(letters(), "");
    EXPECT_EQ(session.call(140, &block, request, "", -1).status, 1);
}

TEST_F(InsertExtendedTest, AutoincrementsAreFilled) {
    std::string counted = directory / "counted";
    ASSERT_EQ(session.create(counted, createRequest(4, 0, {{{0, 2, extendedType, 15}}})), 0);
    ASSERT_EQ(session.call(1, &block).status, 0);
    ASSERT_EQ(session.open(&block, counted), 0);
    std::string empty("\0\0", 2);
    Reply reply = insert(payload({empty + "aa", u16(0x7FFE) + "bb", empty + "cc", empty + "dd"}));
    EXPECT_EQ(reply.status, 55);
    EXPECT_EQ(reply.data, u32(3) + u64(1) + u64(2) + u64(3));
    EXPECT_EQ(session.call(33, &block, "", "", -1, 4).data, u16(1) + "aa");
    EXPECT_EQ(session.call(34, &block, "", "", -1, 4).data, u16(0x7FFF) + "cc");
}

TEST_F(InsertExtendedTest, IsTakenBackWithItsTransaction) {
    ASSERT_EQ(session.call(1019, nullptr).status, 0);
    EXPECT_EQ(insert(payload({"a1xx", "b1xx", "a2xx"})).status, 5);
    EXPECT_EQ(letters(), "ab");
    ASSERT_EQ(session.call(21, nullptr).status, 0);
    EXPECT_EQ(letters(), "");
    ASSERT_EQ(session.call(1019, nullptr).status, 0);
    EXPECT_EQ(insert(payload({"a1xx", "b1xx", "a2xx"})).status, 5);
    ASSERT_EQ(session.call(20, nullptr).status, 0);
    EXPECT_EQ(letters(), "ab");
}

TEST_F(InsertExtendedTest, RecordsAreSeenByOthersTogether) {
    EngineSession other{2};
    EngineSession::PositionBlock otherBlock{};
    ASSERT_EQ(other.open(&otherBlock, path), 0);
    EXPECT_EQ(other.call(33, &otherBlock, "", "", -1, 4).status, 9);
    ASSERT_EQ(insert(payload({"a1xx", "b1xx"})).status, 0);
    EXPECT_EQ(other.call(34, &otherBlock, "", "", -1, 4).data, "b1xx");
}

}  // namespace
