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

TEST_F(EncryptedCommitTest, NobodyIsNamedWhereACommitIsPending) {
    encrypt({0});
    dieAt("write", "second-wal");
    ChildProcess::run([&]() -> std::string {
        constexpr int32_t exclusive = -4;
        EngineSession other(2);
        EngineSession::PositionBlock held{}, own{}, refused{};
        std::string request = createRequest(2, 0, {{{0, 1}}});
        EXPECT_EQ(other.create(directory / "held", request), 0);
        EXPECT_EQ(other.create(directory / "own", request), 0);
        EXPECT_EQ(other.open(&held, directory / "held", exclusive), 0);
        ThreeFiles files(directory, 1);
        EXPECT_EQ(files.session.open(&own, directory / "own"), 0);
        auto lockOwner = [&] { return files.session.call(65, &own, "ExSt" + u32(6), "", 0, 104).data; };
        EXPECT_EQ(files.session.open(&refused, directory / "held"), 85);
        EXPECT_EQ(number(lockOwner(), 12, 2), 2u);
        EXPECT_EQ(files.open({1, 0, 2}), 85);
        EXPECT_EQ(lockOwner(), std::string(104, '\0'));
        return {};
    });
}

}  // namespace
