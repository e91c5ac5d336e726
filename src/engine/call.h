#ifndef VANTREL_ENGINE_CALL_H
#define VANTREL_ENGINE_CALL_H

#include <cstdint>

#include "engine/records.h"

// The engine's only entry point, imported from its client-interface library.
extern "C" int32_t VNTLEXID(uint32_t operation, void *positionBlock, void *data, uint32_t *dataLength,
                            void *key, int32_t keyLength, int32_t keyNumber, void *clientIdentifier);

namespace vantrel {

enum Operation : uint32_t {
    operationOpen = 0,
    operationClose = 1,
    operationInsert = 2,
    operationUpdate = 3,
    operationDelete = 4,
    operationGetEqual = 5,
    operationGetNext = 6,
    operationGetPrevious = 7,
    operationGetGreater = 8,
    operationGetGreaterOrEqual = 9,
    operationGetLess = 10,
    operationGetLessOrEqual = 11,
    operationGetFirst = 12,
    operationGetLast = 13,
    operationCreate = 14,
    operationStatistics = 15,
    operationSetDirectory = 17,
    operationGetDirectory = 18,
    operationBeginTransaction = 19,
    operationEndTransaction = 20,
    operationAbortTransaction = 21,
    operationGetPosition = 22,
    operationGetDirect = 23,
    operationStepNext = 24,
    operationStop = 25,
    operationVersion = 26,
    operationUnlock = 27,
    operationReset = 28,
    operationSetOwner = 29,
    operationClearOwner = 30,
    operationCreateIndex = 31,
    operationDropIndex = 32,
    operationStepFirst = 33,
    operationStepLast = 34,
    operationStepPrevious = 35,
    operationGetNextExtended = 36,
    operationGetPreviousExtended = 37,
    operationStepNextExtended = 38,
    operationStepPreviousExtended = 39,
    operationInsertExtended = 40,
    operationContinuousOperation = 42,
    operationGetByPercentage = 44,
    operationFindPercentage = 45,
    operationUpdateChunk = 53,
    operationExtendedStatistics = 65,
    operationLogin = 78,
    operationDeleteNextExtended = 85,
    operationDeletePreviousExtended = 86,
    operationStepDeleteNextExtended = 87,
    operationStepDeletePreviousExtended = 88,
    operationBeginConcurrentTransaction = 1019,
    operationBeginTransactionWithoutWait = 1519,
    operationSetLongOwner = 17029,
};

// Added to a read's operation code to read the key alone.
inline constexpr uint32_t keyOnlyBias = 50;

// Hands one request to the engine and returns its status unchanged; dataLength may be null where there is
// no data buffer.
inline VantrelStatus callVantrel(uint32_t operation, void *positionBlock, void *data, uint32_t *dataLength,
                                 void *key, int32_t keyLength, int32_t keyNumber,
                                 VantrelClient *clientIdentifier) {
    uint32_t length = dataLength == nullptr ? 0 : *dataLength;
    VantrelStatus status =
        VNTLEXID(operation, positionBlock, data, &length, key, keyLength, keyNumber, clientIdentifier);
    if (dataLength != nullptr)
        *dataLength = length;
    return status;
}

}  // namespace vantrel

#endif
