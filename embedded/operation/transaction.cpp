#include "embedded/operation/operations.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

TransactionKind kindOf(uint16_t operation) {
    switch (operation) {
        case codeBeginConcurrent:
            return TransactionKind::concurrent;
        case codeBeginConcurrentNoWait:
            return TransactionKind::concurrentNoWait;
        default:
            return TransactionKind::exclusive;
    }
}

}  // namespace

int32_t beginTransaction(Session &session, Request &request) {
    if (session.insideTransaction())
        return VANTREL_STATUS_TRANSACTION_IS_ACTIVE;
    session.transaction = kindOf(request.operation);
    session.transactionLock = request.lock;
    session.lockUser.beginTransaction(session.waiting() == Waiting::no);
    return VANTREL_STATUS_NO_ERROR;
}

int32_t endTransaction(Session &session, Request &) {
    if (!session.insideTransaction())
        return VANTREL_STATUS_END_TRANSACTION_ERROR;
    session.commitTransaction();
    return VANTREL_STATUS_NO_ERROR;
}

int32_t abortTransaction(Session &session, Request &) {
    if (!session.insideTransaction())
        return VANTREL_STATUS_TRANSACTION_ERROR;
    session.rollbackTransaction();
    return VANTREL_STATUS_NO_ERROR;
}

}  // namespace vantrel::embedded
