#include <cstring>

#include "engine/translation.h"
#include "record/key_call.h"
#include "record/retrieval.h"

using namespace vantrel;

namespace {

// Sent with operationGetPosition.
constexpr int32_t recordTimesKeyNumber = -3;

constexpr uint32_t signatureSize = 4;

void storeSignature(uint8_t *bytes, const char (&signature)[signatureSize + 1]) {
    memcpy(bytes, signature, signatureSize);
}

// Marks a request for a fraction, where it would be one for a percentage without it.
void storeDenominator(uint8_t *bytes, uint32_t denominator) {
    storeSignature(bytes, "ExPc");
    storeU32(bytes + signatureSize, denominator);
}

// The engine's answer takes the place of the request's first bytes.
int32_t findProportion(VantrelFile *file, VantrelIndex index, void *key, uint32_t keyLength, uint8_t *request,
                       uint32_t requestLength) {
    if (file == nullptr)
        return -1;
    if (indexIsOutOfRange(index))
        return failWith(file, VANTREL_STATUS_INVALID_OPTION, -1);
    VantrelStatus status =
        callVantrelKeyHelper(file, operationFindPercentage, request, &requestLength, key, keyLength, index);
    return status == VANTREL_STATUS_NO_ERROR ? loadI32(request) : -1;
}

VantrelTimestamp recordTime(VantrelFile *file, uint32_t offset) {
    uint8_t times[24] = {};
    storeSignature(times, "SysD");
    uint32_t length = sizeof times;
    VantrelStatus status =
        callFile(file, operationGetPosition, times, &length, nullptr, 0, recordTimesKeyNumber);
    return status == VANTREL_STATUS_NO_ERROR ? loadI64(times + offset) : -1;
}

}  // namespace

int32_t VantrelFileGetPercentage(VantrelFile *file, VantrelIndex index, void *key, uint32_t keyLength,
                                 VantrelCursorPosition cursorPosition) {
    uint8_t request[8];
    storeI64(request, cursorPosition);
    return findProportion(file, index, key, keyLength, request, sizeof request);
}

int32_t VantrelFileGetNumerator(VantrelFile *file, VantrelIndex index, void *key, uint32_t keyLength,
                                VantrelCursorPosition cursorPosition, uint32_t denominator) {
    uint8_t request[16];
    storeI64(request, cursorPosition);
    storeDenominator(request + 8, denominator);
    return findProportion(file, index, key, keyLength, request, sizeof request);
}

int32_t VantrelFileRecordRetrieveByPercentage(VantrelFile *file, VantrelIndex index, uint32_t percentage,
                                              void *key, int32_t keyLength, void *record, int32_t recordSize,
                                              VantrelLockMode lockMode) {
    uint8_t request[4];
    storeU32(request, percentage);
    return retrieveRequestedRecord(file, operationGetByPercentage, index, request, sizeof request,
                                   {key, keyLength, record, recordSize, lockMode});
}

int32_t VantrelFileRecordRetrieveByFraction(VantrelFile *file, VantrelIndex index, uint32_t numerator,
                                            uint32_t denominator, void *key, int32_t keyLength, void *record,
                                            int32_t recordSize, VantrelLockMode lockMode) {
    uint8_t request[12];
    storeU32(request, numerator);
    storeDenominator(request + 4, denominator);
    return retrieveRequestedRecord(file, operationGetByPercentage, index, request, sizeof request,
                                   {key, keyLength, record, recordSize, lockMode});
}

VantrelTimestamp VantrelFileGetRecordCreateTime(VantrelFile *file) {
    return recordTime(file, 8);
}

VantrelTimestamp VantrelFileGetRecordUpdateTime(VantrelFile *file) {
    return recordTime(file, 16);
}
