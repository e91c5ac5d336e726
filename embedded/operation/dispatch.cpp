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

int32_t executeGuarded(Session &session, Request &request) {
    OperationFunction *function = functionOf(request.operation);
    if (function == nullptr)
        return VANTREL_STATUS_INVALID_FUNCTION;
    try {
        return function(session, request);
    } catch (const StatusError &error) {
        request.delivered = 0;
        return error.status;
    } catch (const std::bad_alloc &) {
        request.delivered = 0;
        return VANTREL_STATUS_NO_OPERATING_SYSTEM_MEMORY_AVAILABLE;
    } catch (...) {
        request.delivered = 0;
        return VANTREL_STATUS_UNRECOVERABLE_ERROR;
    }
}

}  // namespace

}  // namespace vantrel::embedded

using namespace vantrel::embedded;

int32_t vantrelCoreExecute(Session *session, Request *request) {
    abandonInheritedSessions();
    std::lock_guard lock(session->mutex);
    int32_t status = executeGuarded(*session, *request);
    session->noticeLostChanges();
    request->leavesNothing = session->holdsNothing();
    housekeepIfDue(*session);
    return status;
}

bool vantrelCoreSessionHoldsNothing(Session *session) {
    std::lock_guard lock(session->mutex);
    return session->holdsNothing();
}

void vantrelCoreResetSession(Session *session, bool waits) {
    std::unique_lock lock(session->mutex, std::defer_lock);
    if (!waits && !lock.try_lock())
        return;
    if (waits)
        lock.lock();
    try {
        session->reset();
    } catch (...) {
        // What could not be ended ends with the process.
    }
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
