#include "record/key_call.h"

#include <algorithm>
#include <cstring>

namespace vantrel {

namespace {

int32_t engineKeyNumber(int32_t keyNumber) {
    return keyNumber == noCachedKey ? VANTREL_INDEX_NONE : keyNumber;
}

// How much of the key buffer belongs to the key number: all of it where that is not the one used last.
uint32_t heldKeyLength(const VantrelFile *file, int32_t keyNumber) {
    if (engineKeyNumber(keyNumber) == VANTREL_INDEX_NONE)
        return 0;
    return keyNumber == cachedKeyNumber(file) ? loadU32(file->cachedKeyLength) : keyBufferSize;
}

}  // namespace

VantrelStatus callVantrelKeyHelper(VantrelFile *file, uint32_t operation, void *data, uint32_t *dataLength,
                                   void *key, uint32_t keyLength, int32_t keyNumber) {
    if (file == nullptr)
        return VANTREL_STATUS_FILE_NOT_OPEN;
    if (owningClient(file) == nullptr)
        return keepStatus(file, VANTREL_STATUS_INVALID_POINTER_PARAMETER);
    uint32_t sentLength =
        key == nullptr ? heldKeyLength(file, keyNumber) : std::min(keyLength, keyBufferSize);
    if (key != nullptr)
        memcpy(file->keyBuffer, key, sentLength);
    VantrelStatus status =
        callFile(file, operation, data, dataLength, file->keyBuffer, sentLength, engineKeyNumber(keyNumber));
    if (keyNumber != noCachedKey) {
        storeI32(file->cachedKeyNumber, keyNumber);
        storeU32(file->cachedKeyLength, sentLength);
    }
    if (key != nullptr)
        memcpy(key, file->keyBuffer, sentLength);
    return status;
}

VantrelStatus replayCachedKey(VantrelFile *file, uint32_t operation, void *data, uint32_t *dataLength) {
    if (file == nullptr)
        return VANTREL_STATUS_FILE_NOT_OPEN;
    int32_t keyNumber = cachedKeyNumber(file);
    return callFile(file, operation, data, dataLength, file->keyBuffer, heldKeyLength(file, keyNumber),
                    engineKeyNumber(keyNumber));
}

}  // namespace vantrel
