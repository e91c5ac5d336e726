#include "record/retrieval.h"

namespace vantrel {

namespace {

constexpr uint32_t comparisonOperations[] = {
    0,                           // None
    operationGetEqual,           // Equal
    operationGetGreater,         // Greater
    operationGetLess,            // Less
    0,                           // Not equal
    operationGetGreaterOrEqual,  // Greater or equal
    operationGetLessOrEqual,     // Less or equal
};
constexpr uint32_t comparisonCount = sizeof comparisonOperations / sizeof comparisonOperations[0];
static_assert(comparisonCount == VANTREL_COMPARISON_LESS_OR_EQUAL + 1);

constexpr uint32_t requestExtensionSize = 8;

}  // namespace

uint32_t operationForComparison(VantrelComparison comparison) {
    return static_cast<uint32_t>(comparison) < comparisonCount ? comparisonOperations[comparison] : 0;
}

int32_t retrieveRequestedRecord(VantrelFile *file, uint32_t operation, VantrelIndex index,
                                const uint8_t *request, uint32_t requestLength, const ReadArguments &read) {
    if (file == nullptr)
        return -1;
    // Where there is no key, its length does not matter.
    bool keyIsInvalid = read.key != nullptr && read.keyLength < 0;
    if (indexIsOutOfRange(index) || !isRecordSize(read.recordSize) || keyIsInvalid)
        return failWith(file, VANTREL_STATUS_INVALID_OPTION, -1);
    if (keepStatus(file, setLockBias(&operation, read.lockMode)) != VANTREL_STATUS_NO_ERROR)
        return -1;
    auto recordSize = static_cast<uint32_t>(read.recordSize);
    if (read.record == nullptr && recordSize != 0)
        return failWith(file, VANTREL_STATUS_INVALID_POINTER_PARAMETER, -1);

    // Not initialised, since the engine writes what it returns, but where a longer request would go on.
    uint8_t work[recordSizeLimit - 1];
    memcpy(work, request, requestLength);
    memset(work + requestLength, 0, requestExtensionSize);
    uint32_t length = std::max(recordSize, requestLength);
    VantrelStatus status = callVantrelKeyHelper(file, operation, work, &length, read.key,
                                                static_cast<uint32_t>(read.keyLength), index);
    if (!deliversRecord(status))
        return -1;
    if (length > recordSize)
        keepStatus(file, VANTREL_STATUS_DATA_LENGTH_ERROR);
    uint32_t count = std::min(length, recordSize);
    if (count != 0)
        copyBytes(read.record, work, count);
    return static_cast<int32_t>(count);
}

}  // namespace vantrel
