#include "embedded/operation/extended_fixture.h"

namespace {

using namespace vantrel::test;

class ExtendedTest : public ExtendedFixture {};

TEST_F(ExtendedTest, AReplyIsACountAndRecordsWithTheirAddresses) {
    RequestFields fields = request("FI");
    fields.recordLimit = 2;
    fields.entries = {{2, 2}, {9, 1}};
    Reply reply = session.call(36, &block, fields.bytes(), "", 0, 100);
    EXPECT_EQ(reply.status, 0);
    EXPECT_EQ(reply.data, u16(2) + u16(5) + u64(2) + "xx1xx" + u16(5) + u64(4) + "xy2xy");
    fields.entries = {};
    reply = session.call(36, &block, fields.bytes(), "", 0, 100);
    EXPECT_EQ(reply.data, u16(2) + u16(0) + u64(2) + u16(0) + u64(4));
}

TEST_F(ExtendedTest, FirstAndLastBeginAtTheEnds) {
    EXPECT_EQ(run(36, request("FI")), "abcdef 9");
    EXPECT_EQ(run(37, request("LA")), "fedcba 9");
    EXPECT_EQ(run(36, request("LA")), "f 9");
    EXPECT_EQ(run(37, request("FI")), "a 9");
    EXPECT_EQ(run(36, request("FI"), 1), "cafbed 9");
    EXPECT_EQ(run(37, request("LA"), 1), "debfac 9");
    EXPECT_EQ(run(38, request("FI"), -1), "cafbed 9");
    EXPECT_EQ(run(39, request("LA"), -1), "debfac 9");
    EXPECT_EQ(run(38, request("LA"), -1), "d 9");
    EXPECT_EQ(run(39, request("FI"), -1), "c 9");
}

TEST_F(ExtendedTest, KeysBeginWhereTheSingleReadWould) {
    EXPECT_EQ(run(36, request("EQ"), 0, "c"), "cdef 9");
    EXPECT_EQ(run(36, request("GT"), 0, "c"), "def 9");
    EXPECT_EQ(run(36, request("LT"), 0, "c"), "bcdef 9");
    EXPECT_EQ(run(36, request("GE"), 0, "c"), "cdef 9");
    EXPECT_EQ(run(36, request("LE"), 0, "c"), "cdef 9");
    EXPECT_EQ(run(37, request("EQ"), 0, "c"), "cba 9");
    EXPECT_EQ(run(37, request("GT"), 0, "c"), "dcba 9");
    EXPECT_EQ(run(37, request("LT"), 0, "c"), "ba 9");
    EXPECT_EQ(run(36, request("EQ"), 1, "2"), "bed 9");
    EXPECT_EQ(run(37, request("LE"), 1, "2"), "ebfac 9");
    EXPECT_EQ(run(36, request("EQ"), 0, "x"), " 4");
    EXPECT_EQ(run(36, request("GT"), 0, "f"), " 9");
    EXPECT_EQ(run(36, request("LT"), 0, "a"), " 9");
}

TEST_F(ExtendedTest, TheCurrentRecordIsTakenOrLeft) {
    ASSERT_EQ(read(5, "c"), "c");
    EXPECT_EQ(run(36, request("UC")), "cdef 9");
    ASSERT_EQ(read(5, "c"), "c");
    EXPECT_EQ(run(36, request("EG")), "def 9");
    ASSERT_EQ(read(5, "c"), "c");
    EXPECT_EQ(run(37, request("UC")), "cba 9");
    ASSERT_EQ(read(5, "c"), "c");
    EXPECT_EQ(run(37, request("EG")), "ba 9");
    ASSERT_EQ(read(5, "c"), "c");
    EXPECT_EQ(run(38, request("EG"), -1), "afbed 9");
    ASSERT_EQ(read(5, "b"), "b");
    EXPECT_EQ(run(39, request("UC"), -1), "bfac 9");
    ASSERT_EQ(read(5, "b"), "b");
    EXPECT_EQ(run(39, request("EG"), -1), "fac 9");
    ASSERT_EQ(read(5, "b"), "b");
    EXPECT_EQ(run(38, request("UC"), -1), "bed 9");
}

TEST_F(ExtendedTest, ADeletedCurrentRecordMakesWayForTheFollowingOne) {
    for (const char *signature : {"UC", "EG"}) {
        std::string letter = signature[0] == 'U' ? "c" : "d";
        ASSERT_EQ(read(5, letter), letter);
        ASSERT_EQ(session.call(4, &block).status, 0);
        EXPECT_EQ(run(36, request(signature)), letter == "c" ? "def 9" : "ef 9");
    }
    ASSERT_EQ(read(5, "b"), "b");
    ASSERT_EQ(session.call(4, &block).status, 0);
    EXPECT_EQ(run(38, request("UC"), -1), "e 9");
}

TEST_F(ExtendedTest, AFailedSearchIsAPlaceToBeginAt) {
    ASSERT_EQ(read(5, "A"), "4");
    EXPECT_EQ(run(36, request("UC")), "abcdef 9");
    ASSERT_EQ(read(8, "f"), "9");
    EXPECT_EQ(run(37, request("UC")), "fedcba 9");
    ASSERT_EQ(read(8, "f"), "9");
    EXPECT_EQ(run(37, request("EG")), "fedcba 9");
}

TEST_F(ExtendedTest, PositionsThatAreNotSetAreRefused) {
    EXPECT_EQ(run(36, request("UC")), " 8");
    EXPECT_EQ(run(37, request("EG")), " 8");
    EXPECT_EQ(run(38, request("UC"), -1), " 8");
    EXPECT_EQ(run(39, request("EG"), -1), " 8");
    ASSERT_EQ(read(5, "c"), "c");
    EXPECT_EQ(run(36, request("UC"), 1), " 7");
    EXPECT_EQ(run(36, request("EG"), 1), " 7");
    EXPECT_EQ(run(36, request("FI"), 2), " 6");
    EXPECT_EQ(run(36, request("FI"), -1), " 8");
    EXPECT_EQ(run(37, request("FI"), -1), " 8");
    EXPECT_EQ(run(36, request("EQ"), 0, ""), " 21");
    EXPECT_EQ(run(38, request("EQ"), -1, "c"), " 62");
    EXPECT_EQ(current(), "c");
}

TEST_F(ExtendedTest, TheRequestIsCheckedBeforeAnythingElse) {
    RequestFields fields = request("EQ");
    fields.recordLimit = 0;
    EXPECT_EQ(run(36, fields, -1), " 65");
    EXPECT_EQ(run(36, fields, 5), " 65");
    EngineSession::PositionBlock closed{};
    EXPECT_EQ(session.call(36, &closed, fields.bytes(), "", 0, 100).status, 3);
    EXPECT_EQ(session.call(36, &block, "", "", 0, 0).status, 22);
    EXPECT_EQ(session.call(36, &block, fields.bytes().substr(0, 7), "", 0).status, 22);
}

TEST_F(ExtendedTest, TheCountInFrontIsTrueWhateverTheStatus) {
    auto countAfter = [&](const RequestFields &fields, int32_t index, int32_t status,
                          uint32_t operation = 36) {
        Reply reply = session.call(operation, &block, fields.bytes(), "c", index, 100);
        EXPECT_EQ(reply.status, status);
        EXPECT_EQ(reply.data.empty(), status != 9 && status != 4);
        return number(reply.buffer, 0, 2);
    };
    RequestFields fields = request("EQ");
    EXPECT_EQ(countAfter(fields, -1, 8), 0u);
    EXPECT_EQ(countAfter(fields, 5, 6), 0u);
    EXPECT_EQ(countAfter(request("XX"), 0, 62), 0u);
    fields.recordLimit = 0;
    EXPECT_EQ(countAfter(fields, 0, 65), 0u);
    fields = request("FI");
    fields.entries = {{200, 0}};
    EXPECT_EQ(countAfter(fields, 0, 61), 0u);
    EXPECT_EQ(countAfter(request("FI", {onDigit(equalTo, '9')}), 0, 9), 0u);
    EXPECT_EQ(countAfter(request("EQ"), 0, 9), 4u);
    EXPECT_EQ(number(session.call(36, nullptr, fields.bytes(), "", 0).buffer, 0, 2), 0u);
}

TEST_F(ExtendedTest, TruncatedRequestsDoNothing) {
    RequestFields fields = request("EQ", {onLetter(equalTo, 'c', joinAnd), onDigit(equalTo, '1')});
    ASSERT_EQ(read(5, "b"), "b");
    std::string whole = fields.bytes();
    fields.entries = {};
    std::string deletion = fields.bytes();
    for (uint32_t length = 1; length < deletion.size(); ++length) {
        for (uint32_t operation : {36u, 37u, 38u, 39u})
            EXPECT_NE(session.call(operation, &block, whole.substr(0, length), "c", 0).status, 0);
        for (uint32_t operation : {85u, 86u, 87u, 88u})
            EXPECT_NE(session.call(operation, &block, deletion.substr(0, length), "c", 0).status, 0);
    }
    EXPECT_EQ(current(), "b");
    EXPECT_EQ(letters(), "abcdef");
}

TEST_F(ExtendedTest, EndsWithStatus0AtTheRecordCount) {
    RequestFields fields = request("FI");
    fields.recordLimit = 2;
    EXPECT_EQ(run(36, fields), "ab 0");
    EXPECT_EQ(current(), "b");
    fields.signature = "EG";
    EXPECT_EQ(run(36, fields), "cd 0");
    EXPECT_EQ(run(36, fields), "ef 0");
    EXPECT_EQ(run(36, fields), " 9");
    EXPECT_EQ(current(), "f");
}

TEST_F(ExtendedTest, EndsWithStatus60AtTheRejectCount) {
    RequestFields fields = request("FI", {{0, 1, 2, equalTo, "y", 0, ""}});
    fields.rejectLimit = 2;
    EXPECT_EQ(run(36, fields), " 60");
    EXPECT_EQ(current(), "b");
    fields.signature = "EG";
    EXPECT_EQ(run(36, fields), "c 60");
    EXPECT_EQ(current(), "e");
    EXPECT_EQ(run(36, fields), " 9");
    EXPECT_EQ(current(), "f");
    fields.signature = "FI";
    fields.rejectLimit = 0;
    EXPECT_EQ(run(36, fields), "c 9");
}

TEST_F(ExtendedTest, EndsWithStatus64WhereNoFurtherRecordCanPass) {
    EXPECT_EQ(run(36, request("FI", {onLetter(lessThan, 'd')})), "abc 64");
    EXPECT_EQ(current(), "c");
    EXPECT_EQ(run(36, request("EG", {onLetter(lessThan, 'd')})), " 64");
    EXPECT_EQ(current(), "c");
    EXPECT_EQ(run(37, request("LA", {onLetter(greaterThan, 'd')})), "fe 64");
    EXPECT_EQ(run(36, request("FI", {onLetter(atMost, 'f')})), "abcdef 9");
    EXPECT_EQ(run(36, request("FI", {onLetter(atMost, 'c', joinAnd), onDigit(equalTo, '1')})), "ac 64");
    EXPECT_EQ(run(36, request("FI", {onDigit(equalTo, '1', joinAnd), onLetter(atMost, 'c')})), "ac 64");
    EXPECT_EQ(run(36, request("FI", {onDigit(equalTo, '1')}), 1), "caf 64");
    EXPECT_EQ(run(36, request("FI", {onLetter(greaterThan, 'd', joinAnd), onLetter(lessThan, 'b')})), " 64");
    EXPECT_EQ(run(36, request("FI", {onLetter(greaterThan, '\xFF')})), " 64");
    EXPECT_EQ(run(37, request("LA", {onLetter(greaterThan, '\xFF')})), " 64");
}

TEST_F(ExtendedTest, DisjunctionsAndPhysicalOrderGoOnToTheEnd) {
    EXPECT_EQ(run(36, request("FI", {onLetter(lessThan, 'c', joinOr), onLetter(equalTo, 'f')})), "abf 9");
    EXPECT_EQ(run(38, request("FI", {onLetter(lessThan, 'c')}), -1), "ab 9");
    EXPECT_EQ(run(36, request("FI", {onLetter(lessThan, 'c')}), 1), "ab 9");
}

TEST_F(ExtendedTest, RecordsInFrontOfTheRangeAreNotExamined) {
    RequestFields fields = request("FI", {onLetter(atLeast, 'd')});
    fields.rejectLimit = 1;
    EXPECT_EQ(run(36, fields), "def 9");
    fields = request("LA", {onLetter(lessThan, 'c')});
    fields.rejectLimit = 1;
    EXPECT_EQ(run(37, fields), "ba 9");
    fields = request("EQ", {onLetter(greaterThan, 'd')});
    fields.rejectLimit = 1;
    EXPECT_EQ(run(36, fields, 0, "b"), "ef 9");
    fields = request("FI", {onLetter(atLeast, 'x')});
    EXPECT_EQ(run(36, fields), " 9");
    EXPECT_EQ(run(37, request("LA", {onLetter(lessThan, 'a')})), " 9");
}

TEST_F(ExtendedTest, TheBoundsDoNotHideAKeyThatIsMissing) {
    EXPECT_EQ(run(36, request("EQ", {onLetter(atLeast, 'd')}), 0, "B"), " 4");
}

TEST_F(ExtendedTest, EndsWithStatus61InFrontOfTheRecordThatHasNoRoom) {
    RequestFields fields = request("FI");
    fields.entries = {{4, 0}};
    Reply reply = session.call(36, &block, fields.bytes(), "", 0, 2 + 2 * 14 + 13);
    EXPECT_EQ(reply.status, 61);
    EXPECT_EQ(lettersIn(reply.data), "a1xxb2xy");
    EXPECT_EQ(current(), "b");
    reply = session.call(36, &block, fields.bytes(), "", 0, 2 + 6 * 14);
    EXPECT_EQ(reply.status, 9);
    EXPECT_EQ(reply.data.size(), 86u);
}

TEST_F(ExtendedTest, ThePlaceIsTheLastRecordExamined) {
    EXPECT_EQ(run(36, request("FI", {{0, 1, 2, equalTo, "y", 0, ""}})), "c 9");
    EXPECT_EQ(current(), "f");
    EXPECT_EQ(read(7), "e");
    EXPECT_EQ(read(5, "c"), "c");
    EXPECT_EQ(run(38, request("EG", {{0, 1, 2, equalTo, "z", 0, ""}}), -1), "e 9");
    EXPECT_EQ(current(), "d");
    EXPECT_EQ(read(6), "d");
}

TEST_F(ExtendedTest, ThePlaceStaysWhereNothingWasExamined) {
    ASSERT_EQ(read(5, "c"), "c");
    EXPECT_EQ(run(36, request("EQ"), 0, "x"), " 4");
    EXPECT_EQ(run(36, request("GT"), 0, "f"), " 9");
    EXPECT_EQ(run(36, request("FI", {onLetter(atLeast, 'x')})), " 9");
    EXPECT_EQ(run(36, request("XX")), " 62");
    EXPECT_EQ(current(), "c");
    EXPECT_EQ(read(6), "d");
}

TEST_F(ExtendedTest, AnExaminedRecordMayBeUpdated) {
    RequestFields fields = request("FI");
    fields.recordLimit = 3;
    EXPECT_EQ(run(36, fields), "abc 0");
    EXPECT_EQ(session.call(3, &block, "c9yy", "", -1).status, 0);
    EXPECT_EQ(run(36, request("FI", {onDigit(equalTo, '9')})), "c 9");
}

TEST_F(ExtendedTest, AggregatesGiveOneRecordOverAllThatPassed) {
    RequestFields fields = request("FI", {onDigit(equalTo, '1')});
    fields.entries = aggregateEntries(14, "MA", {1, 0});
    fields.recordLimit = 1;
    Reply reply = session.call(36, &block, fields.bytes(), "", 0, 100);
    EXPECT_EQ(reply.status, 9);
    EXPECT_EQ(reply.data, u16(1) + u16(1) + u64(3) + "f");
    EXPECT_EQ(current(), "f");
    fields.rejectLimit = 1;
    EXPECT_EQ(run(36, fields), "a 60");
    fields.terms = {onDigit(equalTo, '9')};
    fields.rejectLimit = 0;
    EXPECT_EQ(run(36, fields), " 9");
}

TEST_F(ExtendedTest, SystemFieldsAreTheRecordsTimes) {
    RequestFields fields = request("FI");
    fields.recordLimit = 1;
    fields.entries = {{0xFF08, 0xFFFE}, {0xFF08, 0xFFFB}};
    Reply reply = session.call(36, &block, fields.bytes(), "", 0, 100);
    ASSERT_EQ(reply.status, 0);
    std::string times = session.call(22, &block, "SysD", "", -3, 24).data.substr(8);
    EXPECT_EQ(reply.data.substr(12), times);
    TermFields created{32, 0xFF08, 0xFFFE, equalTo, times.substr(0, 8), 0, ""};
    EXPECT_EQ(run(36, request("FI", {created})), "a 9");
}

TEST_F(ExtendedTest, InsideATransactionItsOwnChangesAreSeen) {
    ASSERT_EQ(session.call(1019, nullptr).status, 0);
    ASSERT_EQ(session.call(2, &block, "g1xx", "", -1).status, 0);
    EXPECT_EQ(run(36, request("FI")), "abcdefg 9");
    ASSERT_EQ(session.call(21, nullptr).status, 0);
    EXPECT_EQ(run(36, request("FI")), "abcdef 9");
}

TEST_F(ExtendedTest, AnEmptyFileEndsAtOnce) {
    std::string empty = directory / "empty";
    ASSERT_EQ(session.create(empty, createRequest(4, 0, {{{0, 1, extendedType, unsignedType}}})), 0);
    EngineSession::PositionBlock other{};
    ASSERT_EQ(session.open(&other, empty), 0);
    for (const char *signature : {"FI", "LA", "GE", "LE"}) {
        EXPECT_EQ(run(session, other, 36, request(signature), 0, "c"), " 9");
        EXPECT_EQ(run(session, other, 37, request(signature), 0, "c"), " 9");
    }
    EXPECT_EQ(run(session, other, 36, request("EQ"), 0, "c"), " 4");
    EXPECT_EQ(run(session, other, 38, request("FI"), -1), " 9");
    EXPECT_EQ(run(session, other, 39, request("LA"), -1), " 9");
}

}  // namespace
