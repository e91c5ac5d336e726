#include "client/request.h"
#include "engine/status.h"
#include "engine/translation.h"

using namespace vantrel;

namespace {

constexpr uint32_t beginOperations[] = {operationBeginTransaction, operationBeginConcurrentTransaction,
                                        operationBeginTransactionWithoutWait};
static_assert(sizeof beginOperations / sizeof beginOperations[0] ==
              VANTREL_TRANSACTION_MODE_CONCURRENT_NO_WAIT + 1);

}  // namespace

VantrelStatus VantrelClientTransactionBegin(VantrelClient *client, VantrelTransactionMode transactionMode,
                                            VantrelLockMode lockMode) {
    if (client == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    if (transactionMode < VANTREL_TRANSACTION_MODE_EXCLUSIVE ||
        transactionMode > VANTREL_TRANSACTION_MODE_CONCURRENT_NO_WAIT)
        return keepStatus(client, VANTREL_STATUS_INVALID_OPTION);
    uint32_t operation = beginOperations[transactionMode];
    VantrelStatus status = keepStatus(client, setLockBias(&operation, lockMode));
    if (status != VANTREL_STATUS_NO_ERROR)
        return status;
    return sendRequest(client, {.operation = operation});
}

VantrelStatus VantrelClientTransactionEnd(VantrelClient *client) {
    return sendRequest(client, {.operation = operationEndTransaction});
}

VantrelStatus VantrelClientTransactionAbort(VantrelClient *client) {
    return sendRequest(client, {.operation = operationAbortTransaction});
}
