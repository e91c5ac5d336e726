#include <algorithm>

#include "embedded/key/encoding_forms.h"

// A decimal number becomes a byte that says negative, not negative or ill-formed, and its digits, inverted in
// a negative number. An ill-formed one keeps its bytes as they are.

namespace vantrel::embedded {

namespace {

enum class Standing : uint8_t { negative = 0, notNegative = 1, illFormed = 2 };

struct SignedDigit {
    uint8_t digit;
    Standing standing;
};

constexpr SignedDigit noDigit = {0, Standing::illFormed};

// The digit of a character of the ten that begin with zero.
constexpr SignedDigit digitFrom(uint8_t byte, uint8_t zero, Standing standing) {
    const uint8_t digit = static_cast<uint8_t>(byte - zero);
    return digit <= 9 ? SignedDigit{digit, standing} : noDigit;
}

constexpr SignedDigit plainDigit(uint8_t byte) {
    return digitFrom(byte, '0', Standing::notNegative);
}

constexpr SignedDigit overpunchedDigit(uint8_t byte) {
    if (byte == '{')
        return {0, Standing::notNegative};
    if (byte == '}')
        return {0, Standing::negative};
    if (byte >= 'A' && byte <= 'I')
        return digitFrom(byte, 'A' - 1, Standing::notNegative);
    if (byte >= 'J' && byte <= 'R')
        return digitFrom(byte, 'J' - 1, Standing::negative);
    return plainDigit(byte);
}

constexpr SignedDigit bitSignedDigit(uint8_t byte) {
    return byte >= 'p' ? digitFrom(byte, 'p', Standing::negative) : plainDigit(byte);
}

constexpr SignedDigit asciiOverpunchedDigit(uint8_t byte) {
    return byte >= 'P' && byte <= 'Y' ? digitFrom(byte, 'P', Standing::notNegative) : bitSignedDigit(byte);
}

constexpr SignedDigit signedDigit(DecimalSign sign, uint8_t byte) {
    if (sign == DecimalSign::overpunched)
        return overpunchedDigit(byte);
    return sign == DecimalSign::asciiOverpunched ? asciiOverpunchedDigit(byte) : bitSignedDigit(byte);
}

constexpr Standing standingOfSign(uint8_t byte) {
    if (byte == '+')
        return Standing::notNegative;
    return byte == '-' ? Standing::negative : Standing::illFormed;
}

constexpr Standing standingOfHalfByte(uint8_t sign) {
    if (sign <= 9)
        return Standing::illFormed;
    return sign == 0xB || sign == 0xD ? Standing::negative : Standing::notNegative;
}

constexpr bool signLeads(DecimalSign sign) {
    return sign == DecimalSign::bitLeading || sign == DecimalSign::separateLeading;
}

constexpr bool signIsSeparate(DecimalSign sign) {
    return sign == DecimalSign::separateLeading || sign == DecimalSign::separateTrailing;
}

// The following turn the bytes of digits into digits where they are and say how the number stands; the digits
// of an ill-formed one are useless.

Standing readPlain(char *digits, size_t count) {
    bool wellFormed = true;
    for (size_t at = 0; at < count; ++at) {
        const uint8_t digit = static_cast<uint8_t>(digits[at] - '0');
        wellFormed &= digit <= 9;
        digits[at] = static_cast<char>(digit);
    }
    return wellFormed ? Standing::notNegative : Standing::illFormed;
}

Standing readPacked(char *digits, size_t count) {
    const uint8_t last = static_cast<uint8_t>(digits[count - 1]);
    bool wellFormed = last >> 4 <= 9;
    for (size_t at = 0; at + 1 < count; ++at) {
        const uint8_t both = static_cast<uint8_t>(digits[at]);
        wellFormed = wellFormed && both >> 4 <= 9 && (both & 0x0F) <= 9;
    }
    digits[count - 1] = static_cast<char>(last & 0xF0);
    return wellFormed ? standingOfHalfByte(last & 0x0F) : Standing::illFormed;
}

Standing readCombined(DecimalSign sign, char *digits, size_t count) {
    const bool leading = signLeads(sign);
    char &carrier = digits[leading ? 0 : count - 1];
    const SignedDigit carried = signedDigit(sign, static_cast<uint8_t>(carrier));
    const Standing others = readPlain(leading ? digits + 1 : digits, count - 1);
    carrier = static_cast<char>(carried.digit);
    return others == Standing::illFormed ? others : carried.standing;
}

Standing readSeparate(char sign, char *digits, size_t count) {
    const Standing standing = readPlain(digits, count);
    return standing == Standing::illFormed ? standing : standingOfSign(static_cast<uint8_t>(sign));
}

Standing readDigits(DecimalSign sign, ByteView value, char *digits, size_t count) {
    if (sign == DecimalSign::packed)
        return readPacked(digits, count);
    if (signIsSeparate(sign))
        return readSeparate(signLeads(sign) ? value.front() : value.back(), digits, count);
    return readCombined(sign, digits, count);
}

bool isZero(const char *digits, size_t count) {
    return std::all_of(digits, digits + count, [](char digit) { return digit == 0; });
}

}  // namespace

void appendDecimal(DecimalSign sign, ByteView value, Bytes &out) {
    const size_t start = out.size();
    const size_t signSize = signIsSeparate(sign) ? 1 : 0;
    const size_t count = value.size() - signSize;
    out.push_back('\0');
    out.append(value.substr(signLeads(sign) ? signSize : 0, count));
    char *digits = out.data() + start + 1;
    Standing standing = readDigits(sign, value, digits, count);
    if (standing == Standing::negative && isZero(digits, count))
        standing = Standing::notNegative;
    if (standing == Standing::negative)
        std::transform(digits, digits + count, digits, [](char digit) { return static_cast<char>(~digit); });
    out[start] = static_cast<char>(standing);
    if (standing == Standing::illFormed)
        out.replace(start + 1, count, value);
}

}  // namespace vantrel::embedded
