#include "embedded/fault/paused_process.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "embedded/emulation.h"
#include "embedded/quiet_fork.h"

namespace vantrel::test {

namespace {

const unsigned patienceSeconds = rounds(12u, 300u);
constexpr char acknowledgement = '.', copyRequest = 'c', reportFollows = 'r', happened = 'h';

}  // namespace

void PausedProcess::Teller::tell(char mark) {
    if (write(output_, &mark, 1) != 1)
        _exit(1);
}

void PausedProcess::Teller::tellThatItHappened() {
    tell(happened);
}

void PausedProcess::Teller::askForCopy() {
    tell(copyRequest);
    char answer;
    if (read(input_, &answer, 1) != 1)
        _exit(1);
}

PausedProcess::PausedProcess(const Work &work, const std::function<void()> &copy) {
    int told[2], answers[2];
    EXPECT_EQ(pipe(told), 0);
    EXPECT_EQ(pipe(answers), 0);
    process_ = forkWhileQuiet([&]() -> int {
        close(told[0]);
        close(answers[1]);
        alarm(patienceSeconds);
        Teller teller(told[1], answers[0]);
        std::string report = work(teller);
        teller.tell(reportFollows);
        if (write(told[1], report.data(), report.size()) != static_cast<ssize_t>(report.size()))
            return 1;
        close(told[1]);
        for (;;)
            pause();
    });
    close(told[1]);
    close(answers[0]);
    listen(told[0], answers[1], copy);
    close(told[0]);
    close(answers[1]);
}

void PausedProcess::listen(int input, int output, const std::function<void()> &copy) {
    char mark = 0;
    while (mark != reportFollows && read(input, &mark, 1) == 1) {
        if (mark == acknowledgement)
            ++acknowledged_;
        hasHappened_ |= mark == happened;
        if (mark == copyRequest) {
            copy();
            EXPECT_EQ(write(output, &mark, 1), 1);
        }
    }
    char buffer[4096];
    for (ssize_t length; (length = read(input, buffer, sizeof buffer)) > 0;)
        report_.append(buffer, static_cast<size_t>(length));
    if (mark == reportFollows)
        return;
    int status = 0;
    EXPECT_EQ(waitpid(process_, &status, 0), process_);
    process_ = -1;
    report_ = WIFSIGNALED(status) ? "signal " + std::to_string(WTERMSIG(status)) : "exit";
}

PausedProcess::~PausedProcess() {
    if (process_ < 0)
        return;
    EXPECT_EQ(kill(process_, SIGKILL), 0);
    EXPECT_EQ(waitpid(process_, nullptr, 0), process_);
}

}  // namespace vantrel::test
