#include "definition/index_attributes.h"

#include <cstdlib>
#include <cstring>

#include "definition/flags.h"
#include "engine/bytes.h"
#include "engine/status.h"
#include "engine/translation.h"

using namespace vantrel;

namespace {

// The first byte of an ACS block.
enum ACSSignature : uint8_t {
    acsUserDefined = 0xAC,
    acsNamed = 0xAE,
};

constexpr uint32_t acsNameMaximum = 16;
constexpr uint32_t acsUserDefinedNameMaximum = 8;
constexpr int32_t acsTableSize = 256;
static_assert(1 + acsUserDefinedNameMaximum + acsTableSize == acsBlockSize);

constexpr uint32_t acsNumberMaximum = 255;
constexpr uint32_t indexChosenByCaller = 0x80;

bool isLongerThan(const char *text, uint32_t maximum) {
    return strnlen(text, maximum + 1) > maximum;
}

// Each choice of a collation replaces whatever an earlier one stored.
void chooseACS(VantrelIndexAttributes *attributes, VantrelACSMode mode, uint32_t number) {
    memset(attributes->acsBlock, 0, sizeof attributes->acsBlock);
    storeI32(attributes->acsMode, mode);
    storeU32(attributes->acsNumber, number);
}

// Named and user-defined sequences have one mode and are told apart by the signature.
void chooseACSBlock(VantrelIndexAttributes *attributes, ACSSignature signature, const char *name) {
    chooseACS(attributes, VANTREL_ACS_MODE_NAMED, 0);
    attributes->acsBlock[0] = signature;
    memcpy(attributes->acsBlock + 1, name, strlen(name));
}

VantrelStatus stampIndexSettings(const VantrelIndexAttributes *attributes, KeySpecification *segment) {
    VantrelStatus status = keySegmentSetDuplicateMode(segment, loadI32(attributes->duplicateMode));
    if (status == VANTREL_STATUS_NO_ERROR)
        status = keySegmentSetModifiable(segment, loadU16(attributes->modifiable));
    if (status == VANTREL_STATUS_NO_ERROR)
        status = keySegmentSetACSMode(segment, loadI32(attributes->acsMode));
    if (status == VANTREL_STATUS_NO_ERROR)
        status = keySegmentSetACSNumber(segment, loadU32(attributes->acsNumber));
    return status;
}

VantrelStatus extendLength(uint32_t *dataLength, uint32_t size, uint32_t capacity) {
    *dataLength += size;
    return *dataLength > capacity ? VANTREL_STATUS_DATA_LENGTH_ERROR : VANTREL_STATUS_NO_ERROR;
}

}  // namespace

namespace vantrel {

VantrelStatus writeIndexDefinition(VantrelIndexAttributes *attributes, uint8_t *output, uint32_t capacity,
                                   uint32_t *dataLength, int32_t *keyNumber) {
    int32_t segmentCount = loadI32(attributes->segmentCount);
    if (segmentCount > segmentMaximum)
        return VANTREL_STATUS_DATA_LENGTH_ERROR;
    for (int32_t i = 0; i < segmentCount; ++i) {
        KeySpecification *segment = &attributes->segments[i];
        VantrelStatus status = stampIndexSettings(attributes, segment);
        if (status == VANTREL_STATUS_NO_ERROR)
            status = extendLength(dataLength, sizeof *segment, capacity);
        if (status != VANTREL_STATUS_NO_ERROR)
            return status;
        memcpy(output, segment, sizeof *segment);
        output += sizeof *segment;
    }
    if (attributes->acsBlock[0] != 0) {
        VantrelStatus status = extendLength(dataLength, acsBlockSize, capacity);
        if (status != VANTREL_STATUS_NO_ERROR)
            return status;
        memcpy(output, attributes->acsBlock, acsBlockSize);
    }
    if (loadU16(attributes->indexGiven) == 1)
        *keyNumber = static_cast<int32_t>(loadU32(attributes->index) | indexChosenByCaller);
    return VANTREL_STATUS_NO_ERROR;
}

VantrelStatus fileIndexCreateHelper(VantrelIndexAttributes *attributes, uint8_t *output, uint32_t capacity,
                                    uint32_t *dataLength, int32_t *keyNumber) {
    uint32_t segmentBytes = loadU32(attributes->segmentCount) * uint32_t{sizeof(KeySpecification)};
    VantrelStatus status = extendLength(dataLength, segmentBytes, capacity);
    if (status != VANTREL_STATUS_NO_ERROR)
        return status;
    return writeIndexDefinition(attributes, output, capacity, dataLength, keyNumber);
}

}  // namespace vantrel

