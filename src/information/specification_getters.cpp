#include "information/getters.h"

using namespace vantrel;

int32_t VantrelFileInformationGetFixedRecordLength(VantrelFileInformation *information) {
    return getNumber(information, &FileSpecification::recordLength);
}

VantrelPageSize VantrelFileInformationGetPageSize(VantrelFileInformation *information) {
    return getEnumeration(information, &FileSpecification::pageSize, pageSizeMap);
}

int32_t VantrelFileInformationGetIndexCount(VantrelFileInformation *information) {
    if (information == nullptr)
        return noValue;
    return static_cast<int16_t>(loadU16(readReply<FileSpecification>(information).indexCount));
}

VantrelFileVersion VantrelFileInformationGetFileVersion(VantrelFileInformation *information) {
    return getEnumeration(information, &FileSpecification::version, fileVersionMap);
}

int64_t VantrelFileInformationGetRecordCount(VantrelFileInformation *information) {
    return getNumber(information, &FileSpecification::recordCount);
}

int32_t VantrelFileInformationGetKeyOnly(VantrelFileInformation *information) {
    return getFlag(information, &FileSpecification::flags, fileFlagKeyOnly);
}

int32_t VantrelFileInformationGetBalancedIndexes(VantrelFileInformation *information) {
    return getFlag(information, &FileSpecification::flags, fileFlagBalancedIndexes);
}

int32_t VantrelFileInformationGetPagePreallocation(VantrelFileInformation *information) {
    return getFlag(information, &FileSpecification::flags, fileFlagPagePreallocation);
}

int32_t VantrelFileInformationGetPageCompression(VantrelFileInformation *information) {
    return getFlag(information, &FileSpecification::flags, fileFlagPageCompression);
}

int32_t VantrelFileInformationGetUnusedDuplicatePointerCount(VantrelFileInformation *information) {
    return getNumber(information, &FileSpecification::duplicatePointerCount);
}

int32_t VantrelFileInformationGetUnusedPageCount(VantrelFileInformation *information) {
    return getNumber(information, &FileSpecification::pageCount);
}

VantrelFreeSpaceThreshold VantrelFileInformationGetFreeSpaceThreshold(VantrelFileInformation *information) {
    return getEnumeration(information, &FileSpecification::flags, freeSpaceThresholdMap);
}

VantrelVariableLengthRecordsMode VantrelFileInformationGetVariableLengthRecordsMode(
    VantrelFileInformation *information) {
    return getEnumeration(information, &FileSpecification::flags, variableLengthRecordsMap);
}

VantrelRecordCompressionMode VantrelFileInformationGetRecordCompressionMode(
    VantrelFileInformation *information) {
    return getEnumeration(information, &FileSpecification::flags, recordCompressionMap);
}

VantrelSystemDataMode VantrelFileInformationGetSystemDataMode(VantrelFileInformation *information) {
    return getEnumeration(information, &FileSpecification::flags, systemDataMap);
}

int32_t VantrelFileInformationGetSegmented(VantrelFileInformation *information) {
    return getFlag(information, &StatisticsKey::isSegmented);
}
