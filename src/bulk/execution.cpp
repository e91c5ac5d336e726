#include "bulk/execution.h"

#include "bulk/attributes.h"
#include "bulk/request.h"
#include "bulk/results.h"
#include "engine/call.h"
#include "engine/records.h"
#include "engine/status.h"
#include "engine/translation.h"
#include "record/key_call.h"

using namespace vantrel;

namespace {

template <class Attributes, class Result>
VantrelStatus buildAndCall(uint32_t operation, VantrelFile *file, int32_t keyNumber, void *key,
                           uint32_t keyLength, const Attributes &attributes, Result *result) {
    uint32_t dataLength;
    VantrelStatus status = writeRequest(result->area, attributes, &dataLength);
    if (status != VANTREL_STATUS_NO_ERROR)
        return status;
    return callVantrelKeyHelper(file, operation, result->area, &dataLength, key, keyLength, keyNumber);
}

}  // namespace

namespace vantrel {

VantrelStatus fileBulkRetrieve(uint32_t operation, VantrelFile *file, int32_t keyNumber, void *key,
                               uint32_t keyLength, const VantrelBulkRetrieveAttributes *attributes,
                               VantrelBulkRetrieveResult *result, VantrelLockMode lockMode) {
    if (file == nullptr)
        return VANTREL_STATUS_FILE_NOT_OPEN;
    if (result == nullptr || attributes == nullptr)
        return keepStatus(file, VANTREL_STATUS_INVALID_POINTER_PARAMETER);
    VantrelStatus status = keepStatus(file, setLockBias(&operation, lockMode));
    if (status != VANTREL_STATUS_NO_ERROR)
        return status;
    forgetFoundRecord(result);
    return buildAndCall(operation, file, keyNumber, key, keyLength, *attributes, result);
}

VantrelStatus fileBulkDelete(uint32_t operation, VantrelFile *file, int32_t keyNumber, void *key,
                             uint32_t keyLength, const VantrelBulkDeleteAttributes *attributes,
                             VantrelBulkDeleteResult *result) {
    if (file == nullptr)
        return VANTREL_STATUS_FILE_NOT_OPEN;
    if (result == nullptr || attributes == nullptr)
        return keepStatus(file, VANTREL_STATUS_INVALID_POINTER_PARAMETER);
    return buildAndCall(operation, file, keyNumber, key, keyLength, *attributes, result);
}

}  // namespace vantrel

