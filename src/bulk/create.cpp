#include "bulk/create.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "engine/call.h"
#include "engine/status.h"
#include "record/key_call.h"

using namespace vantrel;

namespace {

constexpr uint32_t countSize = 4;
constexpr uint32_t recordHead = 4;
constexpr uint32_t positionSize = 8;
constexpr uint32_t recordLengthLimit = 65536;

// The bytes of a reply with that many positions, as far as the area holds them.
uint32_t replyLength(uint32_t recordCount) {
    uint64_t length = countSize + uint64_t{positionSize} * recordCount;
    return static_cast<uint32_t>(std::min(length, uint64_t{bulkAreaSize}));
}

}  // namespace

VantrelStatus VantrelBulkCreatePayloadAllocate(VantrelBulkCreatePayload **payload) {
    VantrelStatus status = allocateRecord(payload);
    if (status == VANTREL_STATUS_NO_ERROR)
        storeU32((*payload)->usedLength, countSize);
    return status;
}

VantrelStatus VantrelBulkCreatePayloadFree(VantrelBulkCreatePayload *payload) {
    if (payload == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    free(payload);
    return VANTREL_STATUS_NO_ERROR;
}

VantrelStatus VantrelBulkCreatePayloadAddRecord(VantrelBulkCreatePayload *payload, const void *record,
                                                uint32_t length) {
    if (payload == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    if (record == nullptr)
        return keepStatus(payload, VANTREL_STATUS_INVALID_POINTER_PARAMETER);
    if (length >= recordLengthLimit)
        return VANTREL_STATUS_INVALID_OPTION;
    uint32_t count = loadU32(payload->area);
    if (count == UINT32_MAX)
        return VANTREL_STATUS_NO_OPERATING_SYSTEM_MEMORY_AVAILABLE;
    uint32_t used = loadU32(payload->usedLength);
    if (used + recordHead + length > bulkAreaSize)
        return VANTREL_STATUS_DATA_LENGTH_ERROR;
    storeU32(payload->area + used, length);
    memcpy(payload->area + used + recordHead, record, length);
    storeU32(payload->usedLength, used + recordHead + length);
    storeU32(payload->area, count + 1);
    return VANTREL_STATUS_NO_ERROR;
}

VantrelStatus VantrelBulkCreateResultAllocate(VantrelBulkCreateResult **result) {
    return allocateRecord(result);
}

VantrelStatus VantrelBulkCreateResultFree(VantrelBulkCreateResult *result) {
    free(result);
    return VANTREL_STATUS_NO_ERROR;
}

VantrelStatus VantrelBulkCreateResultGetLastStatusCode(const VantrelBulkCreateResult *result) {
    return result == nullptr ? VANTREL_STATUS_INVALID_POINTER_PARAMETER : lastStatus(result);
}

int32_t VantrelBulkCreateResultGetRecordCount(VantrelBulkCreateResult *result) {
    if (result == nullptr)
        return -1;
    keepStatus(result, VANTREL_STATUS_NO_ERROR);
    return loadI32(result->area);
}

VantrelCursorPosition VantrelBulkCreateResultGetRecordCursorPosition(VantrelBulkCreateResult *result,
                                                                     int32_t index) {
    constexpr VantrelCursorPosition noPosition = -1;
    constexpr uint32_t positionLimit = (bulkAreaSize - countSize) / positionSize;
    if (result == nullptr)
        return noPosition;
    if (index < 1 || static_cast<uint32_t>(index) > loadU32(result->area))
        return failWith(result, VANTREL_STATUS_INVALID_OPTION, noPosition);
    uint32_t preceding = static_cast<uint32_t>(index) - 1;
    if (preceding >= positionLimit)
        return failWith(result, VANTREL_STATUS_DATA_LENGTH_ERROR, noPosition);
    keepStatus(result, VANTREL_STATUS_NO_ERROR);
    return loadI64(result->area + countSize + positionSize * preceding);
}

// The engine gets a copy of the payload and answers in it. The copy stands in the result itself: a count
// larger than the engine's answer then shows nothing but the request and what the result held before. What
// stood behind the positions counted is put back.
VantrelStatus VantrelFileBulkCreate(VantrelFile *file, const VantrelBulkCreatePayload *payload,
                                    VantrelBulkCreateResult *result) {
    if (file == nullptr)
        return VANTREL_STATUS_FILE_NOT_OPEN;
    if (payload == nullptr || result == nullptr)
        return keepStatus(file, VANTREL_STATUS_INVALID_POINTER_PARAMETER);
    uint32_t used = loadU32(payload->usedLength);
    uint32_t overwritten = std::max(used, replyLength(loadU32(payload->area)));
    uint8_t former[bulkAreaSize];
    memcpy(former, result->area, overwritten);
    memcpy(result->area, payload->area, used);
    uint32_t dataLength = used;
    VantrelStatus status =
        callFile(file, operationInsertExtended, result->area, &dataLength, file->keyBuffer, 0, -1);
    uint32_t answered = std::min(replyLength(loadU32(result->area)), overwritten);
    memcpy(result->area + answered, former + answered, overwritten - answered);
    return status;
}
