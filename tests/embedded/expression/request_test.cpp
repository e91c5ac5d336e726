#include "embedded/expression/request.h"

#include <gtest/gtest.h>

#include "embedded/expression/extended_request.h"
#include "embedded/key/request_builder.h"

namespace {

using namespace vantrel::embedded;
using namespace vantrel::test;

constexpr RequestKind alongIndex{false, false}, physical{true, false}, deleting{false, true};
constexpr int32_t malformed = 62, badExtractor = 65, noRoom = 61, tooShort = 22, unknownCollation = 136;

int32_t status(const Bytes &buffer, RequestKind kind = alongIndex) {
    return statusOf([&] { decodeExtendedRequest(buffer, {}, kind); });
}

int32_t status(const RequestFields &fields, RequestKind kind = alongIndex) {
    return status(fields.bytes(), kind);
}

int32_t termStatus(const TermFields &term) {
    RequestFields fields;
    fields.terms = {term};
    return status(fields);
}

const TermFields plainTerm{14, 2, 0, equalTo, "ab", 0, ""};

TEST(ExtendedRequest, ItsHeaderSaysHowTheScanGoes) {
    RequestFields fields;
    fields.signature = "GE";
    fields.rejectLimit = 0x1234;
    fields.recordLimit = 0x5678;
    fields.terms = {plainTerm};
    fields.entries = {{3, 1}};
    ExtendedRequest request = decodeExtendedRequest(fields.bytes(), {}, alongIndex);
    EXPECT_EQ(request.start, Start::greaterOrEqual);
    EXPECT_EQ(request.rejectLimit, 0x1234);
    EXPECT_EQ(request.recordLimit, 0x5678);
    EXPECT_EQ(request.filter.terms().size(), 1u);
    EXPECT_EQ(request.extractor.longest(), 3u);
}

TEST(ExtendedRequest, SignaturesAreTwoLetters) {
    struct Row {
        const char *letters;
        Start start;
        int32_t inPhysicalOrder;
    };
    for (const Row &row : std::initializer_list<Row>{{"UC", Start::current, 0},
                                                     {"EG", Start::behindCurrent, 0},
                                                     {"FI", Start::first, 0},
                                                     {"LA", Start::last, 0},
                                                     {"EQ", Start::equal, malformed},
                                                     {"GT", Start::greater, malformed},
                                                     {"LT", Start::less, malformed},
                                                     {"GE", Start::greaterOrEqual, malformed},
                                                     {"LE", Start::lessOrEqual, malformed}}) {
        RequestFields fields;
        fields.signature = row.letters;
        EXPECT_EQ(decodeExtendedRequest(fields.bytes(), {}, alongIndex).start, row.start);
        EXPECT_EQ(status(fields, physical), row.inPhysicalOrder) << row.letters;
    }
    for (const char *letters : {"NE", "uc", "UG", "  "}) {
        RequestFields fields;
        fields.signature = letters;
        EXPECT_EQ(status(fields), malformed) << letters;
    }
}

TEST(ExtendedRequest, AHeaderHasEightBytes) {
    Bytes whole = RequestFields().bytes();
    for (size_t length = 0; length < 8; ++length)
        EXPECT_EQ(status(whole.substr(0, length)), tooShort) << length;
}

TEST(ExtendedRequest, WhatItSaysMustLieInTheBuffer) {
    RequestFields fields;
    fields.terms = {plainTerm};
    fields.entries = {{0, 0}, {0, 1}};
    Bytes whole = fields.bytes();
    ASSERT_EQ(whole.size(), 8u + 9 + 4 + 8);
    for (size_t length = 8; length < 17; ++length)
        EXPECT_EQ(status(whole.substr(0, length)), malformed) << length;
    for (size_t length = 17; length < whole.size(); ++length)
        EXPECT_EQ(status(whole.substr(0, length)), badExtractor) << length;
    EXPECT_EQ(status(whole), 0);
    EXPECT_EQ(status(whole + "and more"), 0);
}

TEST(ExtendedRequest, ItsStatedLengthIsItsOwnModulo65536) {
    Bytes request = RequestFields().bytes();
    ++request[0];
    EXPECT_EQ(status(request), malformed);
    request[0] = static_cast<char>(request[0] - 2);
    EXPECT_EQ(status(request), malformed);
    RequestFields fields;
    for (int term = 0; term < 2; ++term)
        fields.terms.push_back({0, 40000, 0, equalTo, std::string(40000, 'x'), joinAnd, ""});
    fields.terms.push_back(plainTerm);
    ASSERT_GT(fields.bytes().size(), 65536u);
    EXPECT_EQ(status(fields), 0);
}

TEST(ExtendedRequest, MalformedTermsAreRefused) {
    EXPECT_EQ(termStatus(plainTerm), 0);
    TermFields term = plainTerm;
    term.type = 12;
    EXPECT_EQ(termStatus(term), malformed);
    term = plainTerm;
    term.flags = 0;
    EXPECT_EQ(termStatus(term), malformed);
    for (uint8_t connector : std::initializer_list<uint8_t>{1, 2, 3, 255}) {
        term = plainTerm;
        term.connector = connector;
        EXPECT_EQ(termStatus(term), malformed) << int{connector};
    }
    for (uint16_t length : std::initializer_list<uint16_t>{0xFF00, 0xFF07, 0xFF09}) {
        TermFields system{32, length, 0xFFFE, equalTo, std::string(length & 0xFF, 'x'), 0, ""};
        EXPECT_EQ(termStatus(system), malformed) << length;
    }
    EXPECT_EQ(termStatus({32, 0xFF08, 0xFFFE, equalTo, "12345678", 0, ""}), 0);
    EXPECT_EQ(termStatus({32, 0xFF08, 0xFFFB, equalTo, "12345678", 0, ""}), 0);
    EXPECT_EQ(termStatus({32, 0xFF08, 0xFFFD, equalTo, "12345678", 0, ""}), malformed);
}

TEST(ExtendedRequest, EveryTermButTheLastOneJoinsTheNext) {
    RequestFields fields;
    fields.terms = {plainTerm, plainTerm};
    EXPECT_EQ(status(fields), malformed);
    fields.terms[0].connector = joinOr;
    EXPECT_EQ(status(fields), 0);
    fields.terms[1].connector = joinAnd;
    EXPECT_EQ(status(fields), malformed);
}

TEST(ExtendedRequest, BlocksHaveAMarkerAndAKnownName) {
    TermFields term{0, 2, 0, blockFlag | equalTo, "ab", 0, ""};
    EXPECT_EQ(termStatus(term), malformed);
    term.block = collationBlock("UPPER");
    EXPECT_EQ(termStatus(term), 0);
    term.block = collationBlock("NONE");
    EXPECT_EQ(termStatus(term), unknownCollation);
    term.block = shortNameBlock("NONE");
    EXPECT_EQ(termStatus(term), unknownCollation);
    term.block = codePageBlock("NONE");
    EXPECT_EQ(termStatus(term), malformed);
    term.block = collationBlock("UPPER");
    term.block[0] = '\xAD';
    EXPECT_EQ(termStatus(term), malformed);
}

TEST(ExtendedRequest, CollationsExcludeEachOther) {
    TermFields term{0, 2, 0, blockFlag | equalTo, "ab", 0, collationBlock("UPPER")};
    for (uint8_t flags :
         std::initializer_list<uint8_t>{blockFlag | caseFlag, blockFlag | defaultCollationFlag}) {
        term.flags = equalTo | flags;
        EXPECT_EQ(termStatus(term), malformed);
    }
    term.block.clear();
    term.flags = equalTo | caseFlag | defaultCollationFlag;
    EXPECT_EQ(termStatus(term), malformed);
    term.flags = equalTo | blockFlag | caseFlag;
    term.block = codePageBlock("ASCII");
    EXPECT_EQ(termStatus(term), 0);
}

TEST(ExtendedRequest, AFlagThatMeansNothingIsIgnored) {
    TermFields term = plainTerm;
    term.flags = equalTo | 0x10;
    EXPECT_EQ(termStatus(term), 0);
}

TEST(ExtendedRequest, RecordsMustBeAskedFor) {
    RequestFields fields;
    fields.recordLimit = 0;
    EXPECT_EQ(status(fields), badExtractor);
}

TEST(ExtendedRequest, DeletesExtractNothing) {
    RequestFields fields;
    EXPECT_EQ(status(fields, deleting), 0);
    fields.entries = {{1, 0}};
    EXPECT_EQ(status(fields, deleting), badExtractor);
}

TEST(ExtendedRequest, TheBufferTakesOneReplyRecordAtLeast) {
    RequestFields fields;
    fields.entries = {{100, 0}};
    Bytes buffer = fields.bytes();
    buffer.resize(111);
    EXPECT_EQ(status(buffer), noRoom);
    buffer.resize(112);
    EXPECT_EQ(status(buffer), 0);
    EXPECT_EQ(RequestFields().bytes().size(), 12u);
    EXPECT_EQ(status(RequestFields()), 0);
}

TEST(ExtendedRequest, TheFirstFaultIsTheAnswer) {
    RequestFields fields;
    fields.terms = {plainTerm};
    fields.terms[0].flags = 0;
    fields.recordLimit = 0;
    fields.entries = {{60000, 0}};
    EXPECT_EQ(status(fields), malformed);
    fields.terms[0].flags = equalTo;
    EXPECT_EQ(status(fields), badExtractor);
    fields.recordLimit = 1;
    Bytes wrongLength = fields.bytes();
    ++wrongLength[0];
    EXPECT_EQ(status(wrongLength), malformed);
    EXPECT_EQ(status(fields), noRoom);
}

TEST(ExtendedRequest, KeepsNothingOfTheBuffer) {
    RequestFields fields;
    fields.terms = {{0, 2, 0, equalTo, "ab", joinAnd, ""},
                    {0, 3, 0, patternFlag, patternComparand(1, "ab%"), 0, ""}};
    Bytes buffer = fields.bytes();
    ExtendedRequest request = decodeExtendedRequest(buffer, {}, alongIndex);
    std::fill(buffer.begin(), buffer.end(), '\xFF');
    EXPECT_TRUE(request.filter.passes({"abc", 0, 0}));
}

}  // namespace
