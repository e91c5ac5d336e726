#ifndef VANTREL_EMBEDDED_OPERATION_PROPORTION_H
#define VANTREL_EMBEDDED_OPERATION_PROPORTION_H

#include <bit>
#include <cstdint>

namespace vantrel::embedded {

// A part of a file: hundredths of a percent, or a fraction of the caller's.
struct Proportion {
    uint32_t numerator;
    uint32_t denominator;
};

inline constexpr uint32_t wholeInPercentages = 10000;

// part / whole * scale, rounded to the nearest number and from the middle upwards; exact however large the
// product. The part is at most the whole, which is below 2^62.
inline uint64_t scaled(uint64_t part, uint64_t whole, uint64_t scale) {
    uint64_t quotient = 0;
    uint64_t remainder = 0;
    for (int bit = static_cast<int>(std::bit_width(scale)); bit-- > 0;) {
        remainder = 2 * remainder + ((scale >> bit & 1) != 0 ? part : 0);
        quotient = 2 * quotient + remainder / whole;
        remainder %= whole;
    }
    bool isNearerAbove = remainder >= whole - remainder;
    return quotient + (isNearerAbove ? 1 : 0);
}

// Ranks are spread evenly from 0 at nothing to the last at the whole.
inline uint64_t rankAt(Proportion proportion, uint64_t total) {
    return scaled(proportion.numerator, proportion.denominator, total - 1);
}

inline uint32_t numeratorAt(uint64_t rank, uint64_t total, uint32_t denominator) {
    return total == 1 ? 0 : static_cast<uint32_t>(scaled(rank, total - 1, denominator));
}

}  // namespace vantrel::embedded

#endif
