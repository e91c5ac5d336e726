#ifndef VANTREL_TESTS_EMBEDDED_OPERATION_OWNER_FIXTURE_H
#define VANTREL_TESTS_EMBEDDED_OPERATION_OWNER_FIXTURE_H

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <sstream>

#include "embedded/operation/engine_session.h"
#include "embedded/quiet_fork.h"

namespace vantrel::test {

// How the modes of an owner are asked for.
constexpr int32_t denied = 0, readable = 1, deniedEncrypted = 2, readableEncrypted = 3;

inline bool isEncryptedMode(int32_t mode) {
    return mode >= deniedEncrypted;
}

inline int32_t openWith(EngineSession &session, EngineSession::PositionBlock *block, const std::string &path,
                        const std::string &name, int32_t mode = 0) {
    return session.call(0, block, name + '\0', path + '\0', mode).status;
}

inline int32_t setOwner(EngineSession &session, EngineSession::PositionBlock *block, int32_t mode,
                        const std::string &name, uint32_t operation = 29) {
    return session.call(operation, block, name + '\0', name + '\0', mode).status;
}

inline int32_t clearOwner(EngineSession &session, EngineSession::PositionBlock *block) {
    return session.call(30, block).status;
}

// The records in the order of an index of the file, each through a read of its own.
inline std::vector<std::string> recordsOf(EngineSession &session, EngineSession::PositionBlock *block,
                                          uint32_t length) {
    std::vector<std::string> records;
    Reply reply = session.call(12, block, "", "", 0, length);
    for (; reply.status == 0; reply = session.call(6, block, "", "", 0, length))
        records.push_back(reply.data);
    EXPECT_EQ(reply.status, 9);
    return records;
}

inline std::string contentOf(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

inline void writeContent(const std::string &path, const std::string &content) {
    std::ofstream(path, std::ios::binary).write(content.data(), static_cast<std::streamsize>(content.size()));
}

// The files of a directory in which the bytes stand.
inline std::vector<std::string> filesWith(const TemporaryDirectory &directory, const std::string &bytes) {
    std::vector<std::string> found;
    for (const std::string &name : directory.names()) {
        if (contentOf(directory / name).find(bytes) != std::string::npos)
            found.push_back(name);
    }
    return found;
}

// Runs a function in a process of its own that is killed when it returns.
template <class Function>
void runAndKill(Function &&function) {
    pid_t child = forkWhileQuiet([&] {
        function();
        return kill(getpid(), SIGKILL);
    });
    ASSERT_GE(child, 0);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
}

}  // namespace vantrel::test

#endif
