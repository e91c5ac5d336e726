#include <algorithm>

#include "embedded/key/encoding_forms.h"
#include "engine/bytes.h"

namespace vantrel::embedded {

namespace {

constexpr uint64_t topBit = uint64_t{1} << 63;

// The value of up to eight bytes, in the high bytes of the result.
uint64_t loadHigh(ByteView value) {
    const uint8_t *bytes = reinterpret_cast<const uint8_t *>(value.data());
    if (value.size() == 8)
        return loadU64(bytes);
    if (value.size() == 4)
        return static_cast<uint64_t>(loadU32(bytes)) << 32;
    uint64_t bits = 0;
    for (const char byte : value)
        bits = bits >> 8 | static_cast<uint64_t>(static_cast<uint8_t>(byte)) << 56;
    return bits;
}

void appendHigh(uint64_t bits, size_t count, Bytes &out) {
    char bytes[8];
    for (size_t at = 0; at < sizeof bytes; ++at)
        bytes[at] = static_cast<char>(bits >> (56 - 8 * at));
    out.append(bytes, count);
}

// A sign bit above a magnitude becomes a number that sorts as unsigned.
uint64_t orderBySign(bool negative, uint64_t magnitude) {
    return negative ? ~(magnitude | topBit) : magnitude | topBit;
}

}  // namespace

void appendUnsigned(ByteView value, Bytes &out) {
    if (value.size() <= 8)
        appendHigh(loadHigh(value), value.size(), out);
    else
        std::reverse_copy(value.begin(), value.end(), appendRoom(out, value.size()));
}

void appendSigned(ByteView value, Bytes &out) {
    appendHigh(loadHigh(value) ^ topBit, value.size(), out);
}

// The sign is the top bit and both zeros are one value; anything else sorts by its bits, so that the values
// that are no numbers stand outside the infinities.
void appendFloatingPoint(ByteView value, Bytes &out) {
    const uint64_t bits = loadHigh(value);
    const uint64_t magnitude = bits & ~topBit;
    const bool negative = bits != magnitude && magnitude != 0;
    appendHigh(orderBySign(negative, magnitude), value.size(), out);
}

// From the top: eight bits of exponent, the sign, the fraction. An exponent of zero makes the value zero.
void appendBinaryFloat(ByteView value, Bytes &out) {
    constexpr uint64_t signBit = uint64_t{1} << 55;
    const uint64_t bits = loadHigh(value);
    const uint64_t exponent = bits >> 56;
    const uint64_t magnitude = exponent == 0 ? 0 : exponent << 55 | (bits & (signBit - 1));
    const bool negative = exponent != 0 && (bits & signBit) != 0;
    appendHigh(orderBySign(negative, magnitude), value.size(), out);
}

void appendFlag(ByteView value, Bytes &out) {
    out.push_back(value.front() == 0 ? '\0' : '\1');
}

}  // namespace vantrel::embedded
