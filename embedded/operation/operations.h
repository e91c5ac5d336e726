#ifndef VANTREL_EMBEDDED_OPERATION_OPERATIONS_H
#define VANTREL_EMBEDDED_OPERATION_OPERATIONS_H

#include "embedded/operation/session.h"

// One function for each operation, or for a group that differs only in the code. Each returns the status;
// failures on the way may also be thrown as StatusError.

namespace vantrel::embedded {

using OperationFunction = int32_t(Session &session, Request &request);

// Files
OperationFunction openFile, closeFile, createFile, createIndex, dropIndex;
OperationFunction setOwner, clearOwner, changeContinuousOperation;

// Records
OperationFunction insertRecord, updateRecord, deleteRecord;
OperationFunction readByKey, readByStep, readDirect, readChunk, changeChunk, getPosition, unlock;
OperationFunction readAtProportion, getProportion;

// Many records
OperationFunction readExtended, deleteExtended, insertExtended;

// The session
OperationFunction setDirectory, getDirectory, login, version, resetSession;
OperationFunction beginTransaction, endTransaction, abortTransaction;

// Statistics
OperationFunction statistics, extendedStatistics;

// Operation codes that several functions tell apart.
enum OperationCodes : uint16_t {
    codeGetEqual = 5,
    codeGetNext = 6,
    codeGetPrevious = 7,
    codeGetGreater = 8,
    codeGetGreaterOrEqual = 9,
    codeGetLess = 10,
    codeGetLessOrEqual = 11,
    codeGetFirst = 12,
    codeGetLast = 13,
    codeStepNext = 24,
    codeStepFirst = 33,
    codeStepLast = 34,
    codeStepPrevious = 35,
    codeGetNextExtended = 36,
    codeGetPreviousExtended = 37,
    codeStepNextExtended = 38,
    codeStepPreviousExtended = 39,
    codeDeleteNext = 85,
    codeDeletePrevious = 86,
    codeDeleteStepNext = 87,
    codeDeleteStepPrevious = 88,
    codeBeginExclusive = 19,
    codeBeginConcurrent = 1019,
    codeBeginConcurrentNoWait = 1519,
    codeSetOwner = 29,
    codeSetLongOwner = 17029,
};

}  // namespace vantrel::embedded

#endif
