#include "value_order.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <tuple>

namespace {

using namespace vantrel::embedded;

template <class Value>
int order(const Value &left, const Value &right) {
    return left < right ? -1 : right < left ? 1 : 0;
}

uint8_t byteAt(ByteView value, size_t at) {
    return static_cast<uint8_t>(value[at]);
}

// Digits of base 256 in the order of their weight.
std::basic_string<unsigned> heaviestFirst(ByteView value) {
    std::basic_string<unsigned> digits;
    for (size_t at = value.size(); at > 0; --at)
        digits.push_back(byteAt(value, at - 1));
    return digits;
}

// Day, month, year.
std::tuple<int, int, int> calendarDay(ByteView value) {
    return {byteAt(value, 3) * 256 + byteAt(value, 2), byteAt(value, 1), byteAt(value, 0)};
}

// Hundredths, seconds, minutes, hours.
std::tuple<int, int, int, int> timeOfDay(ByteView value) {
    return {byteAt(value, 3), byteAt(value, 2), byteAt(value, 1), byteAt(value, 0)};
}

int64_t signedNumber(ByteView value) {
    int64_t number = static_cast<int8_t>(value.back());
    for (size_t at = value.size() - 1; at > 0; --at)
        number = number * 256 + byteAt(value, at - 1);
    return number;
}

// Values that are no numbers stand outside of all numbers, by their bits.
template <class Number>
std::tuple<int, Number, int64_t> floatRank(ByteView value) {
    Number number;
    memcpy(&number, value.data(), sizeof number);
    if (!std::isnan(number))
        return {0, number, 0};
    int64_t fraction = 0;
    for (const unsigned digit : heaviestFirst(value).substr(1))
        fraction = fraction * 256 + digit;
    return std::signbit(number) ? std::tuple{-1, Number{0}, -fraction} : std::tuple{1, Number{0}, fraction};
}

// The number is sign * (1 + fraction / 2^n) * 2^(exponent - 129); an exponent of zero makes it zero.
std::tuple<int, int, int64_t> binaryFloatRank(ByteView value) {
    const int exponent = byteAt(value, value.size() - 1);
    if (exponent == 0)
        return {0, 0, 0};
    const int sign = byteAt(value, value.size() - 2) >= 128 ? -1 : 1;
    int64_t fraction = byteAt(value, value.size() - 2) % 128;
    for (size_t at = value.size() - 2; at > 0; --at)
        fraction = fraction * 256 + byteAt(value, at - 1);
    return {sign, sign * exponent, sign * fraction};
}

struct Decimal {
    bool wellFormed = true;
    bool negative = false;
    std::string digits;

    void add(size_t digit) {
        wellFormed = wellFormed && digit < 10;
        digits.push_back(static_cast<char>('0' + digit % 10));
    }

