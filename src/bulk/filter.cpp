#include "bulk/filter.h"

#include <cstdlib>
#include <cstring>

#include "engine/status.h"
#include "engine/translation.h"

using namespace vantrel;

namespace vantrel {

VantrelStatus setSystemFieldOffset(uint16_t *offset, VantrelSystemField systemField) {
    switch (systemField) {
        case VANTREL_SYSTEM_FIELD_CREATE_TIME:
            *offset = 0xFFFE;
            return VANTREL_STATUS_NO_ERROR;
        case VANTREL_SYSTEM_FIELD_UPDATE_TIME:
            *offset = 0xFFFB;
            return VANTREL_STATUS_NO_ERROR;
        default:
            return VANTREL_STATUS_INVALID_OPTION;
    }
}

bool offsetIsOutOfRange(uint32_t offset) {
    return offset >= lengthLimit - 1;
}

bool fieldIsOutOfRange(uint32_t offset, uint32_t length) {
    return offsetIsOutOfRange(offset) || length >= lengthLimit || offset + length >= lengthLimit;
}

}  // namespace vantrel

namespace {

void releaseConstant(FilterSlot &slot) {
    free(constantOf(slot));
    setConstant(slot, nullptr);
}

// Gives the constant room for length bytes; without memory the filter has no constant any more. At least one
// byte is asked for: resizing to none would free the constant and look like a failure.
uint8_t *resizeConstant(FilterSlot &slot, uint32_t length) {
    uint8_t *constant = constantOf(slot);
    uint32_t size = length == 0 ? 1 : length;
    void *resized = constant == nullptr ? calloc(1, size) : realloc(constant, size);
    if (resized == nullptr)
        free(constant);
    setConstant(slot, static_cast<uint8_t *>(resized));
    return constantOf(slot);
}

// Each way of comparing text replaces the others.
void setCollation(FilterSlot &slot, uint8_t flag) {
    slot.collationMarker = noCollation;
    memset(slot.collationName, 0, sizeof slot.collationName);
    slot.comparisonFlags &= static_cast<uint8_t>(~(collationFollows | defaultCollation | caseInsensitive));
    slot.comparisonFlags |= flag;
}

VantrelStatus setNamedCollation(VantrelFilter *filter, CollationMarker marker, const char *name,
                                uint32_t limit) {
    if (filter == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    if (name == nullptr)
        return keepStatus(filter, VANTREL_STATUS_INVALID_POINTER_PARAMETER);
    size_t length = strnlen(name, limit + 1);
    if (length > limit)
        return VANTREL_STATUS_DATA_LENGTH_ERROR;
    setCollation(filter->slot, collationFollows);
    filter->slot.collationMarker = marker;
    memcpy(filter->slot.collationName, name, length);
    return VANTREL_STATUS_NO_ERROR;
}

}  // namespace

VantrelStatus VantrelFilterAllocate(VantrelFilter **filter) {
    return allocateRecord(filter);
}

VantrelStatus VantrelFilterFree(VantrelFilter *filter) {
    if (filter == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    releaseConstant(filter->slot);
    free(filter);
    return VANTREL_STATUS_NO_ERROR;
}

VantrelStatus VantrelFilterSetField(VantrelFilter *filter, uint32_t offset, uint32_t length,
                                    VantrelDataType dataType) {
    if (filter == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    if (fieldIsOutOfRange(offset, length))
        return VANTREL_STATUS_INVALID_OPTION;
    // The field moves even where its type is then refused.
    storeU16(filter->slot.fieldOffset, static_cast<uint16_t>(offset));
    storeU16(filter->slot.fieldLength, static_cast<uint16_t>(length));
    uint16_t engineType;
    VantrelStatus status = setDataType(&engineType, dataType);
    if (status != VANTREL_STATUS_NO_ERROR)
        return status;
    filter->slot.fieldType = static_cast<uint8_t>(engineType);
    return VANTREL_STATUS_NO_ERROR;
}

VantrelStatus VantrelFilterSetSystemField(VantrelFilter *filter, VantrelSystemField systemField) {
    constexpr uint8_t systemFieldType = 32;
    if (filter == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    uint16_t offset;
    VantrelStatus status = setSystemFieldOffset(&offset, systemField);
    if (status != VANTREL_STATUS_NO_ERROR)
        return status;
    filter->slot.fieldType = systemFieldType;
    storeU16(filter->slot.fieldLength, systemFieldLength);
    storeU16(filter->slot.fieldOffset, offset);
    return VANTREL_STATUS_NO_ERROR;
}

VantrelStatus VantrelFilterSetComparison(VantrelFilter *filter, VantrelComparison comparison) {
    if (filter == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    FilterSlot &slot = filter->slot;
    slot.patternSubCode = 0;
    if (comparison < VANTREL_COMPARISON_NONE || comparison > VANTREL_COMPARISON_REGULAR_EXPRESSION)
        return VANTREL_STATUS_INVALID_OPTION;
    auto code = static_cast<uint8_t>(comparison);
    if (code >= patternComparison) {
        slot.patternSubCode = static_cast<uint8_t>(code - patternComparison + 1);
        code = patternComparison;
    }
    slot.comparisonFlags = static_cast<uint8_t>((slot.comparisonFlags & ~comparisonCodeMask) | code);
    storeU16(slot.comparisonIsSet, 1);
    return VANTREL_STATUS_NO_ERROR;
}

VantrelStatus VantrelFilterSetConnector(VantrelFilter *filter, VantrelConnector connector) {
    if (filter == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    if (connector < VANTREL_CONNECTOR_LAST || connector > VANTREL_CONNECTOR_OR)
        return VANTREL_STATUS_INVALID_OPTION;
    filter->slot.connector = static_cast<uint8_t>(connector);
    return VANTREL_STATUS_NO_ERROR;
}

VantrelStatus VantrelFilterSetComparisonConstant(VantrelFilter *filter, const void *constant,
                                                 uint32_t length) {
    if (filter == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    if (length >= lengthLimit)
        return VANTREL_STATUS_INVALID_OPTION;
    FilterSlot &slot = filter->slot;
    uint8_t *copy = resizeConstant(slot, length);
    if (copy == nullptr)
        return VANTREL_STATUS_NO_OPERATING_SYSTEM_MEMORY_AVAILABLE;
    if (constant == nullptr)
        memset(copy, 0, length);
    else
        memcpy(copy, constant, length);
    storeU16(slot.constantLength, static_cast<uint16_t>(length));
    storeU16(slot.constantIsSet, 1);
    storeU16(slot.otherFieldIsSet, 0);
    storeU16(slot.otherFieldOffset, 0);
    slot.comparisonFlags &= static_cast<uint8_t>(~comparesWithField);
    return VANTREL_STATUS_NO_ERROR;
}

VantrelStatus VantrelFilterSetComparisonField(VantrelFilter *filter, uint32_t offset) {
    if (filter == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    if (offsetIsOutOfRange(offset))
        return VANTREL_STATUS_INVALID_OPTION;
    FilterSlot &slot = filter->slot;
    releaseConstant(slot);
    storeU16(slot.constantLength, 0);
    storeU16(slot.constantIsSet, 0);
    storeU16(slot.otherFieldIsSet, 1);
    storeU16(slot.otherFieldOffset, static_cast<uint16_t>(offset));
    slot.comparisonFlags |= comparesWithField;
    return VANTREL_STATUS_NO_ERROR;
}

VantrelStatus VantrelFilterSetACSUserDefined(VantrelFilter *filter, const char *name) {
    return setNamedCollation(filter, userDefinedCollationName, name, userDefinedNameSize);
}

VantrelStatus VantrelFilterSetACSName(VantrelFilter *filter, const char *name) {
    return setNamedCollation(filter, collationName, name, nameSize);
}

VantrelStatus VantrelFilterSetLikeCodePageName(VantrelFilter *filter, const char *name) {
    return setNamedCollation(filter, codePageName, name, nameSize);
}

VantrelStatus VantrelFilterSetACSMode(VantrelFilter *filter, VantrelACSMode mode) {
    if (filter == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    switch (mode) {
        case VANTREL_ACS_MODE_NONE:
            setCollation(filter->slot, 0);
            return VANTREL_STATUS_NO_ERROR;
        case VANTREL_ACS_MODE_CASE_INSENSITIVE:
            setCollation(filter->slot, caseInsensitive);
            return VANTREL_STATUS_NO_ERROR;
        case VANTREL_ACS_MODE_DEFAULT:
            setCollation(filter->slot, defaultCollation);
            return VANTREL_STATUS_NO_ERROR;
        default:
            return VANTREL_STATUS_INVALID_OPTION;
    }
}
