#ifndef VANTREL_DEFINITION_ENUMERATION_MAPS_H
#define VANTREL_DEFINITION_ENUMERATION_MAPS_H

#include <cstddef>
#include <cstdint>

#include "definition/flags.h"
#include "engine/status.h"

// How the enumerations of files and keys are stored in the two-byte fields of file and key specifications.

namespace vantrel {

// The bits under the mask belong to the enumeration; patterns[value] stands for the value.
template <size_t count>
struct EnumerationMap {
    uint16_t mask;
    uint16_t patterns[count];
};

template <size_t count>
VantrelStatus encodeEnumeration(const EnumerationMap<count> &map, int32_t value, uint8_t *field) {
    if (static_cast<uint32_t>(value) >= count)
        return VANTREL_STATUS_INVALID_OPTION;
    replaceBits(field, map.mask, map.patterns[value]);
    return VANTREL_STATUS_NO_ERROR;
}

// What getters of enumerations and indexes return when they fail.
inline constexpr int32_t noEnumerationValue = -7;

// Of values stored alike the lowest.
template <size_t count>
int32_t decodeEnumeration(const EnumerationMap<count> &map, const uint8_t *field) {
    uint16_t pattern = loadU16(field) & map.mask;
    for (size_t value = 0; value < count; ++value) {
        if (map.patterns[value] == pattern)
            return static_cast<int32_t>(value);
    }
    return noEnumerationValue;
}

// A getter's work: decodes the field of the record and keeps in the record whether it held a value.
template <class Record, size_t count>
int32_t getEnumeration(Record *record, const EnumerationMap<count> &map, const uint8_t *field) {
    int32_t value = decodeEnumeration(map, field);
    keepStatus(record, value == noEnumerationValue ? VANTREL_STATUS_INVALID_OPTION : VANTREL_STATUS_NO_ERROR);
    return value;
}

// Fields of the file specification. The default page size is stored as 4096.
inline constexpr EnumerationMap<10> pageSizeMap = {
    0xFFFF, {512, 1024, 1536, 2048, 3072, 3584, 4096, 8192, 16384, 4096}};
inline constexpr EnumerationMap<9> fileVersionMap = {0xFFFF,
                                                     {0x60, 0x61, 0x70, 0x80, 0x90, 0x95, 0x00, 0xD0, 0xD3}};

// Bits of the file flags.
inline constexpr EnumerationMap<3> recordCompressionMap = {0x000A, {0x0000, 0x0002, 0x0008}};
inline constexpr EnumerationMap<3> variableLengthRecordsMap = {0x0801, {0x0000, 0x0001, 0x0801}};
inline constexpr EnumerationMap<4> freeSpaceThresholdMap = {0x00C0, {0x0040, 0x0080, 0x00C0, 0x0000}};
inline constexpr EnumerationMap<4> systemDataMap = {0x5200, {0x0200, 0x1200, 0x0000, 0x4200}};

// Bits of the key flags.
inline constexpr EnumerationMap<3> duplicateModeMap = {0x0081, {0x0000, 0x0001, 0x0081}};
inline constexpr EnumerationMap<3> nullKeyModeMap = {0x0208, {0x0008, 0x0200, 0x0000}};
inline constexpr EnumerationMap<5> acsModeMap = {0x0C20, {0x0000, 0x0C20, 0x0420, 0x0400, 0x0020}};

}  // namespace vantrel

#endif
