#include <gtest/gtest.h>
#include <unistd.h>

#include <optional>

#include "participant.h"
#include "tests/embedded/emulation.h"

// Several processes on one file. Transaction modes: 0 exclusive, 1 concurrent, 2 concurrent without waiting;
// lock modes: 1 and 3 wait, 2 and 4 do not.

namespace {

using namespace vantrel::test;

class EngineProcesses : public testing::Test {
  protected:
    EngineProcesses() {
        createNumberFile(path_);
        reader.emplace(path_);
        writer.emplace(path_);
        EXPECT_EQ(reader->ask("open"), "0");
        EXPECT_EQ(writer->ask("open"), "0");
        EXPECT_EQ(writer->ask("insert 1 10"), "0");
        EXPECT_EQ(writer->ask("insert 2 20"), "0");
        EXPECT_EQ(writer->ask("insert 3 30"), "0");
    }

    ~EngineProcesses() override {
        reader.reset();
        writer.reset();
        deleteNumberFile(path_);
    }

    std::string path_ = testing::TempDir() + "engine_processes_" + std::to_string(getpid()) + ".vnt";
    std::optional<Participant> reader;
    std::optional<Participant> writer;
};

TEST_F(EngineProcesses, SingleChangesAreSeenAtOnce) {
    EXPECT_EQ(reader->ask("contents"), "1:10 2:20 3:30");
    EXPECT_EQ(writer->ask("read 2 0"), "20");
    EXPECT_EQ(writer->ask("update 2 21"), "0");
    EXPECT_EQ(reader->ask("contents"), "1:10 2:21 3:30");
    EXPECT_EQ(writer->ask("delete"), "0");
    EXPECT_EQ(reader->ask("contents"), "1:10 3:30");
}

TEST_F(EngineProcesses, ChangesOfATransactionAreSeenAtItsEnd) {
    for (const char *begin : {"begin 0", "begin 1", "begin 2"}) {
        std::string before = reader->ask("contents");
        EXPECT_EQ(writer->ask(begin), "0");
        EXPECT_EQ(writer->ask("read 1 0"), before.substr(2, 2));
        EXPECT_EQ(writer->ask(std::string("update 1 4") + begin[6]), "0");
        EXPECT_EQ(reader->ask("contents"), before);
        EXPECT_EQ(writer->ask("contents"), std::string("1:4") + begin[6] + " 2:20 3:30");
        EXPECT_EQ(writer->ask("end"), "0");
        EXPECT_EQ(reader->ask("contents"), std::string("1:4") + begin[6] + " 2:20 3:30");
    }
}

TEST_F(EngineProcesses, ChangesOfAnAbortedTransactionAreNeverSeen) {
    EXPECT_EQ(writer->ask("begin 1"), "0");
    EXPECT_EQ(writer->ask("insert 4 40"), "0");
    EXPECT_EQ(writer->ask("read 1 0"), "10");
    EXPECT_EQ(writer->ask("delete"), "0");
    EXPECT_EQ(reader->ask("contents"), "1:10 2:20 3:30");
    EXPECT_EQ(writer->ask("abort"), "0");
    EXPECT_EQ(reader->ask("contents"), "1:10 2:20 3:30");
    EXPECT_EQ(writer->ask("contents"), "1:10 2:20 3:30");
}

TEST_F(EngineProcesses, ATransactionIsNeverSeenByHalf) {
    EXPECT_EQ(writer->ask("read 1 0"), "10");
    EXPECT_EQ(writer->ask("update 1 0"), "0");
    EXPECT_EQ(writer->ask("read 2 0"), "20");
    EXPECT_EQ(writer->ask("update 2 0"), "0");
    const std::string transactions = rounds("300", "30");
    writer->tell("count " + transactions);
    reader->tell(rounds("watch 3000", "watch 300"));
    EXPECT_EQ(reader->answer(), "0");
    EXPECT_EQ(writer->answer(), "0");
    EXPECT_EQ(reader->ask("contents"), "1:" + transactions + " 2:" + transactions + " 3:30");
}

TEST_F(EngineProcesses, ADeathInsideATransactionLeavesNothing) {
    EXPECT_EQ(writer->ask("begin 1"), "0");
    EXPECT_EQ(writer->ask("insert 4 40"), "0");
    EXPECT_EQ(writer->ask("read 1 0"), "10");
    EXPECT_EQ(writer->ask("update 1 11"), "0");
    writer->kill();
    EXPECT_EQ(reader->ask("contents"), "1:10 2:20 3:30");
    EXPECT_EQ(reader->ask("insert 4 41"), "0");
    EXPECT_EQ(reader->ask("contents"), "1:10 2:20 3:30 4:41");
}

TEST_F(EngineProcesses, ADeathAfterATransactionLeavesAll) {
    EXPECT_EQ(writer->ask("begin 1"), "0");
    EXPECT_EQ(writer->ask("insert 4 40"), "0");
    EXPECT_EQ(writer->ask("read 1 0"), "10");
    EXPECT_EQ(writer->ask("update 1 11"), "0");
    EXPECT_EQ(writer->ask("end"), "0");
    writer->kill();
    EXPECT_EQ(reader->ask("contents"), "1:11 2:20 3:30 4:40");
}

TEST_F(EngineProcesses, ASingleChangeSurvivesADeath) {
    EXPECT_EQ(writer->ask("insert 4 40"), "0");
    writer->kill();
    reader->kill();
    Participant later(path_);
    EXPECT_EQ(later.ask("open"), "0");
    EXPECT_EQ(later.ask("contents"), "1:10 2:20 3:30 4:40");
}

TEST_F(EngineProcesses, AChangeOfARecordChangedSinceItWasReadIsRefused) {
    EXPECT_EQ(reader->ask("read 1 0"), "10");
    EXPECT_EQ(writer->ask("read 1 0"), "10");
    EXPECT_EQ(writer->ask("update 1 11"), "0");
    EXPECT_EQ(reader->ask("update 1 12"), "80");
    EXPECT_EQ(reader->ask("delete"), "80");
    EXPECT_EQ(reader->ask("read 1 0"), "11");
    EXPECT_EQ(reader->ask("update 1 12"), "0");
    EXPECT_EQ(writer->ask("contents"), "1:12 2:20 3:30");
}

TEST_F(EngineProcesses, AChangeOfARecordDeletedSinceItWasReadIsRefused) {
    EXPECT_EQ(reader->ask("read 1 0"), "10");
    EXPECT_EQ(writer->ask("read 1 0"), "10");
    EXPECT_EQ(writer->ask("delete"), "0");
    EXPECT_EQ(reader->ask("update 1 12"), "80");
    EXPECT_EQ(reader->ask("delete"), "80");
}

TEST_F(EngineProcesses, ALockedRecordIsRefusedToWhoDoesNotWait) {
    EXPECT_EQ(writer->ask("read 1 2"), "10");
    EXPECT_EQ(reader->ask("read 1 2"), "status 84");
    EXPECT_EQ(reader->ask("read 1 4"), "status 84");
    EXPECT_EQ(reader->ask("read 1 0"), "10");
    EXPECT_EQ(reader->ask("read 2 2"), "20");
    EXPECT_EQ(writer->ask("unlock 0"), "0");
    EXPECT_EQ(reader->ask("read 1 2"), "10");
}

TEST_F(EngineProcesses, ALockedRecordIsNotChangedByOthers) {
    EXPECT_EQ(writer->ask("read 1 2"), "10");
    EXPECT_EQ(reader->ask("read 1 0"), "10");
    EXPECT_EQ(reader->ask("update 1 12"), "84");
    EXPECT_EQ(reader->ask("delete"), "84");
    EXPECT_EQ(writer->ask("update 1 11"), "0");
    EXPECT_EQ(reader->ask("read 1 2"), "11");
}

TEST_F(EngineProcesses, MultipleLocksAddUp) {
    EXPECT_EQ(writer->ask("read 1 4"), "10");
    EXPECT_EQ(writer->ask("next 4"), "20");
    EXPECT_EQ(writer->ask("next 2"), "status 93");
    EXPECT_EQ(reader->ask("read 1 2"), "status 84");
    EXPECT_EQ(reader->ask("read 2 2"), "status 84");
    EXPECT_EQ(reader->ask("read 3 2"), "30");
    EXPECT_EQ(writer->ask("unlock 1"), "0");
    EXPECT_EQ(reader->ask("read 1 2"), "10");
    EXPECT_EQ(reader->ask("read 2 2"), "20");
}

TEST_F(EngineProcesses, AWaitForALockEndsWithTheUnlock) {
    EXPECT_EQ(writer->ask("read 1 1"), "10");
    reader->tell("read 1 1");
    EXPECT_TRUE(reader->isWaiting());
    EXPECT_EQ(writer->ask("unlock 0"), "0");
    EXPECT_EQ(reader->answer(), "10");
    EXPECT_EQ(writer->ask("read 1 2"), "status 84");
}

TEST_F(EngineProcesses, AWaitForALockSeesWhatTheHolderChanged) {
    EXPECT_EQ(writer->ask("read 1 3"), "10");
    reader->tell("read 1 3");
    EXPECT_TRUE(reader->isWaiting());
    EXPECT_EQ(writer->ask("update 1 11"), "0");
    EXPECT_EQ(writer->ask("unlock 1"), "0");
    EXPECT_EQ(reader->answer(), "11");
    EXPECT_EQ(reader->ask("update 1 12"), "0");
}

TEST_F(EngineProcesses, AWaitForALockEndsWithItsHolder) {
    EXPECT_EQ(writer->ask("read 1 1"), "10");
    reader->tell("read 1 1");
    EXPECT_TRUE(reader->isWaiting());
    writer->kill();
    EXPECT_EQ(reader->answer(), "10");
}

TEST_F(EngineProcesses, RecordsChangedInATransactionStayLockedUntilItsEnd) {
    EXPECT_EQ(writer->ask("begin 1"), "0");
    EXPECT_EQ(writer->ask("read 1 0"), "10");
    EXPECT_EQ(writer->ask("update 1 11"), "0");
    EXPECT_EQ(reader->ask("read 1 2"), "status 84");
    EXPECT_EQ(writer->ask("end"), "0");
    EXPECT_EQ(reader->ask("read 1 2"), "11");
}

TEST_F(EngineProcesses, ChangersOfAFileQueue) {
    EXPECT_EQ(writer->ask("begin 1"), "0");
    EXPECT_EQ(writer->ask("insert 4 40"), "0");
    reader->tell("insert 5 50");
    EXPECT_TRUE(reader->isWaiting());
    EXPECT_EQ(writer->ask("end"), "0");
    EXPECT_EQ(reader->answer(), "0");
    EXPECT_EQ(writer->ask("contents"), "1:10 2:20 3:30 4:40 5:50");
}

TEST_F(EngineProcesses, AChangerGoesOnWhenTheOneBeforeItDies) {
    EXPECT_EQ(writer->ask("begin 0"), "0");
    EXPECT_EQ(writer->ask("insert 4 40"), "0");
    EXPECT_EQ(reader->ask("begin 1"), "0");
    reader->tell("insert 4 41");
    EXPECT_TRUE(reader->isWaiting());
    writer->kill();
    EXPECT_EQ(reader->answer(), "0");
    EXPECT_EQ(reader->ask("end"), "0");
    EXPECT_EQ(reader->ask("contents"), "1:10 2:20 3:30 4:41");
}

TEST_F(EngineProcesses, ATransactionWithoutWaitingIsRefusedAtOnce) {
    EXPECT_EQ(writer->ask("begin 1"), "0");
    EXPECT_EQ(writer->ask("insert 4 40"), "0");
    EXPECT_EQ(reader->ask("begin 2"), "0");
    EXPECT_EQ(reader->ask("insert 5 50"), "85");
    EXPECT_EQ(reader->ask("contents"), "1:10 2:20 3:30");
    EXPECT_EQ(writer->ask("end"), "0");
    EXPECT_EQ(reader->ask("contents"), "1:10 2:20 3:30 4:40");
    EXPECT_EQ(reader->ask("insert 5 50"), "0");
    EXPECT_EQ(reader->ask("end"), "0");
}

TEST_F(EngineProcesses, AnExclusiveTransactionTakesAFileThatItReads) {
    EXPECT_EQ(writer->ask("begin 0"), "0");
    EXPECT_EQ(writer->ask("read 1 0"), "10");
    EXPECT_EQ(reader->ask("read 1 0"), "10");
    EXPECT_EQ(reader->ask("begin 2"), "0");
    EXPECT_EQ(reader->ask("insert 5 50"), "85");
    EXPECT_EQ(writer->ask("end"), "0");
    EXPECT_EQ(reader->ask("insert 5 50"), "0");
}

TEST_F(EngineProcesses, AForkedChildOwnsNothingAndHarmsNothing) {
    EXPECT_EQ(writer->ask("read 1 2"), "10");
    EXPECT_EQ(writer->ask("fork"), "status 3, open 0, 20, close 0");
    EXPECT_EQ(reader->ask("read 1 2"), "status 84");
    EXPECT_EQ(writer->ask("next 0"), "20");
    EXPECT_EQ(reader->ask("read 1 2"), "status 84");
    EXPECT_EQ(writer->ask("unlock 0"), "0");
    EXPECT_EQ(reader->ask("read 1 2"), "10");
}

TEST_F(EngineProcesses, ATransactionOutlivesAForkedChild) {
    EXPECT_EQ(writer->ask("begin 1"), "0");
    EXPECT_EQ(writer->ask("insert 4 40"), "0");
    EXPECT_EQ(writer->ask("fork"), "status 3, open 0, 20, close 0");
    EXPECT_EQ(reader->ask("contents"), "1:10 2:20 3:30");
    reader->tell("insert 5 50");
    EXPECT_TRUE(reader->isWaiting());
    EXPECT_EQ(writer->ask("end"), "0");
    EXPECT_EQ(reader->answer(), "0");
    EXPECT_EQ(reader->ask("contents"), "1:10 2:20 3:30 4:40 5:50");
}

}  // namespace