namespace {

// The operation along an index, and its counterpart in the physical order.
struct Direction {
    uint32_t byIndex;
    uint32_t physically;
};

constexpr Direction retrieveNext = {operationGetNextExtended, operationStepNextExtended};
constexpr Direction retrievePrevious = {operationGetPreviousExtended, operationStepPreviousExtended};
constexpr Direction deleteNext = {operationDeleteNextExtended, operationStepDeleteNextExtended};
constexpr Direction deletePrevious = {operationDeletePreviousExtended, operationStepDeletePreviousExtended};

// Null where records cannot be searched by the comparison.
const char *signatureOf(VantrelComparison comparison) {
    switch (comparison) {
        case VANTREL_COMPARISON_EQUAL:
            return "EQ";
        case VANTREL_COMPARISON_GREATER:
            return "GT";
        case VANTREL_COMPARISON_LESS:
            return "LT";
        case VANTREL_COMPARISON_GREATER_OR_EQUAL:
            return "GE";
        case VANTREL_COMPARISON_LESS_OR_EQUAL:
            return "LE";
        default:
            return nullptr;
    }
}

// Where a search starts that does not go on from the file's position.
struct Start {
    const char *signature;
    VantrelIndex index;
    void *key = nullptr;
    uint32_t keyLength = 0;
};

VantrelStatus run(uint32_t operation, VantrelFile *file, const Start &start,
                  const VantrelBulkRetrieveAttributes *attributes, VantrelBulkRetrieveResult *result,
                  VantrelLockMode lockMode) {
    return fileBulkRetrieve(operation, file, start.index, start.key, start.keyLength, attributes, result,
                            lockMode);
}

VantrelStatus run(uint32_t operation, VantrelFile *file, const Start &start,
                  const VantrelBulkDeleteAttributes *attributes, VantrelBulkDeleteResult *result) {
    return fileBulkDelete(operation, file, start.index, start.key, start.keyLength, attributes, result);
}

template <class Attributes, class... ResultAndLockMode>
VantrelStatus runAndKeepStatus(Direction direction, VantrelFile *file, const Start &start,
                               const Attributes *attributes, ResultAndLockMode... rest) {
    uint32_t operation = start.index == VANTREL_INDEX_NONE ? direction.physically : direction.byIndex;
    return keepStatus(file, run(operation, file, start, attributes, rest...));
}

template <class Attributes, class... ResultAndLockMode>
VantrelStatus goOn(Direction direction, VantrelFile *file, const Attributes *attributes,
                   ResultAndLockMode... rest) {
    if (file == nullptr)
        return VANTREL_STATUS_FILE_NOT_OPEN;
    Start start = {nullptr, loadI32(file->cachedKeyNumber)};
    return runAndKeepStatus(direction, file, start, attributes, rest...);
}

// The attributes carry the start's signature for this call only; later calls skip the current record.
template <class Attributes, class... ResultAndLockMode>
VantrelStatus startAt(const Start &start, Direction direction, VantrelFile *file, Attributes *attributes,
                      ResultAndLockMode... rest) {
    if (file == nullptr)
        return VANTREL_STATUS_FILE_NOT_OPEN;
    if (attributes == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    if (start.signature == nullptr)
        return VANTREL_STATUS_INVALID_OPTION;
    setSignature(attributes, start.signature);
    VantrelStatus status = runAndKeepStatus(direction, file, start, attributes, rest...);
    setSignature(attributes, skipCurrentRecord);
    return status;
}

}  // namespace

VantrelStatus VantrelFileBulkRetrieveNext(VantrelFile *file, const VantrelBulkRetrieveAttributes *attributes,
                                          VantrelBulkRetrieveResult *result, VantrelLockMode lockMode) {
    return goOn(retrieveNext, file, attributes, result, lockMode);
}

VantrelStatus VantrelFileBulkRetrievePrevious(VantrelFile *file,
                                              const VantrelBulkRetrieveAttributes *attributes,
                                              VantrelBulkRetrieveResult *result, VantrelLockMode lockMode) {
    return goOn(retrievePrevious, file, attributes, result, lockMode);
}

VantrelStatus VantrelFileBulkRetrieveFirst(VantrelFile *file, VantrelIndex index,
                                           VantrelBulkRetrieveAttributes *attributes,
                                           VantrelBulkRetrieveResult *result, VantrelLockMode lockMode) {
    return startAt({startAtFirst, index}, retrieveNext, file, attributes, result, lockMode);
}

VantrelStatus VantrelFileBulkRetrieveLast(VantrelFile *file, VantrelIndex index,
                                          VantrelBulkRetrieveAttributes *attributes,
                                          VantrelBulkRetrieveResult *result, VantrelLockMode lockMode) {
    return startAt({startAtLast, index}, retrievePrevious, file, attributes, result, lockMode);
}

VantrelStatus VantrelFileBulkRetrieveNextByComparison(VantrelFile *file, VantrelComparison comparison,
                                                      VantrelIndex index, void *key, uint32_t keyLength,
                                                      VantrelBulkRetrieveAttributes *attributes,
                                                      VantrelBulkRetrieveResult *result,
                                                      VantrelLockMode lockMode) {
    return startAt({signatureOf(comparison), index, key, keyLength}, retrieveNext, file, attributes, result,
                   lockMode);
}

VantrelStatus VantrelFileBulkRetrievePreviousByComparison(VantrelFile *file, VantrelComparison comparison,
                                                          VantrelIndex index, void *key, uint32_t keyLength,
                                                          VantrelBulkRetrieveAttributes *attributes,
                                                          VantrelBulkRetrieveResult *result,
                                                          VantrelLockMode lockMode) {
    return startAt({signatureOf(comparison), index, key, keyLength}, retrievePrevious, file, attributes,
                   result, lockMode);
}

VantrelStatus VantrelFileBulkDeleteNext(VantrelFile *file, const VantrelBulkDeleteAttributes *attributes,
                                        VantrelBulkDeleteResult *result) {
    return goOn(deleteNext, file, attributes, result);
}

VantrelStatus VantrelFileBulkDeletePrevious(VantrelFile *file, const VantrelBulkDeleteAttributes *attributes,
                                            VantrelBulkDeleteResult *result) {
    return goOn(deletePrevious, file, attributes, result);
}

VantrelStatus VantrelFileBulkDeleteFirst(VantrelFile *file, VantrelIndex index,
                                         VantrelBulkDeleteAttributes *attributes,
                                         VantrelBulkDeleteResult *result) {
    return startAt({startAtFirst, index}, deleteNext, file, attributes, result);
}

VantrelStatus VantrelFileBulkDeleteLast(VantrelFile *file, VantrelIndex index,
                                        VantrelBulkDeleteAttributes *attributes,
                                        VantrelBulkDeleteResult *result) {
    return startAt({startAtLast, index}, deletePrevious, file, attributes, result);
}

VantrelStatus VantrelFileBulkDeleteNextByComparison(VantrelFile *file, VantrelComparison comparison,
                                                    VantrelIndex index, void *key, uint32_t keyLength,
                                                    VantrelBulkDeleteAttributes *attributes,
                                                    VantrelBulkDeleteResult *result) {
    return startAt({signatureOf(comparison), index, key, keyLength}, deleteNext, file, attributes, result);
}

VantrelStatus VantrelFileBulkDeletePreviousByComparison(VantrelFile *file, VantrelComparison comparison,
                                                        VantrelIndex index, void *key, uint32_t keyLength,
                                                        VantrelBulkDeleteAttributes *attributes,
                                                        VantrelBulkDeleteResult *result) {
    return startAt({signatureOf(comparison), index, key, keyLength}, deletePrevious, file, attributes,
                   result);
}
