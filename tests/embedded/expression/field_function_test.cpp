#include "embedded/expression/field_function.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>

namespace {

using namespace vantrel::embedded;

constexpr Rounding absolute = Rounding::none, ceiling = Rounding::ceiling, floorOf = Rounding::floor,
                   rounded = Rounding::halfAwayFromZero, truncated = Rounding::truncate;

Bytes apply(KeyType type, Rounding rounding, Bytes value, int16_t places = 0) {
    EXPECT_TRUE(functionsTake(type, value.size()));
    FieldFunction{type, rounding, places}.apply(value.data(), value.size());
    return value;
}

template <class Number>
Number applyTo(KeyType type, Rounding rounding, Number number, int16_t places = 0) {
    Bytes value(sizeof number, '\0');
    memcpy(value.data(), &number, sizeof number);
    value = apply(type, rounding, value, places);
    memcpy(&number, value.data(), sizeof number);
    return number;
}

TEST(FieldFunction, AbsoluteValuesOfWholeNumbers) {
    EXPECT_EQ(applyTo<int8_t>(KeyType::integer, absolute, -5), 5);
    EXPECT_EQ(applyTo<int16_t>(KeyType::integer, absolute, 5), 5);
    EXPECT_EQ(applyTo<int32_t>(KeyType::autoincrement, absolute, -70000), 70000);
    EXPECT_EQ(applyTo<int64_t>(KeyType::currency, absolute, -123456), 123456);
    EXPECT_EQ(apply(KeyType::integer, absolute, "\xFE\xFF\xFF"), ByteView("\x02\0\0", 3));
    EXPECT_EQ(applyTo<uint64_t>(KeyType::unsignedBinary, absolute, UINT64_MAX), UINT64_MAX);
}

TEST(FieldFunction, TheSmallestNumberHasTheLargestAsAbsoluteValue) {
    EXPECT_EQ(applyTo<int8_t>(KeyType::integer, absolute, INT8_MIN), INT8_MAX);
    EXPECT_EQ(applyTo<int64_t>(KeyType::integer, absolute, INT64_MIN), INT64_MAX);
}

TEST(FieldFunction, WholeNumbersHaveNoPlacesToLose) {
    for (Rounding rounding : {ceiling, floorOf, rounded, truncated}) {
        EXPECT_EQ(applyTo<int16_t>(KeyType::integer, rounding, -1234), -1234);
        EXPECT_EQ(applyTo<uint16_t>(KeyType::unsignedBinary, rounding, 1234), 1234);
    }
    EXPECT_EQ(applyTo<int16_t>(KeyType::integer, rounded, 1250, 3), 1250);
}

TEST(FieldFunction, NegativePlacesStandInFrontOfThePoint) {
    EXPECT_EQ(applyTo<int16_t>(KeyType::integer, rounded, 1250, -2), 1300);
    EXPECT_EQ(applyTo<int16_t>(KeyType::integer, rounded, -1250, -2), -1300);
    EXPECT_EQ(applyTo<int16_t>(KeyType::integer, rounded, 1249, -2), 1200);
    EXPECT_EQ(applyTo<int16_t>(KeyType::integer, truncated, -1299, -2), -1200);
    EXPECT_EQ(applyTo<int16_t>(KeyType::integer, rounded, 1250, -5), 0);
    EXPECT_EQ(applyTo<uint64_t>(KeyType::unsignedBinary, truncated, UINT64_MAX, -19), 10000000000000000000u);
    EXPECT_EQ(applyTo<uint64_t>(KeyType::unsignedBinary, rounded, UINT64_MAX, -20), 0u);
    EXPECT_EQ(applyTo<int64_t>(KeyType::integer, rounded, INT64_MAX, -32768), 0);
}

TEST(FieldFunction, ResultsThatDoNotFitBecomeTheLargestOrSmallestNumber) {
    EXPECT_EQ(applyTo<int8_t>(KeyType::integer, rounded, 126, -1), 127);
    EXPECT_EQ(applyTo<int8_t>(KeyType::integer, rounded, -126, -1), -128);
    EXPECT_EQ(applyTo<uint8_t>(KeyType::unsignedBinary, rounded, 255, -1), 255);
    EXPECT_EQ(applyTo<uint8_t>(KeyType::unsignedBinary, rounded, 254, -1), 250);
    EXPECT_EQ(applyTo<int8_t>(KeyType::integer, rounded, 60, -2), 100);
    EXPECT_EQ(applyTo<uint64_t>(KeyType::unsignedBinary, rounded, UINT64_MAX, -1), UINT64_MAX);
    EXPECT_EQ(applyTo<int64_t>(KeyType::integer, rounded, INT64_MAX, -19), INT64_MAX);
}

TEST(FieldFunction, CurrencyHasFourPlaces) {
    EXPECT_EQ(applyTo<int64_t>(KeyType::currency, ceiling, 12345), 20000);
    EXPECT_EQ(applyTo<int64_t>(KeyType::currency, ceiling, -12345), -10000);
    EXPECT_EQ(applyTo<int64_t>(KeyType::currency, floorOf, 12345), 10000);
    EXPECT_EQ(applyTo<int64_t>(KeyType::currency, floorOf, -12345), -20000);
    EXPECT_EQ(applyTo<int64_t>(KeyType::currency, ceiling, 20000), 20000);
    EXPECT_EQ(applyTo<int64_t>(KeyType::currency, rounded, 12350, 2), 12400);
    EXPECT_EQ(applyTo<int64_t>(KeyType::currency, rounded, -12350, 2), -12400);
    EXPECT_EQ(applyTo<int64_t>(KeyType::currency, truncated, 12399, 2), 12300);
    EXPECT_EQ(applyTo<int64_t>(KeyType::currency, rounded, 12345, 4), 12345);
}

TEST(FieldFunction, FloatsOfBothLengths) {
    EXPECT_EQ(applyTo<double>(KeyType::floatingPoint, absolute, -1.5), 1.5);
    EXPECT_EQ(applyTo<double>(KeyType::floatingPoint, ceiling, -1.5), -1.0);
    EXPECT_EQ(applyTo<double>(KeyType::floatingPoint, floorOf, -1.5), -2.0);
    EXPECT_EQ(applyTo<double>(KeyType::floatingPoint, rounded, 2.5), 3.0);
    EXPECT_EQ(applyTo<double>(KeyType::floatingPoint, rounded, -2.5), -3.0);
    EXPECT_EQ(applyTo<double>(KeyType::floatingPoint, rounded, 1234.5678, 2), 1234.57);
    EXPECT_EQ(applyTo<double>(KeyType::floatingPoint, truncated, -1234.5678, 3), -1234.567);
    EXPECT_EQ(applyTo<double>(KeyType::floatingPoint, rounded, 1250.0, -2), 1300.0);
    EXPECT_EQ(applyTo<double>(KeyType::floatingPoint, truncated, 1250.0, -400), 0.0);
    EXPECT_EQ(applyTo<float>(KeyType::floatingPoint, absolute, -1.5F), 1.5F);
    EXPECT_EQ(applyTo<float>(KeyType::floatingPoint, rounded, 2.345F, 1), 2.3F);
}

TEST(FieldFunction, FloatsWithoutDigitsToLoseStayAsTheyAre) {
    EXPECT_EQ(applyTo<double>(KeyType::floatingPoint, rounded, 1e300, 20), 1e300);
    EXPECT_EQ(applyTo<double>(KeyType::floatingPoint, rounded, 0.1, 400), 0.1);
    EXPECT_EQ(applyTo<double>(KeyType::floatingPoint, truncated, 9007199254740993.0, 1), 9007199254740993.0);
    double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(applyTo<double>(KeyType::floatingPoint, absolute, -infinity), -infinity);
    double largest = std::numeric_limits<double>::max();
    EXPECT_EQ(applyTo<double>(KeyType::floatingPoint, rounded, largest, -308), largest);
    Bytes notANumber("\x01\0\0\0\0\0\xF8\xFF", 8);
    for (Rounding rounding : {absolute, ceiling, floorOf, rounded, truncated})
        EXPECT_EQ(apply(KeyType::floatingPoint, rounding, notANumber), notANumber);
}

// The old binary float: 2.5 is a half and an eighth of 2^2, which is exponent 130.
TEST(FieldFunction, OldBinaryFloats) {
    Bytes twoAndAHalf("\0\0\x20\x82", 4), minusTwoAndAHalf("\0\0\xA0\x82", 4), two("\0\0\0\x82", 4),
        three("\0\0\x40\x82", 4), minusTwo("\0\0\x80\x82", 4), minusThree("\0\0\xC0\x82", 4), zero(4, '\0');
    auto of = [](Rounding rounding, const Bytes &value, int16_t places = 0) {
        return apply(KeyType::binaryFloat, rounding, value, places);
    };
    EXPECT_EQ(of(absolute, minusTwoAndAHalf), twoAndAHalf);
    EXPECT_EQ(of(ceiling, twoAndAHalf), three);
    EXPECT_EQ(of(ceiling, minusTwoAndAHalf), minusTwo);
    EXPECT_EQ(of(floorOf, twoAndAHalf), two);
    EXPECT_EQ(of(floorOf, minusTwoAndAHalf), minusThree);
    EXPECT_EQ(of(rounded, minusTwoAndAHalf), minusThree);
    EXPECT_EQ(of(truncated, minusTwoAndAHalf), minusTwo);
    EXPECT_EQ(of(rounded, two, -1), zero);
    EXPECT_EQ(of(rounded, zero), zero);
    EXPECT_EQ(of(rounded, twoAndAHalf, 1), twoAndAHalf);
    Bytes long2(8, '\0');
    long2[7] = '\x82';
    EXPECT_EQ(of(floorOf, Bytes("\x01\0\0\0\0\0\0\x82", 8)), long2);
    Bytes long3(long2);
    long3[6] = '\x40';
    EXPECT_EQ(of(ceiling, Bytes("\x01\0\0\0\0\0\0\x82", 8)), long3);
    EXPECT_EQ(of(ceiling, Bytes("\xFF\xFF\xFF\xFF\xFF\xFF\x7F\xFF", 8)),
              Bytes("\xFF\xFF\xFF\xFF\xFF\xFF\x7F\xFF", 8));
    EXPECT_EQ(of(rounded, Bytes("\xFF\xFF\x7F\xFF", 4), -38), Bytes("\xFF\xFF\x7F\xFF", 4));
    EXPECT_EQ(of(rounded, Bytes("\xFF\xFF\xFF\xFF", 4), -38), Bytes("\xFF\xFF\xFF\xFF", 4));
}

TEST(FieldFunction, MoneyHasTwoPlaces) {
    auto of = [](Rounding rounding, const char *value, int16_t places = 0) {
        return apply(KeyType::money, rounding, value, places);
    };
    EXPECT_EQ(of(absolute, "\x12\x34\x5D"), "\x12\x34\x5C");
    EXPECT_EQ(of(absolute, "\x12\x34\x5F"), "\x12\x34\x5F");
    EXPECT_EQ(of(ceiling, "\x12\x34\x5C"), "\x12\x40\x0C");
    EXPECT_EQ(of(ceiling, "\x12\x34\x5D"), "\x12\x30\x0D");
    EXPECT_EQ(of(floorOf, "\x12\x34\x5C"), "\x12\x30\x0C");
    EXPECT_EQ(of(floorOf, "\x12\x34\x5D"), "\x12\x40\x0D");
    EXPECT_EQ(of(ceiling, "\x12\x30\x0F"), "\x12\x30\x0F");
    EXPECT_EQ(of(rounded, "\x12\x34\x5C", 1), "\x12\x35\x0C");
    EXPECT_EQ(of(rounded, "\x12\x34\x4C", 1), "\x12\x34\x0C");
    EXPECT_EQ(of(truncated, "\x12\x34\x9C", 1), "\x12\x34\x0C");
    EXPECT_EQ(of(rounded, "\x12\x34\x5C", 2), "\x12\x34\x5C");
    EXPECT_EQ(of(truncated, "\x12\x34\x5C", -3), Bytes("\0\0\x0C", 3));
    EXPECT_EQ(of(truncated, "\x12\x34\x5D", -4), Bytes("\0\0\x0C", 3));
    EXPECT_EQ(of(rounded, "\x99\x99\x9D", 1), "\x99\x99\x9D");
    EXPECT_EQ(of(ceiling, "\x1C"), "\x9C");
}

TEST(FieldFunction, DecimalsAreWholeNumbers) {
    EXPECT_EQ(apply(KeyType::decimal, ceiling, "\x12\x34\x5C"), "\x12\x34\x5C");
    EXPECT_EQ(apply(KeyType::decimal, rounded, "\x12\x34\x5C", -1), "\x12\x35\x0C");
    EXPECT_EQ(apply(KeyType::decimal, truncated, "\x12\x34\x5B", -1), "\x12\x34\x0D");
    EXPECT_EQ(apply(KeyType::decimal, rounded, "\x5C", -1), "\x9C");
    EXPECT_EQ(apply(KeyType::decimal, rounded, "\x4C", -1), Bytes("\x0C", 1));
}

TEST(FieldFunction, NumericsOfEverySign) {
    struct Row {
        KeyType type;
        const char *negative, *absolute, *rounded;
    };
    for (const Row &row :
         std::initializer_list<Row>{{KeyType::numeric, "12N", "125", "13}"},
                                    {KeyType::numericAsciiOverpunch, "12u", "125", "13p"},
                                    {KeyType::numericSignTrailingBinary, "12u", "125", "13p"},
                                    {KeyType::numericSignLeadingBinary, "q25", "125", "q30"},
                                    {KeyType::numericSignTrailingSeparate, "125-", "125+", "130-"},
                                    {KeyType::numericSignLeadingSeparate, "-125", "+125", "-130"}}) {
        int type = static_cast<int>(row.type);
        EXPECT_EQ(apply(row.type, absolute, row.negative), row.absolute) << type;
        EXPECT_EQ(apply(row.type, rounded, row.negative, -1), row.rounded) << type;
        EXPECT_EQ(apply(row.type, absolute, row.absolute), row.absolute) << type;
        EXPECT_EQ(apply(row.type, floorOf, row.negative), row.negative) << type;
    }
    EXPECT_EQ(apply(KeyType::numeric, rounded, "12M", -1), "12}");
    EXPECT_EQ(apply(KeyType::numeric, rounded, "12E", -1), "130");
    EXPECT_EQ(apply(KeyType::numeric, truncated, "01R", -1), "01}");
    EXPECT_EQ(apply(KeyType::numeric, truncated, "00R", -1), "000");
    EXPECT_EQ(apply(KeyType::numeric, truncated, "99R", 0), "99R");
}

TEST(FieldFunction, IllFormedDecimalsStayAsTheyAre) {
    for (Rounding rounding : {absolute, ceiling, floorOf, rounded, truncated}) {
        EXPECT_EQ(apply(KeyType::money, rounding, "\xA2\x34\x5D"), "\xA2\x34\x5D");
        EXPECT_EQ(apply(KeyType::numeric, rounding, " 2N", -1), " 2N");
        EXPECT_EQ(apply(KeyType::numericSignTrailingSeparate, rounding, "12*", -1), "12*");
    }
}

TEST(FieldFunction, OnlyNumbersTakeThem) {
    for (KeyType type :
         {KeyType::character, KeyType::date, KeyType::time, KeyType::logical, KeyType::lengthPrefixedString,
          KeyType::zeroTerminatedString, KeyType::bit, KeyType::timestamp, KeyType::largeObjectText,
          KeyType::wideString, KeyType::wideZeroTerminatedString, KeyType::guid, KeyType::autoTimestamp,
          KeyType::timestamp2, KeyType::nullIndicator})
        for (size_t length : {1, 2, 4, 8, 16})
            EXPECT_FALSE(functionsTake(type, length)) << static_cast<int>(type);
    EXPECT_TRUE(functionsTake(KeyType::unsignedBinary, 8));
    EXPECT_FALSE(functionsTake(KeyType::unsignedBinary, 9));
    EXPECT_FALSE(functionsTake(KeyType::unsignedBinary, 0));
    EXPECT_FALSE(functionsTake(KeyType::integer, 9));
    EXPECT_FALSE(functionsTake(KeyType::autoincrement, 3));
    EXPECT_FALSE(functionsTake(KeyType::floatingPoint, 5));
    EXPECT_FALSE(functionsTake(KeyType::currency, 4));
    EXPECT_FALSE(functionsTake(KeyType::numericSignTrailingSeparate, 1));
    EXPECT_TRUE(functionsTake(KeyType::numeric, 40));
}

}  // namespace
