#include <algorithm>
#include <cstring>

#include "embedded/expression/field_function.h"
#include "embedded/key/encoding.h"

// Decimals are taken apart through their keys: a byte that says negative, not negative or ill-formed, then
// the digits, inverted in a negative number. Packed ones have two digits a byte.

namespace vantrel::embedded {

namespace {

enum class Standing : char { negative = 0, notNegative = 1, illFormed = 2 };

constexpr uint8_t packedPositive = 0xC;
constexpr uint8_t packedNegative = 0xD;

bool isPacked(KeyType type) {
    return type == KeyType::decimal || type == KeyType::money;
}

// Turns a key into digits where it is, and returns how the number stands.
Standing takeDigits(KeyType type, size_t length, Bytes *digits) {
    Bytes key;
    key.swap(*digits);
    auto standing = static_cast<Standing>(key.front());
    uint8_t inversion = standing == Standing::negative ? 0xFF : 0;
    for (size_t at = 1; at < key.size(); ++at) {
        auto byte = static_cast<uint8_t>(key[at] ^ inversion);
        if (!isPacked(type)) {
            digits->push_back(static_cast<char>(byte));
            continue;
        }
        digits->push_back(static_cast<char>(byte >> 4));
        if (at < length)
            digits->push_back(static_cast<char>(byte & 0x0F));
    }
    return standing;
}

// Adds one to the digits; false where they are all nines.
bool addOne(char *digits, size_t count) {
    while (count > 0 && digits[count - 1] == 9)
        digits[--count] = 0;
    if (count == 0)
        return false;
    ++digits[count - 1];
    return true;
}

// False where nothing changes.
bool roundDigits(Rounding rounding, int dropped, bool isNegative, Bytes *digits) {
    if (dropped <= 0)
        return false;
    size_t count = digits->size();
    bool dropsMore = static_cast<size_t>(dropped) > count;
    size_t kept = dropsMore ? 0 : count - static_cast<size_t>(dropped);
    bool cutsSomething = digits->find_first_not_of('\0', kept) != Bytes::npos;
    if (!cutsSomething)
        return false;
    bool cutsHalf = !dropsMore && (*digits)[kept] >= 5;
    std::fill(digits->begin() + static_cast<ptrdiff_t>(kept), digits->end(), '\0');
    if (roundsAway(rounding, isNegative, cutsSomething, cutsHalf) && !addOne(digits->data(), kept))
        std::fill(digits->begin(), digits->end(), '\x9');
    return true;
}

void storePacked(bool isNegative, const Bytes &digits, char *value, size_t length) {
    for (size_t at = 0; at < length; ++at) {
        uint8_t sign = isNegative ? packedNegative : packedPositive;
        auto low = at + 1 < length ? static_cast<uint8_t>(digits[2 * at + 1]) : sign;
        value[at] = static_cast<char>(static_cast<uint8_t>(digits[2 * at]) << 4 | low);
    }
}

// The character of a digit that carries the sign too.
char signedDigit(KeyType type, bool isNegative, char digit) {
    if (!isNegative)
        return static_cast<char>('0' + digit);
    if (type != KeyType::numeric)
        return static_cast<char>('p' + digit);
    return digit == 0 ? '}' : static_cast<char>('J' + digit - 1);
}

void storeNumeric(KeyType type, bool isNegative, const Bytes &digits, char *value, size_t length) {
    char *first = value + (type == KeyType::numericSignLeadingSeparate ? 1 : 0);
    std::transform(digits.begin(), digits.end(), first,
                   [](char digit) { return static_cast<char>('0' + digit); });
    if (type == KeyType::numericSignLeadingSeparate)
        value[0] = isNegative ? '-' : '+';
    else if (type == KeyType::numericSignTrailingSeparate)
        value[length - 1] = isNegative ? '-' : '+';
    else if (type == KeyType::numericSignLeadingBinary)
        value[0] = signedDigit(type, isNegative, digits.front());
    else
        value[length - 1] = signedDigit(type, isNegative, digits.back());
}

}  // namespace

void applyToDecimal(const FieldFunction &function, char *value, size_t length) {
    thread_local Bytes digits;
    digits.clear();
    appendEncodedValue(function.type, nullptr, ByteView(value, length), digits);
    Standing standing = takeDigits(function.type, length, &digits);
    if (standing == Standing::illFormed)
        return;
    bool wasNegative = standing == Standing::negative;
    bool changes =
        function.rounding == Rounding::none
            ? wasNegative
            : roundDigits(function.rounding, placesOf(function.type) - function.places, wasNegative, &digits);
    if (!changes)
        return;
    bool isNegative =
        wasNegative && function.rounding != Rounding::none && digits.find_first_not_of('\0') != Bytes::npos;
    if (isPacked(function.type))
        storePacked(isNegative, digits, value, length);
    else
        storeNumeric(function.type, isNegative, digits, value, length);
}

}  // namespace vantrel::embedded
