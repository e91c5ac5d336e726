#include "definition/key_segment.h"

#include <cstdlib>

#include "definition/enumeration_maps.h"
#include "engine/bytes.h"
#include "engine/status.h"
#include "engine/translation.h"

using namespace vantrel;

namespace {

constexpr uint32_t lengthMaximum = 1024;
constexpr uint32_t recordEndLimit = 65536;
constexpr uint32_t byteMaximum = 255;

bool fieldIsOutOfRange(uint32_t offset, uint32_t length) {
    return length > lengthMaximum || offset >= recordEndLimit || offset + length >= recordEndLimit;
}

// The legacy types are flags alone; a code that an extended type left behind stays.
void setLegacyDataType(KeySpecification *specification, bool isBinary) {
    assignFlag(specification->flags, keyFlagExtendedDataType, false);
    assignFlag(specification->flags, keyFlagBinary, isBinary);
}

// The flags are those of an extended type even where the type turns out to be unknown.
VantrelStatus setExtendedDataType(KeySpecification *specification, VantrelDataType dataType) {
    assignFlag(specification->flags, keyFlagBinary, false);
    assignFlag(specification->flags, keyFlagExtendedDataType, true);
    uint16_t engineType = 0;
    VantrelStatus status = setDataType(&engineType, dataType);
    if (status == VANTREL_STATUS_NO_ERROR)
        storeU16(specification->extendedDataType, engineType);
    return status;
}

VantrelStatus setSpecifiedDataType(KeySpecification *specification, VantrelDataType dataType) {
    if (dataType != VANTREL_DATA_TYPE_LEGACY_STRING && dataType != VANTREL_DATA_TYPE_LEGACY_BINARY)
        return setExtendedDataType(specification, dataType);
    setLegacyDataType(specification, dataType == VANTREL_DATA_TYPE_LEGACY_BINARY);
    return VANTREL_STATUS_NO_ERROR;
}

// What a getter reads, the last status cleared; null for a null handle.
const KeySpecification *specificationToRead(VantrelKeySegment *segment) {
    if (segment == nullptr)
        return nullptr;
    keepStatus(segment, VANTREL_STATUS_NO_ERROR);
    return &segment->specification;
}

int32_t getFlag(VantrelKeySegment *segment, uint16_t flag) {
    const KeySpecification *specification = specificationToRead(segment);
    return specification == nullptr ? -1 : hasFlag(specification->flags, flag);
}

template <size_t count>
int32_t getFlagEnumeration(VantrelKeySegment *segment, const EnumerationMap<count> &map) {
    if (segment == nullptr)
        return noEnumerationValue;
    return getEnumeration(segment, map, segment->specification.flags);
}

}  // namespace

namespace vantrel {

VantrelStatus keySegmentSetDuplicateMode(KeySpecification *segment, VantrelDuplicateMode mode) {
    return encodeEnumeration(duplicateModeMap, mode, segment->flags);
}

VantrelStatus keySegmentSetModifiable(KeySpecification *segment, int32_t isModifiable) {
    assignFlag(segment->flags, keyFlagModifiable, isModifiable != 0);
    return VANTREL_STATUS_NO_ERROR;
}

VantrelStatus keySegmentSetACSMode(KeySpecification *segment, VantrelACSMode mode) {
    return encodeEnumeration(acsModeMap, mode, segment->flags);
}

VantrelStatus keySegmentSetACSNumber(KeySpecification *segment, uint32_t number) {
    if (number > byteMaximum)
        return VANTREL_STATUS_INVALID_OPTION;
    segment->acsNumber = static_cast<uint8_t>(number);
    return VANTREL_STATUS_NO_ERROR;
}

}  // namespace vantrel

VantrelStatus VantrelKeySegmentAllocate(VantrelKeySegment **segment) {
    return allocateRecord(segment);
}

VantrelStatus VantrelKeySegmentFree(VantrelKeySegment *segment) {
    free(segment);
    return VANTREL_STATUS_NO_ERROR;
}