    bool isZero() const { return digits.find_first_not_of('0') == std::string::npos; }
};

Decimal readPacked(ByteView value) {
    Decimal decimal;
    for (size_t half = 0; half + 1 < 2 * value.size(); ++half)
        decimal.add(half % 2 == 0 ? byteAt(value, half / 2) / 16 : byteAt(value, half / 2) % 16);
    const int sign = byteAt(value, value.size() - 1) % 16;
    decimal.wellFormed = decimal.wellFormed && sign >= 10;
    decimal.negative = sign == 11 || sign == 13;
    return decimal;
}

void readSigned(Decimal &decimal, char byte, ByteView positive, ByteView negative) {
    const size_t asPositive = positive.find(byte);
    const size_t asNegative = negative.find(byte);
    decimal.negative = asNegative != ByteView::npos;
    decimal.add(decimal.negative ? asNegative : asPositive == ByteView::npos ? 99 : asPositive % 10);
}

Decimal readDigits(ByteView value, size_t signAt, ByteView positive, ByteView negative) {
    Decimal decimal;
    for (size_t at = 0; at < value.size(); ++at) {
        if (at == signAt)
            readSigned(decimal, value[at], positive, negative);
        else
            decimal.add(static_cast<size_t>(ByteView("0123456789").find(value[at])));
    }
    return decimal;
}

Decimal readSeparate(char sign, ByteView digits) {
    Decimal decimal = readDigits(digits, digits.size(), "", "");
    decimal.wellFormed = decimal.wellFormed && (sign == '+' || sign == '-');
    decimal.negative = sign == '-';
    return decimal;
}

Decimal readDecimal(KeyType type, ByteView value) {
    const size_t last = value.size() - 1;
    switch (type) {
        case KeyType::numeric:
            return readDigits(value, last, "0123456789{ABCDEFGHI", "}JKLMNOPQR");
        case KeyType::numericAsciiOverpunch:
            return readDigits(value, last, "0123456789PQRSTUVWXY", "pqrstuvwxy");
        case KeyType::numericSignTrailingBinary:
            return readDigits(value, last, "0123456789", "pqrstuvwxy");
        case KeyType::numericSignLeadingBinary:
            return readDigits(value, 0, "0123456789", "pqrstuvwxy");
        case KeyType::numericSignTrailingSeparate:
            return readSeparate(value.back(), value.substr(0, last));
        case KeyType::numericSignLeadingSeparate:
            return readSeparate(value.front(), value.substr(1));
        default:
            return readPacked(value);
    }
}

int compareDecimals(const Decimal &left, const Decimal &right, ByteView leftBytes, ByteView rightBytes) {
    if (!left.wellFormed && !right.wellFormed)
        return leftBytes.compare(rightBytes);
    if (left.wellFormed != right.wellFormed)
        return left.wellFormed ? -1 : 1;
    const bool leftNegative = left.negative && !left.isZero();
    const bool rightNegative = right.negative && !right.isZero();
    if (leftNegative != rightNegative)
        return leftNegative ? -1 : 1;
    return leftNegative ? right.digits.compare(left.digits) : left.digits.compare(right.digits);
}

Bytes collated(const Collation *collation, ByteView text) {
    Bytes result(text);
    if (collation != nullptr)
        for (char &byte : result)
            byte = static_cast<char>(collation->table[static_cast<uint8_t>(byte)]);
    return result;
}

Bytes zeroTerminated(ByteView value) {
    Bytes text;
    for (const char byte : value) {
        if (byte == 0)
            break;
        text.push_back(byte);
    }
    return text;
}

Bytes lengthPrefixed(ByteView value) {
    const size_t length = byteAt(value, 0);
    return length < value.size() ? Bytes(value.substr(1, length)) : Bytes(value.substr(1));
}

std::u16string units(ByteView value, bool untilZero) {
    std::u16string text;
    for (size_t at = 0; at < value.size(); at += 2) {
        const int unit = byteAt(value, at) + 256 * byteAt(value, at + 1);
        if (untilZero && unit == 0)
            break;
        text.push_back(static_cast<char16_t>(unit));
    }
    return text;
}

int compareLengthPrefixed(const Collation *collation, ByteView left, ByteView right) {
    const int byText =
        order(collated(collation, lengthPrefixed(left)), collated(collation, lengthPrefixed(right)));
    return byText != 0 ? byText : order(byteAt(left, 0), byteAt(right, 0));
}

}  // namespace

int compareValues(KeyType type, const Collation *collation, ByteView left, ByteView right) {
    switch (type) {
        case KeyType::integer:
        case KeyType::autoincrement:
        case KeyType::currency:
            return order(signedNumber(left), signedNumber(right));
        case KeyType::unsignedBinary:
        case KeyType::legacyBinary:
        case KeyType::logical:
        case KeyType::timestamp:
        case KeyType::autoTimestamp:
        case KeyType::timestamp2:
            return order(heaviestFirst(left), heaviestFirst(right));
        case KeyType::date:
            return order(calendarDay(left), calendarDay(right));
        case KeyType::time:
            return order(timeOfDay(left), timeOfDay(right));
        case KeyType::floatingPoint:
            return left.size() == 4 ? order(floatRank<float>(left), floatRank<float>(right))
                                    : order(floatRank<double>(left), floatRank<double>(right));
        case KeyType::binaryFloat:
            return order(binaryFloatRank(left), binaryFloatRank(right));
        case KeyType::bit:
        case KeyType::nullIndicator:
            return order(left[0] != 0, right[0] != 0);
        case KeyType::zeroTerminatedString:
            return order(collated(collation, zeroTerminated(left)),
                         collated(collation, zeroTerminated(right)));
        case KeyType::lengthPrefixedString:
            return compareLengthPrefixed(collation, left, right);
        case KeyType::wideString:
            return order(units(left, false), units(right, false));
        case KeyType::wideZeroTerminatedString:
            return order(units(left, true), units(right, true));
        case KeyType::character:
        case KeyType::legacyString:
        case KeyType::largeObjectText:
        case KeyType::guid:
            return order(collated(collation, left), collated(collation, right));
        default:
            return compareDecimals(readDecimal(type, left), readDecimal(type, right), left, right);
    }
}
