#include "embedded/commit/child_process.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "embedded/quiet_fork.h"

namespace vantrel::test {

ChildProcess::ChildProcess(const Work &work, Start start) {
    int ends[2], startEnds[2];
    EXPECT_EQ(pipe(ends), 0);
    EXPECT_EQ(pipe(startEnds), 0);
    process_ = forkWhileQuiet([&] {
        close(startEnds[1]);
        char nothing;
        if (start == Start::forResult && read(startEnds[0], &nothing, 1) != 1)
            return 1;
        std::string result = work();
        bool isWritten = write(ends[1], result.data(), result.size()) == static_cast<ssize_t>(result.size());
        return isWritten && !testing::Test::HasFailure() ? 0 : 1;
    });
    close(ends[1]);
    close(startEnds[0]);
    output_ = ends[0];
    start_ = startEnds[1];
    isWaiting_ = start == Start::forResult;
}

ChildProcess::~ChildProcess() {
    if (output_ >= 0)
        result();
}

void ChildProcess::kill() {
    EXPECT_EQ(::kill(process_, SIGKILL), 0);
}

std::string ChildProcess::result() {
    if (isWaiting_ && write(start_, "", 1) != 1)
        ADD_FAILURE() << "the child is gone";
    close(start_);
    std::string result;
    char buffer[4096];
    for (ssize_t length; (length = read(output_, buffer, sizeof buffer)) > 0;)
        result.append(buffer, static_cast<size_t>(length));
    close(output_);
    output_ = -1;
    int status = 0;
    EXPECT_EQ(waitpid(process_, &status, 0), process_);
    if (WIFSIGNALED(status))
        return WTERMSIG(status) == SIGKILL ? "killed" : "signal " + std::to_string(WTERMSIG(status));
    EXPECT_EQ(WEXITSTATUS(status), 0) << "in a child process";
    return result;
}

}  // namespace vantrel::test
