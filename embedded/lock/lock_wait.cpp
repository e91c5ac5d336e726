#include "embedded/lock/lock_wait.h"

#include <algorithm>
#include <atomic>
#include <map>
#include <mutex>
#include <vector>

#include "embedded/status_error.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

constexpr std::chrono::milliseconds longestPause{20};

}  // namespace

struct LockWaits {
    std::mutex mutex;
    std::map<std::pair<FileIdentity, uint16_t>, const LockUser *> users;
    std::map<const LockUser *, LockWait *> waits;
    uint64_t events = 0;
    // Read without the mutex, so that a release costs nothing where nobody waits.
    std::atomic<size_t> count{0};

    const LockUser *userOf(const FileIdentity &file, uint16_t slot) const {
        auto found = users.find({file, slot});
        return found == users.end() ? nullptr : found->second;
    }
    void add(LockWait *wait) {
        waits[&wait->file_.user()] = wait;
        count = waits.size();
    }
    void remove(LockWait *wait) {
        waits.erase(&wait->file_.user());
        count = waits.size();
    }
    // Those whom a wait is waiting for in a cycle, without itself.
    std::vector<LockWait *> cycleOf(LockWait *first) const;
    void wake(LockWait *wait) const;
    void wakeThoseFor(const FileIdentity &file, int64_t part) const;
    bool isPausing(const LockUser &user) const {
        auto found = waits.find(&user);
        return found != waits.end() && found->second->isAsleep_;
    }
};

// A session that is asleep holds what it holds until it wakes up, which takes the mutex: whatever is found on
// the way round is true at the same time.
std::vector<LockWait *> LockWaits::cycleOf(LockWait *first) const {
    std::vector<LockWait *> others;
    LockWait *wait = first;
    while (others.size() < waits.size()) {
        std::optional<LockFile::Holder> holder = wait->file_.holderOf(wait->part_);
        auto next = waits.find(holder ? userOf(wait->file_.id(), holder->slot) : nullptr);
        if (next == waits.end())
            return {};
        wait = next->second;
        if (wait == first)
            return others;
        if (!wait->isAsleep_)
            return {};
        others.push_back(wait);
    }
    return {};
}

void LockWaits::wake(LockWait *wait) const {
    wait->isToTryAgain_ = true;
    wait->wakeUp_.notify_one();
}

void LockWaits::wakeThoseFor(const FileIdentity &file, int64_t part) const {
    for (auto &[user, wait] : waits) {
        if (wait->file_.id() == file && (part == everyPart || part == wait->part_))
            wake(wait);
    }
}

namespace {

// Never destroyed, since sessions may end in exit handlers.
LockWaits *lockWaits = new LockWaits;

}  // namespace

LockWait::LockWait(LockFile &file, int64_t part, WaitClock::time_point deadline)
    : file_(file), part_(part), deadline_(deadline) {
    std::lock_guard lock(lockWaits->mutex);
    begunAt_ = ++lockWaits->events;
    lockWaits->add(this);
}

LockWait::~LockWait() {
    std::lock_guard lock(lockWaits->mutex);
    lockWaits->remove(this);
}

// The last that came to a cycle leaves it. The others, who have waited all the while, are made to try again
// before that: what one of them waits for may have been deleted, so that it goes on without it.
bool LockWait::canNeverEnd() {
    std::vector<LockWait *> others = lockWaits->cycleOf(this);
    bool isLast = std::all_of(others.begin(), others.end(),
                              [this](const LockWait *other) { return other->begunAt_ < begunAt_; });
    if (others.empty() || !isLast)
        return false;
    if (suspectedAt_ != 0)
        return std::all_of(others.begin(), others.end(),
                           [this](const LockWait *other) { return other->pausedAt_ > suspectedAt_; });
    suspectedAt_ = ++lockWaits->events;
    for (LockWait *other : others)
        lockWaits->wake(other);
    return false;
}

bool LockWait::pause() {
    std::unique_lock lock(lockWaits->mutex);
    if (WaitClock::now() >= deadline_)
        return false;
    if (canNeverEnd()) {
        // Those left in the cycle go on waiting.
        lockWaits->remove(this);
        throw StatusError{VANTREL_STATUS_DEAD_LOCK};
    }
    pausedAt_ = ++lockWaits->events;
    isAsleep_ = true;
    wakeUp_.wait_for(lock, pauseLength_, [this] { return isToTryAgain_; });
    isAsleep_ = false;
    isToTryAgain_ = false;
    pauseLength_ = std::min(2 * pauseLength_, longestPause);
    return true;
}

void addLockUser(const FileIdentity &file, uint16_t slot, const LockUser *user) {
    if (slot == 0)
        return;
    std::lock_guard lock(lockWaits->mutex);
    lockWaits->users[{file, slot}] = user;
}

void removeLockUser(const FileIdentity &file, uint16_t slot) {
    std::lock_guard lock(lockWaits->mutex);
    lockWaits->users.erase({file, slot});
}

const LockUser *lockUserOf(const FileIdentity &file, uint16_t slot) {
    std::lock_guard lock(lockWaits->mutex);
    return lockWaits->userOf(file, slot);
}

void wakeLockWaits(const FileIdentity &file, int64_t part) {
    if (lockWaits->count == 0)
        return;
    std::lock_guard lock(lockWaits->mutex);
    lockWaits->wakeThoseFor(file, part);
}

void holdUpLockWaits() {
    lockWaits->mutex.lock();
}

bool isPausing(const LockUser &user) {
    return lockWaits->isPausing(user);
}

void letLockWaitsGoOn() {
    lockWaits->mutex.unlock();
}

void forgetLockWaits() {
    lockWaits = new LockWaits;
}

}  // namespace vantrel::embedded
