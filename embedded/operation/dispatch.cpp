#include <cstring>
#include <new>

#include "embedded/operation/live_sessions.h"
#include "embedded/operation/operations.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

OperationFunction *functionOf(uint16_t operation) {
    switch (operation) {
        case 0:
            return openFile;
        case 1:
            return closeFile;
        case 2:
            return insertRecord;
        case 3:
            return updateRecord;
        case 4:
            return deleteRecord;
        case codeGetEqual:
        case codeGetNext:
        case codeGetPrevious:
        case codeGetGreater:
        case codeGetGreaterOrEqual:
        case codeGetLess:
        case codeGetLessOrEqual:
        case codeGetFirst:
        case codeGetLast:
            return readByKey;
        case 14:
            return createFile;
        case 15:
            return statistics;
        case 17:
            return setDirectory;
        case 18:
            return getDirectory;
        case codeBeginExclusive:
        case codeBeginConcurrent:
        case codeBeginConcurrentNoWait:
            return beginTransaction;
        case 20:
            return endTransaction;
        case 21:
            return abortTransaction;
        case 22:
            return getPosition;
        case 23:
            return readDirect;
        case codeStepNext:
        case codeStepFirst:
        case codeStepLast:
        case codeStepPrevious:
            return readByStep;
        case 26:
            return version;
        case 27:
            return unlock;
        case 28:
            return resetSession;
        case codeSetOwner:
        case codeSetLongOwner:
            return setOwner;
        case 30:
            return clearOwner;
        case 31:
            return createIndex;
        case 32:
            return dropIndex;
        case 42:
            return changeContinuousOperation;
        case 53:
            return changeChunk;
        case codeGetNextExtended:
        case codeGetPreviousExtended:
        case codeStepNextExtended:
        case codeStepPreviousExtended:
            return readExtended;
        case 40:
            return insertExtended;
        case 44:
            return readAtProportion;
        case 45:
            return getProportion;
        case 65:
            return extendedStatistics;
        case 78:
            return login;
        case codeDeleteNext:
        case codeDeletePrevious:
        case codeDeleteStepNext:
        case codeDeleteStepPrevious:
            return deleteExtended;
        default:
            return nullptr;
    }
}

// The status of what was done; no exception leaves the core.
template <class Work>
int32_t statusOf(Work work) {
    try {
        return work();
    } catch (const StatusError &error) {
        return error.status;
    } catch (const std::bad_alloc &) {
        return VANTREL_STATUS_NO_OPERATING_SYSTEM_MEMORY_AVAILABLE;
    } catch (...) {
        return VANTREL_STATUS_UNRECOVERABLE_ERROR;
    }
}

// The last refusal is this one, even where it is not known whose.
void forgetOlderRefusal(LockUser &user, int32_t status) {
    bool isRefused = status == VANTREL_STATUS_RECORD_IN_USE || status == VANTREL_STATUS_FILE_IN_USE;
    if (isRefused && !user.refusalIsOfThisCall)
        user.refusal.reset();
}

int32_t execute(Session &session, Request &request) {
    OperationFunction *function = functionOf(request.operation);
    if (function == nullptr)
        return VANTREL_STATUS_INVALID_FUNCTION;
    bool hasReturned = false;
    session.lockUser.refusalIsOfThisCall = false;
    int32_t status = statusOf([&] {
        int32_t returned = function(session, request);
        hasReturned = true;
        return returned;
    });
    forgetOlderRefusal(session.lockUser, status);
    if (!hasReturned)
        request.delivered = 0;
    return status;
}

}  // namespace

}  // namespace vantrel::embedded

using namespace vantrel::embedded;

int32_t vantrelCoreExecute(Session *session, Request *request) {
    abandonInheritedSessions();
    std::lock_guard lock(session->mutex);
    int32_t status = execute(*session, *request);
    session->noticeLostChanges();
    request->leavesNothing = session->holdsNothing();
    housekeepIfDue(*session);
    return status;
}

bool vantrelCoreSessionHoldsNothing(Session *session) {
    std::lock_guard lock(session->mutex);
    return session->holdsNothing();
}

int32_t vantrelCoreResetSession(Session *session, bool waits) {
    std::unique_lock lock(session->mutex, std::defer_lock);
    if (!waits && !lock.try_lock())
        return VANTREL_STATUS_NO_ERROR;
    if (waits)
        lock.lock();
    return statusOf([session] {
        session->reset();
        return VANTREL_STATUS_NO_ERROR;
    });
}

Session *vantrelCoreOpenSession(const uint8_t *identifier) {
    abandonInheritedSessions();
    ClientIdentifier copied;
    memcpy(copied.data(), identifier, copied.size());
    auto *session = new (std::nothrow) Session(copied);
    if (session != nullptr && !addLiveSession(session)) {
        delete session;
        return nullptr;
    }
    return session;
}

void vantrelCoreCloseSession(Session *session) {
    removeLiveSession(session);
    vantrelCoreResetSession(session, true);
    delete session;
}
