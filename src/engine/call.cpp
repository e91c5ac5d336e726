#include "engine/call.h"

namespace vantrel {

VantrelStatus callVantrel(uint32_t operation, void *positionBlock, void *data, uint32_t *dataLength,
                          void *key, int32_t keyLength, int32_t keyNumber, VantrelClient *clientIdentifier) {
    uint32_t length = dataLength == nullptr ? 0 : *dataLength;
    VantrelStatus status =
        VNTLEXID(operation, positionBlock, data, &length, key, keyLength, keyNumber, clientIdentifier);
    if (dataLength != nullptr)
        *dataLength = length;
    return status;
}

}  // namespace vantrel
