#ifndef VANTREL_TESTS_EMBEDDED_OPERATION_LOCK_FIXTURE_H
#define VANTREL_TESTS_EMBEDDED_OPERATION_LOCK_FIXTURE_H

#include <chrono>
#include <functional>
#include <future>
#include <memory>

#include "embedded/operation/engine_session.h"

namespace vantrel::test {

// A session with several files open, whose records are a letter, by which they are found, and a digit.
class LockClient {
  public:
    LockClient(uint8_t number, const std::vector<std::string> &paths) : session(number), paths_(paths) {
        blocks_.resize(paths.size());
        for (size_t file = 0; file < paths.size(); ++file)
            EXPECT_EQ(session.open(&blocks_[file], paths[file]), 0);
    }

    // Lock biases: 100 and 300 wait, 200 and 400 do not.
    int32_t read(char letter, uint32_t bias = 0, size_t file = 0) {
        return session.call(5 + bias, &blocks_[file], "", {letter}, 0, 2).status;
    }
    std::string data(char letter, size_t file = 0) {
        return session.call(5, &blocks_[file], "", {letter}, 0, 2).data;
    }
    int32_t insert(const std::string &record, size_t file = 0) {
        return session.call(2, &blocks_[file], record, "", -1).status;
    }
    int32_t update(const std::string &record, size_t file = 0) {
        return session.call(3, &blocks_[file], record, "", -1).status;
    }
    int32_t erase(size_t file = 0) { return session.call(4, &blocks_[file]).status; }
    int32_t unlock(int32_t keyNumber, size_t file = 0) {
        return session.call(27, &blocks_[file], "", "", keyNumber).status;
    }
    int32_t close(size_t file = 0) { return session.call(1, &blocks_[file]).status; }
    int32_t begin(uint32_t kind = 1019) { return session.call(kind, nullptr).status; }
    int32_t end() { return session.call(20, nullptr).status; }
    int32_t abort() { return session.call(21, nullptr).status; }
    int32_t reset() { return session.call(28, nullptr).status; }

    // Finds a record locked without keeping it.
    bool findsLocked(char letter, size_t file = 0) {
        int32_t status = read(letter, 200, file);
        EXPECT_TRUE(status == 0 || status == 84) << status;
        unlock(0, file);
        return status == 84;
    }

    EngineSession::PositionBlock *block(size_t file = 0) { return &blocks_[file]; }

    EngineSession session;

  private:
    std::vector<std::string> paths_;
    std::vector<EngineSession::PositionBlock> blocks_;
};

class LockFixture : public testing::Test {
  protected:
    explicit LockFixture(size_t files = 1, size_t clientCount = 2) {
        EngineSession maker(99);
        for (size_t file = 0; file < files; ++file) {
            paths.push_back(directory / ("file" + std::to_string(file)));
            EXPECT_EQ(maker.create(paths.back(), createRequest(2, 0, {{{0, 1}}})), 0);
        }
        for (size_t client = 0; client < clientCount; ++client)
            clients.push_back(std::make_unique<LockClient>(static_cast<uint8_t>(client + 1), paths));
        for (size_t file = 0; file < files; ++file) {
            for (const char *record : {"a0", "b0", "c0"})
                EXPECT_EQ(clients[0]->insert(record, file), 0);
        }
    }

    static std::future<int32_t> later(std::function<int32_t()> call) {
        return std::async(std::launch::async, std::move(call));
    }
    static bool isWaiting(const std::future<int32_t> &call) {
        return call.wait_for(std::chrono::milliseconds(60)) == std::future_status::timeout;
    }
    // The longest that anything may take that does not wait for a lock.
    static bool endsSoon(const std::future<int32_t> &call) {
        return call.wait_for(std::chrono::seconds(10)) == std::future_status::ready;
    }

    TemporaryDirectory directory;
    std::vector<std::string> paths;
    std::vector<std::unique_ptr<LockClient>> clients;
};

}  // namespace vantrel::test

#endif
