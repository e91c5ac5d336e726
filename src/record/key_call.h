#ifndef VANTREL_RECORD_KEY_CALL_H
#define VANTREL_RECORD_KEY_CALL_H

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "engine/call.h"
#include "engine/records.h"
#include "engine/status.h"

// Requests on an open file. The engine keeps its place in an index through the key buffer, so the file
// remembers the key number and key length of the last request that named an index (the key cache), and
// later requests without a key of their own send them again.

namespace vantrel {

inline int32_t cachedKeyNumber(const VantrelFile *file) {
    return loadI32(file->cachedKeyNumber);
}

inline int32_t engineKeyNumber(int32_t keyNumber) {
    return keyNumber == noCachedKey ? VANTREL_INDEX_NONE : keyNumber;
}

// How much of the key buffer belongs to the key number: all of it where that is not the one used last.
inline uint32_t heldKeyLength(const VantrelFile *file, int32_t keyNumber) {
    if (engineKeyNumber(keyNumber) == VANTREL_INDEX_NONE)
        return 0;
    return keyNumber == cachedKeyNumber(file) ? loadU32(file->cachedKeyLength) : keyBufferSize;
}

// For lengths that the compiler knows to be small: it would copy with a string instruction, which is slow to
// start. Hiding the length makes it call memcpy.
inline void copyBytes(void *target, const void *source, uint32_t length) {
    __asm__("" : "+r"(length));
    memcpy(target, source, length);
}

// Makes a request that leaves the key cache alone, and keeps its status in the file.
inline VantrelStatus callFile(VantrelFile *file, uint32_t operation, void *data = nullptr,
                              uint32_t *dataLength = nullptr, void *key = nullptr, uint32_t keyLength = 0,
                              int32_t keyNumber = 0) {
    if (file == nullptr)
        return VANTREL_STATUS_FILE_NOT_OPEN;
    VantrelClient *client = owningClient(file);
    if (client == nullptr)
        return keepStatus(file, VANTREL_STATUS_INVALID_POINTER_PARAMETER);
    return keepStatus(file, callVantrel(operation, file, data, dataLength, key,
                                        static_cast<int32_t>(keyLength), keyNumber, client));
}

// Makes a request by key number and key, or, with a null key, by the value that the key buffer still holds;
// caches number and length, and hands the key found back in the caller's key. Of a key, as much takes part as
// the key buffer holds. The key number noCachedKey goes by no index and leaves the cache alone.
//
// Inlined for the reads, which every program makes most; others call callVantrelKeyHelper.
[[gnu::always_inline]] inline VantrelStatus callByKey(VantrelFile *file, uint32_t operation, void *data,
                                                      uint32_t *dataLength, void *key, uint32_t keyLength,
                                                      int32_t keyNumber) {
    if (file == nullptr)
        return VANTREL_STATUS_FILE_NOT_OPEN;
    if (owningClient(file) == nullptr)
        return keepStatus(file, VANTREL_STATUS_INVALID_POINTER_PARAMETER);
    uint32_t sentLength =
        key == nullptr ? heldKeyLength(file, keyNumber) : std::min(keyLength, keyBufferSize);
    if (key != nullptr)
        copyBytes(file->keyBuffer, key, sentLength);
    VantrelStatus status =
        callFile(file, operation, data, dataLength, file->keyBuffer, sentLength, engineKeyNumber(keyNumber));
    if (keyNumber != noCachedKey) {
        storeI32(file->cachedKeyNumber, keyNumber);
        storeU32(file->cachedKeyLength, sentLength);
    }
    if (key != nullptr)
        copyBytes(key, file->keyBuffer, sentLength);
    return status;
}

VantrelStatus callVantrelKeyHelper(VantrelFile *file, uint32_t operation, void *data, uint32_t *dataLength,
                                   void *key, uint32_t keyLength, int32_t keyNumber);

// Makes a request on the current record with the cached key number and length, which stay.
VantrelStatus replayCachedKey(VantrelFile *file, uint32_t operation, void *data, uint32_t *dataLength);

}  // namespace vantrel

#endif
