#include "record/key_call.h"
#include "record/retrieval.h"

using namespace vantrel;

namespace {

// The operation is the one that would read the record too.
VantrelStatus retrieveKey(VantrelFile *file, uint32_t operation, VantrelIndex index, void *key,
                          int32_t keyLength) {
    if (file == nullptr)
        return VANTREL_STATUS_FILE_NOT_OPEN;
    if (key == nullptr)
        return keepStatus(file, VANTREL_STATUS_INVALID_POINTER_PARAMETER);
    if (keyLength < 0)
        return keepStatus(file, VANTREL_STATUS_INVALID_OPTION);
    return callVantrelKeyHelper(file, operation + keyOnlyBias, nullptr, nullptr, key,
                                static_cast<uint32_t>(keyLength), index);
}

}  // namespace

VantrelStatus VantrelFileKeyRetrieve(VantrelFile *file, VantrelComparison comparison, VantrelIndex index,
                                     void *key, int32_t keyLength) {
    uint32_t operation = operationForComparison(comparison);
    // An unknown comparison gives -1 here, unlike every other refusal, but a missing file or key goes first.
    if (file != nullptr && key != nullptr && operation == 0)
        return failWith(file, VANTREL_STATUS_INVALID_OPTION, -1);
    return retrieveKey(file, operation, index, key, keyLength);
}

VantrelStatus VantrelFileKeyRetrieveFirst(VantrelFile *file, VantrelIndex index, void *key,
                                          int32_t keyLength) {
    return retrieveKey(file, operationGetFirst, index, key, keyLength);
}

VantrelStatus VantrelFileKeyRetrieveLast(VantrelFile *file, VantrelIndex index, void *key,
                                         int32_t keyLength) {
    return retrieveKey(file, operationGetLast, index, key, keyLength);
}

VantrelStatus VantrelFileKeyRetrieveNext(VantrelFile *file, void *key, int32_t keyLength) {
    if (file == nullptr)
        return VANTREL_STATUS_FILE_NOT_OPEN;
    return retrieveKey(file, operationGetNext, cachedKeyNumber(file), key, keyLength);
}

VantrelStatus VantrelFileKeyRetrievePrevious(VantrelFile *file, void *key, int32_t keyLength) {
    if (file == nullptr)
        return VANTREL_STATUS_FILE_NOT_OPEN;
    return retrieveKey(file, operationGetPrevious, cachedKeyNumber(file), key, keyLength);
}
