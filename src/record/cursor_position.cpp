#include "record/key_call.h"
#include "record/retrieval.h"

using namespace vantrel;

VantrelCursorPosition VantrelFileGetCursorPosition(VantrelFile *file) {
    uint8_t position[sizeof(VantrelCursorPosition)] = {};
    uint32_t length = sizeof position;
    VantrelStatus status = callFile(file, operationGetPosition, position, &length);
    return status == VANTREL_STATUS_NO_ERROR ? loadI64(position) : -1;
}

int32_t VantrelFileRecordRetrieveByCursorPosition(VantrelFile *file, VantrelIndex index,
                                                  VantrelCursorPosition cursorPosition, void *key,
                                                  int32_t keyLength, void *record, int32_t recordSize,
                                                  VantrelLockMode lockMode) {
    uint8_t request[sizeof cursorPosition];
    storeI64(request, cursorPosition);
    return retrieveRequestedRecord(file, operationGetDirect, index, request, sizeof request,
                                   {key, keyLength, record, recordSize, lockMode});
}
