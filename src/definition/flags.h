#ifndef VANTREL_DEFINITION_FLAGS_H
#define VANTREL_DEFINITION_FLAGS_H

#include <cstdint>

#include "engine/bytes.h"

// Two-byte fields of engine buffers that hold a set of bits.

namespace vantrel {

inline bool hasFlag(const uint8_t *field, uint16_t flag) {
    return (loadU16(field) & flag) != 0;
}

// Replaces the bits under the mask by the pattern and leaves the others.
inline void replaceBits(uint8_t *field, uint16_t mask, uint16_t pattern) {
    storeU16(field, static_cast<uint16_t>((loadU16(field) & ~mask) | pattern));
}

inline void assignFlag(uint8_t *field, uint16_t flag, bool isSet) {
    replaceBits(field, flag, isSet ? flag : 0);
}

}  // namespace vantrel

#endif
