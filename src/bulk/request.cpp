#include "bulk/request.h"

#include <algorithm>
#include <cstring>

namespace vantrel {

namespace {

// Hands out the area piece by piece.
class RequestArea {
  public:
    explicit RequestArea(uint8_t (&area)[bulkAreaSize]) : bytes_(area) {}

    // The next bytes of the request, or null where the area has not as many left.
    uint8_t *take(uint32_t length) {
        if (length > bulkAreaSize - used_)
            return nullptr;
        used_ += length;
        return bytes_ + used_ - length;
    }

    VantrelStatus put(const void *bytes, uint32_t length) {
        uint8_t *target = take(length);
        if (target == nullptr)
            return VANTREL_STATUS_DATA_LENGTH_ERROR;
        memcpy(target, bytes, length);
        return VANTREL_STATUS_NO_ERROR;
    }

    uint32_t used() const { return used_; }

  private:
    uint8_t *bytes_;
    uint32_t used_ = 0;
};

// What the extractor asks for, and how long each record of the reply is at most.
struct Extractor {
    uint32_t recordCount;
    uint32_t replyRecordLength;
    uint32_t entryCount;
    const uint8_t *entries;
};

// All but the request length in front, which is known last.
void putHeader(RequestArea &area, const BulkAttributes &attributes) {
    uint8_t *header = area.take(8);
    memcpy(header + 2, attributes.signature, 2);
    memcpy(header + 4, attributes.maximumRejectCount, 2);
    memcpy(header + 6, attributes.filterCount, 2);
}

// The pattern is the constant up to its first zero byte, or all of it, and a terminator.
VantrelStatus putPattern(RequestArea &area, const FilterSlot &filter) {
    const uint8_t *constant = constantOf(filter);
    if (filter.patternSubCode < 1 || filter.patternSubCode > patternSubCodes || constant == nullptr)
        return VANTREL_STATUS_INVALID_OPTION;
    auto length = static_cast<uint32_t>(
        strnlen(reinterpret_cast<const char *>(constant), loadU16(filter.constantLength)));
    if (length + 1 >= lengthLimit)
        return VANTREL_STATUS_DATA_LENGTH_ERROR;
    uint8_t *pattern = area.take(3 + length + 1);
    if (pattern == nullptr)
        return VANTREL_STATUS_DATA_LENGTH_ERROR;
    pattern[0] = filter.patternSubCode;
    storeU16(pattern + 1, static_cast<uint16_t>(length + 1));
    memcpy(pattern + 3, constant, length);
    pattern[3 + length] = 0;
    return VANTREL_STATUS_NO_ERROR;
}

// The size of the field's values: the low byte of a system field's length.
uint16_t valueSize(const FilterSlot &filter) {
    constexpr uint16_t lastPlainOffset = 65530;
    uint16_t length = loadU16(filter.fieldLength);
    bool isSystemField = loadU16(filter.fieldOffset) > lastPlainOffset && length >> 8 == 0xFF;
    return isSystemField ? length & 0xFF : length;
}

VantrelStatus putComparand(RequestArea &area, const FilterSlot &filter) {
    if ((filter.comparisonFlags & comparisonCodeMask) == patternComparison)
        return putPattern(area, filter);
    if (loadU16(filter.constantIsSet) == 1) {
        uint16_t length = loadU16(filter.constantLength);
        if (length != valueSize(filter) || constantOf(filter) == nullptr)
            return VANTREL_STATUS_INVALID_OPTION;
        return area.put(constantOf(filter), length);
    }
    if (loadU16(filter.otherFieldIsSet) == 1)
        return area.put(filter.otherFieldOffset, sizeof filter.otherFieldOffset);
    return VANTREL_STATUS_INVALID_OPTION;
}

VantrelStatus putCollation(RequestArea &area, const FilterSlot &filter) {
    uint32_t length;
    switch (filter.collationMarker) {
        case noCollation:
            return VANTREL_STATUS_NO_ERROR;
        case userDefinedCollationName:
            length = userDefinedNameSize;
            break;
        case collationName:
        case codePageName:
            length = nameSize;
            break;
        default:
            return VANTREL_STATUS_INTERNAL_ERROR;
    }
    VantrelStatus status = area.put(&filter.collationMarker, 1);
    return status != VANTREL_STATUS_NO_ERROR ? status : area.put(filter.collationName, length);
}

VantrelStatus putTerm(RequestArea &area, const FilterSlot &filter) {
    uint8_t *term = area.take(7);
    if (term == nullptr)
        return VANTREL_STATUS_DATA_LENGTH_ERROR;
    term[0] = filter.fieldType;
    memcpy(term + 1, filter.fieldLength, 2);
    memcpy(term + 3, filter.fieldOffset, 2);
    term[5] = filter.comparisonFlags;
    term[6] = filter.connector;
    if (loadU16(filter.comparisonIsSet) != 1)
        return VANTREL_STATUS_INVALID_OPTION;
    VantrelStatus status = putComparand(area, filter);
    return status != VANTREL_STATUS_NO_ERROR ? status : putCollation(area, filter);
}

VantrelStatus putExtractor(RequestArea &area, const Extractor &extractor) {
    uint8_t *counts = area.take(4);
    if (counts == nullptr)
        return VANTREL_STATUS_DATA_LENGTH_ERROR;
    storeU16(counts, static_cast<uint16_t>(extractor.recordCount));
    storeU16(counts + 2, static_cast<uint16_t>(extractor.entryCount));
    if (extractor.entryCount == 0)
        return VANTREL_STATUS_NO_ERROR;
    return area.put(extractor.entries, 4 * extractor.entryCount);
}

VantrelStatus putRequest(uint8_t (&bytes)[bulkAreaSize], const BulkAttributes &attributes,
                         const Extractor &extractor, uint32_t *dataLength) {
    RequestArea area(bytes);
    putHeader(area, attributes);
    VantrelStatus status = VANTREL_STATUS_NO_ERROR;
    uint32_t filterCount = loadU16(attributes.filterCount);
    for (uint32_t filter = 0; filter < filterCount && status == VANTREL_STATUS_NO_ERROR; ++filter)
        status = putTerm(area, attributes.filters[filter]);
    if (status == VANTREL_STATUS_NO_ERROR)
        status = putExtractor(area, extractor);
    if (status != VANTREL_STATUS_NO_ERROR)
        return status;
    storeU16(bytes, static_cast<uint16_t>(area.used()));
    *dataLength =
        std::max(firstReplyRecord + extractor.recordCount * extractor.replyRecordLength, area.used());
    return VANTREL_STATUS_NO_ERROR;
}

}  // namespace

VantrelStatus writeRequest(uint8_t (&area)[bulkAreaSize], const VantrelBulkRetrieveAttributes &attributes,
                           uint32_t *dataLength) {
    uint32_t replyRecordLength = loadU32(attributes.extractedLength) + replyRecordHead;
    uint32_t fitting = (bulkAreaSize - firstReplyRecord) / replyRecordLength;
    uint32_t wanted = loadU16(attributes.maximumRecordCount);
    Extractor extractor = {std::min(wanted, fitting), replyRecordLength, loadU16(attributes.entryCount),
                           attributes.entries[0]};
    return putRequest(area, attributes, extractor, dataLength);
}

VantrelStatus writeRequest(uint8_t (&area)[bulkAreaSize], const VantrelBulkDeleteAttributes &attributes,
                           uint32_t *dataLength) {
    Extractor extractor = {loadU16(attributes.maximumRecordCount), replyRecordHead, 0, nullptr};
    return putRequest(area, attributes, extractor, dataLength);
}

}  // namespace vantrel