VantrelStatus VantrelIndexAttributesAllocate(VantrelIndexAttributes **attributes) {
    VantrelStatus status = allocateRecord(attributes);
    if (status == VANTREL_STATUS_NO_ERROR)
        storeU16((*attributes)->modifiable, 1);
    return status;
}

VantrelStatus VantrelIndexAttributesFree(VantrelIndexAttributes *attributes) {
    free(attributes);
    return VANTREL_STATUS_NO_ERROR;
}

VantrelStatus VantrelIndexAttributesAddKeySegment(VantrelIndexAttributes *attributes,
                                                  const VantrelKeySegment *segment) {
    if (attributes == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    if (segment == nullptr)
        return keepStatus(attributes, VANTREL_STATUS_INVALID_POINTER_PARAMETER);
    int32_t segmentCount = loadI32(attributes->segmentCount);
    if (segmentCount >= segmentMaximum)
        return VANTREL_STATUS_NO_OPERATING_SYSTEM_MEMORY_AVAILABLE;
    if (segmentCount > 0)
        assignFlag(attributes->segments[segmentCount - 1].flags, keyFlagContinues, true);
    attributes->segments[segmentCount] = segment->specification;
    storeI32(attributes->segmentCount, segmentCount + 1);
    return VANTREL_STATUS_NO_ERROR;
}

VantrelStatus VantrelIndexAttributesSetIndex(VantrelIndexAttributes *attributes, VantrelIndex index) {
    if (attributes == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    if (indexIsOutOfRange(index))
        return VANTREL_STATUS_INVALID_OPTION;
    storeU16(attributes->indexGiven, 1);
    storeI32(attributes->index, index);
    return VANTREL_STATUS_NO_ERROR;
}

VantrelStatus VantrelIndexAttributesSetDuplicateMode(VantrelIndexAttributes *attributes,
                                                     VantrelDuplicateMode mode) {
    if (attributes == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    if (mode < VANTREL_DUPLICATE_MODE_NOT_ALLOWED || mode > VANTREL_DUPLICATE_MODE_ALLOWED_REPEATING)
        return VANTREL_STATUS_INVALID_OPTION;
    storeI32(attributes->duplicateMode, mode);
    return VANTREL_STATUS_NO_ERROR;
}

VantrelStatus VantrelIndexAttributesSetModifiable(VantrelIndexAttributes *attributes, int32_t isModifiable) {
    if (attributes == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    storeU16(attributes->modifiable, isModifiable != 0);
    return VANTREL_STATUS_NO_ERROR;
}

VantrelStatus VantrelIndexAttributesSetACSName(VantrelIndexAttributes *attributes, const char *name) {
    if (attributes == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    if (name == nullptr)
        return keepStatus(attributes, VANTREL_STATUS_INVALID_POINTER_PARAMETER);
    if (isLongerThan(name, acsNameMaximum))
        return VANTREL_STATUS_DATA_LENGTH_ERROR;
    chooseACSBlock(attributes, acsNamed, name);
    return VANTREL_STATUS_NO_ERROR;
}

VantrelStatus VantrelIndexAttributesSetACSUserDefined(VantrelIndexAttributes *attributes, const char *name,
                                                      const void *table, int32_t tableLength) {
    if (attributes == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    if (name == nullptr || table == nullptr)
        return keepStatus(attributes, VANTREL_STATUS_INVALID_POINTER_PARAMETER);
    if (isLongerThan(name, acsUserDefinedNameMaximum) || tableLength != acsTableSize)
        return VANTREL_STATUS_DATA_LENGTH_ERROR;
    chooseACSBlock(attributes, acsUserDefined, name);
    memcpy(attributes->acsBlock + 1 + acsUserDefinedNameMaximum, table, acsTableSize);
    return VANTREL_STATUS_NO_ERROR;
}

VantrelStatus VantrelIndexAttributesSetACSNumber(VantrelIndexAttributes *attributes, int32_t number) {
    if (attributes == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    if (static_cast<uint32_t>(number) > acsNumberMaximum)
        return VANTREL_STATUS_INVALID_OPTION;
    chooseACS(attributes, VANTREL_ACS_MODE_NUMBERED, static_cast<uint32_t>(number));
    return VANTREL_STATUS_NO_ERROR;
}

VantrelStatus VantrelIndexAttributesSetACSMode(VantrelIndexAttributes *attributes, VantrelACSMode mode) {
    if (attributes == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    bool needsNameOrNumber = mode == VANTREL_ACS_MODE_NAMED || mode == VANTREL_ACS_MODE_NUMBERED;
    if (needsNameOrNumber || mode < VANTREL_ACS_MODE_NONE || mode > VANTREL_ACS_MODE_DEFAULT)
        return VANTREL_STATUS_INVALID_OPTION;
    chooseACS(attributes, mode, 0);
    return VANTREL_STATUS_NO_ERROR;
}
