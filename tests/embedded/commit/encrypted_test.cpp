#include "embedded/commit/crash_fixture.h"
#include "embedded/emulation.h"

namespace {

using namespace vantrel::test;

class EncryptedCommitTest : public CrashTest {
  protected:
    void encrypt(const std::vector<size_t> &encrypted) {
        ChildProcess::run([&]() -> std::string {
            ThreeFiles files(directory, 1);
            EXPECT_EQ(files.open(), 0);
            for (size_t file : encrypted)
                EXPECT_EQ(files.encrypt(file), 0);
            return {};
        });
        copyFiles(directory.path(), untouched.path());
    }

    void expectAllOrNoneAfterEachDeath(const ThreeFiles::Order &order) {
        bool wasBefore = false, wasAfter = false;
        std::string status = "killed";
        for (size_t step = 1; status == "killed"; step += rounds<size_t>(3, 150)) {
            startAnew();
            status = endElsewhere(step, Fate::kills);
            std::string contents = contentsAfterwards(directory, order);
            EXPECT_TRUE(contents == ThreeFiles::before || contents == ThreeFiles::after)
                << step << ": " << contents;
            wasBefore |= contents == ThreeFiles::before;
            wasAfter |= contents == ThreeFiles::after;
        }
        EXPECT_EQ(status, "0");
        EXPECT_TRUE(wasBefore && wasAfter);
    }
};

TEST_F(EncryptedCommitTest, AllOrNoneWhereEveryFileIsEncrypted) {
    encrypt({0, 1, 2});
    expectAllOrNoneAfterEachDeath({0, 1, 2});
}

TEST_F(EncryptedCommitTest, AllOrNoneWhereThePlainFileDecides) {
    encrypt({1, 2});
    expectAllOrNoneAfterEachDeath({2, 1, 0});
}

TEST_F(EncryptedCommitTest, AnEncryptedFileThatDecidedIsOpenedBeforeTheOthers) {
    encrypt({0});
    // Its pointer stands beside the second file, and the decision has been made.
    dieAt("write", "second-wal");
    ChildProcess::run([&]() -> std::string {
        ThreeFiles files(directory, 1);
        EXPECT_EQ(files.open({1, 0, 2}), 85);
        EXPECT_EQ(files.open({0, 1, 2}), 0);
        EXPECT_EQ(files.contents(), ThreeFiles::after);
        return {};
    });
}

}  // namespace
