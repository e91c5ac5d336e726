#ifndef VANTREL_ENGINE_BYTES_H
#define VANTREL_ENGINE_BYTES_H

#include <cstdint>

// The fields of engine buffers are little-endian and mostly unaligned: every access goes through these
// functions. They copy bytes, for which the compiler uses single unaligned accesses where the processor has
// them.

namespace vantrel {

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "values are copied as they lie in memory");

template <class Value>
Value loadBytes(const uint8_t *bytes) {
    Value value;
    __builtin_memcpy(&value, bytes, sizeof value);
    return value;
}

template <class Value>
void storeBytes(uint8_t *bytes, Value value) {
    __builtin_memcpy(bytes, &value, sizeof value);
}

inline uint16_t loadU16(const uint8_t *bytes) {
    return loadBytes<uint16_t>(bytes);
}

inline uint32_t loadU32(const uint8_t *bytes) {
    return loadBytes<uint32_t>(bytes);
}

inline uint64_t loadU64(const uint8_t *bytes) {
    return loadBytes<uint64_t>(bytes);
}

inline int32_t loadI32(const uint8_t *bytes) {
    return static_cast<int32_t>(loadU32(bytes));
}

inline int64_t loadI64(const uint8_t *bytes) {
    return static_cast<int64_t>(loadU64(bytes));
}

inline void storeU16(uint8_t *bytes, uint16_t value) {
    storeBytes(bytes, value);
}

inline void storeU32(uint8_t *bytes, uint32_t value) {
    storeBytes(bytes, value);
}

inline void storeU64(uint8_t *bytes, uint64_t value) {
    storeBytes(bytes, value);
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
