#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "embedded/commit/child_process.h"
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
        EXPECT_EQ(chmod(path.c_str(), ofFile), 0);
        EXPECT_EQ(chmod(directory.path().c_str(), ofDirectory), 0);
    }

    // Where the tests run as root, the user is another one: to root everything is permitted.
    template <class Function>
    void asOrdinaryUser(const Function &function) {
        ChildProcess::run([&]() -> std::string {
            if (getuid() == 0) {
                EXPECT_EQ(setgroups(0, nullptr), 0);
                EXPECT_EQ(setresgid(ordinaryUser, ordinaryUser, ordinaryUser), 0);
                EXPECT_EQ(setresuid(ordinaryUser, ordinaryUser, ordinaryUser), 0);
            }
            EngineSession session(1);
            EngineSession::PositionBlock block{};
            function(session, &block);
            return {};
        });
    }

    static constexpr uid_t ordinaryUser = 65534;
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

// The log has nowhere to stand.
TEST_F(PermissionTest, AFileInAReadOnlyDirectoryIsRefused) {
    setRights(0555, 0666);
    asOrdinaryUser([this](EngineSession &session, EngineSession::PositionBlock *block) {
        for (int32_t mode = 0; mode >= -4; --mode)
            EXPECT_EQ(session.open(block, path, mode), readOnly46) << mode;
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

}  // namespace
