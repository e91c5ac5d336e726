#include "embedded/key/encoding.h"

#include <gtest/gtest.h>

#include <string>

#include "embedded/key/collation.h"

namespace {

using namespace vantrel::embedded;
using namespace std::string_literals;

Bytes encoded(KeyType type, ByteView value, const Collation *collation = nullptr) {
    Bytes out = "before";
    appendEncodedValue(type, collation, value, out);
    EXPECT_EQ(out.substr(0, 6), "before");
    return out.substr(6);
}

TEST(Encoding, KeepsBytesOfFixedText) {
    EXPECT_EQ(encoded(KeyType::character, "aB\x00\xFF"s), "aB\x00\xFF"s);
    EXPECT_EQ(encoded(KeyType::legacyString, "aB\x00\xFF"s), "aB\x00\xFF"s);
    EXPECT_EQ(encoded(KeyType::largeObjectText, "aB\x00\xFF"s), "aB\x00\xFF"s);
    EXPECT_EQ(encoded(KeyType::guid, "0123456789abcdef"), "0123456789abcdef");
}

TEST(Encoding, PutsTextThroughTheCollation) {
    const Collation *collation = caseInsensitiveCollation().get();
    EXPECT_EQ(encoded(KeyType::character, "aBz[", collation), "abz[");
    EXPECT_EQ(encoded(KeyType::zeroTerminatedString, "Ab\0C"s, collation), "ab\0"s);
    EXPECT_EQ(encoded(KeyType::lengthPrefixedString, "\2AbC", collation), "ab\0\2"s);
}

TEST(Encoding, EndsZeroTerminatedStringsWithZero) {
    EXPECT_EQ(encoded(KeyType::zeroTerminatedString, "ab\0c"s), "ab\0"s);
    EXPECT_EQ(encoded(KeyType::zeroTerminatedString, "abc"), "abc\0"s);
    EXPECT_EQ(encoded(KeyType::zeroTerminatedString, "\0bc"s), "\0"s);
    EXPECT_EQ(encoded(KeyType::zeroTerminatedString, "\1\2"), "\1\2\2\0"s);
}

TEST(Encoding, EscapesZerosThatACollationMakes) {
    Collation collation{"ZERO", {}};
    collation.table['b'] = 1;
    collation.table['c'] = 2;
    EXPECT_EQ(encoded(KeyType::zeroTerminatedString, "abc", &collation), "\1\1\1\2\2\0"s);
}

TEST(Encoding, EndsLengthPrefixedStringsWithTheirLength) {
    EXPECT_EQ(encoded(KeyType::lengthPrefixedString, "\2abc"), "ab\0\2"s);
    EXPECT_EQ(encoded(KeyType::lengthPrefixedString, "\0abc"s), "\0\0"s);
    EXPECT_EQ(encoded(KeyType::lengthPrefixedString, "\3a\0c"s), "a\1\1c\0\3"s);
    EXPECT_EQ(encoded(KeyType::lengthPrefixedString, "\2"), "\0\2"s);
    EXPECT_EQ(encoded(KeyType::lengthPrefixedString,
                      "\xFF"
                      "abc"),
              "abc\0\xFF"s);
}

TEST(Encoding, TurnsWideUnitsRound) {
    EXPECT_EQ(encoded(KeyType::wideString, "a\0\0\0\x34\x12"s), "\0a\0\0\x12\x34"s);
    EXPECT_EQ(encoded(KeyType::wideZeroTerminatedString, "a\0\0\0b\0"s), "\0a\0\0"s);
    EXPECT_EQ(encoded(KeyType::wideZeroTerminatedString, "\0\1a\0"s), "\1\0\0a\0\0"s);
    EXPECT_EQ(encoded(KeyType::wideZeroTerminatedString, "\0\0"s), "\0\0"s);
}

TEST(Encoding, PutsTheHeaviestByteOfNumbersFirst) {
    EXPECT_EQ(encoded(KeyType::unsignedBinary, "\1\2\x83"), "\x83\2\1");
    EXPECT_EQ(encoded(KeyType::legacyBinary, "\1\2\x83"), "\x83\2\1");
    EXPECT_EQ(encoded(KeyType::logical, "\1\2"), "\2\1");
    EXPECT_EQ(encoded(KeyType::timestamp, "\1\2\3\4\5\6\7\x88"), "\x88\7\6\5\4\3\2\1");
    EXPECT_EQ(encoded(KeyType::autoTimestamp, "\1\2\3\4\5\6\7\x88"), "\x88\7\6\5\4\3\2\1");
    EXPECT_EQ(encoded(KeyType::timestamp2, "\1\2\3\4\5\6\7\x88"), "\x88\7\6\5\4\3\2\1");
}

TEST(Encoding, OrdersDatesByYearAndTimesByHour) {
    EXPECT_EQ(encoded(KeyType::date, "\x1F\x0C\xE8\x07"), "\x07\xE8\x0C\x1F");
    EXPECT_EQ(encoded(KeyType::time, "\x63\x3B\x3A\x17"), "\x17\x3A\x3B\x63");
}

TEST(Encoding, TurnsTheSignOfIntegers) {
    EXPECT_EQ(encoded(KeyType::integer, "\0"s), "\x80");
    EXPECT_EQ(encoded(KeyType::integer, "\xFF\xFF"), "\x7F\xFF");
    EXPECT_EQ(encoded(KeyType::integer, "\0\0\x80"s), "\0\0\0"s);
    EXPECT_EQ(encoded(KeyType::integer, "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\x7F"),
              "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF");
    EXPECT_EQ(encoded(KeyType::autoincrement, "\1\0\0\0"s), "\x80\0\0\1"s);
    EXPECT_EQ(encoded(KeyType::currency, "\x10\x27\0\0\0\0\0\0"s), "\x80\0\0\0\0\0\x27\x10"s);
}

TEST(Encoding, OrdersFloatsByTheirBits) {
    EXPECT_EQ(encoded(KeyType::floatingPoint, "\0\0\x80\x3F"s), "\xBF\x80\0\0"s) << "1";
    EXPECT_EQ(encoded(KeyType::floatingPoint, "\0\0\x80\xBF"s), "\x40\x7F\xFF\xFF"s) << "-1";
    EXPECT_EQ(encoded(KeyType::floatingPoint, "\0\0\0\0\0\0\xF0\x3F"s), "\xBF\xF0\0\0\0\0\0\0"s) << "1";
    EXPECT_EQ(encoded(KeyType::floatingPoint, "\1\0\0\0\0\0\xF0\xBF"s), "\x40\x0F\xFF\xFF\xFF\xFF\xFF\xFE"s);
    EXPECT_EQ(encoded(KeyType::floatingPoint, "\0\0\0\x80"s), "\x80\0\0\0"s) << "both zeros are one value";
    EXPECT_EQ(encoded(KeyType::floatingPoint, "\0\0\0\0\0\0\0\x80"s), "\x80\0\0\0\0\0\0\0"s);
}

TEST(Encoding, OrdersOldBinaryFloats) {
    EXPECT_EQ(encoded(KeyType::binaryFloat, "\0\0\0\x81"s), "\xC0\x80\0\0"s) << "1";
    EXPECT_EQ(encoded(KeyType::binaryFloat, "\0\0\x80\x81"s), "\x3F\x7F\xFF\xFF"s) << "-1";
    EXPECT_EQ(encoded(KeyType::binaryFloat, "\1\2\xFF\0"s), "\x80\0\0\0"s) << "0 whatever the fraction";
    EXPECT_EQ(encoded(KeyType::binaryFloat, "\0\0\0\0\0\0\x40\x82"s), "\xC1\x40\0\0\0\0\0\0"s) << "3";
}

TEST(Encoding, TellsFlagsApartByZeroOnly) {
    for (const KeyType type : {KeyType::bit, KeyType::nullIndicator}) {
        EXPECT_EQ(encoded(type, "\0"s), "\0"s);
        EXPECT_EQ(encoded(type, "\1"), "\1");
        EXPECT_EQ(encoded(type, "\x80"), "\1");
    }
}

TEST(Encoding, OrdersPackedDecimals) {
    for (const KeyType type : {KeyType::decimal, KeyType::money}) {
        EXPECT_EQ(encoded(type, "\x12\x3C"), "\1\x12\x30");
        EXPECT_EQ(encoded(type, "\x12\x3F"), "\1\x12\x30");
        EXPECT_EQ(encoded(type, "\x12\x3D"), "\0\xED\xCF"s);
        EXPECT_EQ(encoded(type, "\x12\x3B"), "\0\xED\xCF"s);
        EXPECT_EQ(encoded(type, "\x00\x0D"s), "\1\0\0"s) << "-0 is 0";
        EXPECT_EQ(encoded(type, "\x1A\x3C"), "\2\x1A\x3C") << "a digit above 9";
        EXPECT_EQ(encoded(type, "\x12\xAC"), "\2\x12\xAC") << "a last digit above 9";
        EXPECT_EQ(encoded(type, "\x12\x39"), "\2\x12\x39") << "no sign";
    }
}

TEST(Encoding, OrdersNumericsWithAnOverpunchedSign) {
    EXPECT_EQ(encoded(KeyType::numeric, "123"), "\1\1\2\3");
    EXPECT_EQ(encoded(KeyType::numeric, "12C"), "\1\1\2\3");
    EXPECT_EQ(encoded(KeyType::numeric, "12{"), "\1\1\2\0"s);
    EXPECT_EQ(encoded(KeyType::numeric, "12L"), "\0\xFE\xFD\xFC"s);
    EXPECT_EQ(encoded(KeyType::numeric, "12}"), "\0\xFE\xFD\xFF"s);
    EXPECT_EQ(encoded(KeyType::numeric, "00}"), "\1\0\0\0"s);
    EXPECT_EQ(encoded(KeyType::numeric, "1C3"),
              "\2"
              "1C3");
    EXPECT_EQ(encoded(KeyType::numeric, " 12"), "\2 12");
    EXPECT_EQ(encoded(KeyType::numeric, "12S"),
              "\2"
              "12S");
    EXPECT_EQ(encoded(KeyType::numeric, "12@"),
              "\2"
              "12@");
    EXPECT_EQ(encoded(KeyType::numericAsciiOverpunch, "123"), "\1\1\2\3");
    EXPECT_EQ(encoded(KeyType::numericAsciiOverpunch, "12S"), "\1\1\2\3");
    EXPECT_EQ(encoded(KeyType::numericAsciiOverpunch, "12s"), "\0\xFE\xFD\xFC"s);
    EXPECT_EQ(encoded(KeyType::numericAsciiOverpunch, "12z"),
              "\2"
              "12z");
}

TEST(Encoding, OrdersNumericsWithASignBit) {
    EXPECT_EQ(encoded(KeyType::numericSignLeadingBinary, "123"), "\1\1\2\3");
    EXPECT_EQ(encoded(KeyType::numericSignLeadingBinary, "q23"), "\0\xFE\xFD\xFC"s);
    EXPECT_EQ(encoded(KeyType::numericSignLeadingBinary, "12s"),
              "\2"
              "12s");
    EXPECT_EQ(encoded(KeyType::numericSignTrailingBinary, "12s"), "\0\xFE\xFD\xFC"s);
    EXPECT_EQ(encoded(KeyType::numericSignTrailingBinary, "12S"),
              "\2"
              "12S");
    EXPECT_EQ(encoded(KeyType::numericSignTrailingBinary, "q23"), "\2q23");
}

TEST(Encoding, OrdersNumericsWithASignOfItsOwn) {
    EXPECT_EQ(encoded(KeyType::numericSignLeadingSeparate, "+12"), "\1\1\2");
    EXPECT_EQ(encoded(KeyType::numericSignLeadingSeparate, "-12"), "\0\xFE\xFD"s);
    EXPECT_EQ(encoded(KeyType::numericSignLeadingSeparate, "-00"), "\1\0\0"s);
    EXPECT_EQ(encoded(KeyType::numericSignLeadingSeparate, "12-"),
              "\2"
              "12-");
    EXPECT_EQ(encoded(KeyType::numericSignTrailingSeparate, "12+"), "\1\1\2");
    EXPECT_EQ(encoded(KeyType::numericSignTrailingSeparate, "12-"), "\0\xFE\xFD"s);
    EXPECT_EQ(encoded(KeyType::numericSignTrailingSeparate, "1--"),
              "\2"
              "1--");
    EXPECT_EQ(encoded(KeyType::numericSignTrailingSeparate, "123"),
              "\2"
              "123");
}

TEST(Encoding, KeepsValuesOfIllegalLengthAsBytes) {
    for (unsigned code = 0; code <= 0x102; ++code) {
        const KeyType type = static_cast<KeyType>(code);
        EXPECT_EQ(encoded(type, ""), "") << code;
        if (segmentLengthIsLegal(type, 19))
            continue;
        EXPECT_EQ(encoded(type, "0123456789012345678"), "0123456789012345678") << code;
    }
    EXPECT_EQ(encoded(KeyType::floatingPoint, "\1\2\3"), "\1\2\3");
    EXPECT_EQ(encoded(KeyType::wideString, "\1\2\3"), "\1\2\3");
}

// The legal lengths of a type up to 20, written out.
std::string legalLengths(KeyType type) {
    std::string lengths;
    for (size_t length = 0; length <= 20; ++length)
        if (segmentLengthIsLegal(type, length))
            lengths += std::to_string(length) + " ";
    return lengths;
}

TEST(Encoding, LimitsTheLengthsOfTypes) {
    const char *any = "1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20 ";
    for (const unsigned code : {0u, 5u, 6u, 8u, 10u, 11u, 14u, 18u, 21u, 28u, 31u, 0x100u, 0x101u})
        EXPECT_EQ(legalLengths(static_cast<KeyType>(code)), any) << code;
    for (const unsigned code : {17u, 29u})
        EXPECT_EQ(legalLengths(static_cast<KeyType>(code)), any + 2) << code;
    for (const unsigned code : {25u, 26u})
        EXPECT_EQ(legalLengths(static_cast<KeyType>(code)), "2 4 6 8 10 12 14 16 18 20 ") << code;
    for (const unsigned code : {2u, 9u})
        EXPECT_EQ(legalLengths(static_cast<KeyType>(code)), "4 8 ") << code;
    for (const unsigned code : {3u, 4u})
        EXPECT_EQ(legalLengths(static_cast<KeyType>(code)), "4 ") << code;
    for (const unsigned code : {19u, 20u, 32u, 34u})
        EXPECT_EQ(legalLengths(static_cast<KeyType>(code)), "8 ") << code;
    for (const unsigned code : {16u, 255u})
        EXPECT_EQ(legalLengths(static_cast<KeyType>(code)), "1 ") << code;
    EXPECT_EQ(legalLengths(KeyType::integer), "1 2 3 4 5 6 7 8 ");
    EXPECT_EQ(legalLengths(KeyType::autoincrement), "2 4 8 ");
    EXPECT_EQ(legalLengths(KeyType::logical), "1 2 ");
    EXPECT_EQ(legalLengths(KeyType::guid), "16 ");
}

TEST(Encoding, AllowsLongSegmentsOfTheTypesThatTakeThem) {
    EXPECT_TRUE(segmentLengthIsLegal(KeyType::character, 1024));
    EXPECT_TRUE(segmentLengthIsLegal(KeyType::wideString, 1024));
    EXPECT_FALSE(segmentLengthIsLegal(KeyType::wideString, 1023));
    EXPECT_FALSE(segmentLengthIsLegal(KeyType::integer, 1024));
}

TEST(Encoding, KnowsTheTypes) {
    std::string known;
    for (unsigned code = 0; code <= 0x200; ++code)
        if (typeIsKnown(static_cast<KeyType>(code)))
            known += std::to_string(code) + " ";
    EXPECT_EQ(known,
              "0 1 2 3 4 5 6 7 8 9 10 11 14 15 16 17 18 19 20 21 25 26 27 28 29 31 32 34 255 256 257 ");
    EXPECT_EQ(legalLengths(static_cast<KeyType>(12)), "");
    EXPECT_FALSE(segmentLengthIsLegal(static_cast<KeyType>(12), 1024));
}

TEST(Encoding, CollatesTextOnly) {
    std::string text;
    for (unsigned code = 0; code <= 0x200; ++code)
        if (typeIsText(static_cast<KeyType>(code)))
            text += std::to_string(code) + " ";
    EXPECT_EQ(text, "0 10 11 21 256 ");
}

}  // namespace
