#include "record/key_call.h"
#include "record/retrieval.h"

using namespace vantrel;

VantrelStatus VantrelFileRecordCreate(VantrelFile *file, void *record, uint32_t recordLength) {
    if (file == nullptr)
        return VANTREL_STATUS_FILE_NOT_OPEN;
    if (recordLength >= recordSizeLimit)
        return keepStatus(file, VANTREL_STATUS_INVALID_OPTION);
    return replayCachedKey(file, operationInsert, record, &recordLength);
}

int32_t VantrelFileRecordRetrieve(VantrelFile *file, VantrelComparison comparison, VantrelIndex index,
                                  void *key, int32_t keyLength, void *record, int32_t recordSize,
                                  VantrelLockMode lockMode) {
    if (file == nullptr)
        return -1;
    if (key == nullptr)
        return failWith(file, VANTREL_STATUS_INVALID_POINTER_PARAMETER, -1);
    uint32_t operation = operationForComparison(comparison);
    if (operation == 0)
        return failWith(file, VANTREL_STATUS_INVALID_OPTION, -1);
    return retrieveRecord(file, operation, index, {key, keyLength, record, recordSize, lockMode});
}

VantrelStatus VantrelFileRecordUpdate(VantrelFile *file, const void *record, uint32_t recordLength) {
    if (file == nullptr)
        return VANTREL_STATUS_FILE_NOT_OPEN;
    if (recordLength >= recordSizeLimit)
        return keepStatus(file, VANTREL_STATUS_INVALID_OPTION);
    return callFile(file, operationUpdate, const_cast<void *>(record), &recordLength, file->keyBuffer, 0,
                    VANTREL_INDEX_NONE);
}

VantrelStatus VantrelFileRecordDelete(VantrelFile *file) {
    return callFile(file, operationDelete);
}