VantrelStatus VantrelKeySegmentSetField(VantrelKeySegment *segment, int32_t offset, int32_t length,
                                        VantrelDataType dataType) {
    if (segment == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    if (fieldIsOutOfRange(static_cast<uint32_t>(offset), static_cast<uint32_t>(length)))
        return keepStatus(segment, VANTREL_STATUS_INVALID_OPTION);
    VantrelStatus status = keepStatus(segment, setSpecifiedDataType(&segment->specification, dataType));
    if (status != VANTREL_STATUS_NO_ERROR)
        return status;
    storeU16(segment->specification.position, static_cast<uint16_t>(offset + 1));
    storeU16(segment->specification.length, static_cast<uint16_t>(length));
    return VANTREL_STATUS_NO_ERROR;
}

VantrelStatus VantrelKeySegmentSetNullKeyMode(VantrelKeySegment *segment, VantrelNullKeyMode mode) {
    if (segment == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    return keepStatus(segment, encodeEnumeration(nullKeyModeMap, mode, segment->specification.flags));
}

VantrelStatus VantrelKeySegmentSetNullValue(VantrelKeySegment *segment, int32_t value) {
    if (segment == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    if (static_cast<uint32_t>(value) > byteMaximum)
        return keepStatus(segment, VANTREL_STATUS_INVALID_OPTION);
    segment->specification.nullValue = static_cast<uint8_t>(value);
    return keepStatus(segment, VANTREL_STATUS_NO_ERROR);
}

VantrelStatus VantrelKeySegmentSetDescendingSortOrder(VantrelKeySegment *segment, int32_t isDescending) {
    if (segment == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    assignFlag(segment->specification.flags, keyFlagDescending, isDescending != 0);
    return keepStatus(segment, VANTREL_STATUS_NO_ERROR);
}

int32_t VantrelKeySegmentGetOffset(VantrelKeySegment *segment) {
    const KeySpecification *specification = specificationToRead(segment);
    return specification == nullptr ? -1 : loadU16(specification->position) - 1;
}

int32_t VantrelKeySegmentGetLength(VantrelKeySegment *segment) {
    const KeySpecification *specification = specificationToRead(segment);
    return specification == nullptr ? -1 : loadU16(specification->length);
}

VantrelDataType VantrelKeySegmentGetDataType(VantrelKeySegment *segment) {
    const KeySpecification *specification = specificationToRead(segment);
    if (specification == nullptr)
        return noEnumerationValue;
    if (!hasFlag(specification->flags, keyFlagExtendedDataType)) {
        bool isBinary = hasFlag(specification->flags, keyFlagBinary);
        return isBinary ? VANTREL_DATA_TYPE_LEGACY_BINARY : VANTREL_DATA_TYPE_LEGACY_STRING;
    }
    VantrelDataType dataType = noEnumerationValue;
    if (!dataTypeOfEngineType(loadU16(specification->extendedDataType), &dataType))
        return failWith(segment, VANTREL_STATUS_INVALID_OPTION, noEnumerationValue);
    return dataType;
}

VantrelNullKeyMode VantrelKeySegmentGetNullKeyMode(VantrelKeySegment *segment) {
    return getFlagEnumeration(segment, nullKeyModeMap);
}

int32_t VantrelKeySegmentGetNullValue(VantrelKeySegment *segment) {
    const KeySpecification *specification = specificationToRead(segment);
    return specification == nullptr ? -1 : specification->nullValue;
}

int32_t VantrelKeySegmentGetDescendingSortOrder(VantrelKeySegment *segment) {
    return getFlag(segment, keyFlagDescending);
}

VantrelDuplicateMode VantrelKeySegmentGetDuplicateMode(VantrelKeySegment *segment) {
    return getFlagEnumeration(segment, duplicateModeMap);
}

int32_t VantrelKeySegmentGetModifiable(VantrelKeySegment *segment) {
    return getFlag(segment, keyFlagModifiable);
}

VantrelACSMode VantrelKeySegmentGetACSMode(VantrelKeySegment *segment) {
    return getFlagEnumeration(segment, acsModeMap);
}

int32_t VantrelKeySegmentGetACSNumber(VantrelKeySegment *segment) {
    const KeySpecification *specification = specificationToRead(segment);
    return specification == nullptr ? -1 : specification->acsNumber;
}

int32_t VantrelKeySegmentGetKeyContinues(VantrelKeySegment *segment) {
    return getFlag(segment, keyFlagContinues);
}

VantrelIndex VantrelKeySegmentGetIndex(VantrelKeySegment *segment) {
    const KeySpecification *specification = specificationToRead(segment);
    return specification == nullptr ? noEnumerationValue : loadU16(specification->index);
}

int64_t VantrelKeySegmentGetUniqueValueCount(VantrelKeySegment *segment) {
    const KeySpecification *specification = specificationToRead(segment);
    return specification == nullptr ? -1 : loadI64(specification->uniqueValueCount);
}

VantrelStatus VantrelKeySegmentGetLastStatusCode(const VantrelKeySegment *segment) {
    return segment == nullptr ? VANTREL_STATUS_INVALID_POINTER_PARAMETER : lastStatus(segment);
}
