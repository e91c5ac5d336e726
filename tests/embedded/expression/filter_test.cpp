#include <gtest/gtest.h>

#include "embedded/expression/extended_request.h"
#include "embedded/expression/request.h"

namespace {

using namespace vantrel::embedded;
using namespace vantrel::test;

constexpr uint8_t character = 0, integer = 1, floatingPoint = 2, date = 3, zeroTerminated = 11,
                  lengthPrefixed = 10, unsignedBinary = 14, wideZeroTerminated = 26, systemType = 32;
constexpr uint16_t systemLength = 0xFF08, createTime = 0xFFFE, updateTime = 0xFFFB;

CollationList backwards() {
    auto collation = std::make_shared<Collation>();
    collation->name = "BACK";
    for (size_t byte = 0; byte < 256; ++byte)
        collation->table[byte] = static_cast<uint8_t>(255 - byte);
    return {collation};
}

bool passes(const std::vector<TermFields> &terms, const RecordView &record) {
    RequestFields fields;
    fields.terms = terms;
    ExtendedRequest request = decodeExtendedRequest(fields.bytes(), backwards(), {false, false});
    bool first = request.filter.passes(record);
    EXPECT_EQ(request.filter.passes(record), first);
    return first;
}

bool passes(const std::vector<TermFields> &terms, ByteView data) {
    return passes(terms, RecordView{data, 0, 0});
}

// A term on the byte at an offset, which compares it with a letter.
TermFields letter(uint16_t offset, char value, uint8_t connector = 0) {
    return {character, 1, offset, equalTo, std::string(1, value), connector, ""};
}

TEST(Filter, WithoutTermsEveryRecordPasses) {
    EXPECT_TRUE(passes(std::vector<TermFields>{}, ""));
}

TEST(Filter, EveryComparisonKnowsItsThreeAnswers) {
    struct Row {
        uint8_t comparison;
        bool below, same, above;
    };
    for (const Row &row : std::initializer_list<Row>{{equalTo, false, true, false},
                                                     {greaterThan, false, false, true},
                                                     {lessThan, true, false, false},
                                                     {notEqualTo, true, false, true},
                                                     {atLeast, false, true, true},
                                                     {atMost, true, true, false}}) {
        TermFields term{character, 1, 0, row.comparison, "m", 0, ""};
        EXPECT_EQ(passes({term}, "a"), row.below) << int{row.comparison};
        EXPECT_EQ(passes({term}, "m"), row.same) << int{row.comparison};
        EXPECT_EQ(passes({term}, "z"), row.above) << int{row.comparison};
    }
}

TEST(Filter, ValuesAreComparedByTheirType) {
    auto isLess = [](uint8_t type, const std::string &value, const std::string &constant) {
        auto length = static_cast<uint16_t>(constant.size());
        return passes({{type, length, 0, lessThan, constant, 0, ""}}, value);
    };
    EXPECT_TRUE(isLess(integer, "\xFF\xFF", std::string("\x01\0", 2)));
    EXPECT_FALSE(isLess(unsignedBinary, "\xFF\xFF", std::string("\x01\0", 2)));
    EXPECT_TRUE(isLess(unsignedBinary, std::string("\xFF\0\0", 3), std::string("\0\x01\0", 3)));
    EXPECT_FALSE(isLess(character, std::string("\xFF\0\0", 3), std::string("\0\x01\0", 3)));
    EXPECT_TRUE(isLess(unsignedBinary, std::string("\xFF\0\0\0\0\0\0\0\0", 9), std::string(8, '\0') + '\1'));
    EXPECT_TRUE(isLess(floatingPoint, std::string("\0\0\x80\xBF", 4), std::string("\0\0\0\x3F", 4)));
    EXPECT_TRUE(isLess(date, "\x1F\x0C\xCF\x07", "\x01\x01\xD0\x07"));
    EXPECT_TRUE(isLess(5, "\x05\x0D", "\x01\x0C"));
    EXPECT_FALSE(isLess(5, "\x05\x0C", "\x01\x0C"));
}

TEST(Filter, ALengthThatTheTypeDoesNotTakeComparesBytes) {
    TermFields term{floatingPoint, 3, 0, lessThan, "abd", 0, ""};
    EXPECT_TRUE(passes({term}, "abc"));
    EXPECT_FALSE(passes({term}, "abd"));
}

TEST(Filter, StringsEndWhereTheirTypeSays) {
    std::string constant("ab\0\0", 4);
    EXPECT_TRUE(passes({{zeroTerminated, 4, 0, equalTo, constant, 0, ""}}, ByteView("ab\0x", 4)));
    EXPECT_FALSE(passes({{character, 4, 0, equalTo, constant, 0, ""}}, ByteView("ab\0x", 4)));
    EXPECT_TRUE(passes({{lengthPrefixed, 4, 0, equalTo,
                         "\x02"
                         "abx",
                         0, ""}},
                       "\x02"
                       "aby"));
    EXPECT_FALSE(passes({{lengthPrefixed, 4, 0, equalTo,
                          "\x03"
                          "abx",
                          0, ""}},
                        "\x03"
                        "aby"));
}

TEST(Filter, TermsAreJoinedFromLeftToRight) {
    auto value = [](const char *connectors, ByteView record) {
        auto join = [](char connector) { return connector == '&' ? joinAnd : joinOr; };
        return passes(
            {letter(0, 'y', join(connectors[0])), letter(1, 'y', join(connectors[1])), letter(2, 'y')},
            record);
    };
    for (const char *record : {"nnn", "nny", "nyn", "nyy", "ynn", "yny", "yyn", "yyy"}) {
        bool a = record[0] == 'y', b = record[1] == 'y', c = record[2] == 'y';
        EXPECT_EQ(value("&&", record), (a && b) && c) << record;
        EXPECT_EQ(value("&|", record), (a && b) || c) << record;
        EXPECT_EQ(value("|&", record), (a || b) && c) << record;
        EXPECT_EQ(value("||", record), (a || b) || c) << record;
    }
}

TEST(Filter, ATermBeyondTheRecordsEndFailsWhateverItAsks) {
    for (uint8_t comparison :
         std::initializer_list<uint8_t>{equalTo, greaterThan, lessThan, notEqualTo, atLeast, atMost}) {
        EXPECT_FALSE(passes({{character, 2, 1, comparison, "bc", 0, ""}}, "ab")) << int{comparison};
        EXPECT_FALSE(passes({{character, 2, 9, comparison, "bc", 0, ""}}, "ab")) << int{comparison};
    }
    EXPECT_TRUE(passes({{character, 2, 1, equalTo, "bc", 0, ""}}, "abc"));
    for (uint8_t kind : std::initializer_list<uint8_t>{1, 2, 3})
        EXPECT_FALSE(passes(
            {{character, 2, 1, patternFlag, patternComparand(kind, kind == 3 ? "" : "%"), 0, ""}}, "ab"));
}

TEST(Filter, OtherFieldsAreComparedByTheSameTypeAndLength) {
    TermFields term{integer, 2, 0, fieldFlag | lessThan, fieldComparand(3), 0, ""};
    EXPECT_TRUE(passes({term}, ByteView("\xFF\xFF"
                                        "x\x01\0",
                                        5)));
    EXPECT_FALSE(passes({term}, ByteView("\x01\0x\xFF\xFF", 5)));
    EXPECT_FALSE(passes({term},
                        "\xFF\xFF"
                        "x\x01"));
    term.flags = fieldFlag | equalTo | caseFlag;
    term.type = character;
    EXPECT_TRUE(passes({term}, "aBxAb"));
}

TEST(Filter, SystemFieldsAreTimes) {
    RecordView record{"data", 500, 70000};
    auto created = [&](uint8_t comparison, const std::string &constant) {
        return passes({{systemType, systemLength, createTime, comparison, constant, 0, ""}}, record);
    };
    EXPECT_TRUE(created(equalTo, std::string("\xF4\x01\0\0\0\0\0\0", 8)));
    EXPECT_TRUE(created(lessThan, std::string("\x01\x02\0\0\0\0\0\0", 8)));
    EXPECT_TRUE(passes(
        {{systemType, systemLength, updateTime, equalTo, std::string("\x70\x11\x01\0\0\0\0\0", 8), 0, ""}},
        record));
}

TEST(Filter, SystemFieldsAreComparedWithEachOtherAndWithFields) {
    TermFields unchanged{
        systemType, systemLength, createTime, fieldFlag | equalTo, fieldComparand(updateTime), 0, ""};
    EXPECT_TRUE(passes({unchanged}, RecordView{"", 7, 7}));
    EXPECT_FALSE(passes({unchanged}, RecordView{"", 7, 8}));
    TermFields stored{systemType, systemLength, createTime, fieldFlag | equalTo, fieldComparand(1), 0, ""};
    EXPECT_TRUE(passes({stored}, RecordView{ByteView("x\x07\0\0\0\0\0\0\0", 9), 7, 8}));
    EXPECT_FALSE(passes({stored}, RecordView{ByteView("x\x07\0\0\0\0\0\0", 8), 7, 8}));
}

TEST(Filter, CollationsOrderTexts) {
    auto isLess = [](uint8_t flags, const std::string &block, const char *record) {
        return passes({{character, 1, 0, static_cast<uint8_t>(lessThan | flags), "m", 0, block}}, record);
    };
    EXPECT_TRUE(isLess(0, "", "M"));
    EXPECT_TRUE(isLess(defaultCollationFlag, "", "M"));
    EXPECT_FALSE(isLess(caseFlag, "", "M"));
    EXPECT_TRUE(isLess(caseFlag, "", "L"));
    EXPECT_FALSE(isLess(blockFlag, collationBlock("UPPER"), "M"));
    EXPECT_FALSE(isLess(blockFlag, shortNameBlock("UPPER"), "M"));
    EXPECT_TRUE(isLess(blockFlag, shortNameBlock("BACK"), "z"));
    EXPECT_FALSE(isLess(blockFlag, collationBlock("BACK"), "a"));
    EXPECT_TRUE(isLess(blockFlag, codePageBlock("LATIN1"), "M"));
    EXPECT_FALSE(isLess(blockFlag | caseFlag, codePageBlock("LATIN1"), "M"));
}

TEST(Filter, CollationsLeaveOtherTypesAlone) {
    EXPECT_TRUE(passes({{integer, 1, 0, lessThan | caseFlag, "a", 0, ""}}, "B"));
    EXPECT_FALSE(passes({{wideZeroTerminated, 2, 0, equalTo | caseFlag, std::string("a\0", 2), 0, ""}},
                        ByteView("A\0", 2)));
}

}  // namespace
