#ifndef VANTREL_BULK_FILTER_H
#define VANTREL_BULK_FILTER_H

#include <cstddef>
#include <cstdint>

#include "engine/bytes.h"
#include "vantrel.h"

namespace vantrel {

// A condition as the bulk attributes copy it and the requests read it.
struct FilterImage {
    uint8_t fieldType;
    uint8_t fieldLength[2];
    uint8_t fieldOffset[2];
    uint8_t comparisonFlags;
    uint8_t patternSubCode;
    uint8_t connector;
    uint8_t comparisonIsSet[2];
    uint8_t constantIsSet[2];
    uint8_t otherFieldIsSet[2];
    uint8_t otherFieldOffset[2];
    uint8_t constantAddress[4];
    uint8_t constantLength[2];
    uint8_t collationMarker;
    uint8_t collationName[264];
};
static_assert(sizeof(FilterImage) == 287);

// An image and the address of its constant, which stands behind the image where four bytes cannot hold it.
template <std::size_t pointerSize>
struct FilterSlotFor : FilterImage {
    uint8_t wideConstantAddress[pointerSize];

    uint8_t (&address())[pointerSize] { return wideConstantAddress; }
    const uint8_t (&address() const)[pointerSize] { return wideConstantAddress; }
};

template <>
struct FilterSlotFor<4> : FilterImage {
    uint8_t (&address())[4] { return constantAddress; }
    const uint8_t (&address() const)[4] { return constantAddress; }
};

using FilterSlot = FilterSlotFor<sizeof(void *)>;
static_assert(sizeof(FilterSlot) == (sizeof(void *) == 4 ? 287 : 287 + sizeof(void *)));

inline uint8_t *constantOf(const FilterSlot &slot) {
    return loadPointer<uint8_t>(slot.address());
}

inline void setConstant(FilterSlot &slot, const uint8_t *constant) {
    storePointer(slot.address(), constant);
}

enum ComparisonFlag : uint8_t {
    comparisonCodeMask = 0x07,
    collationFollows = 0x08,
    defaultCollation = 0x20,
    comparesWithField = 0x40,
    caseInsensitive = 0x80,
};

// The comparison code of all pattern comparisons, which a sub-code tells apart.
inline constexpr uint8_t patternComparison = 7;
inline constexpr uint8_t patternSubCodes = 3;

enum CollationMarker : uint8_t {
    noCollation = 0,
    codePageName = 171,
    userDefinedCollationName = 172,
    collationName = 174,
};

inline constexpr uint32_t userDefinedNameSize = 8;
inline constexpr uint32_t nameSize = 16;

// The fields that the engine keeps with every record have offsets of their own; the low byte of their length
// is the size of their values.
inline constexpr uint16_t systemFieldLength = 0xFF08;
inline constexpr uint16_t systemFieldSize = 8;

// Writes the offset that stands for a system field.
VantrelStatus setSystemFieldOffset(uint16_t *offset, VantrelSystemField systemField);

// Lengths, offsets and constants are all below this, and so is the end of a field.
inline constexpr uint32_t lengthLimit = 65536;

bool offsetIsOutOfRange(uint32_t offset);
bool fieldIsOutOfRange(uint32_t offset, uint32_t length);

}  // namespace vantrel

struct VantrelFilter {
    vantrel::FilterSlot slot;
    uint8_t unused[65535 - sizeof(vantrel::FilterSlot)];
    uint8_t lastStatus[4];
};
static_assert(sizeof(VantrelFilter) == 65539);

#endif
