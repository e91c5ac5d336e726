#include "embedded/operation/live_sessions.h"

#include <pthread.h>

#include <chrono>
#include <condition_variable>
#include <new>
#include <set>
#include <thread>
#include <utility>

#include "embedded/core.h"
#include "embedded/lock/lock_wait.h"
#include "embedded/operation/continuous_operation.h"

namespace vantrel::embedded {

namespace {

constexpr auto housekeepingInterval = std::chrono::milliseconds(250);

struct LiveSessions {
    std::mutex mutex;
    std::set<Session *> sessions;
    bool isHousekeeping = false;
};

// Never destroyed, since the background thread may outlive the destruction of statics. A forked child begins
// with a new one and keeps the parent's in `inherited` until it has let go of the files.
LiveSessions *live = new LiveSessions;
std::atomic<LiveSessions *> inherited{nullptr};

// A session that pauses in a wait stands still as long as waits are held up.
void housekeepInWait(Session &session) {
    holdUpLockWaits();
    if (isPausing(session.lockUser))
        session.housekeepInWait();
    letLockWaitsGoOn();
}

bool housekeepOnce(Session &session) {
    std::unique_lock lock(session.mutex, std::try_to_lock);
    if (!lock.owns_lock()) {
        session.housekeepingIsDue = true;
        housekeepInWait(session);
        return true;
    }
    session.housekeep();
    return !session.files().empty();
}

void housekeepAll(LiveSessions *mine) {
    for (;;) {
        std::this_thread::sleep_for(housekeepingInterval);
        std::lock_guard lock(mine->mutex);
        bool filesAreOpen = false;
        for (Session *session : mine->sessions)
            filesAreOpen |= housekeepOnce(*session);
        mine->isHousekeeping = filesAreOpen;
        if (!filesAreOpen)
            return;
    }
}

}  // namespace

bool addLiveSession(Session *session) {
    std::lock_guard lock(live->mutex);
    try {
        live->sessions.insert(session);
    } catch (const std::bad_alloc &) {
        return false;
    }
    return true;
}

void removeLiveSession(Session *session) {
    std::lock_guard lock(live->mutex);
    live->sessions.erase(session);
}

void startHousekeeping() {
    std::lock_guard lock(live->mutex);
    if (live->isHousekeeping)
        return;
    std::thread(housekeepAll, live).detach();
    live->isHousekeeping = true;
}

void housekeepIfDue(Session &session) {
    if (!session.housekeepingIsDue.load(std::memory_order_relaxed))
        return;
    session.housekeepingIsDue = false;
    session.housekeep();
}

void abandonInheritedSessions() {
    if (inherited.load(std::memory_order_relaxed) == nullptr)
        return;
    LiveSessions *lost = inherited.exchange(nullptr);
    if (lost == nullptr)
        return;
    try {
        for (Session *session : lost->sessions)
            session->abandon();
    } catch (...) {
        // The next call tries again.
        inherited = lost;
        throw;
    }
}

}  // namespace vantrel::embedded

using namespace vantrel::embedded;

// A session that pauses in a wait stands as still as one without a call, as long as waits are held up.
void vantrelCorePrepareFork() {
    live->mutex.lock();
    for (;;) {
        bool allStandStill = true;
        holdUpLockWaits();
        for (Session *session : live->sessions) {
            if (!session->isLockedForFork)
                session->isLockedForFork = session->mutex.try_lock();
            allStandStill &= session->isLockedForFork || isPausing(session->lockUser);
        }
        if (allStandStill)
            return;
        letLockWaitsGoOn();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

void vantrelCoreParentAfterFork() {
    letLockWaitsGoOn();
    for (Session *session : live->sessions) {
        if (std::exchange(session->isLockedForFork, false))
            session->mutex.unlock();
    }
    live->mutex.unlock();
}

// Side files are closed at once, since the child would keep the parent's locks alive; everything else waits
// for the child's first call, for a child that only starts another program needs none of it.
void vantrelCoreChildAfterFork() {
    for (Session *session : live->sessions) {
        for (auto &[path, file] : session->files())
            file->closeLocksInChild();
        for (auto &[path, operation] : session->continuousOperations)
            operation->closeLocksInChild();
    }
    forgetLockWaits();
    inherited = live;
    live = new LiveSessions;
}
