#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "embedded/key/encoding.h"
#include "value_order.h"

namespace {

using namespace vantrel::embedded;
using namespace std::string_literals;

KeySegment segment(KeyType type, uint16_t offset, uint16_t length, bool descending = false) {
    KeySegment result;
    result.type = type;
    result.offset = offset;
    result.length = length;
    result.descending = descending;
    return result;
}

IndexDefinition indexOf(std::vector<KeySegment> segments) {
    IndexDefinition index;
    for (const KeySegment &each : segments)
        index.keyLength += each.length;
    index.segments = std::move(segments);
    return index;
}

Bytes encoded(const IndexDefinition &index, ByteView rawKey) {
    Bytes out = "before";
    appendEncodedKey(index, rawKey, out);
    EXPECT_EQ(out.substr(0, 6), "before");
    return out.substr(6);
}

TEST(Key, EncodesSegmentsOneAfterAnother) {
    const IndexDefinition index =
        indexOf({segment(KeyType::zeroTerminatedString, 0, 4), segment(KeyType::integer, 9, 2, true),
                 segment(KeyType::character, 4, 1)});
    EXPECT_EQ(encoded(index, "ab\0c\1\0z"s), "ab\0\x7F\xFEz"s);
}

TEST(Key, InvertsEveryByteOfDescendingSegments) {
    const IndexDefinition index =
        indexOf({segment(KeyType::zeroTerminatedString, 0, 3, true), segment(KeyType::character, 3, 1)});
    EXPECT_EQ(encoded(index, "ab\0z"s), "\x9E\x9D\xFFz"s);
}

TEST(Key, EncodesAShortKeyAsFarAsItGoes) {
    const IndexDefinition index =
        indexOf({segment(KeyType::character, 0, 2), segment(KeyType::floatingPoint, 2, 4)});
    EXPECT_EQ(encoded(index, "ab\1\2"), "ab\1\2");
    EXPECT_EQ(encoded(index, "a"), "a");
    EXPECT_EQ(encoded(index, ""), "");
}

TEST(Key, IgnoresWhatFollowsTheKey) {
    EXPECT_EQ(encoded(indexOf({segment(KeyType::character, 0, 2)}), "abc"), "ab");
}

TEST(Key, GathersItsSegmentsFromTheRecord) {
    const IndexDefinition index =
        indexOf({segment(KeyType::character, 4, 2), segment(KeyType::character, 0, 3)});
    Bytes key = "before";
    extractRawKey(index, "0123456789", key);
    EXPECT_EQ(key, "before45012");
}

TEST(Key, TakesZerosForWhatARecordDoesNotHold) {
    const IndexDefinition index =
        indexOf({segment(KeyType::character, 2, 3), segment(KeyType::character, 5, 2)});
    Bytes key;
    extractRawKey(index, "0123", key);
    EXPECT_EQ(key, "23\0\0\0"s);
}

TEST(Key, IsNeverNullWithoutNullFlags) {
    EXPECT_FALSE(keyIsNull(indexOf({segment(KeyType::character, 0, 2)}), "\0\0"s));
    EXPECT_FALSE(keyIsNull(indexOf({}), ""));
}

IndexDefinition nullIndex(std::vector<const char *> modes) {
    std::vector<KeySegment> segments;
    for (const std::string mode : modes) {
        segments.push_back(segment(KeyType::character, 0, 2));
        segments.back().nullIfAll = mode == "all";
        segments.back().nullIfAny = mode == "any";
        segments.back().nullValue = '.';
    }
    return indexOf(std::move(segments));
}

TEST(Key, IsNullWhenEveryByteOfItsSegmentIsTheNullValue) {
    for (const char *mode : {"all", "any"}) {
        EXPECT_TRUE(keyIsNull(nullIndex({mode}), ".."));
        EXPECT_FALSE(keyIsNull(nullIndex({mode}), ".a"));
        EXPECT_FALSE(keyIsNull(nullIndex({mode}), "a."));
        EXPECT_FALSE(keyIsNull(nullIndex({mode}), "\0\0"s));
        EXPECT_FALSE(keyIsNull(nullIndex({mode}), "."));
        EXPECT_FALSE(keyIsNull(nullIndex({mode}), ""));
    }
}

TEST(Key, IsNullWhenAllSegmentsFlaggedSoAreNull) {
    EXPECT_TRUE(keyIsNull(nullIndex({"all", "all"}), "...."));
    EXPECT_FALSE(keyIsNull(nullIndex({"all", "all"}), "..ab"));
    EXPECT_FALSE(keyIsNull(nullIndex({"all", "all"}), "ab.."));
    EXPECT_TRUE(keyIsNull(nullIndex({"all", "", "all"}), "..ab.."));
    EXPECT_FALSE(keyIsNull(nullIndex({"all", "", "all"}), "ab...."));
}

TEST(Key, IsNullWhenAnySegmentFlaggedSoIsNull) {
    EXPECT_TRUE(keyIsNull(nullIndex({"any", "any"}), "..ab"));
    EXPECT_TRUE(keyIsNull(nullIndex({"any", "any"}), "ab.."));
    EXPECT_FALSE(keyIsNull(nullIndex({"any", "any"}), "abab"));
    EXPECT_FALSE(keyIsNull(nullIndex({"", "any"}), "..ab"));
    EXPECT_TRUE(keyIsNull(nullIndex({"all", "any"}), "ab.."));
    EXPECT_TRUE(keyIsNull(nullIndex({"all", "any"}), "..ab"));
}

// All strings of up to three bytes over the alphabet, as segments of four bytes.
std::vector<Bytes> shortStrings(KeyType type, ByteView alphabet) {
    std::vector<Bytes> texts = {""};
    for (size_t at = 0; at < texts.size(); ++at)
        for (const char letter : alphabet)
            if (texts[at].size() < 3)
                texts.push_back(texts[at] + letter);
    for (Bytes &text : texts) {
        if (type == KeyType::lengthPrefixedString)
            text.insert(text.begin(), static_cast<char>(text.size()));
        text.resize(4);
    }
    return texts;
}

struct StringCase {
    const char *name;
    KeyType type;
    Bytes alphabet;

