#include <chrono>
#include <fstream>
#include <thread>

#include "embedded/commit/crash_fixture.h"

namespace {

using namespace vantrel::test;
namespace fs = std::filesystem;

// A writer died before the decision, with the pointers placed.
class UndecidedCommitTest : public CrashTest {
  protected:
    void dieUndecided() { dieAt("fsync", "first-wal"); }
};

TEST_F(UndecidedCommitTest, HoldsNobodyUp) {
    ThreeFiles writer(directory, 2);
    ASSERT_EQ(writer.open(), 0);
    dieUndecided();
    ASSERT_EQ(writer.begin(1519), 0);
    for (size_t file : {2, 0, 1})
        EXPECT_EQ(writer.session.call(2, &writer.blocks[file], "c3", "", -1).status, 0);
    ASSERT_EQ(writer.end(), 0);
    EXPECT_EQ(writer.contents(), "a1 b1 c3 d65000 ");
}

// Deciding takes the coordinator, which the writer takes first here.
TEST_F(UndecidedCommitTest, IsDecidedBeforeTheCoordinatorIsTaken) {
    for (uint32_t begin : {1519u, 1019u, 19u}) {
        startAnew();
        ThreeFiles writer(directory, 2);
        ASSERT_EQ(writer.open(), 0);
        dieUndecided();
        ASSERT_EQ(writer.begin(begin), 0);
        auto start = std::chrono::steady_clock::now();
        for (size_t file : {0, 1, 2})
            EXPECT_EQ(writer.session.call(2, &writer.blocks[file], "c3", "", -1).status, 0);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
        ASSERT_EQ(writer.end(), 0);
        EXPECT_EQ(writer.contents(), "a1 b1 c3 d65000 ");
        EXPECT_EQ(directory.names(),
                  (std::vector<std::string>{"first", "first-lock", "first-shm", "first-wal", "second",
                                            "second-lock", "second-shm", "second-wal", "third", "third-lock",
                                            "third-shm", "third-wal"}));
    }
}

// As above, where the coordinator comes free only when its writer dies.
TEST_F(UndecidedCommitTest, IsDecidedAfterAWaitForTheCoordinator) {
    TemporaryDirectory signals;
    ThreeFiles writer(directory, 2);
    ASSERT_EQ(writer.open(), 0);
    ChildProcess dying([&]() -> std::string {
        ThreeFiles files(directory, 1);
        EXPECT_EQ(files.open(), 0);
        EXPECT_EQ(files.begin(), 0);
        files.change();
        std::ofstream(signals / "changed").close();
        std::this_thread::sleep_for(std::chrono::milliseconds(500));
        SystemCallWatch watch(directory.path(), [this](const SystemCall &call) {
            return call.name == "fsync" && call.path == directory / "first-wal" ? Fate::kills : Fate::happens;
        });
        return std::to_string(files.end());
    });
    while (!fs::exists(signals / "changed"))
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    ASSERT_EQ(writer.begin(1019), 0);
    auto start = std::chrono::steady_clock::now();
    for (size_t file : {0, 1, 2})
        EXPECT_EQ(writer.session.call(2, &writer.blocks[file], "c3", "", -1).status, 0);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
    ASSERT_EQ(writer.end(), 0);
    EXPECT_EQ(dying.result(), "killed");
    EXPECT_EQ(writer.contents(), "a1 b1 c3 d65000 ");
}

// Where a file is opened only when its coordinator is taken, its decision waits for the transaction's end.
TEST_F(UndecidedCommitTest, RefusesAWriterWhoHasTheCoordinatorAlready) {
    ThreeFiles writer(directory, 2);
    ASSERT_EQ(writer.session.open(&writer.blocks[0], ThreeFiles::path(directory, 0)), 0);
    dieUndecided();
    ASSERT_EQ(writer.begin(1519), 0);
    EXPECT_EQ(writer.session.call(2, &writer.blocks[0], "c3", "", -1).status, 0);
    ASSERT_EQ(writer.session.open(&writer.blocks[1], ThreeFiles::path(directory, 1)), 0);
    EXPECT_EQ(writer.session.call(2, &writer.blocks[1], "c3", "", -1).status, 85);
    ASSERT_EQ(writer.session.call(21, nullptr).status, 0);
    std::this_thread::sleep_for(std::chrono::seconds(1));
    EXPECT_FALSE(fs::exists(directory / "second-commit"));
}

TEST_F(UndecidedCommitTest, LetsReadersPassWhileTheCoordinatorIsChanged) {
    dieUndecided();
    ThreeFiles changer(directory, 2);
    ASSERT_EQ(changer.session.open(&changer.blocks[0], ThreeFiles::path(directory, 0)), 0);
    ASSERT_EQ(changer.begin(), 0);
    ASSERT_EQ(changer.session.call(2, &changer.blocks[0], "e1", "", -1).status, 0);
    ThreeFiles reader(directory, 4);
    ASSERT_EQ(reader.session.open(&reader.blocks[1], ThreeFiles::path(directory, 1)), 0);
    EXPECT_EQ(reader.contents(size_t{1}), ThreeFiles::before);
    ThreeFiles other(directory, 3);
    ASSERT_EQ(other.session.open(&other.blocks[1], ThreeFiles::path(directory, 1)), 0);
    ASSERT_EQ(other.begin(1519), 0);
    EXPECT_EQ(other.session.call(2, &other.blocks[1], "e1", "", -1).status, 85);
    ASSERT_EQ(changer.end(), 0);
    EXPECT_EQ(other.session.call(2, &other.blocks[1], "e1", "", -1).status, 0);
    ASSERT_EQ(other.end(), 0);
}

}  // namespace
