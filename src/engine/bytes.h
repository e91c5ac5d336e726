#ifndef VANTREL_ENGINE_BYTES_H
#define VANTREL_ENGINE_BYTES_H

#include <cstdint>

// The fields of engine buffers are little-endian and mostly unaligned: every access goes through these
// functions, byte by byte.

namespace vantrel {

inline uint16_t loadU16(const uint8_t *bytes) {
    return static_cast<uint16_t>(bytes[0] | bytes[1] << 8);
}

inline uint32_t loadU32(const uint8_t *bytes) {
    return loadU16(bytes) | static_cast<uint32_t>(loadU16(bytes + 2)) << 16;
}

inline uint64_t loadU64(const uint8_t *bytes) {
    return loadU32(bytes) | static_cast<uint64_t>(loadU32(bytes + 4)) << 32;
}

inline int32_t loadI32(const uint8_t *bytes) {
    return static_cast<int32_t>(loadU32(bytes));
}

inline int64_t loadI64(const uint8_t *bytes) {
    return static_cast<int64_t>(loadU64(bytes));
}

inline void storeU16(uint8_t *bytes, uint16_t value) {
    bytes[0] = static_cast<uint8_t>(value);
    bytes[1] = static_cast<uint8_t>(value >> 8);
}

inline void storeU32(uint8_t *bytes, uint32_t value) {
    storeU16(bytes, static_cast<uint16_t>(value));
    storeU16(bytes + 2, static_cast<uint16_t>(value >> 16));
}

inline void storeU64(uint8_t *bytes, uint64_t value) {
    storeU32(bytes, static_cast<uint32_t>(value));
    storeU32(bytes + 4, static_cast<uint32_t>(value >> 32));
}

inline void storeI32(uint8_t *bytes, int32_t value) {
    storeU32(bytes, static_cast<uint32_t>(value));
}

inline void storeI64(uint8_t *bytes, int64_t value) {
    storeU64(bytes, static_cast<uint64_t>(value));
}

// Pointers that live in packed records are kept as bytes of the platform's pointer width.
template <class Target>
Target *loadPointer(const uint8_t (&bytes)[sizeof(void *)]) {
    Target *pointer;
    __builtin_memcpy(&pointer, bytes, sizeof pointer);
    return pointer;
}

inline void storePointer(uint8_t (&bytes)[sizeof(void *)], const void *pointer) {
    __builtin_memcpy(bytes, &pointer, sizeof pointer);
}

}  // namespace vantrel

#endif
