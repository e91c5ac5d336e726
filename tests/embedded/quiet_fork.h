#ifndef VANTREL_TESTS_EMBEDDED_QUIET_FORK_H
#define VANTREL_TESTS_EMBEDDED_QUIET_FORK_H

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "emulation.h"

namespace vantrel::test {

inline bool isAsleep(const std::filesystem::path &task) {
    std::string line;
    std::getline(std::ifstream(task / "stat"), line);
    size_t nameEnd = line.rfind(") ");
    return nameEnd == std::string::npos || line[nameEnd + 2] == 'S';
}

// Waits, though not for long, until all other threads of this process sleep.
inline void waitUntilQuiet() {
    const std::string self = std::to_string(gettid());
    auto isQuiet = [&] {
        std::filesystem::directory_iterator tasks("/proc/self/task");
        return std::all_of(begin(tasks), end(tasks), [&](const auto &task) {
            return task.path().filename() == self || isAsleep(task.path());
        });
    };
    auto patience = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (!isQuiet() && std::chrono::steady_clock::now() < patience)
        std::this_thread::yield();
}

// Runs work in a child process, which ends with what the work returns. It is made while the engine's
// background thread sleeps: the address sanitizer does not look after its allocator in a fork, and a child
// that is made while a thread starts may find it locked for ever.
template <class Work>
pid_t forkWhileQuiet(const Work &work) {
    waitUntilQuiet();
    auto forkHere = [&] {
        pid_t child = fork();
        if (child == 0)
            _exit(work());
        return child;
    };
    if (!isEmulated())
        return forkHere();
    // An emulated thread is numbered behind those that live, and must have a number that none of the threads
    // had that the child lost: which is so if the child is made by the newest of them.
    pid_t child = -1;
    std::thread([&] { child = forkHere(); }).join();
    return child;
}

}  // namespace vantrel::test

#endif
