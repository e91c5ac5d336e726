#include "embedded/operation/extended_fixture.h"

namespace {

using namespace vantrel::test;

class ExtendedDeleteTest : public ExtendedFixture {
  protected:
    static RequestFields deletion(const std::string &signature, std::vector<TermFields> terms = {}) {
        RequestFields fields = request(signature, std::move(terms));
        fields.entries = {};
        return fields;
    }
    // The addresses deleted and the status.
    std::string remove(uint32_t operation, const RequestFields &fields, int32_t index = 0,
                       const std::string &key = "") {
        return outcome(session.call(operation, &block, fields.bytes(), key, index, 1000));
    }
    static std::string outcome(const Reply &reply) {
        std::string text;
        for (size_t record = 0; !reply.data.empty() && record < number(reply.data, 0, 2); ++record) {
            EXPECT_EQ(number(reply.data, 2 + 10 * record, 2), 4u);
            text += std::string(1, "?cafbed"[number(reply.data, 4 + 10 * record, 8)]);
        }
        return text + ' ' + std::to_string(reply.status);
    }
};

TEST_F(ExtendedDeleteTest, DeletesWhatPasses) {
    EXPECT_EQ(remove(85, deletion("FI", {onDigit(equalTo, '1')})), "acf 9");
    EXPECT_EQ(letters(), "bde");
    EXPECT_EQ(read(5, "1", 1), "4");
    EXPECT_EQ(read(12, "?", 1), "b");
}

TEST_F(ExtendedDeleteTest, GoesTheWayOfItsCode) {
    RequestFields fields = deletion("FI");
    fields.recordLimit = 1;
    EXPECT_EQ(remove(85, fields), "a 0");
    fields.signature = "LA";
    EXPECT_EQ(remove(86, fields), "f 0");
    fields.signature = "FI";
    EXPECT_EQ(remove(87, fields, -1), "c 0");
    fields.signature = "LA";
    EXPECT_EQ(remove(88, fields, -1), "d 0");
    EXPECT_EQ(letters(), "be");
}

TEST_F(ExtendedDeleteTest, EndsAsReadsDo) {
    RequestFields fields = deletion("FI", {{0, 1, 2, equalTo, "y", 0, ""}});
    fields.rejectLimit = 3;
    EXPECT_EQ(remove(85, fields), "c 60");
    EXPECT_EQ(current(), "d");
    EXPECT_EQ(remove(85, deletion("FI", {onLetter(lessThan, 'b')})), "a 64");
    EXPECT_EQ(remove(85, deletion("EQ"), 0, "x"), " 4");
    EXPECT_EQ(remove(85, deletion("GT"), 0, "x"), " 9");
    Reply reply = session.call(85, &block, deletion("FI").bytes(), "", 0, 22);
    EXPECT_EQ(outcome(reply), "bd 61");
    EXPECT_EQ(letters(), "ef");
}

TEST_F(ExtendedDeleteTest, LeavesThePlaceOfTheLastRecordExamined) {
    RequestFields fields = deletion("FI");
    fields.recordLimit = 2;
    EXPECT_EQ(remove(85, fields), "ab 0");
    EXPECT_EQ(current(), "8");
    EXPECT_EQ(read(6), "c");
    fields = deletion("UC", {onLetter(equalTo, 'd')});
    EXPECT_EQ(remove(85, fields), "d 64");
    fields.signature = "EG";
    fields.terms = {};
    fields.recordLimit = 1;
    EXPECT_EQ(remove(85, fields), "e 0");
    EXPECT_EQ(read(7), "c");
    EXPECT_EQ(remove(88, deletion("UC"), -1), "c 9");
    EXPECT_EQ(letters(), "f");
}

TEST_F(ExtendedDeleteTest, RefusalsAreThoseOfReads) {
    EXPECT_EQ(remove(85, deletion("UC")), " 8");
    EXPECT_EQ(remove(87, deletion("EG"), -1), " 8");
    ASSERT_EQ(read(5, "c"), "c");
    EXPECT_EQ(remove(85, deletion("UC"), 1), " 7");
    EXPECT_EQ(remove(86, deletion("FI"), 7), " 6");
    EXPECT_EQ(remove(86, deletion("FI"), -1), " 8");
    EXPECT_EQ(remove(85, deletion("EQ"), 0), " 21");
    EXPECT_EQ(remove(87, deletion("EQ"), -1, "c"), " 62");
    EXPECT_EQ(remove(85, request("FI")), " 65");
    EXPECT_EQ(letters(), "abcdef");
    EXPECT_EQ(session.call(185, &block, deletion("FI").bytes(), "", 0, 100).status, 1);
}

TEST_F(ExtendedDeleteTest, ReadOnlyPositionsAreRefused) {
    EngineSession::PositionBlock readOnly{};
    ASSERT_EQ(session.open(&readOnly, path, -2), 0);
    Reply reply = session.call(85, &readOnly, deletion("FI").bytes(), "", 0, 100);
    EXPECT_EQ(reply.status, 46);
    EXPECT_EQ(number(reply.buffer, 0, 2), 0u);
    EXPECT_EQ(letters(), "abcdef");
}

TEST_F(ExtendedDeleteTest, StopsAtARecordThatAnotherSessionHasLocked) {
    EngineSession other{2};
    EngineSession::PositionBlock otherBlock{};
    ASSERT_EQ(other.open(&otherBlock, path), 0);
    ASSERT_EQ(other.call(205, &otherBlock, "", "c", 0, 4).status, 0);
    EXPECT_EQ(remove(85, deletion("FI")), "ab 84");
    EXPECT_EQ(letters(), "cdef");
    EXPECT_EQ(remove(85, deletion("FI")), " 84");
    EXPECT_EQ(remove(85, deletion("FI", {onLetter(greaterThan, 'c')})), "def 9");
}

TEST_F(ExtendedDeleteTest, ReleasesTheSingleLockOutsideATransaction) {
    EngineSession other{2};
    EngineSession::PositionBlock otherBlock{};
    ASSERT_EQ(other.open(&otherBlock, path), 0);
    ASSERT_EQ(session.call(205, &block, "", "c", 0, 4).status, 0);
    RequestFields fields = deletion("UC");
    fields.recordLimit = 1;
    EXPECT_EQ(remove(85, fields), "c 0");
    EXPECT_EQ(session.call(405, &block, "", "d", 0, 4).status, 0);
}

TEST_F(ExtendedDeleteTest, OtherPositionsOfTheSessionLoseTheRecord) {
    EngineSession::PositionBlock second{};
    ASSERT_EQ(session.open(&second, path), 0);
    ASSERT_EQ(session.call(5, &second, "", "a", 0, 4).status, 0);
    EXPECT_EQ(remove(85, deletion("FI", {onLetter(equalTo, 'a')})), "a 64");
    EXPECT_EQ(session.call(4, &second).status, 8);
    EXPECT_EQ(session.call(6, &second, "", "?", 0, 4).data, "b2xy");
}

TEST_F(ExtendedDeleteTest, IsTakenBackWithItsTransaction) {
    ASSERT_EQ(session.call(1019, nullptr).status, 0);
    EXPECT_EQ(remove(85, deletion("FI", {onDigit(equalTo, '1')})), "acf 9");
    EXPECT_EQ(letters(), "bde");
    ASSERT_EQ(session.call(21, nullptr).status, 0);
    EXPECT_EQ(letters(), "abcdef");
    ASSERT_EQ(session.call(1019, nullptr).status, 0);
    EXPECT_EQ(remove(85, deletion("FI", {onDigit(equalTo, '1')})), "acf 9");
    ASSERT_EQ(session.call(20, nullptr).status, 0);
    EXPECT_EQ(letters(), "bde");
}

TEST_F(ExtendedDeleteTest, WaitsForNoOneWhoOnlyReads) {
    EngineSession other{2};
    EngineSession::PositionBlock otherBlock{};
    ASSERT_EQ(other.open(&otherBlock, path), 0);
    ASSERT_EQ(other.call(12, &otherBlock, "", "?", 0, 4).data, "a1xx");
    EXPECT_EQ(remove(85, deletion("FI")), "abcdef 9");
    EXPECT_EQ(other.call(6, &otherBlock, "", "?", 0, 4).status, 9);
}

TEST_F(ExtendedDeleteTest, TheLengthOfALongRecordIsGivenByItsLow16Bits) {
    std::string longPath = directory / "long";
    ASSERT_EQ(session.create(longPath, createRequest(4, variableLength, {})), 0);
    EngineSession::PositionBlock at{};
    ASSERT_EQ(session.open(&at, longPath), 0);
    ASSERT_EQ(session.call(2, &at, std::string(65535, 'x'), "", -1).status, 0);
    ASSERT_EQ(session.call(2, &at, "xxxxx", "", -1).status, 0);
    Reply reply = session.call(87, &at, deletion("FI").bytes(), "", -1, 100);
    EXPECT_EQ(reply.status, 9);
    EXPECT_EQ(reply.data, u16(2) + u16(65535) + u64(1) + u16(5) + u64(2));
}

}  // namespace
