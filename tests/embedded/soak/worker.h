#ifndef VANTREL_TESTS_EMBEDDED_SOAK_WORKER_H
#define VANTREL_TESTS_EMBEDDED_SOAK_WORKER_H

#include <atomic>
#include <random>

#include "accounts.h"

namespace vantrel::test {

inline constexpr size_t fileCount = 2;
inline constexpr int64_t grandTotal = initialBalance * accountsPerFile * fileCount;

// What the workers did, in memory that all of them share.
struct Work {
    std::atomic<uint64_t> transfers, abandoned, conflicts, deadlocks, checks, scans, updates, insertions;
    std::atomic<bool> isOver;
    std::atomic<uint64_t> failures;
};

// One process's share: transfers between accounts of both files, which never change the total; other reads
// and changes; and checks of the total.
class Worker {
  public:
    Worker(const std::string (&paths)[fileCount], uint64_t seed, Work &work);
    ~Worker();
    Worker(const Worker &) = delete;
    Worker &operator=(const Worker &) = delete;

    void run();
    // Complains unless the grand total is there.
    void checkTotal();

  private:
    void step();
    void transfer();
    VantrelStatus move(VantrelLockMode lock);
    VantrelStatus sumUp(int64_t *sum);
    void updateAlone();
    void scan();
    void insertAndErase();
    void count(const char *what, VantrelStatus status, std::atomic<uint64_t> &done);
    void complain(const char *what, int64_t value);
    uint32_t random(uint32_t below) { return static_cast<uint32_t>(random_() % below); }
    VantrelLockMode anyLock();
    Accounts &anyFile() { return *files_[random(fileCount)]; }

    std::mt19937_64 random_;
    Work &work_;
    uint32_t ownNumber_;
    VantrelClient *client_ = nullptr;
    Accounts *files_[fileCount] = {};
};

}  // namespace vantrel::test

#endif
