#include <cstddef>

#include "bulk/attributes.h"
#include "engine/status.h"
#include "engine/translation.h"

using namespace vantrel;

namespace {

// One entry of the extractor. The offset may also be a marker, a system field, two letters or a precision.
struct Entry {
    uint16_t length;
    uint16_t offset;
};

constexpr uint16_t letters(const char (&text)[3]) {
    return static_cast<uint16_t>(text[0] | text[1] << 8);
}

// What an aggregate or a field function starts with.
struct Function {
    uint16_t marker;
    uint16_t name;
};

constexpr uint16_t markerLength = 0xFF00;
constexpr uint16_t aggregateMarker = 0xFFF9;
constexpr uint16_t functionMarker = 0xFFFA;
constexpr Function minimum = {aggregateMarker, letters("MI")};
constexpr Function maximum = {aggregateMarker, letters("MA")};
constexpr Function absoluteValue = {functionMarker, letters("AV")};
constexpr Function ceiling = {functionMarker, letters("CE")};
constexpr Function roundDown = {functionMarker, letters("FL")};
constexpr Function roundToPrecision = {functionMarker, letters("RO")};
constexpr Function truncateToPrecision = {functionMarker, letters("TR")};

bool entriesDoNotFit(const VantrelBulkRetrieveAttributes *attributes, uint32_t count) {
    return loadU16(attributes->entryCount) + count > entryLimit;
}

bool extractedLengthIsOutOfRange(const VantrelBulkRetrieveAttributes *attributes, uint32_t length) {
    return loadU32(attributes->extractedLength) + length >= lengthLimit;
}

template <size_t count>
VantrelStatus append(VantrelBulkRetrieveAttributes *attributes, const Entry (&entries)[count],
                     uint32_t length) {
    uint32_t used = loadU16(attributes->entryCount);
    for (const Entry &entry : entries) {
        storeU16(attributes->entries[used], entry.length);
        storeU16(attributes->entries[used] + 2, entry.offset);
        ++used;
    }
    storeU16(attributes->entryCount, static_cast<uint16_t>(used));
    storeU32(attributes->extractedLength, loadU32(attributes->extractedLength) + length);
    return VANTREL_STATUS_NO_ERROR;
}

// The checks of everything that is computed from a field, in their order, and its engine type.
VantrelStatus checkComputedField(const VantrelBulkRetrieveAttributes *attributes, uint32_t entryCount,
                                 VantrelDataType dataType, uint32_t offset, uint32_t length,
                                 uint16_t *engineType) {
    if (attributes == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    if (entriesDoNotFit(attributes, entryCount))
        return VANTREL_STATUS_NO_OPERATING_SYSTEM_MEMORY_AVAILABLE;
    VantrelStatus status = setDataType(engineType, dataType);
    if (status != VANTREL_STATUS_NO_ERROR)
        return status;
    if (fieldIsOutOfRange(offset, length) || extractedLengthIsOutOfRange(attributes, length))
        return VANTREL_STATUS_INVALID_OPTION;
    return VANTREL_STATUS_NO_ERROR;
}

VantrelStatus addComputedField(VantrelBulkRetrieveAttributes *attributes, Function function,
                               VantrelDataType dataType, uint32_t offset, uint32_t length) {
    uint16_t engineType;
    VantrelStatus status = checkComputedField(attributes, 3, dataType, offset, length, &engineType);
    if (status != VANTREL_STATUS_NO_ERROR)
        return status;
    const Entry entries[] = {{markerLength, function.marker},
                             {engineType, function.name},
                             {static_cast<uint16_t>(length), static_cast<uint16_t>(offset)}};
    return append(attributes, entries, length);
}

VantrelStatus addRoundedField(VantrelBulkRetrieveAttributes *attributes, Function function,
                              VantrelDataType dataType, uint32_t offset, uint32_t length, int32_t precision) {
    uint16_t engineType;
    VantrelStatus status = checkComputedField(attributes, 4, dataType, offset, length, &engineType);
    if (status != VANTREL_STATUS_NO_ERROR)
        return status;
    if (precision < INT16_MIN || precision > INT16_MAX)
        return VANTREL_STATUS_INVALID_OPTION;
    const Entry entries[] = {{markerLength, function.marker},
                             {engineType, function.name},
                             {static_cast<uint16_t>(length), static_cast<uint16_t>(offset)},
                             {0, static_cast<uint16_t>(precision)}};
    return append(attributes, entries, length);
}

}  // namespace

VantrelStatus VantrelBulkRetrieveAttributesAddField(VantrelBulkRetrieveAttributes *attributes,
                                                    uint32_t offset, uint32_t length) {
    if (attributes == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    if (entriesDoNotFit(attributes, 1))
        return VANTREL_STATUS_NO_OPERATING_SYSTEM_MEMORY_AVAILABLE;
    if (fieldIsOutOfRange(offset, length) || extractedLengthIsOutOfRange(attributes, length))
        return VANTREL_STATUS_INVALID_OPTION;
    const Entry entries[] = {{static_cast<uint16_t>(length), static_cast<uint16_t>(offset)}};
    return append(attributes, entries, length);
}

VantrelStatus VantrelBulkRetrieveAttributesAddSystemField(VantrelBulkRetrieveAttributes *attributes,
                                                          VantrelSystemField systemField) {
    if (attributes == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    if (entriesDoNotFit(attributes, 1))
        return VANTREL_STATUS_NO_OPERATING_SYSTEM_MEMORY_AVAILABLE;
    if (extractedLengthIsOutOfRange(attributes, systemFieldSize))
        return VANTREL_STATUS_INVALID_OPTION;
    uint16_t offset;
    VantrelStatus status = setSystemFieldOffset(&offset, systemField);
    if (status != VANTREL_STATUS_NO_ERROR)
        return status;
    const Entry entries[] = {{systemFieldLength, offset}};
    return append(attributes, entries, systemFieldSize);
}

VantrelStatus VantrelBulkRetrieveAttributesAddMinimumAggregate(VantrelBulkRetrieveAttributes *attributes,
                                                               VantrelDataType dataType, uint32_t offset,
                                                               uint32_t length) {
    return addComputedField(attributes, minimum, dataType, offset, length);
}

VantrelStatus VantrelBulkRetrieveAttributesAddMaximumAggregate(VantrelBulkRetrieveAttributes *attributes,
                                                               VantrelDataType dataType, uint32_t offset,
                                                               uint32_t length) {
    return addComputedField(attributes, maximum, dataType, offset, length);
}

VantrelStatus VantrelBulkRetrieveAttributesAddAbsoluteValueField(VantrelBulkRetrieveAttributes *attributes,
                                                                 VantrelDataType dataType, uint32_t offset,
                                                                 uint32_t length) {
    return addComputedField(attributes, absoluteValue, dataType, offset, length);
}

VantrelStatus VantrelBulkRetrieveAttributesAddCeilingField(VantrelBulkRetrieveAttributes *attributes,
                                                           VantrelDataType dataType, uint32_t offset,
                                                           uint32_t length) {
    return addComputedField(attributes, ceiling, dataType, offset, length);
}

VantrelStatus VantrelBulkRetrieveAttributesAddFloorField(VantrelBulkRetrieveAttributes *attributes,
                                                         VantrelDataType dataType, uint32_t offset,
                                                         uint32_t length) {
    return addComputedField(attributes, roundDown, dataType, offset, length);
}

VantrelStatus VantrelBulkRetrieveAttributesAddRoundField(VantrelBulkRetrieveAttributes *attributes,
                                                         VantrelDataType dataType, uint32_t offset,
                                                         uint32_t length, int32_t precision) {
    return addRoundedField(attributes, roundToPrecision, dataType, offset, length, precision);
}

VantrelStatus VantrelBulkRetrieveAttributesAddTruncateField(VantrelBulkRetrieveAttributes *attributes,
                                                            VantrelDataType dataType, uint32_t offset,
                                                            uint32_t length, int32_t precision) {
    return addRoundedField(attributes, truncateToPrecision, dataType, offset, length, precision);
}
