#ifndef VANTREL_TESTS_EMBEDDED_OPERATION_LOCK_PROCESS_H
#define VANTREL_TESTS_EMBEDDED_OPERATION_LOCK_PROCESS_H

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>

#include "embedded/quiet_fork.h"

namespace vantrel::test {

// A process that does something and then stays as it is until it is killed.
class LockProcess {
  public:
    explicit LockProcess(const std::function<bool()> &work) {
        int ready[2];
        EXPECT_EQ(pipe(ready), 0);
        process_ = forkWhileQuiet([&]() -> int {
            char outcome = work() ? 'y' : 'n';
            if (write(ready[1], &outcome, 1) != 1)
                return 1;
            for (;;)
                pause();
        });
        char outcome = '?';
        close(ready[1]);
        EXPECT_EQ(read(ready[0], &outcome, 1), 1);
        EXPECT_EQ(outcome, 'y');
        close(ready[0]);
    }
    ~LockProcess() {
        if (process_ > 0)
            kill();
    }
    LockProcess(const LockProcess &) = delete;
    LockProcess &operator=(const LockProcess &) = delete;

    pid_t id() const { return process_; }
    void kill() {
        ::kill(process_, SIGKILL);
        EXPECT_EQ(waitpid(process_, nullptr, 0), process_);
        process_ = -1;
    }

  private:
    pid_t process_ = -1;
};

}  // namespace vantrel::test

#endif
