#include "embedded/expression/field_function.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "embedded/key/encoding.h"
#include "embedded/key/little_endian.h"

namespace vantrel::embedded {

namespace {

constexpr int currencyPlaces = 4;
constexpr int moneyPlaces = 2;
constexpr int largestPowerOfTen = 19;  // of those below 2^64

// Numbers from here on have no digits behind the point.
constexpr double wholeNumbers = 9007199254740992.0;

// A whole number, whose lowest digits may stand behind a point.
struct WholeNumber {
    bool isNegative;
    uint64_t magnitude;
    uint64_t largestMagnitude;
};

uint64_t powerOfTen(int exponent) {
    uint64_t power = 1;
    while (exponent-- > 0)
        power *= 10;
    return power;
}

void roundWhole(Rounding rounding, int droppedDigits, WholeNumber *number) {
    if (droppedDigits <= 0)
        return;
    if (droppedDigits > largestPowerOfTen) {
        number->magnitude = 0;
        return;
    }
    uint64_t unit = powerOfTen(droppedDigits);
    uint64_t cut = number->magnitude % unit;
    number->magnitude -= cut;
    if (!roundsAway(rounding, number->isNegative, cut != 0, cut >= unit - cut))
        return;
    bool fits = number->largestMagnitude >= unit && number->magnitude <= number->largestMagnitude - unit;
    number->magnitude = fits ? number->magnitude + unit : number->largestMagnitude;
}

void applyToWhole(const FieldFunction &function, bool isSigned, char *value, size_t length) {
    ByteView bytes(value, length);
    int64_t asSigned = isSigned ? loadSigned(bytes) : 0;
    WholeNumber number{asSigned < 0, isSigned ? static_cast<uint64_t>(asSigned) : loadUnsigned(bytes), 0};
    if (number.isNegative)
        number.magnitude = 0 - number.magnitude;
    if (function.rounding == Rounding::none)
        number.isNegative = false;
    uint64_t largest = ~uint64_t{0} >> (64 - 8 * length + (isSigned ? 1 : 0));
    number.largestMagnitude = largest + (number.isNegative ? 1 : 0);
    number.magnitude = std::min(number.magnitude, number.largestMagnitude);
    if (function.rounding != Rounding::none)
        roundWhole(function.rounding, placesOf(function.type) - function.places, &number);
    storeNumber(number.isNegative ? 0 - number.magnitude : number.magnitude, value, length);
}

double roundedWhole(Rounding rounding, double number) {
    switch (rounding) {
        case Rounding::none:
            return std::fabs(number);
        case Rounding::ceiling:
            return std::ceil(number);
        case Rounding::floor:
            return std::floor(number);
        case Rounding::halfAwayFromZero:
            return std::round(number);
        default:
            return std::trunc(number);
    }
}

// Where scaling leaves the numbers that have digits to cut off, there is nothing to cut off.
double resultOf(const FieldFunction &function, double number) {
    if (function.rounding == Rounding::none || function.places == 0)
        return roundedWhole(function.rounding, number);
    double unit = std::pow(10.0, std::abs(function.places));
    if (function.places < 0)
        return std::isinf(unit) ? std::copysign(0.0, number)
                                : roundedWhole(function.rounding, number / unit) * unit;
    double scaled = number * unit;
    return std::fabs(scaled) < wholeNumbers ? roundedWhole(function.rounding, scaled) / unit : number;
}

template <class Float>
void applyToFloat(const FieldFunction &function, char *value) {
    Float number;
    memcpy(&number, value, sizeof number);
    if (!std::isfinite(number))
        return;
    constexpr double largest = std::numeric_limits<Float>::max();
    double result = std::clamp<double>(resultOf(function, number), -largest, largest);
    number = static_cast<Float>(result);
    memcpy(value, &number, sizeof number);
}

// The old binary float: eight bits of exponent, the sign, a fraction whose leading one is left out. The
// number is the fraction, from one half up to one, by two to the exponent less 128.

constexpr int exponentBias = 128;
constexpr uint64_t signBit = uint64_t{1} << 55;

// Bits that a double has no room for leave a trace in its lowest one, so that whole numbers stay apart from
// those next to them.
double doubleFrom(uint64_t bits) {
    constexpr uint64_t unkept = 7;
    uint64_t fraction = (bits & (signBit - 1)) | signBit;
    fraction = (fraction & ~unkept) | ((fraction & unkept) != 0 ? unkept + 1 : 0);
    double magnitude =
        std::ldexp(static_cast<double>(fraction), static_cast<int>(bits >> 56) - exponentBias - 56);
    return (bits & signBit) != 0 ? -magnitude : magnitude;
}

uint64_t bitsFrom(double number, unsigned fractionBits) {
    int exponent;
    double rounded =
        std::round(std::ldexp(std::frexp(std::fabs(number), &exponent), static_cast<int>(fractionBits)));
    auto fraction = static_cast<uint64_t>(rounded);
    if (fraction >> fractionBits != 0) {
        fraction >>= 1;
        ++exponent;
    }
    exponent += exponentBias;
    if (fraction == 0 || exponent <= 0)
        return 0;
    if (exponent > 255)
        return (number < 0 ? ~uint64_t{0} : ~signBit);
    uint64_t bits = (fraction << (56 - fractionBits)) & (signBit - 1);
    return static_cast<uint64_t>(exponent) << 56 | bits | (number < 0 ? signBit : 0);
}

void applyToBinaryFloat(const FieldFunction &function, char *value, size_t length) {
    uint64_t bits = loadUnsigned(ByteView(value, length)) << (64 - 8 * length);
    if (function.rounding == Rounding::none) {
        bits &= ~signBit;
    } else if (bits >> 56 != 0) {
        double number = doubleFrom(bits);
        double result = resultOf(function, number);
        if (result == number)
            return;
        bits = bitsFrom(result, static_cast<unsigned>(8 * length) - 8);
    }
    storeNumber(bits >> (64 - 8 * length), value, length);
}

}  // namespace

bool functionsTake(KeyType type, size_t length) {
    if (!segmentLengthIsLegal(type, length))
        return false;
    switch (type) {
        case KeyType::unsignedBinary:
            return length <= sizeof(uint64_t);
        case KeyType::integer:
        case KeyType::floatingPoint:
        case KeyType::decimal:
        case KeyType::money:
        case KeyType::numeric:
        case KeyType::binaryFloat:
        case KeyType::autoincrement:
        case KeyType::numericSignTrailingSeparate:
        case KeyType::numericAsciiOverpunch:
        case KeyType::currency:
        case KeyType::numericSignLeadingBinary:
        case KeyType::numericSignLeadingSeparate:
        case KeyType::numericSignTrailingBinary:
            return true;
        default:
            return false;
    }
}

int placesOf(KeyType type) {
    if (type == KeyType::currency)
        return currencyPlaces;
    return type == KeyType::money ? moneyPlaces : 0;
}

void FieldFunction::apply(char *value, size_t length) const {
    switch (type) {
        case KeyType::unsignedBinary:
            return applyToWhole(*this, false, value, length);
        case KeyType::integer:
        case KeyType::autoincrement:
        case KeyType::currency:
            return applyToWhole(*this, true, value, length);
        case KeyType::floatingPoint:
            return length == sizeof(float) ? applyToFloat<float>(*this, value)
                                           : applyToFloat<double>(*this, value);
        case KeyType::binaryFloat:
            return applyToBinaryFloat(*this, value, length);
        default:
            return applyToDecimal(*this, value, length);
    }
}

}  // namespace vantrel::embedded
