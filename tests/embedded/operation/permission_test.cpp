#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "embedded/commit/child_process.h"
#include "embedded/operation/lock_process.h"
#include "embedded/operation/owner_fixture.h"

namespace {

using namespace vantrel::test;

constexpr int32_t denied94 = 94, readOnly46 = 46;

// A file with the record aaaa, made by the user of the tests and used by one without privileges.
class PermissionTest : public testing::Test {
  protected:
    PermissionTest() {
        ChildProcess::run([this]() -> std::string {
            EngineSession maker(9);
            EngineSession::PositionBlock made{};
            EXPECT_EQ(maker.create(path, request), 0);
            EXPECT_EQ(maker.open(&made, path), 0);
            EXPECT_EQ(maker.call(2, &made, "aaaa", "", -1).status, 0);
            return {};
        });
        for (const std::string &owned : {directory.path(), path}) {
            bool isOwned = getuid() != 0 || chown(owned.c_str(), ordinaryUser, ordinaryUser) == 0;
            EXPECT_TRUE(isOwned);
        }
    }
    ~PermissionTest() override { setRights(0777, 0666); }

    void setRights(mode_t ofDirectory, mode_t ofFile) {
        EXPECT_EQ(chmod(directory.path().c_str(), 0777), 0);
        EXPECT_EQ(chmod(path.c_str(), ofFile), 0);
        EXPECT_EQ(chmod(directory.path().c_str(), ofDirectory), 0);
    }

    // Where the tests run as root, the user is another one: to root everything is permitted.
    template <class Function>
    void asOrdinaryUser(const Function &function) {
        ChildProcess::run([&]() -> std::string {
            become(ordinaryUser, ordinaryUser);
            EngineSession session(1);
            EngineSession::PositionBlock block{};
            function(session, &block);
            return {};
        });
    }

    static void become(uid_t user, gid_t group) {
        if (getuid() != 0)
            return;
        EXPECT_EQ(setgroups(0, nullptr), 0);
        EXPECT_EQ(setresgid(group, group, group), 0);
        EXPECT_EQ(setresuid(user, user, user), 0);
    }

    // What a process does that has the file open, as it stays until it is killed.
    template <class Prepare>
    auto holding(const Prepare &prepare) {
        return [this, prepare] {
            prepare();
            auto *session = new EngineSession(2);
            auto *block = new EngineSession::PositionBlock{};
            return session->open(block, path) == 0 && session->call(1019, nullptr).status == 0 &&
                   session->call(12, block, "", "kkkk", 0, 4).status == 0 &&
                   session->call(3, block, "cccc", "", -1).status == 0;
        };
    }
    void ordinaryUserLocks(int32_t expected) {
        asOrdinaryUser([&](EngineSession &session, EngineSession::PositionBlock *block) {
            EXPECT_EQ(session.open(block, path), 0);
            EXPECT_EQ(session.call(12 + 200, block, "", "kkkk", 0, 4).status, expected);
        });
    }

