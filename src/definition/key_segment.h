#ifndef VANTREL_DEFINITION_KEY_SEGMENT_H
#define VANTREL_DEFINITION_KEY_SEGMENT_H

#include <cstdint>

#include "vantrel.h"

namespace vantrel {

// A key segment as requests and statistics replies hold it.
struct KeySpecification {
    uint8_t position[2];  // in the record, from 1
    uint8_t length[2];
    uint8_t flags[2];
    uint8_t reserved[2];
    uint8_t uniqueValueCount[8];  // replies only
    uint8_t extendedDataType[2];  // an engine type code, where the flags say so
    uint8_t nullValue;
    uint8_t reservedBeforeIndex;
    uint8_t index[2];  // replies only
    uint8_t acsNumber;
    uint8_t reservedAtEnd;
};
static_assert(sizeof(KeySpecification) == 24);

// Flags of keys; the bits of enumerations are in the enumeration maps.
inline constexpr uint16_t keyFlagModifiable = 0x0002;
inline constexpr uint16_t keyFlagBinary = 0x0004;
inline constexpr uint16_t keyFlagContinues = 0x0010;
inline constexpr uint16_t keyFlagDescending = 0x0040;
inline constexpr uint16_t keyFlagExtendedDataType = 0x0100;

// Properties of the index, stamped onto each of its segments when a request is built. A refused value
// changes nothing.
VantrelStatus keySegmentSetDuplicateMode(KeySpecification *segment, VantrelDuplicateMode mode);
VantrelStatus keySegmentSetModifiable(KeySpecification *segment, int32_t isModifiable);
VantrelStatus keySegmentSetACSMode(KeySpecification *segment, VantrelACSMode mode);
VantrelStatus keySegmentSetACSNumber(KeySpecification *segment, uint32_t number);

}  // namespace vantrel

struct VantrelKeySegment {
    vantrel::KeySpecification specification;
    uint8_t lastStatus[4];
};
static_assert(sizeof(VantrelKeySegment) == 28);

#endif
