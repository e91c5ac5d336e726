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

// Forks while the engine's background thread sleeps. The address sanitizer does not look after its allocator
// in a fork: a child that is made while a thread starts may find it locked for ever. An emulated process
// waits until there is no other thread.
inline pid_t forkWhileQuiet() {
    const std::string self = std::to_string(gettid());
    auto isQuiet = [&] {
        std::filesystem::directory_iterator tasks("/proc/self/task");
        return std::all_of(begin(tasks), end(tasks), [&](const auto &task) {
            return task.path().filename() == self || (!isEmulated() && isAsleep(task.path()));
        });
    };
    auto patience = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (!isQuiet() && std::chrono::steady_clock::now() < patience)
        std::this_thread::yield();
    return fork();
}

}  // namespace vantrel::test

#endif