    static constexpr uid_t ordinaryUser = 65534, otherUser = 65533;
    TemporaryDirectory directory;
    std::string path = directory / "file";
    std::string request = createRequest(4, 0, {{{0, 4, modifiable}}});
};

TEST_F(PermissionTest, WithAllRightsEverythingWorks) {
    asOrdinaryUser([this](EngineSession &session, EngineSession::PositionBlock *block) {
        EXPECT_EQ(session.open(block, path), 0);
        EXPECT_EQ(session.call(2, block, "bbbb", "", -1).status, 0);
        EXPECT_EQ(recordsOf(session, block, 4).size(), 2u);
    });
}

TEST_F(PermissionTest, AFileThatMayNotBeReadIsDenied) {
    setRights(0777, 0000);
    asOrdinaryUser([this](EngineSession &session, EngineSession::PositionBlock *block) {
        for (int32_t mode = 0; mode >= -4; --mode)
            EXPECT_EQ(session.open(block, path, mode), denied94) << mode;
        EXPECT_EQ(session.create(path, request), denied94);
        EXPECT_EQ(session.create(path, request, -1), 59);
        EXPECT_EQ(session.call(14, nullptr, "", path + '\0', -128).status, denied94);
        EXPECT_EQ(session.call(14, nullptr, path + '\0', path + "2" + '\0', -127).status, denied94);
    });
}

TEST_F(PermissionTest, AFileThatMayNotBeWrittenIsRead) {
    setRights(0777, 0444);
    asOrdinaryUser([this](EngineSession &session, EngineSession::PositionBlock *block) {
        for (int32_t mode : {0, -1, -3, -4})
            EXPECT_EQ(session.open(block, path, mode), denied94) << mode;
        ASSERT_EQ(session.open(block, path, -2), 0);
        EXPECT_EQ(recordsOf(session, block, 4), (std::vector<std::string>{"aaaa"}));
        EXPECT_EQ(session.call(2, block, "bbbb", "", -1).status, readOnly46);
        EXPECT_EQ(session.call(12, block, "", "kkkk", 0, 4).status, 0);
        EXPECT_EQ(session.call(3, block, "bbbb", "", -1).status, readOnly46);
        EXPECT_EQ(session.call(4, block).status, readOnly46);
        EXPECT_EQ(session.call(31, block, segmentBytes({0, 1, duplicates}), "", 0).status, readOnly46);
        EXPECT_EQ(session.call(32, block, "", "", 0).status, readOnly46);
        EXPECT_EQ(setOwner(session, block, denied, "owner"), readOnly46);
    });
}

TEST_F(PermissionTest, NothingIsMadeOrRemovedInAReadOnlyDirectory) {
    setRights(0555, 0666);
    asOrdinaryUser([this](EngineSession &session, EngineSession::PositionBlock *) {
        EXPECT_EQ(session.create(directory / "new", request), denied94);
        EXPECT_EQ(session.create(path, request), denied94);
        EXPECT_EQ(session.call(14, nullptr, "", path + '\0', -128).status, denied94);
        EXPECT_EQ(session.call(14, nullptr, path + '\0', path + "2" + '\0', -127).status, denied94);
    });
    EXPECT_EQ(directory.names(), (std::vector<std::string>{"file"}));
}

// The log has nowhere to stand, nor has what keeps others out.
TEST_F(PermissionTest, AFileInAReadOnlyDirectoryIsRefused) {
    setRights(0555, 0666);
    asOrdinaryUser([this](EngineSession &session, EngineSession::PositionBlock *block) {
        for (int32_t mode = 0; mode >= -3; --mode)
            EXPECT_EQ(session.open(block, path, mode), readOnly46) << mode;
        EXPECT_EQ(session.open(block, path, -4), denied94);
    });
    EXPECT_EQ(directory.names(), (std::vector<std::string>{"file"}));
}

TEST_F(PermissionTest, ADirectoryThatMayNotBeEnteredIsDenied) {
    setRights(0000, 0666);
    asOrdinaryUser([this](EngineSession &session, EngineSession::PositionBlock *block) {
        EXPECT_EQ(session.open(block, path), denied94);
        EXPECT_EQ(session.create(path, request), denied94);
        EXPECT_EQ(session.call(14, nullptr, "", path + '\0', -128).status, denied94);
    });
}

TEST_F(PermissionTest, RightsTakenAwayUnderneathHarmNobody) {
    asOrdinaryUser([this](EngineSession &session, EngineSession::PositionBlock *block) {
        ASSERT_EQ(session.open(block, path), 0);
        setRights(0555, 0444);
        EXPECT_EQ(session.call(2, block, "bbbb", "", -1).status, 0);
        EXPECT_EQ(recordsOf(session, block, 4).size(), 2u);
        setRights(0777, 0666);
        EXPECT_EQ(session.call(1, block).status, 0);
        EXPECT_EQ(session.open(block, path, -3), 0);
        EXPECT_EQ(recordsOf(session, block, 4).size(), 2u);
    });
}

TEST_F(PermissionTest, TheLockFileHasTheRightsOfItsFile) {
    for (mode_t rights : {0666, 0640, 0600}) {
        setRights(0777, rights);
        {
            LockProcess holder(holding([] { umask(0077); }));
            struct stat file, lock;
            ASSERT_EQ(stat(path.c_str(), &file), 0);
            ASSERT_EQ(stat((path + "-lock").c_str(), &lock), 0);
            EXPECT_EQ(lock.st_mode & 07777, rights);
            EXPECT_EQ(lock.st_uid, file.st_uid);
            EXPECT_EQ(lock.st_gid, file.st_gid);
            ordinaryUserLocks(84);
        }
        EXPECT_TRUE(std::filesystem::exists(path + "-lock"));
        ordinaryUserLocks(0);
        EXPECT_EQ(directory.names(), (std::vector<std::string>{"file"}));
    }
}

TEST_F(PermissionTest, UsersLockAgainstEachOtherWhoeverCameFirst) {
    if (getuid() != 0)
        GTEST_SKIP() << "only root can be two users";
    for (mode_t rights : {0666, 0660}) {
        setRights(0777, rights);
        {
            LockProcess holder(holding([] {
                umask(0077);
                become(otherUser, ordinaryUser);
            }));
            ordinaryUserLocks(84);
        }
        ordinaryUserLocks(0);
    }
}

TEST_F(PermissionTest, WithoutRightToTheLockFileNobodyLocksOrIsAlone) {
    LockProcess holder(holding([] {}));
    ASSERT_EQ(chmod((path + "-lock").c_str(), 0444), 0);
    ASSERT_EQ(chown((path + "-lock").c_str(), getuid(), getgid()), 0);
    asOrdinaryUser([this](EngineSession &session, EngineSession::PositionBlock *block) {
        EXPECT_EQ(session.open(block, path, -4), denied94);
        EXPECT_EQ(session.create(path, request), denied94);
        EXPECT_EQ(session.call(14, nullptr, "", path + '\0', -128).status, denied94);
        EXPECT_EQ(session.call(14, nullptr, path + '\0', path + "2" + '\0', -127).status, denied94);
        EXPECT_EQ(session.call(42, nullptr, path + '\0', "", 0).status, denied94);
        ASSERT_EQ(session.open(block, path), 0);
        EXPECT_EQ(session.call(12 + 200, block, "", "kkkk", 0, 4).status, denied94);
        EXPECT_EQ(setOwner(session, block, deniedEncrypted, "owner"), denied94);
        ASSERT_EQ(session.call(1, block).status, 0);
        EXPECT_EQ(session.open(block, path, -4), denied94);
        ASSERT_EQ(session.open(block, path), 0);
        EXPECT_EQ(recordsOf(session, block, 4), (std::vector<std::string>{"aaaa"}));
    });
}

TEST_F(PermissionTest, AFileThatMayNotBeWrittenIsReadInAnExclusiveTransaction) {
    ChildProcess::run([this]() -> std::string {
        EngineSession writer(1), reader(2);
        EngineSession::PositionBlock written{}, read{};
        EXPECT_EQ(writer.open(&written, path), 0);
        EXPECT_EQ(chmod(path.c_str(), 0444), 0);
        EXPECT_EQ(chmod((path + "-lock").c_str(), 0444), 0);
        bool isRoot = getuid() == 0;
        EXPECT_TRUE(!isRoot || setresuid(ordinaryUser, ordinaryUser, 0) == 0);
        EXPECT_EQ(reader.open(&read, path, -2), 0);
        EXPECT_TRUE(!isRoot || setresuid(0, 0, 0) == 0);
        EXPECT_EQ(reader.call(19, nullptr).status, 0);
        EXPECT_EQ(recordsOf(reader, &read, 4), (std::vector<std::string>{"aaaa"}));
        EXPECT_EQ(writer.call(2, &written, "bbbb", "", -1).status, 0);
        EXPECT_EQ(recordsOf(reader, &read, 4), (std::vector<std::string>{"aaaa", "bbbb"}));
        EXPECT_EQ(reader.call(12 + 200, &read, "", "kkkk", 0, 4).status, denied94);
        EXPECT_EQ(reader.call(20, nullptr).status, 0);
        return {};
    });
}

// Whoever may put links there must not have others' files written or given away.
TEST_F(PermissionTest, ALinkIsNoLockFile) {
    for (const char *target : {"target", "nowhere"}) {
        writeContent(directory / "target", "text");
        ASSERT_EQ(symlink(target, (path + "-lock").c_str()), 0);
        asOrdinaryUser([this](EngineSession &session, EngineSession::PositionBlock *block) {
            EXPECT_EQ(session.open(block, path), 11);
        });
        std::filesystem::remove(path + "-lock");
        EXPECT_EQ(contentOf(directory / "target"), "text");
        EXPECT_EQ(directory.names(), (std::vector<std::string>{"file", "target"}));
    }
}

}  // namespace
