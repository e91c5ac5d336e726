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

// The following append the digits and say how the number stands; digits of an ill-formed one are useless.

Standing appendPlainDigits(ByteView digits, Bytes &out) {
    bool wellFormed = true;
    char *to = appendRoom(out, digits.size());
    for (const char byte : digits) {
        const SignedDigit digit = plainDigit(static_cast<uint8_t>(byte));
        wellFormed = wellFormed && digit.standing != Standing::illFormed;
        *to++ = static_cast<char>(digit.digit);
    }
    return wellFormed ? Standing::notNegative : Standing::illFormed;
}

Standing appendPackedDigits(ByteView value, Bytes &out) {
    const uint8_t last = static_cast<uint8_t>(value.back());
    bool wellFormed = last >> 4 <= 9;
    for (const char byte : value.substr(0, value.size() - 1)) {
        const uint8_t digits = static_cast<uint8_t>(byte);
        wellFormed = wellFormed && digits >> 4 <= 9 && (digits & 0x0F) <= 9;
    }
    out.append(value);
    out.back() = static_cast<char>(last & 0xF0);
    return wellFormed ? standingOfHalfByte(last & 0x0F) : Standing::illFormed;
}

Standing appendSeparate(bool leading, ByteView value, Bytes &out) {
    const char sign = leading ? value.front() : value.back();
    const Standing digits = appendPlainDigits(value.substr(leading ? 1 : 0, value.size() - 1), out);
    return digits == Standing::illFormed ? digits : standingOfSign(static_cast<uint8_t>(sign));
}

Standing appendCombined(DecimalSign sign, ByteView value, Bytes &out) {
    const size_t start = out.size();
    const bool leading = signLeads(sign);
    const size_t at = leading ? 0 : value.size() - 1;
    const SignedDigit carrier = signedDigit(sign, static_cast<uint8_t>(value[at]));
    out.resize(start + (leading ? 1 : 0));
    const Standing digits = appendPlainDigits(value.substr(leading ? 1 : 0, value.size() - 1), out);
    out.resize(start + value.size());
    out[start + at] = static_cast<char>(carrier.digit);
    return digits == Standing::illFormed ? digits : carrier.standing;
}

Standing appendDigits(DecimalSign sign, ByteView value, Bytes &out) {
    if (sign == DecimalSign::packed)
        return appendPackedDigits(value, out);
    return signIsSeparate(sign) ? appendSeparate(signLeads(sign), value, out)
                                : appendCombined(sign, value, out);
}

}  // namespace

void appendDecimal(DecimalSign sign, ByteView value, Bytes &out) {
    const size_t start = out.size();
    out.push_back('\0');
    Standing standing = appendDigits(sign, value, out);
    const auto digits = out.begin() + static_cast<ptrdiff_t>(start) + 1;
    if (standing == Standing::illFormed) {
        out.resize(start + 1);
        out.append(value);
    } else if (standing == Standing::negative) {
        if (std::all_of(digits, out.end(), [](char digit) { return digit == 0; }))
            standing = Standing::notNegative;
        else
            std::transform(digits, out.end(), digits, [](char digit) { return static_cast<char>(~digit); });
    }
    out[start] = static_cast<char>(standing);
}

}  // namespace vantrel::embedded
