#include "record/key_call.h"

namespace vantrel {

VantrelStatus callVantrelKeyHelper(VantrelFile *file, uint32_t operation, void *data, uint32_t *dataLength,
                                   void *key, uint32_t keyLength, int32_t keyNumber) {
    return callByKey(file, operation, data, dataLength, key, keyLength, keyNumber);
}

VantrelStatus replayCachedKey(VantrelFile *file, uint32_t operation, void *data, uint32_t *dataLength) {
    if (file == nullptr)
        return VANTREL_STATUS_FILE_NOT_OPEN;
    int32_t keyNumber = cachedKeyNumber(file);
    return callFile(file, operation, data, dataLength, file->keyBuffer, heldKeyLength(file, keyNumber),
                    engineKeyNumber(keyNumber));
}

}  // namespace vantrel
