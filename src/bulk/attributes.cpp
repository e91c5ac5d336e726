#include "bulk/attributes.h"

#include <cstdlib>
#include <cstring>

#include "engine/status.h"

using namespace vantrel;

namespace vantrel {

void setSignature(BulkAttributes *attributes, const char *signature) {
    memcpy(attributes->signature, signature, sizeof attributes->signature);
}

}  // namespace vantrel

namespace {

template <class Attributes>
VantrelStatus allocateAttributes(Attributes **attributes) {
    VantrelStatus status = allocateRecord(attributes);
    if (status != VANTREL_STATUS_NO_ERROR)
        return status;
    setSignature(*attributes, startAtCurrentRecord);
    storeU16((*attributes)->maximumRecordCount, recordCountLimit);
    return VANTREL_STATUS_NO_ERROR;
}

VantrelStatus freeAttributes(BulkAttributes *attributes) {
    if (attributes == nullptr)
        return VANTREL_STATUS_NO_ERROR;
    uint32_t count = loadU16(attributes->filterCount);
    for (uint32_t filter = 0; filter < count; ++filter)
        free(constantOf(attributes->filters[filter]));
    free(attributes);
    return VANTREL_STATUS_NO_ERROR;
}

// A copy of the filter's constant; null without memory.
uint8_t *copyConstant(const FilterSlot &slot) {
    uint32_t length = loadU16(slot.constantLength);
    void *copy = calloc(1, length == 0 ? 1 : length);
    if (copy != nullptr)
        memcpy(copy, constantOf(slot), length);
    return static_cast<uint8_t *>(copy);
}

VantrelStatus addFilter(BulkAttributes *attributes, const VantrelFilter *filter) {
    if (attributes == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    if (filter == nullptr)
        return keepStatus(attributes, VANTREL_STATUS_INVALID_POINTER_PARAMETER);
    uint16_t count = loadU16(attributes->filterCount);
    if (count >= filterLimit)
        return VANTREL_STATUS_FILTER_LIMIT_EXCEEDED;
    uint8_t *constant = nullptr;
    if (constantOf(filter->slot) != nullptr) {
        constant = copyConstant(filter->slot);
        if (constant == nullptr)
            return VANTREL_STATUS_NO_OPERATING_SYSTEM_MEMORY_AVAILABLE;
    }
    FilterSlot &slot = attributes->filters[count];
    slot = filter->slot;
    setConstant(slot, constant);
    storeU16(attributes->filterCount, static_cast<uint16_t>(count + 1));
    return VANTREL_STATUS_NO_ERROR;
}

VantrelStatus setMaximumRecordCount(BulkAttributes *attributes, uint32_t count) {
    if (attributes == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    if (count == 0 || count > recordCountLimit)
        return VANTREL_STATUS_INVALID_OPTION;
    storeU16(attributes->maximumRecordCount, static_cast<uint16_t>(count));
    return VANTREL_STATUS_NO_ERROR;
}

VantrelStatus setMaximumRejectCount(BulkAttributes *attributes, uint32_t count) {
    if (attributes == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    if (count >= 65536)
        return VANTREL_STATUS_INVALID_OPTION;
    storeU16(attributes->maximumRejectCount, static_cast<uint16_t>(count));
    return VANTREL_STATUS_NO_ERROR;
}

VantrelStatus setSkipCurrentRecord(BulkAttributes *attributes, int32_t skip) {
    if (attributes == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    setSignature(attributes, skip == 0 ? startAtCurrentRecord : skipCurrentRecord);
    return VANTREL_STATUS_NO_ERROR;
}

}  // namespace

VantrelStatus VantrelBulkRetrieveAttributesAllocate(VantrelBulkRetrieveAttributes **attributes) {
    return allocateAttributes(attributes);
}

VantrelStatus VantrelBulkDeleteAttributesAllocate(VantrelBulkDeleteAttributes **attributes) {
    return allocateAttributes(attributes);
}

VantrelStatus VantrelBulkRetrieveAttributesFree(VantrelBulkRetrieveAttributes *attributes) {
    return freeAttributes(attributes);
}

VantrelStatus VantrelBulkDeleteAttributesFree(VantrelBulkDeleteAttributes *attributes) {
    return freeAttributes(attributes);
}

VantrelStatus VantrelBulkRetrieveAttributesAddFilter(VantrelBulkRetrieveAttributes *attributes,
                                                     const VantrelFilter *filter) {
    return addFilter(attributes, filter);
}

VantrelStatus VantrelBulkDeleteAttributesAddFilter(VantrelBulkDeleteAttributes *attributes,
                                                   const VantrelFilter *filter) {
    return addFilter(attributes, filter);
}

VantrelStatus VantrelBulkRetrieveAttributesSetMaximumRecordCount(VantrelBulkRetrieveAttributes *attributes,
                                                                 uint32_t count) {
    return setMaximumRecordCount(attributes, count);
}

VantrelStatus VantrelBulkDeleteAttributesSetMaximumRecordCount(VantrelBulkDeleteAttributes *attributes,
                                                               uint32_t count) {
    return setMaximumRecordCount(attributes, count);
}

VantrelStatus VantrelBulkRetrieveAttributesSetMaximumRejectCount(VantrelBulkRetrieveAttributes *attributes,
                                                                 uint32_t count) {
    return setMaximumRejectCount(attributes, count);
}

VantrelStatus VantrelBulkDeleteAttributesSetMaximumRejectCount(VantrelBulkDeleteAttributes *attributes,
                                                               uint32_t count) {
    return setMaximumRejectCount(attributes, count);
}

VantrelStatus VantrelBulkRetrieveAttributesSetSkipCurrentRecord(VantrelBulkRetrieveAttributes *attributes,
                                                                int32_t skip) {
    return setSkipCurrentRecord(attributes, skip);
}

VantrelStatus VantrelBulkDeleteAttributesSetSkipCurrentRecord(VantrelBulkDeleteAttributes *attributes,
                                                              int32_t skip) {
    return setSkipCurrentRecord(attributes, skip);
}
