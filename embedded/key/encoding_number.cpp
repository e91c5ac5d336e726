#include <algorithm>
#include <cstring>

#include "embedded/key/encoding_forms.h"
#include "engine/bytes.h"

namespace vantrel::embedded {

namespace {

// The value in the high bytes of the result, whether it has four bytes or eight.
uint64_t loadHigh(ByteView value) {
    uint8_t bytes[8] = {};
    memcpy(bytes + (sizeof bytes - value.size()), value.data(), value.size());
    return loadU64(bytes);
}

void appendHigh(uint64_t bits, size_t count, Bytes &out) {
    char *to = appendRoom(out, count);
    for (size_t at = 0; at < count; ++at)
        to[at] = static_cast<char>(bits >> (56 - 8 * at));
}

// A sign bit above a magnitude becomes a number that sorts as unsigned.
uint64_t orderBySign(bool negative, uint64_t magnitude) {
    constexpr uint64_t topBit = uint64_t{1} << 63;
    return negative ? ~(magnitude | topBit) : magnitude | topBit;
}

}  // namespace

void appendUnsigned(ByteView value, Bytes &out) {
    char *to = appendRoom(out, value.size());
    std::reverse_copy(value.begin(), value.end(), to);
}

void appendSigned(ByteView value, Bytes &out) {
    const size_t start = out.size();
    appendUnsigned(value, out);
    out[start] = static_cast<char>(out[start] ^ 0x80);
}

// The sign is the top bit and both zeros are one value; anything else sorts by its bits, so that the values
// that are no numbers stand outside the infinities.
void appendFloatingPoint(ByteView value, Bytes &out) {
    const uint64_t bits = loadHigh(value);
    const uint64_t magnitude = bits & ~(uint64_t{1} << 63);
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
