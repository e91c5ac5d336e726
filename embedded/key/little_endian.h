#ifndef VANTREL_EMBEDDED_KEY_LITTLE_ENDIAN_H
#define VANTREL_EMBEDDED_KEY_LITTLE_ENDIAN_H

#include <cstdint>

#include "embedded/key/definition.h"

// Whole numbers of 1 to 8 bytes.

namespace vantrel::embedded {

inline uint64_t loadUnsigned(ByteView value) {
    uint64_t number = 0;
    for (size_t byte = value.size(); byte-- > 0;)
        number = number << 8 | static_cast<uint8_t>(value[byte]);
    return number;
}

inline int64_t loadSigned(ByteView value) {
    const unsigned unused = static_cast<unsigned>(64 - 8 * value.size());
    return static_cast<int64_t>(loadUnsigned(value) << unused) >> unused;
}

inline void storeNumber(uint64_t number, char *bytes, size_t length) {
    for (size_t byte = 0; byte < length; ++byte, number >>= 8)
        bytes[byte] = static_cast<char>(number);
}

inline void appendNumber(Bytes &bytes, uint64_t number, size_t length) {
    bytes.resize(bytes.size() + length);
    storeNumber(number, bytes.data() + bytes.size() - length, length);
}

}  // namespace vantrel::embedded

#endif
