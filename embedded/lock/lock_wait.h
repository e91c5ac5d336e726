#ifndef VANTREL_EMBEDDED_LOCK_LOCK_WAIT_H
#define VANTREL_EMBEDDED_LOCK_LOCK_WAIT_H

#include <chrono>
#include <condition_variable>

#include "embedded/lock/lock_file.h"

namespace vantrel::embedded {

using WaitClock = std::chrono::steady_clock;

inline WaitClock::time_point waitDeadline() {
    return WaitClock::now() + std::chrono::seconds(30);
}

// A session's wait for something that another session holds. Releases in this process end its pauses; those
// of other processes are found by trying again.
class LockWait {
  public:
    LockWait(LockFile &file, int64_t part, WaitClock::time_point deadline);
    ~LockWait();
    LockWait(const LockWait &) = delete;
    LockWait &operator=(const LockWait &) = delete;

    int64_t part() const { return part_; }

    // Returns when it is time to try again, or false when the wait has lasted long enough. Where the sessions
    // of this process wait for each other in a cycle, status 78 is thrown to the last that came.
    bool pause();

  private:
    friend struct LockWaits;

    bool canNeverEnd();

    LockFile &file_;
    int64_t part_;
    WaitClock::time_point deadline_;
    std::chrono::milliseconds pauseLength_{1};
    std::condition_variable wakeUp_;
    bool isAsleep_ = false;
    bool isToTryAgain_ = false;
    // When the wait and its last pause began and when a cycle was first found, in the order of such events.
    uint64_t begunAt_ = 0;
    uint64_t pausedAt_ = 0;
    uint64_t suspectedAt_ = 0;
};

// The sessions of this process, by the slots that they have in side files; slot 0 is nobody's.
void addLockUser(const FileIdentity &file, uint16_t slot, const LockUser *user);
void removeLockUser(const FileIdentity &file, uint16_t slot);
const LockUser *lockUserOf(const FileIdentity &file, uint16_t slot);

inline constexpr int64_t everyPart = -1;
// Something was released: whoever waits for it in this process tries again.
void wakeLockWaits(const FileIdentity &file, int64_t part);

// Around a fork. While waits are held up, no wait begins or ends and no session that pauses goes on.
void holdUpLockWaits();
bool isPausing(const LockUser &user);
void letLockWaitsGoOn();
// In the child nobody waits.
void forgetLockWaits();

}  // namespace vantrel::embedded

#endif
