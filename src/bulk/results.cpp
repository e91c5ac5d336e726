#include "bulk/results.h"

#include <cstdlib>
#include <cstring>

#include "engine/status.h"

using namespace vantrel;

namespace {

constexpr int32_t noValue = -1;

// No record starts at the beginning of the area.
constexpr uint32_t notFound = 0;

VantrelStatus freeResult(BulkResult *result) {
    if (result == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    free(result);
    return VANTREL_STATUS_NO_ERROR;
}

VantrelStatus lastStatusOf(const BulkResult *result) {
    return result == nullptr ? VANTREL_STATUS_INVALID_POINTER_PARAMETER : lastStatus(result);
}

int32_t recordCountOf(BulkResult *result) {
    if (result == nullptr)
        return noValue;
    keepStatus(result, VANTREL_STATUS_NO_ERROR);
    return loadU16(result->area);
}

bool isOutOfRange(const BulkResult *result, int32_t index) {
    return index < 1 || index > loadU16(result->area);
}

uint32_t endOfRecord(const BulkResult *result, uint32_t offset) {
    return offset + replyRecordHead + loadU16(result->area + offset);
}

// True where the record at the offset lies in the area as a whole.
bool recordFits(const BulkResult *result, uint32_t offset) {
    return offset + replyRecordHead <= bulkAreaSize && endOfRecord(result, offset) <= bulkAreaSize;
}

// True where the walk to the record may start at the one last found: it is not behind the record wanted, and
// the area still has there what it had.
bool foundRecordServes(const VantrelBulkRetrieveResult *result, uint32_t number) {
    uint32_t found = loadU32(result->foundNumber);
    return found != 0 && found <= number &&
           memcmp(result->area + loadU32(result->foundOffset), result->foundHead, replyRecordHead) == 0;
}

// The offset of the record in the area, or notFound where the walk to it leaves the area.
uint32_t findRecord(VantrelBulkRetrieveResult *result, uint32_t number) {
    bool servesAsStart = foundRecordServes(result, number);
    uint32_t current = servesAsStart ? loadU32(result->foundNumber) : 1;
    uint32_t offset = servesAsStart ? loadU32(result->foundOffset) : firstReplyRecord;
    for (; current < number && recordFits(result, offset); ++current)
        offset = endOfRecord(result, offset);
    if (!recordFits(result, offset))
        return notFound;
    storeU32(result->foundNumber, number);
    storeU32(result->foundOffset, offset);
    memcpy(result->foundHead, result->area + offset, replyRecordHead);
    return offset;
}

// The same behind the index check, with the status kept.
uint32_t findIndex(VantrelBulkRetrieveResult *result, int32_t index) {
    if (isOutOfRange(result, index))
        return failWith(result, VANTREL_STATUS_INVALID_OPTION, notFound);
    uint32_t offset = findRecord(result, static_cast<uint32_t>(index));
    keepStatus(result, offset == notFound ? VANTREL_STATUS_DATA_LENGTH_ERROR : VANTREL_STATUS_NO_ERROR);
    return offset;
}

}  // namespace

VantrelStatus VantrelBulkRetrieveResultAllocate(VantrelBulkRetrieveResult **result) {
    return allocateRecord(result);
}

VantrelStatus VantrelBulkDeleteResultAllocate(VantrelBulkDeleteResult **result) {
    return allocateRecord(result);
}

VantrelStatus VantrelBulkRetrieveResultFree(VantrelBulkRetrieveResult *result) {
    return freeResult(result);
}

VantrelStatus VantrelBulkDeleteResultFree(VantrelBulkDeleteResult *result) {
    return freeResult(result);
}

VantrelStatus VantrelBulkRetrieveResultGetLastStatusCode(const VantrelBulkRetrieveResult *result) {
    return lastStatusOf(result);
}

VantrelStatus VantrelBulkDeleteResultGetLastStatusCode(const VantrelBulkDeleteResult *result) {
    return lastStatusOf(result);
}

int32_t VantrelBulkRetrieveResultGetRecordCount(VantrelBulkRetrieveResult *result) {
    return recordCountOf(result);
}

int32_t VantrelBulkDeleteResultGetRecordCount(VantrelBulkDeleteResult *result) {
    return recordCountOf(result);
}

int32_t VantrelBulkRetrieveResultGetRecordLength(VantrelBulkRetrieveResult *result, int32_t index) {
    if (result == nullptr)
        return noValue;
    uint32_t offset = findIndex(result, index);
    return offset == notFound ? noValue : loadU16(result->area + offset);
}

VantrelCursorPosition VantrelBulkRetrieveResultGetRecordCursorPosition(VantrelBulkRetrieveResult *result,
                                                                       int32_t index) {
    if (result == nullptr)
        return noValue;
    uint32_t offset = findIndex(result, index);
    return offset == notFound ? noValue : loadI64(result->area + offset + 2);
}

int32_t VantrelBulkRetrieveResultGetRecord(VantrelBulkRetrieveResult *result, int32_t index, void *record,
                                           int32_t recordSize) {
    if (result == nullptr)
        return noValue;
    if (record == nullptr)
        return failWith(result, VANTREL_STATUS_INVALID_POINTER_PARAMETER, noValue);
    if (recordSize < 0)
        return failWith(result, VANTREL_STATUS_INVALID_OPTION, noValue);
    uint32_t offset = findIndex(result, index);
    if (offset == notFound)
        return noValue;
    int32_t length = loadU16(result->area + offset);
    if (length > recordSize)
        return failWith(result, VANTREL_STATUS_INVALID_OPTION, noValue);
    memcpy(record, result->area + offset + replyRecordHead, static_cast<size_t>(length));
    return length;
}

VantrelCursorPosition VantrelBulkDeleteResultGetRecordCursorPosition(VantrelBulkDeleteResult *result,
                                                                     int32_t index) {
    if (result == nullptr)
        return noValue;
    if (isOutOfRange(result, index))
        return failWith(result, VANTREL_STATUS_INVALID_OPTION, noValue);
    uint32_t end = firstReplyRecord + replyRecordHead * static_cast<uint32_t>(index);
    if (end > bulkAreaSize)
        return failWith(result, VANTREL_STATUS_DATA_LENGTH_ERROR, noValue);
    keepStatus(result, VANTREL_STATUS_NO_ERROR);
    return loadI64(result->area + end - sizeof(VantrelCursorPosition));
}
