#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <thread>

#include "embedded/commit/crash_fixture.h"
#include "embedded/commit/shell.h"

namespace {

using namespace vantrel::test;
namespace fs = std::filesystem;

// A writer died after the decision, before the second file had its part.
class PendingCommitTest : public CrashTest {
  protected:
    void dieBeforeSecond() { dieAt("write", "second-wal"); }
    TemporaryDirectory copies;

    int32_t rename(const std::string &from, const std::string &to) {
        EngineSession session(3);
        return session.call(14, nullptr, (directory / from) + '\0', (directory / to) + '\0', -127).status;
    }
    int32_t remove(const std::string &name) {
        EngineSession session(3);
        return session.call(14, nullptr, "", (directory / name) + '\0', -128).status;
    }
    // What one file holds, or the status of its opening.
    std::string contentsOf(size_t file, int32_t mode = 0) {
        ThreeFiles files(directory, 4);
        int32_t status = files.session.open(&files.blocks[file], ThreeFiles::path(directory, file), mode);
        return status == 0 ? files.contents(file) : std::to_string(status);
    }
};

TEST_F(PendingCommitTest, AReaderThatHadTheFileOpenSeesItAfterAMoment) {
    ThreeFiles reader(directory, 2);
    ASSERT_EQ(reader.open(), 0);
    ASSERT_EQ(reader.contents(), ThreeFiles::before);
    dieBeforeSecond();
    auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (reader.contents(size_t{1}) != ThreeFiles::after && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_EQ(reader.contents({1, 2, 0}), ThreeFiles::after);
}

TEST_F(PendingCommitTest, AReaderSeesItAtItsNextSnapshot) {
    ThreeFiles reader(directory, 2);
    ASSERT_EQ(reader.open(), 0);
    dieBeforeSecond();
    EXPECT_EQ(reader.contents({2, 1, 0}), ThreeFiles::after);
}

TEST_F(PendingCommitTest, ACopyInContinuousOperationHasIt) {
    dieBeforeSecond();
    EngineSession session(2);
    std::string file = directory / "second", copy = copies / "second";
    ASSERT_EQ(session.call(42, nullptr, file + '\0', "", 0).status, 0);
    fs::copy(file, copy);
    ASSERT_EQ(session.call(42, nullptr, file + '\0', "", 1).status, 0);
    ThreeFiles copied(copies, 3);
    ASSERT_EQ(copied.session.open(&copied.blocks[1], copy), 0);
    EXPECT_EQ(copied.contents(size_t{1}), ThreeFiles::after);
}

TEST_F(PendingCommitTest, AWriterChangesWhatTheCommitLeft) {
    for (uint32_t begin : {0u, 1019u, 1519u, 19u}) {
        startAnew();
        ThreeFiles writer(directory, 2);
        ASSERT_EQ(writer.open(), 0);
        ASSERT_EQ(writer.contents(), ThreeFiles::before);
        dieBeforeSecond();
        if (begin != 0) {
            ASSERT_EQ(writer.begin(begin), 0);
        }
        EXPECT_EQ(writer.session.call(2, &writer.blocks[1], "b2", "", -1).status, 0);
        EXPECT_EQ(writer.session.call(2, &writer.blocks[1], "c3", "", -1).status, 5);
        if (begin != 0) {
            ASSERT_EQ(writer.end(), 0);
        }
        EXPECT_EQ(writer.contents(size_t{1}), "a2 b2 c2 d66000 ");
    }
}

TEST_F(PendingCommitTest, WhatTheWriterReadBeforeIsAConflict) {
    ThreeFiles writer(directory, 2);
    ASSERT_EQ(writer.open(), 0);
    ASSERT_EQ(writer.session.call(5, &writer.blocks[1], "", "a", 0, 2).data, "a1");
    dieBeforeSecond();
    EXPECT_EQ(writer.session.call(3, &writer.blocks[1], "a9", "", -1).status, 80);
}

TEST_F(PendingCommitTest, TheLivingWriterHoldsNoReaderUp) {
    ThreeFiles reader(directory, 2), writer(directory, 1);
    ASSERT_EQ(reader.open(), 0);
    ASSERT_EQ(writer.open(), 0);
    ASSERT_EQ(writer.begin(), 0);
    writer.change();
    std::vector<std::string> seen;
    bool isOver = false;  // what is kept for the others is then dropped, and synced at any time
    {
        SystemCallWatch watch(directory.path(), [&](const SystemCall &call) {
            isOver |= call.name == "unlink";
            if (isOver || call.name != "fsync" || call.path == directory.path())
                return Fate::happens;
            std::string contents;
            for (size_t file : {0, 1, 2})
                contents += reader.contents(file) == ThreeFiles::before ? "b" : "a";
            seen.push_back(contents);
            return Fate::happens;
        });
        ASSERT_EQ(writer.end(), 0);
    }
    // At the two pointers, and at the header of each log and its commit.
    EXPECT_EQ(seen, (std::vector<std::string>{"bbb", "bbb", "bbb", "bbb", "abb", "abb", "aab", "aab"}));
    EXPECT_EQ(reader.contents(), ThreeFiles::after);
}

TEST_F(PendingCommitTest, TheFileBelongsToTheLivingWriterUntilItsEnd) {
    ThreeFiles other(directory, 2), writer(directory, 1);
    ASSERT_EQ(other.open(), 0);
    ASSERT_EQ(writer.open(), 0);
    ASSERT_EQ(writer.begin(), 0);
    writer.change();
    ASSERT_EQ(other.begin(1519), 0);
    std::vector<int32_t> statuses;
    {
        SystemCallWatch watch(directory.path(), [&](const SystemCall &call) {
            if (call.name == "fsync" && call.path == directory / "third-wal")
                statuses.push_back(other.session.call(2, &other.blocks[1], "e1", "", -1).status);
            return Fate::happens;
        });
        ASSERT_EQ(writer.end(), 0);
    }
    // At the header of a new log, and at its end.
    EXPECT_EQ(statuses, (std::vector<int32_t>{85, 85}));
    EXPECT_EQ(other.session.call(2, &other.blocks[1], "e1", "", -1).status, 0);
    ASSERT_EQ(other.end(), 0);
}

TEST_F(PendingCommitTest, RenamingTheCoordinatorLosesNothing) {
    dieBeforeSecond();
    ASSERT_EQ(rename("first", "moved"), 0);
    EXPECT_EQ(contentsOf(1), ThreeFiles::after);
    EXPECT_EQ(contentsOf(2), ThreeFiles::after);
    EXPECT_EQ(directory.names(), (std::vector<std::string>{"moved", "second", "third"}));
}

TEST_F(PendingCommitTest, DeletingOrReplacingTheCoordinatorLosesNothing) {
    dieBeforeSecond();
    ASSERT_EQ(remove("first"), 0);
    EXPECT_EQ(contentsOf(1), ThreeFiles::after);
    EXPECT_EQ(contentsOf(2), ThreeFiles::after);
    startAnew();
    dieBeforeSecond();
    {
        EngineSession session(3);
        ASSERT_EQ(session.create(directory / "first", createRequest(2, 0, {})), 0);
    }
    EXPECT_EQ(contentsOf(1), ThreeFiles::after);
    EXPECT_EQ(contentsOf(2), ThreeFiles::after);
}

TEST_F(PendingCommitTest, RenamingAnotherFileTakesItsPartAlong) {
    dieBeforeSecond();
    ASSERT_EQ(rename("second", "moved"), 0);
    ASSERT_EQ(rename("moved", "second"), 0);
    EXPECT_EQ(contentsOf(1), ThreeFiles::after);
}

TEST_F(PendingCommitTest, DeletingAnotherFileLeavesNothing) {
    dieBeforeSecond();
    ASSERT_EQ(remove("second"), 0);
    ASSERT_EQ(remove("third"), 0);
    EXPECT_EQ(contentsOf(0), ThreeFiles::after);
    EXPECT_EQ(directory.names(), std::vector<std::string>{"first"});
}

TEST_F(PendingCommitTest, ACoordinatorRemovedByHandTakesTheDecisionAlong) {
    dieBeforeSecond();
    for (const char *name : {"first", "first-wal", "first-shm"})
        fs::remove(directory / name);
    EXPECT_EQ(contentsOf(1), ThreeFiles::before);
    EXPECT_EQ(contentsOf(2), ThreeFiles::before);
    EXPECT_FALSE(fs::exists(directory / "second-commit"));
}

TEST_F(PendingCommitTest, AnotherFileInTheCoordinatorsPlaceDecidesNothing) {
    dieBeforeSecond();
    for (const char *name : {"first", "first-wal", "first-shm"})
        fs::remove(directory / name);
    fs::copy(untouched / "third", directory / "first");
    // Nor is it asked, or waited for.
    ThreeFiles changer(directory, 2), other(directory, 3);
    ASSERT_EQ(changer.session.open(&changer.blocks[0], ThreeFiles::path(directory, 0)), 0);
    ASSERT_EQ(changer.begin(), 0);
    ASSERT_EQ(changer.session.call(2, &changer.blocks[0], "e1", "", -1).status, 0);
    ASSERT_EQ(other.session.open(&other.blocks[1], ThreeFiles::path(directory, 1)), 0);
    ASSERT_EQ(other.begin(1519), 0);
    EXPECT_EQ(other.session.call(2, &other.blocks[1], "e1", "", -1).status, 0);
    ASSERT_EQ(other.session.call(21, nullptr).status, 0);
    EXPECT_EQ(other.contents(size_t{1}), ThreeFiles::before);
}

TEST_F(PendingCommitTest, NorDoesWhatIsNoRecordFile) {
    dieBeforeSecond();
    for (const char *name : {"first", "first-wal", "first-shm"})
        fs::remove(directory / name);
    std::ofstream(directory / "first") << "somebody's notes";
    EXPECT_EQ(contentsOf(1), ThreeFiles::before);
    EXPECT_EQ(contentsOf(2), ThreeFiles::before);
}

TEST_F(PendingCommitTest, AnotherFileInTheOthersPlaceGetsNothing) {
    dieBeforeSecond();
    for (const char *name : {"second", "second-wal", "second-shm"})
        fs::remove(directory / name);
    fs::copy(untouched / "first", directory / "second");
    EXPECT_EQ(contentsOf(1), ThreeFiles::before);
    EXPECT_EQ(contentsOf(0), ThreeFiles::after);
    EXPECT_EQ(contentsOf(2), ThreeFiles::after);
    EXPECT_EQ(directory.names(), (std::vector<std::string>{"first", "second", "third"}));
}

TEST_F(PendingCommitTest, WithoutTheCoordinatorsDirectoryTheFileWaits) {
    TemporaryDirectory away;
    std::string home = away / "home";
    fs::create_directory(home);
    EngineSession session(3);
    std::string request = createRequest(2, 0, {{{0, 1}}});
    ASSERT_EQ(session.create(home + "/first", request), 0);
    ASSERT_EQ(session.create(directory / "far", request), 0);
    EXPECT_EQ(ChildProcess::run([&]() -> std::string {
                  EngineSession dying(1);
                  EngineSession::PositionBlock first{}, far{};
                  EXPECT_EQ(dying.open(&first, home + "/first"), 0);
                  EXPECT_EQ(dying.open(&far, directory / "far"), 0);
                  EXPECT_EQ(dying.call(1019, nullptr).status, 0);
                  EXPECT_EQ(dying.call(2, &first, "a1", "", -1).status, 0);
                  EXPECT_EQ(dying.call(2, &far, "a1", "", -1).status, 0);
                  SystemCallWatch watch(directory.path(), [](const SystemCall &call) {
                      return call.path.ends_with("far-wal") ? Fate::kills : Fate::happens;
                  });
                  return std::to_string(dying.call(20, nullptr).status);
              }),
              "killed");
    EngineSession::PositionBlock block{};
    fs::rename(home, away / "elsewhere");
    EXPECT_EQ(session.open(&block, directory / "far"), 2);
    fs::rename(away / "elsewhere", home);
    // Nor does the coordinator go while the other is away.
    fs::rename(directory.path(), away / "directory");
    EXPECT_EQ(session.call(14, nullptr, "", home + "/first" + '\0', -128).status, 2);
    EXPECT_EQ(session.open(&block, home + "/first"), 0);
    EXPECT_EQ(session.call(1, &block).status, 0);
    fs::rename(away / "directory", directory.path());
    EXPECT_EQ(session.open(&block, directory / "far"), 0);
    EXPECT_EQ(session.call(5, &block, "", "a", 0, 2).data, "a1");
}

TEST_F(PendingCommitTest, DamageIsReported) {
    dieBeforeSecond();
    std::ofstream(directory / "second-commit") << "somebody's notes that are longer than a pointer ever is";
    EXPECT_EQ(contentsOf(1), "2");
    EXPECT_EQ(contentsOf(2), ThreeFiles::after);

    // Not in the state that the changes were made in.
    startAnew();
    dieBeforeSecond();
    runSql(directory / "second", "DELETE FROM record WHERE address = 1");
    EXPECT_EQ(contentsOf(1), "2");
    EXPECT_EQ(contentsOf(2), ThreeFiles::after);

    startAnew();
    dieBeforeSecond();
    runSql(directory / "second", "DROP TABLE index_1");
    EXPECT_EQ(contentsOf(1), "2");

    startAnew();
    dieBeforeSecond();
    runSql(directory / "first", "DELETE FROM redo_piece WHERE number = 0");
    runSql(directory / "first", "INSERT INTO redo_piece SELECT commit_id, file, 1, x'00' FROM redo_file");
    EXPECT_EQ(contentsOf(1), "2");
}

TEST_F(PendingCommitTest, WhoMayOnlyReadIsToldSo) {
    dieBeforeSecond();
    fs::permissions(directory.path(), fs::perms::all);
    for (const std::string &name : directory.names())
        fs::permissions(directory / name, fs::perms(0666));
    fs::permissions(directory / "second", fs::perms(0444));
    EXPECT_EQ(ChildProcess::run([&] {
                  constexpr uid_t nobody = 65534;
                  if (geteuid() == 0) {
                      EXPECT_EQ(setuid(nobody), 0);
                  }
                  constexpr int32_t readOnly = -2;
                  return contentsOf(1, readOnly);
              }),
              "46");
    fs::permissions(directory / "second", fs::perms(0666));
    EXPECT_EQ(contentsOf(1), ThreeFiles::after);
}

// More changes than one piece holds, and those of long records, of all indexes and of the state.
TEST_F(PendingCommitTest, LargeTransactionsAreMadeAgainInFull) {
    std::string large(2000000, 'l');
    EXPECT_EQ(ChildProcess::run([&]() -> std::string {
                  ThreeFiles files(directory, 1);
                  EXPECT_EQ(files.open(), 0);
                  EXPECT_EQ(files.begin(), 0);
                  for (auto &block : files.blocks) {
                      for (char key = 'e'; key <= 'y'; ++key)
                          EXPECT_EQ(
                              files.session.call(2, &block, key + std::string(60000, '1'), "", -1).status, 0);
                      EXPECT_EQ(files.session.call(12, &block, "", "?", 0, 2).status, 0);
                      EXPECT_EQ(files.append(&block, large), 0);
                  }
                  SystemCallWatch watch(directory.path(), [&](const SystemCall &call) {
                      return call.name == "unlink"                                       ? Fate::kills
                             : call.name == "fsync" && call.path.ends_with("second-wal") ? Fate::kills
                                                                                         : Fate::happens;
                  });
                  return std::to_string(files.end());
              }),
              "killed");
    ThreeFiles files(directory, 4);
    constexpr int32_t verify = -3;
    ASSERT_EQ(files.open({2, 1, 0}, verify), 0);
    for (auto &block : files.blocks) {
        Reply reply = files.session.call(15, &block, std::string(200, '\0'), "", -1);
        EXPECT_EQ(number(reply.data, 8, 4), 24u);
        EXPECT_EQ(files.session.call(13, &block, "", "?", 0, 60001).data, 'y' + std::string(60000, '1'));
        EXPECT_EQ(files.session.call(12, &block, "", "?", 1, 2).status, 22);
    }
}

// The recorder of changes passes over a table without one.
TEST_F(PendingCommitTest, EveryTableHasAPrimaryKey) {
    EXPECT_EQ(readSql(directory / "first",
                      "SELECT count(*) FROM sqlite_master m WHERE m.type = 'table' AND NOT EXISTS (SELECT 1 "
                      "FROM pragma_table_info(m.name) WHERE pk <> 0)"),
              0);
    EXPECT_GT(readSql(directory / "first", "SELECT count(*) FROM sqlite_master"), 8);
}

TEST_F(PendingCommitTest, NothingIsKeptForLong) {
    ThreeFiles files(directory, 1);
    ASSERT_EQ(files.open(), 0);
    ASSERT_EQ(files.begin(), 0);
    files.change();
    ASSERT_EQ(files.end(), 0);
    ASSERT_EQ(files.session.call(28, nullptr).status, 0);
    EXPECT_EQ(readSql(directory / "first", "SELECT count(*) FROM redo_file"), 0);
    EXPECT_EQ(readSql(directory / "first", "SELECT count(*) FROM redo_piece"), 0);

    startAnew();
    dieAt("write", "third-wal");
    EXPECT_EQ(contentsOf(0), ThreeFiles::after);
    EXPECT_EQ(readSql(directory / "first", "SELECT count(*) FROM redo_file"), 0);
}

}  // namespace
