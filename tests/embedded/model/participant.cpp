#include "participant.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "participant_session.h"
#include "tests/embedded/quiet_fork.h"

namespace vantrel::test {

namespace {

constexpr int answerMilliseconds = 25000;
constexpr int waitingMilliseconds = 300;

std::string readLine(int descriptor) {
    std::string line;
    char letter;
    while (read(descriptor, &letter, 1) == 1 && letter != '\n')
        line += letter;
    return line;
}

void writeLine(int descriptor, const std::string &line) {
    std::string text = line + "\n";
    EXPECT_EQ(write(descriptor, text.data(), text.size()), static_cast<ssize_t>(text.size()));
}

int takePart(const std::string &path, int commands, int answers) {
    ParticipantSession session(path);
    for (;;) {
        std::string command = readLine(commands);
        if (command.empty())
            return 0;
        writeLine(answers, session.perform(command));
    }
}

}  // namespace

Participant::Participant(const std::string &path) {
    int commands[2], answers[2];
    EXPECT_EQ(pipe(commands), 0);
    EXPECT_EQ(pipe(answers), 0);
    process_ = forkWhileQuiet([&] {
        close(commands[1]);
        close(answers[0]);
        return takePart(path, commands[0], answers[1]);
    });
    close(commands[0]);
    close(answers[1]);
    commands_ = commands[1];
    answers_ = answers[0];
}

// Later participants inherit the ends of earlier ones' pipes, so that closing them would not end these.
Participant::~Participant() {
    if (process_ != -1)
        kill();
    close(commands_);
    close(answers_);
}

void Participant::kill() {
    ::kill(process_, SIGKILL);
    EXPECT_EQ(waitpid(process_, nullptr, 0), process_);
    process_ = -1;
}

void Participant::tell(const std::string &command) {
    writeLine(commands_, command);
}

bool Participant::answersWithin(int milliseconds) {
    pollfd answers{answers_, POLLIN, 0};
    return poll(&answers, 1, milliseconds) == 1;
}

std::string Participant::answer() {
    return answersWithin(answerMilliseconds) ? readLine(answers_) : "no answer";
}

bool Participant::isWaiting() {
    return !answersWithin(waitingMilliseconds);
}

std::string Participant::ask(const std::string &command) {
    tell(command);
    return answer();
}

}  // namespace vantrel::test
