#include <algorithm>

#include "embedded/commit/crash_fixture.h"

namespace {

using namespace vantrel::test;

class CommitOrderTest : public CrashTest {
  protected:
    // The calls that make something durable or change a name, in their order.
    std::vector<std::string> callsOf(const std::function<void()> &work) {
        std::vector<std::string> calls;
        SystemCallWatch watch(directory.path(), [&](const SystemCall &call) {
            std::string name = call.path.substr(std::min(directory.path().size() + 1, call.path.size()));
            if (call.name != "write" && call.name != "ftruncate")
                calls.push_back(call.name + ' ' + (name.empty() ? "directory" : name));
            return Fate::happens;
        });
        work();
        return calls;
    }
};

TEST_F(CommitOrderTest, PointersThenDecisionThenParts) {
    ThreeFiles files(directory, 1);
    ASSERT_EQ(files.open(), 0);
    // Logs are there already, so that they do not sync the directory too.
    for (auto &block : files.blocks)
        ASSERT_EQ(files.session.call(2, &block, "e1", "", -1).status, 0);
    for (int turn = 0; turn < 2; ++turn) {
        ASSERT_EQ(files.begin(), 0);
        for (size_t file : {size_t{2}, size_t{0}, size_t{1}}) {
            ASSERT_EQ(files.session.call(5, &files.blocks[file], "", "a", 0, 2).status, 0);
            ASSERT_EQ(files.session.call(3, &files.blocks[file], turn == 0 ? "a2" : "a3", "", -1).status, 0);
        }
        std::vector<std::string> calls = callsOf([&] { ASSERT_EQ(files.end(), 0); });
        if (turn == 0)
            continue;
        // The background thread may ask for one more.
        auto isUnlink = [](const std::string &call) { return call.starts_with("unlink"); };
        calls.erase(std::find_if(calls.rbegin(), calls.rend(), isUnlink).base(), calls.end());
        EXPECT_EQ(calls, (std::vector<std::string>{
                             "open first-commit-new", "fsync first-commit-new", "rename first-commit",
                             "open second-commit-new", "fsync second-commit-new", "rename second-commit",
                             "fsync directory", "fsync third-wal", "fsync first-wal", "fsync second-wal",
                             "unlink first-commit", "unlink second-commit"}));
    }
}

TEST_F(CommitOrderTest, OneFileIsSyncedAndNothingElse) {
    ThreeFiles files(directory, 1);
    ASSERT_EQ(files.open(), 0);
    for (uint32_t begin : {1019u, 1519u, 19u, 1019u}) {
        ASSERT_EQ(files.begin(begin), 0);
        // An exclusive one takes the others by reading them.
        ASSERT_EQ(files.session.call(5, &files.blocks[1], "", "a", 0, 2).status, 0);
        ASSERT_EQ(files.session.call(5, &files.blocks[0], "", "a", 0, 2).status, 0);
        ASSERT_EQ(files.session.call(3, &files.blocks[0], "a2", "", -1).status, 0);
        std::vector<std::string> calls = callsOf([&] { ASSERT_EQ(files.end(), 0); });
        if (begin == 19) {
            EXPECT_EQ(calls, std::vector<std::string>{"fsync first-wal"});
        }
    }
    std::vector<std::string> calls = callsOf([&] {
        ASSERT_EQ(files.begin(), 0);
        ASSERT_EQ(files.session.call(3, &files.blocks[0], "a2", "", -1).status, 0);
        ASSERT_EQ(files.end(), 0);
    });
    EXPECT_EQ(calls, std::vector<std::string>{"fsync first-wal"});
}

TEST_F(CommitOrderTest, WithoutAChangeNothingIsSynced) {
    ThreeFiles files(directory, 1);
    ASSERT_EQ(files.open(), 0);
    std::vector<std::string> calls = callsOf([&] {
        ASSERT_EQ(files.begin(19), 0);
        EXPECT_EQ(files.contents(), ThreeFiles::before);
        ASSERT_EQ(files.end(), 0);
    });
    EXPECT_EQ(calls, std::vector<std::string>{});
}

// An accelerated file's own commit is not synced; what it decided is, before anybody acts upon it.
TEST_F(CommitOrderTest, ADecisionIsSyncedBeforeItIsCarriedOut) {
    constexpr int32_t accelerated = -1;
    dieAt("write", "second-wal", accelerated);
    ThreeFiles files(directory, 1);
    std::vector<std::string> calls =
        callsOf([&] { ASSERT_EQ(files.session.open(&files.blocks[1], directory / "second"), 0); });
    auto decision = std::find(calls.begin(), calls.end(), "fsync first-wal");
    auto part = std::find(calls.begin(), calls.end(), "fsync second-wal");
    ASSERT_NE(part, calls.end());
    EXPECT_LT(decision, part);
    EXPECT_EQ(files.contents(size_t{1}), ThreeFiles::after);
}

}  // namespace
