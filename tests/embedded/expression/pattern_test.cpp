#include <gtest/gtest.h>
#include <locale.h>

#include "embedded/expression/extended_request.h"
#include "embedded/expression/request.h"
#include "embedded/key/request_builder.h"

namespace {

using namespace vantrel::embedded;
using namespace vantrel::test;

constexpr uint8_t like = 1, notLike = 2, regular = 3;
constexpr uint8_t character = 0, lengthPrefixed = 10, zeroTerminated = 11, largeObject = 21, wide = 25,
                  wideZeroTerminated = 26;

struct Match {
    uint8_t kind = like;
    uint8_t type = character;
    uint8_t flags = 0;
    std::string block;
};

RequestFields requestFor(const Match &match, const std::string &pattern, size_t length) {
    RequestFields fields;
    fields.terms = {{match.type, static_cast<uint16_t>(length), 0,
                     static_cast<uint8_t>(patternFlag | match.flags), patternComparand(match.kind, pattern),
                     0, match.block}};
    return fields;
}

bool matches(const std::string &pattern, ByteView text, const Match &match = {}) {
    RequestFields fields = requestFor(match, pattern, text.size());
    ExtendedRequest request = decodeExtendedRequest(fields.bytes(), {}, {false, false});
    return request.filter.passes({text, 0, 0});
}

int32_t patternStatus(const std::string &pattern, const Match &match = {}, size_t length = 4) {
    return statusOf([&] {
        decodeExtendedRequest(requestFor(match, pattern, length).bytes(), {}, {false, false});
    });
}

TEST(LikePattern, WildcardsStandForText) {
    EXPECT_TRUE(matches("abc", "abc"));
    EXPECT_FALSE(matches("abc", "abd"));
    EXPECT_FALSE(matches("abc", "abcd"));
    EXPECT_FALSE(matches("abcd", "abc"));
    EXPECT_TRUE(matches("%", "anything"));
    EXPECT_TRUE(matches("%%", "x"));
    EXPECT_TRUE(matches("a%", "a"));
    EXPECT_TRUE(matches("a%c", "ac"));
    EXPECT_TRUE(matches("a%c", "abcbc"));
    EXPECT_FALSE(matches("a%c", "abcb"));
    EXPECT_TRUE(matches("%b%", "abc"));
    EXPECT_FALSE(matches("%x%", "abc"));
    EXPECT_TRUE(matches("%aab", "aaaab"));
    EXPECT_TRUE(matches("_b_", "abc"));
    EXPECT_FALSE(matches("_b_", "ab"));
    EXPECT_FALSE(matches("_", "ab"));
    EXPECT_TRUE(matches("%_", "a"));
    EXPECT_TRUE(matches("_%_", "ab"));
    EXPECT_FALSE(matches("_%_", "a"));
    EXPECT_FALSE(matches("", "a"));
}

TEST(LikePattern, BackslashesTakeTheMeaning) {
    EXPECT_TRUE(matches("10\\%", "10%"));
    EXPECT_FALSE(matches("10\\%", "10x"));
    EXPECT_TRUE(matches("a\\_b", "a_b"));
    EXPECT_FALSE(matches("a\\_b", "axb"));
    EXPECT_TRUE(matches("a\\\\%", "a\\b"));
    EXPECT_TRUE(matches("\\ab", "ab"));
    EXPECT_EQ(patternStatus("ab\\"), 62);
    EXPECT_EQ(patternStatus("ab\\\\"), 0);
}

TEST(LikePattern, ItsNegationIsTheOpposite) {
    EXPECT_FALSE(matches("a%", "abc", {notLike, character, 0, ""}));
    EXPECT_TRUE(matches("b%", "abc", {notLike, character, 0, ""}));
}

TEST(LikePattern, AllBytesOfACharacterFieldCount) {
    EXPECT_FALSE(matches("ab", "ab  "));
    EXPECT_TRUE(matches("ab  ", "ab  "));
    EXPECT_TRUE(matches("a%c", ByteView("a\0c", 3)));
}

TEST(LikePattern, OtherTextsEndWhereTheirTypeSays) {
    EXPECT_TRUE(matches("ab", ByteView("ab\0x", 4), {like, zeroTerminated, 0, ""}));
    EXPECT_TRUE(matches("abcd", "abcd", {like, zeroTerminated, 0, ""}));
    EXPECT_TRUE(matches("ab",
                        "\x02"
                        "abx",
                        {like, lengthPrefixed, 0, ""}));
    EXPECT_TRUE(matches("abx",
                        "\xFF"
                        "abx",
                        {like, lengthPrefixed, 0, ""}));
    EXPECT_TRUE(matches("", ByteView("\0abx", 4), {like, lengthPrefixed, 0, ""}));
    EXPECT_TRUE(matches("a%", "abc", {like, largeObject, 0, ""}));
}

TEST(LikePattern, WideTextsAreMatchedByCodeUnits) {
    ByteView text("\xE9\0\xAC\x20\0\0x\0", 8);
    Match terminated{like, wideZeroTerminated, 0, ""};
    EXPECT_TRUE(matches("\xC3\xA9\xE2\x82\xAC", text, terminated));
    EXPECT_TRUE(matches("__", text, terminated));
    EXPECT_FALSE(matches("\xE9%", text, terminated));
    EXPECT_TRUE(matches("__%x", text, {like, wide, 0, ""}));
    ByteView pair("\x3D\xD8\x00\xDE", 4);
    EXPECT_TRUE(matches("\xF0\x9F\x98\x80", pair, {like, wide, 0, ""}));
    EXPECT_TRUE(matches("__", pair, {like, wide, 0, ""}));
    EXPECT_EQ(patternStatus("a", {like, wide, 0, ""}, 3), 62);
}

TEST(LikePattern, TheCodePageSaysWhatACharacterIs) {
    Match utf8{like, character, blockFlag, codePageBlock("UTF-8")};
    EXPECT_TRUE(matches("_", "\xC3\xA9", utf8));
    EXPECT_TRUE(matches("_x", "\xE2\x82\xACx", utf8));
    EXPECT_TRUE(matches("_", "\xF0\x9F\x98\x80", utf8));
    EXPECT_TRUE(matches("%\xA9", "\xA9", utf8));
    EXPECT_FALSE(matches("%\xA9", "\xC3\xA9", utf8));
    EXPECT_TRUE(matches("__", "\xE2\x82", utf8));
    EXPECT_TRUE(matches("_A",
                        "\xC3\xA9"
                        "a",
                        {like, character, blockFlag | caseFlag, codePageBlock("UTF-8")}));
    for (const char *name : {"ASCII", "LATIN1", "CP850"}) {
        Match bytes{like, character, blockFlag, codePageBlock(name)};
        EXPECT_TRUE(matches("__", "\xC3\xA9", bytes)) << name;
    }
    EXPECT_EQ(patternStatus("a", {like, character, blockFlag, codePageBlock("KLINGON")}), 62);
    EXPECT_EQ(patternStatus("a", {like, character, blockFlag, codePageBlock("")}), 62);
}

TEST(LikePattern, CollationsMakeCharactersEqual) {
    EXPECT_FALSE(matches("AbC%", "aBcd"));
    EXPECT_TRUE(matches("AbC%", "aBcd", {like, character, caseFlag, ""}));
    EXPECT_TRUE(matches("AbC%", "aBcd", {like, character, blockFlag, collationBlock("UPPER")}));
    EXPECT_TRUE(matches("AbC%", "aBcd", {like, character, blockFlag, shortNameBlock("LATIN1")}));
    EXPECT_FALSE(matches("AbC%", "aBcd", {like, character, defaultCollationFlag, ""}));
}

TEST(RegularExpression, IsFoundAnywhereInTheText) {
    Match plain{regular, character, 0, ""};
    EXPECT_TRUE(matches("b+c", "abbbcd", plain));
    EXPECT_FALSE(matches("^b", "abbbcd", plain));
    EXPECT_TRUE(matches("^a.*d$", "abbbcd", plain));
    EXPECT_TRUE(matches("(xy|bb){1,2}", "abbbcd", plain));
    EXPECT_TRUE(matches("[[:digit:]]{3}", "ab123", plain));
    EXPECT_FALSE(matches("[^a-z0-9]", "ab123", plain));
    EXPECT_TRUE(matches("[]x[:space:]]y", "ab]y", plain));
    EXPECT_TRUE(matches("a)b", "a)b", plain));
    EXPECT_TRUE(matches("c$", ByteView("xa\0c", 4), plain));
    EXPECT_FALSE(matches("a.c$", ByteView("xa\0c", 4), plain));
    EXPECT_TRUE(matches("a[^b]c$", ByteView("xa\0c", 4), plain));
    EXPECT_TRUE(matches("c$", ByteView("abc\0d", 5), {regular, zeroTerminated, 0, ""}));
    EXPECT_TRUE(matches("", "abc", plain));
}

TEST(RegularExpression, IgnoresCaseWhereFlagged) {
    EXPECT_FALSE(matches("ABC", "xabc", {regular, character, 0, ""}));
    EXPECT_TRUE(matches("ABC", "xabc", {regular, character, caseFlag, ""}));
    EXPECT_TRUE(matches("ABC", "xABC", {regular, character, blockFlag, codePageBlock("LATIN1")}));
}

TEST(RegularExpression, DoesNotDependOnTheLocale) {
    std::string previous = setlocale(LC_ALL, nullptr);
    ASSERT_NE(setlocale(LC_ALL, "C.UTF-8"), nullptr);
    Match plain{regular, character, 0, ""};
    EXPECT_TRUE(matches("^..$", "\xC3\xA9", plain));
    EXPECT_FALSE(matches("[[:alpha:]]", "\xC3\xA9", plain));
    EXPECT_TRUE(matches("^.$", "\xFF", plain));
    setlocale(LC_ALL, previous.c_str());
}

TEST(RegularExpression, MalformedOnesAreRefused) {
    Match plain{regular, character, 0, ""};
    for (const char *pattern :
         {"a(b", "[a", "[[:nope:]]", "a{2,1}", "*", "a\\", "[[:alpha", "(a)\\1", "a{99999}"})
        EXPECT_EQ(patternStatus(pattern, plain), 62) << pattern;
    EXPECT_EQ(patternStatus("a", {regular, character, blockFlag, collationBlock("UPPER")}), 62);
    EXPECT_EQ(patternStatus("a", {regular, wide, 0, ""}), 62);
}

TEST(RegularExpression, ThoseThatWouldTakeTooMuchAreRefused) {
    Match plain{regular, character, 0, ""};
    std::string nested = "a";
    for (int level = 0; level < 30; ++level)
        nested = "(" + nested + ")+";
    EXPECT_EQ(patternStatus(nested, plain), 62);
    EXPECT_EQ(patternStatus("((a{100}){100}){100}", plain), 62);
    EXPECT_EQ(patternStatus("((a{9}){9}){9}", plain), 0);
    EXPECT_EQ(patternStatus(std::string(100, '(') + "a" + std::string(100, ')'), plain), 0);
    EXPECT_EQ(patternStatus(std::string(101, '(') + "a" + std::string(101, ')'), plain), 62);
    EXPECT_EQ(patternStatus(std::string(1024, 'a'), plain), 0);
    EXPECT_EQ(patternStatus(std::string(1025, 'a'), plain), 62);
    EXPECT_EQ(patternStatus(std::string(60000, '('), plain), 62);
}

TEST(Pattern, OnlyTextsTakeThem) {
    for (uint8_t type : std::initializer_list<uint8_t>{1, 2, 3, 5, 14, 20, 27})
        for (uint8_t kind : std::initializer_list<uint8_t>{like, notLike, regular})
            EXPECT_EQ(patternStatus("a", {kind, type, 0, ""}), 62) << int{type};
    for (uint8_t type : std::initializer_list<uint8_t>{0, 10, 11, 21})
        for (uint8_t kind : std::initializer_list<uint8_t>{like, notLike, regular})
            EXPECT_EQ(patternStatus("a", {kind, type, 0, ""}), 0) << int{type};
    for (uint8_t kind : {uint8_t{0}, uint8_t{4}})
        EXPECT_EQ(patternStatus("a", {kind, character, 0, ""}), 62);
    EXPECT_EQ(patternStatus("a", {}, 0), 62);
}

TEST(Pattern, NeedsItsTerminator) {
    RequestFields fields = requestFor({}, "abc", 4);
    fields.terms[0].comparand.back() = 'd';
    EXPECT_EQ(statusOf([&] { decodeExtendedRequest(fields.bytes(), {}, {false, false}); }), 62);
    fields.terms[0].comparand = std::string("\x01\0\0", 3);
    EXPECT_EQ(statusOf([&] { decodeExtendedRequest(fields.bytes(), {}, {false, false}); }), 62);
}

}  // namespace
