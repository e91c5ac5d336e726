#ifndef VANTREL_TESTS_EMBEDDED_COMMIT_THREE_FILES_H
#define VANTREL_TESTS_EMBEDDED_COMMIT_THREE_FILES_H

#include <array>
#include <string>
#include <vector>

#include "embedded/operation/engine_session.h"

namespace vantrel::test {

// A session on three files, each with the same records, of which one is long.
class ThreeFiles {
  public:
    using Order = std::array<size_t, 3>;

    static constexpr const char *before = "a1 b1 d65000 ";
    static constexpr const char *after = "a2 c2 d66000 ";
    static const std::vector<Order> &orders();
    static void create(const TemporaryDirectory &directory);

    ThreeFiles(const TemporaryDirectory &directory, uint8_t sessionNumber);

    // Encrypts a file for an owner of its own, whose name every opening then gives.
    int32_t encrypt(size_t file);
    // The status of the first file that cannot be opened.
    int32_t open(const Order &order = {0, 1, 2}, int32_t mode = 0);
    int32_t close(size_t file) { return session.call(1, &blocks[file]).status; }

    int32_t begin(uint32_t code = 1019) { return session.call(code, nullptr).status; }
    // Updates, deletes, inserts and lengthens records, from `before` to `after`.
    void change(const Order &order = {0, 1, 2});
    // To the current record.
    int32_t append(EngineSession::PositionBlock *block, const std::string &bytes);
    int32_t end() { return session.call(20, nullptr).status; }

    // What a file holds, in the order of its index; or the status that the first read gave.
    std::string contents(size_t file);
    // What all files hold, read in an order; "torn" where they differ.
    std::string contents(const Order &order = {0, 1, 2});

    static std::string path(const TemporaryDirectory &directory, size_t file);

    EngineSession session;
    std::array<EngineSession::PositionBlock, 3> blocks{};

  private:
    void find(size_t file, const char *key);
    uint32_t lengthOf(size_t file, uint64_t address);

    std::array<std::string, 3> paths_;
    uint8_t sessionNumber_;
};

// What the files hold for a process that opens them now, and that finds nothing damaged; afterwards, one more
// transaction over all of them works, unless they are to stay as they are.
std::string contentsAfterwards(const TemporaryDirectory &directory, const ThreeFiles::Order &order);

}  // namespace vantrel::test

#endif
