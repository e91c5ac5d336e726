#include <gtest/gtest.h>

#include "embedded/expression/extended_request.h"
#include "embedded/expression/key_range.h"
#include "embedded/expression/request.h"

namespace {

using namespace vantrel::embedded;
using namespace vantrel::test;

constexpr uint8_t character = 0, integer = 1, unsignedBinary = 14;

IndexDefinition indexOn(KeyType type, bool descending = false) {
    IndexDefinition index;
    KeySegment segment;
    segment.offset = 2;
    segment.length = 1;
    segment.type = type;
    segment.descending = descending;
    index.segments = {segment, segment};
    index.segments[1].offset = 3;
    index.keyLength = 2;
    return index;
}

KeyRange rangeOf(const std::vector<TermFields> &terms, const IndexDefinition &index) {
    RequestFields fields;
    fields.terms = terms;
    return keyRangeOf(decodeExtendedRequest(fields.bytes(), {}, {false, false}).filter, index);
}

TermFields onKey(uint8_t comparison, char value, uint8_t connector = 0) {
    return {unsignedBinary, 1, 2, comparison, std::string(1, value), connector, ""};
}

void expectRange(const KeyRange &range, ByteView from, std::optional<ByteView> to) {
    EXPECT_EQ(range.from, from);
    EXPECT_EQ(range.to.has_value(), to.has_value());
    if (range.to && to) {
        EXPECT_EQ(*range.to, *to);
    }
    EXPECT_FALSE(range.isEmpty);
}

TEST(KeyRange, ComparisonsBoundIt) {
    IndexDefinition index = indexOn(KeyType::unsignedBinary);
    expectRange(rangeOf({onKey(equalTo, 'f')}, index), "f", "g");
    expectRange(rangeOf({onKey(greaterThan, 'f')}, index), "g", std::nullopt);
    expectRange(rangeOf({onKey(atLeast, 'f')}, index), "f", std::nullopt);
    expectRange(rangeOf({onKey(lessThan, 'f')}, index), "", "f");
    expectRange(rangeOf({onKey(atMost, 'f')}, index), "", "g");
    expectRange(rangeOf({onKey(notEqualTo, 'f')}, index), "", std::nullopt);
    expectRange(rangeOf({}, index), "", std::nullopt);
}

TEST(KeyRange, DescendingSegmentsTurnIt) {
    IndexDefinition index = indexOn(KeyType::unsignedBinary, true);
    expectRange(rangeOf({onKey(equalTo, 'f')}, index), "\x99", "\x9A");
    expectRange(rangeOf({onKey(greaterThan, 'f')}, index), "", "\x99");
    expectRange(rangeOf({onKey(atLeast, 'f')}, index), "", "\x9A");
    expectRange(rangeOf({onKey(lessThan, 'f')}, index), "\x9A", std::nullopt);
    expectRange(rangeOf({onKey(atMost, 'f')}, index), "\x99", std::nullopt);
}

TEST(KeyRange, ConjunctionsNarrowIt) {
    IndexDefinition index = indexOn(KeyType::unsignedBinary);
    expectRange(
        rangeOf({onKey(atLeast, 'c', joinAnd), onKey(atLeast, 'e', joinAnd), onKey(atLeast, 'd', joinAnd),
                 onKey(lessThan, 'x', joinAnd), onKey(lessThan, 'k', joinAnd), onKey(lessThan, 'q')},
                index),
        "e", "k");
    TermFields elsewhere{unsignedBinary, 1, 0, equalTo, "z", joinAnd, ""};
    expectRange(rangeOf({elsewhere, onKey(equalTo, 'f')}, index), "f", "g");
}

TEST(KeyRange, DisjunctionsLeaveItOpen) {
    IndexDefinition index = indexOn(KeyType::unsignedBinary);
    expectRange(
        rangeOf({onKey(atLeast, 'c', joinAnd), onKey(atMost, 'e', joinOr), onKey(equalTo, 'z')}, index), "",
        std::nullopt);
    expectRange(
        rangeOf({onKey(atLeast, 'c', joinOr), onKey(atMost, 'e', joinAnd), onKey(equalTo, 'z')}, index), "",
        std::nullopt);
}

TEST(KeyRange, OnlyTheWholeFirstSegmentBoundsIt) {
    IndexDefinition index = indexOn(KeyType::unsignedBinary);
    TermFields term = onKey(equalTo, 'f');
    term.offset = 3;
    expectRange(rangeOf({term}, index), "", std::nullopt);
    term = onKey(equalTo, 'f');
    term.type = integer;
    expectRange(rangeOf({term}, index), "", std::nullopt);
    term = onKey(equalTo, 'f');
    term.length = 2;
    term.comparand = "ff";
    expectRange(rangeOf({term}, index), "", std::nullopt);
    term = {unsignedBinary, 1, 2, fieldFlag | equalTo, fieldComparand(0), 0, ""};
    expectRange(rangeOf({term}, index), "", std::nullopt);
}

TEST(KeyRange, CollationsMustAgree) {
    IndexDefinition index = indexOn(KeyType::character);
    TermFields term{character, 1, 2, equalTo, "F", 0, ""};
    expectRange(rangeOf({term}, index), "F", "G");
    term.flags = equalTo | caseFlag;
    expectRange(rangeOf({term}, index), "", std::nullopt);
    index.segments[0].collation = caseInsensitiveCollation();
    expectRange(rangeOf({term}, index), "f", "g");
    term.flags = equalTo;
    expectRange(rangeOf({term}, index), "", std::nullopt);
}

TEST(KeyRange, LegacyTypesAreBoundByTheirModernForms) {
    expectRange(rangeOf({onKey(equalTo, 'f')}, indexOn(KeyType::legacyBinary)), "f", "g");
    TermFields term{character, 1, 2, equalTo, "f", 0, ""};
    expectRange(rangeOf({term}, indexOn(KeyType::legacyString)), "f", "g");
}

TEST(KeyRange, NothingLiesBehindTheLastValue) {
    IndexDefinition index = indexOn(KeyType::unsignedBinary);
    EXPECT_TRUE(rangeOf({onKey(greaterThan, '\xFF')}, index).isEmpty);
    expectRange(rangeOf({onKey(atMost, '\xFF')}, index), "", std::nullopt);
    expectRange(rangeOf({onKey(equalTo, '\xFF')}, index), "\xFF", std::nullopt);
}

TEST(KeyRange, TellsKeysBelowAndAbove) {
    KeyRange range = rangeOf({onKey(equalTo, 'f')}, indexOn(KeyType::unsignedBinary));
    EXPECT_TRUE(range.isBelow("e\xFF"));
    EXPECT_FALSE(range.isBelow(ByteView("f\0", 2)));
    EXPECT_FALSE(range.isAbove("f\xFF"));
    EXPECT_TRUE(range.isAbove(ByteView("g\0", 2)));
}

}  // namespace
