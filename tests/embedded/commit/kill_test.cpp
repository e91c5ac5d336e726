#include <optional>

#include "embedded/commit/crash_fixture.h"
#include "embedded/emulation.h"

namespace {

using namespace vantrel::test;

class CommitKilledTest : public CrashTest {
  protected:
    // Besides the files, a pointer that was not finished yet may stay.
    void expectNothingLeft() {
        std::vector<std::string> names = directory.names();
        std::erase_if(names, [](const std::string &name) { return name.find("-new") != std::string::npos; });
        EXPECT_EQ(names, (std::vector<std::string>{"first", "second", "third"}));
    }

    // What every order of opening finds after a crash.
    std::string contentsInAllOrders() {
        copyFiles(directory.path(), crashed.path());
        std::optional<std::string> common;
        for (const ThreeFiles::Order &order : ThreeFiles::orders()) {
            copyFiles(crashed.path(), directory.path());
            std::string found = contentsAfterwards(directory, order);
            expectNothingLeft();
            if (common.value_or(found) != found)
                return *common + "or " + found;
            common = found;
        }
        return *common;
    }

    TemporaryDirectory crashed;
};

void expectAllOrNone(const std::string &contents, size_t step) {
    EXPECT_TRUE(contents == ThreeFiles::before || contents == ThreeFiles::after) << step << ": " << contents;
}

TEST_F(CommitKilledTest, AllOrNoneWhicheverFileIsOpenedFirst) {
    for (Fate fate : {Fate::kills, Fate::tears}) {
        bool wasBefore = false, wasAfter = false;
        std::string status = "killed";
        for (size_t step = 1; status == "killed"; step += rounds<size_t>(1, 50)) {
            startAnew();
            status = endElsewhere(step, fate);
            std::string contents = contentsInAllOrders();
            expectAllOrNone(contents, step);
            EXPECT_FALSE(wasAfter && contents == ThreeFiles::before) << step;
            wasBefore |= contents == ThreeFiles::before;
            wasAfter |= contents == ThreeFiles::after;
        }
        EXPECT_EQ(status, "0");
        EXPECT_TRUE(wasBefore && wasAfter);
    }
}

// A process that had the files open all the time decides about what the dead one left, and dies then too.
TEST_F(CommitKilledTest, WhatTheLivingSawStaysTrueWhenTheyDieToo) {
    std::string status = "killed";
    for (size_t step = 1; status == "killed"; step += rounds<size_t>(1, 50)) {
        startAnew();
        ThreeFiles::Order order = ThreeFiles::orders()[step % ThreeFiles::orders().size()];
        std::string seen = ChildProcess::run([&] {
            ChildProcess other(anEnd(step, Fate::kills), ChildProcess::Start::forResult);
            auto &files = *new ThreeFiles(directory, 2);  // never closed
            EXPECT_EQ(files.open(), 0);
            EXPECT_EQ(files.contents(), ThreeFiles::before);
            std::string result = other.result();
            for (size_t file : order) {
                EXPECT_EQ(files.session.call(2, &files.blocks[file], "e1", "", -1).status, 0);
                EXPECT_EQ(files.session.call(4, &files.blocks[file]).status, 0);
            }
            return result + ' ' + files.contents(order);
        });
        size_t space = seen.find(' ');
        status = seen.substr(0, space);
        expectAllOrNone(seen.substr(space + 1), step);
        EXPECT_EQ(contentsAfterwards(directory, order), seen.substr(space + 1)) << step;
    }
    EXPECT_EQ(status, "0");
}

// As above, with a coordinator that nobody writes to any more before its log is recovered.
TEST_F(CommitKilledTest, ADecisionOutlivesTheRecoveryOfALog) {
    std::string status = "killed";
    for (size_t step = 1; status == "killed"; step += rounds<size_t>(1, 50)) {
        startAnew();
        std::string seen = ChildProcess::run([&] {
            ChildProcess other(anEnd(step, Fate::kills), ChildProcess::Start::forResult);
            auto &files = *new ThreeFiles(directory, 2);
            EXPECT_EQ(files.open(), 0);
            std::string result = other.result();
            for (size_t file : {size_t{1}, size_t{2}}) {
                EXPECT_EQ(files.session.call(2, &files.blocks[file], "e1", "", -1).status, 0);
                EXPECT_EQ(files.session.call(4, &files.blocks[file]).status, 0);
            }
            EXPECT_EQ(files.contents(size_t{1}), files.contents(size_t{2}));
            return result + ' ' + files.contents(size_t{1});
        });
        size_t space = seen.find(' ');
        status = seen.substr(0, space);
        expectAllOrNone(seen.substr(space + 1), step);
        EXPECT_EQ(contentsAfterwards(directory, {0, 1, 2}), seen.substr(space + 1)) << step;
    }
    EXPECT_EQ(status, "0");
}

}  // namespace
