#ifndef VANTREL_RECORD_RETRIEVAL_H
#define VANTREL_RECORD_RETRIEVAL_H

#include <cstdint>

#include "engine/translation.h"
#include "record/key_call.h"

// The two ways in which a read brings a record to the caller.

namespace vantrel {

// A record in one piece is shorter than this.
inline constexpr uint32_t recordSizeLimit = 65536;

// Negative sizes are none.
inline bool isRecordSize(int32_t size) {
    return static_cast<uint32_t>(size) < recordSizeLimit;
}

// A record that did not fit was cut, which is not a failure.
inline bool deliversRecord(VantrelStatus status) {
    return status == VANTREL_STATUS_NO_ERROR || status == VANTREL_STATUS_DATA_LENGTH_ERROR;
}

// The read that finds the key comparing so; 0 where there is none.
uint32_t operationForComparison(VantrelComparison comparison);

// What the caller of a read gave: the key and the record are filled.
struct ReadArguments {
    void *key;
    int32_t keyLength;
    void *record;
    int32_t recordSize;
    VantrelLockMode lockMode;
};

// Reads straight into the caller's record; without one, of size 0, only the key is read. The file is not
// null. Returns the number of bytes in the record, or -1.
[[gnu::always_inline]] inline int32_t retrieveRecord(VantrelFile *file, uint32_t operation,
                                                     VantrelIndex index, const ReadArguments &read) {
    if (!isRecordSize(read.recordSize) || read.keyLength < 0)
        return failWith(file, VANTREL_STATUS_INVALID_OPTION, -1);
    if (keepStatus(file, setLockBias(&operation, read.lockMode)) != VANTREL_STATUS_NO_ERROR)
        return -1;
    if (read.record == nullptr && read.recordSize == 0) {
        if (read.lockMode != VANTREL_LOCK_MODE_NONE)
            return failWith(file, VANTREL_STATUS_INVALID_OPTION, -1);
        operation += keyOnlyBias;
    }
    auto length = static_cast<uint32_t>(read.recordSize);
    VantrelStatus status = callByKey(file, operation, read.record, &length, read.key,
                                     static_cast<uint32_t>(read.keyLength), index);
    return deliversRecord(status) ? static_cast<int32_t>(length) : -1;
}

// Reads the record that a request of requestLength bytes describes. The engine takes the request out of the
// buffer into which it then puts the record, so it works in a buffer of the library, which holds either.
int32_t retrieveRequestedRecord(VantrelFile *file, uint32_t operation, VantrelIndex index,
                                const uint8_t *request, uint32_t requestLength, const ReadArguments &read);

}  // namespace vantrel

#endif
