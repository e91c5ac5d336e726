#ifndef VANTREL_TESTS_EMBEDDED_CHILD_H
#define VANTREL_TESTS_EMBEDDED_CHILD_H

#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vantrel::test {

// Calls the function in a child process, which does not outlive its parent. Whoever forks so has no engine
// at work.
template <class Function>
pid_t inChild(Function function) {
    pid_t child = fork();
    if (child == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        function();
        _exit(0);
    }
    return child;
}

inline bool endedWell(pid_t child) {
    int status = -1;
    return waitpid(child, &status, 0) == child && status == 0;
}

inline void killAndWait(pid_t child) {
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
}

}  // namespace vantrel::test

#endif
