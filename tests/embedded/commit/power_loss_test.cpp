#include "embedded/commit/crash_fixture.h"
#include "embedded/disk_image.h"
#include "embedded/emulation.h"

namespace {

using namespace vantrel::test;

// Nothing that was not synced reaches the disk.
constexpr uint32_t nothingMore = 0;

class PowerLossTest : public CrashTest {
  protected:
    // Runs a transaction over all files, and loses power before the n-th step of its end, or behind it.
    std::string endAndLosePower(size_t step) {
        copyFiles(untouched.path(), directory.path());
        std::filesystem::remove_all(left);
        std::filesystem::create_directory(left);
        return ChildProcess::run([&]() -> std::string {
            DiskImage image(directory.path());
            ThreeFiles files(directory, 1);
            StepCount count;
            bool isEnding = false;
            SystemCallWatch watch(directory.path(), [&](const SystemCall &system) {
                if (isEnding && count.stepOf(system) == step) {
                    image.writeTo(left, nothingMore);
                    return Fate::kills;
                }
                image.note(system);
                return Fate::happens;
            });
            EXPECT_EQ(files.open(), 0);
            EXPECT_EQ(files.begin(), 0);
            files.change();
            isEnding = true;
            int32_t status = files.end();
            isEnding = false;
            image.writeTo(left, nothingMore);
            return std::to_string(status);
        });
    }

    TemporaryDirectory images;
    std::string left = images / "left";
};

TEST_F(PowerLossTest, AllOrNoneAndAllOfWhatEnded) {
    bool wasBefore = false, wasAfter = false;
    std::string status = "killed";
    for (size_t step = 1; status == "killed"; step += rounds<size_t>(1, 50)) {
        status = endAndLosePower(step);
        std::string common;
        for (const ThreeFiles::Order &order : ThreeFiles::orders()) {
            copyFiles(left, directory.path());
            std::string found = contentsAfterwards(directory, order);
            EXPECT_TRUE(common.empty() || common == found) << step << ": " << common << "or " << found;
            common = found;
        }
        EXPECT_TRUE(common == ThreeFiles::before || common == ThreeFiles::after) << step << ": " << common;
        EXPECT_TRUE(status == "killed" || common == ThreeFiles::after);
        wasBefore |= common == ThreeFiles::before;
        wasAfter |= common == ThreeFiles::after;
    }
    EXPECT_EQ(status, "0");
    EXPECT_TRUE(wasBefore && wasAfter);
}

// Creating, renaming and deleting are durable when they return.
TEST_F(PowerLossTest, WhatHappenedToAFileAsAWhole) {
    EXPECT_EQ(
        ChildProcess::run([&]() -> std::string {
            DiskImage image(directory.path());
            SystemCallWatch watch(directory.path(), [&](const SystemCall &call) {
                image.note(call);
                return Fate::happens;
            });
            EngineSession session(1);
            EXPECT_EQ(session.create(directory / "new", createRequest(2, 0, {{{0, 1}}})), 0);
            EXPECT_EQ(
                session.call(14, nullptr, (directory / "first") + '\0', (directory / "moved") + '\0', -127)
                    .status,
                0);
            EXPECT_EQ(session.call(14, nullptr, "", (directory / "third") + '\0', -128).status, 0);
            std::filesystem::create_directory(left);
            image.writeTo(left, nothingMore);
            return "done";
        }),
        "done");
    copyFiles(left, directory.path());
    EXPECT_EQ(ChildProcess::run([&]() -> std::string {
                  std::string statuses;
                  for (const char *name : {"new", "moved", "second", "first", "third"}) {
                      EngineSession session(1);
                      EngineSession::PositionBlock block{};
                      statuses += std::to_string(session.open(&block, directory / name, -3)) + ' ';
                  }
                  return statuses;
              }),
              "0 0 0 12 12 ");
}

}  // namespace
