#ifndef VANTREL_ENGINE_STATUS_H
#define VANTREL_ENGINE_STATUS_H

#include <cstdint>
#include <cstdlib>

#include "engine/bytes.h"
#include "vantrel.h"

// The status convention: every record has a last status, four bytes wherever they lie in it.

namespace vantrel {

// Stores the status in the record and returns it.
template <class Record>
VantrelStatus keepStatus(Record *record, VantrelStatus status) {
    storeI32(record->lastStatus, status);
    return status;
}

// The same where the record may be missing.
template <class Record>
VantrelStatus keepStatusIfPresent(Record *record, VantrelStatus status) {
    return record == nullptr ? status : keepStatus(record, status);
}

template <class Record>
VantrelStatus lastStatus(const Record *record) {
    return loadI32(record->lastStatus);
}

// Stores the status and returns a getter's failure value.
template <class Value, class Record>
Value failWith(Record *record, VantrelStatus status, Value failureValue) {
    keepStatus(record, status);
    return failureValue;
}

// Hands out a zero-filled record, or null when memory runs out.
template <class Record>
VantrelStatus allocateRecord(Record **out) {
    if (out == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    *out = static_cast<Record *>(calloc(1, sizeof(Record)));
    return *out == nullptr ? VANTREL_STATUS_NO_OPERATING_SYSTEM_MEMORY_AVAILABLE : VANTREL_STATUS_NO_ERROR;
}

}  // namespace vantrel

#endif
