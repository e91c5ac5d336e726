#include "definition/file_attributes.h"

#include <cstdlib>

#include "definition/enumeration_maps.h"
#include "engine/bytes.h"
#include "engine/status.h"

using namespace vantrel;

namespace {

constexpr uint32_t u16Maximum = 65535;
constexpr uint32_t byteMaximum = 255;
constexpr uint16_t defaultPageSize = 4096;

VantrelStatus setFlag(VantrelFileAttributes *attributes, uint16_t flag, int32_t isSet) {
    if (attributes == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    assignFlag(attributes->specification.flags, flag, isSet != 0);
    return VANTREL_STATUS_NO_ERROR;
}

template <size_t count>
VantrelStatus setFlagEnumeration(VantrelFileAttributes *attributes, const EnumerationMap<count> &map,
                                 int32_t value) {
    if (attributes == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    return encodeEnumeration(map, value, attributes->specification.flags);
}

}  // namespace

VantrelStatus VantrelFileAttributesAllocate(VantrelFileAttributes **attributes) {
    VantrelStatus status = allocateRecord(attributes);
    if (status == VANTREL_STATUS_NO_ERROR)
        storeU16((*attributes)->specification.pageSize, defaultPageSize);
    return status;
}

VantrelStatus VantrelFileAttributesFree(VantrelFileAttributes *attributes) {
    free(attributes);
    return VANTREL_STATUS_NO_ERROR;
}

VantrelStatus VantrelFileAttributesSetFixedRecordLength(VantrelFileAttributes *attributes, int32_t length) {
    if (attributes == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    if (static_cast<uint32_t>(length) > u16Maximum)
        return VANTREL_STATUS_INVALID_OPTION;
    storeU16(attributes->specification.recordLength, static_cast<uint16_t>(length));
    return VANTREL_STATUS_NO_ERROR;
}

VantrelStatus VantrelFileAttributesSetPageSize(VantrelFileAttributes *attributes, VantrelPageSize pageSize,
                                               int32_t isCompressed) {
    if (attributes == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    FileSpecification &specification = attributes->specification;
    VantrelStatus status = encodeEnumeration(pageSizeMap, pageSize, specification.pageSize);
    if (status != VANTREL_STATUS_NO_ERROR)
        return status;
    assignFlag(specification.flags, fileFlagPageCompression, isCompressed != 0);
    specification.pageCompression = isCompressed != 0;
    return VANTREL_STATUS_NO_ERROR;
}

VantrelStatus VantrelFileAttributesSetFileVersion(VantrelFileAttributes *attributes,
                                                  VantrelFileVersion version) {
    if (attributes == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    return encodeEnumeration(fileVersionMap, version, attributes->specification.version);
}

VantrelStatus VantrelFileAttributesSetReservedDuplicatePointerCount(VantrelFileAttributes *attributes,
                                                                    int32_t count) {
    if (attributes == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    if (static_cast<uint32_t>(count) > byteMaximum)
        return VANTREL_STATUS_INVALID_OPTION;
    FileSpecification &specification = attributes->specification;
    specification.duplicatePointerCount = static_cast<uint8_t>(count);
    assignFlag(specification.flags, fileFlagDuplicatePointers, count != 0);
    return VANTREL_STATUS_NO_ERROR;
}

VantrelStatus VantrelFileAttributesSetPreallocatedPageCount(VantrelFileAttributes *attributes,
                                                            int32_t count) {
    if (attributes == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    if (static_cast<uint32_t>(count) > u16Maximum)
        return VANTREL_STATUS_INVALID_OPTION;
    FileSpecification &specification = attributes->specification;
    storeU16(specification.pageCount, static_cast<uint16_t>(count));
    assignFlag(specification.flags, fileFlagPagePreallocation, count != 0);
    return VANTREL_STATUS_NO_ERROR;
}

VantrelStatus VantrelFileAttributesSetRecordCompressionMode(VantrelFileAttributes *attributes,
                                                            VantrelRecordCompressionMode mode) {
    return setFlagEnumeration(attributes, recordCompressionMap, mode);
}

VantrelStatus VantrelFileAttributesSetBalancedIndexes(VantrelFileAttributes *attributes,
                                                      int32_t areBalanced) {
    return setFlag(attributes, fileFlagBalancedIndexes, areBalanced);
}

VantrelStatus VantrelFileAttributesSetSystemDataMode(VantrelFileAttributes *attributes,
                                                     VantrelSystemDataMode mode) {
    return setFlagEnumeration(attributes, systemDataMap, mode);
}

VantrelStatus VantrelFileAttributesSetVariableLengthRecordsMode(VantrelFileAttributes *attributes,
                                                                VantrelVariableLengthRecordsMode mode) {
    return setFlagEnumeration(attributes, variableLengthRecordsMap, mode);
}

VantrelStatus VantrelFileAttributesSetFreeSpaceThreshold(VantrelFileAttributes *attributes,
                                                         VantrelFreeSpaceThreshold threshold) {
    return setFlagEnumeration(attributes, freeSpaceThresholdMap, threshold);
}

VantrelStatus VantrelFileAttributesSetKeyOnly(VantrelFileAttributes *attributes, int32_t isKeyOnly) {
    return setFlag(attributes, fileFlagKeyOnly, isKeyOnly);
}