    friend void PrintTo(const StringCase &value, std::ostream *out) { *out << value.name; }
};

class KeyOfTwoStrings : public testing::TestWithParam<StringCase> {};

int sign(int number) {
    return (number > 0) - (number < 0);
}

TEST_P(KeyOfTwoStrings, SortsByTheFirstThenByTheSecond) {
    const KeyType type = GetParam().type;
    const std::vector<Bytes> texts = shortStrings(type, GetParam().alphabet);
    ASSERT_EQ(texts.size(), 40u);
    for (const bool descending : {false, true}) {
        const IndexDefinition index = indexOf({segment(type, 0, 4, descending), segment(type, 4, 4)});
        std::vector<Bytes> keys;
        for (const Bytes &first : texts)
            for (const Bytes &second : texts)
                keys.push_back(encoded(index, first + second));
        std::vector<std::vector<int>> orders(texts.size(), std::vector<int>(texts.size()));
        for (size_t left = 0; left < texts.size(); ++left)
            for (size_t right = 0; right < texts.size(); ++right)
                orders[left][right] = sign(compareValues(type, nullptr, texts[left], texts[right]));
        size_t wrong = 0;
        for (size_t left = 0; left < keys.size(); ++left)
            for (size_t right = 0; right < keys.size(); ++right) {
                const int first = orders[left / 40][right / 40];
                const int second = orders[left % 40][right % 40];
                const int expected = first == 0 ? second : descending ? -first : first;
                wrong += sign(keys[left].compare(keys[right])) == expected ? 0 : 1;
            }
        EXPECT_EQ(wrong, 0u) << (descending ? "descending" : "ascending");
    }
}

INSTANTIATE_TEST_SUITE_P(
    Strings, KeyOfTwoStrings,
    testing::Values(StringCase{"zeroTerminated", KeyType::zeroTerminatedString, "\1\2\xFF"},
                    StringCase{"lengthPrefixed", KeyType::lengthPrefixedString, "\0\1\xFF"s}),
    [](const auto &information) { return std::string(information.param.name); });

}  // namespace
