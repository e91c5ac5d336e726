#include "embedded/lock/lock_file.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <vector>

#include "embedded/lock/holder_slot.h"
#include "embedded/status_error.h"

namespace {

using namespace vantrel::embedded;

// One session with the file open.
struct User {
    User(const std::string &path, uint8_t number, LockFile::Sharing sharing = LockFile::Sharing::shared)
        : user({number}), file(path, sharing, user) {}
    LockUser user;
    LockFile file;
};

class LockFileTest : public testing::Test {
  protected:
    ~LockFileTest() override { unlink(lockFilePath(path).c_str()); }

    static int32_t statusOf(const std::function<void()> &call) {
        try {
            call();
        } catch (const StatusError &error) {
            return error.status;
        }
        return 0;
    }

    std::string path = testing::TempDir() + "lock_file_" + std::to_string(getpid());
    User first{path, 1}, second{path, 2};
};

TEST_F(LockFileTest, KindsOfHoldersAreKnownByTheirLocks) {
    for (auto kind : {HoldKind::change, HoldKind::singleWait, HoldKind::multipleNoWait}) {
        for (int64_t part : {writeSide, int64_t{1}, endOfRecords - 1}) {
            ASSERT_TRUE(first.file.tryLock(part, kind));
            EXPECT_FALSE(second.file.tryLock(part, HoldKind::singleWait));
            EXPECT_FALSE(first.file.isLockedByAnother(part));
            second.file.noteRefusal(part);
            ASSERT_TRUE(second.user.refusal.has_value());
            EXPECT_EQ(second.user.refusal->kind, kind);
            EXPECT_EQ(second.user.refusal->isRecord, part != writeSide);
            ASSERT_TRUE(second.user.refusal->holder.has_value());
            EXPECT_EQ(second.user.refusal->holder->identifier[0], 1);
            first.file.unlock(part);
            EXPECT_FALSE(second.file.isLockedByAnother(part));
        }
    }
}

TEST_F(LockFileTest, NeighboursAreLockedApart) {
    for (int64_t address : {7, 8, 9})
        ASSERT_TRUE(first.file.tryLock(address, HoldKind::multipleWait));
    first.file.unlock(8);
    EXPECT_TRUE(second.file.isLockedByAnother(7));
    EXPECT_TRUE(second.file.tryLock(8, HoldKind::singleWait));
    EXPECT_TRUE(second.file.isLockedByAnother(9));
}

TEST_F(LockFileTest, AddressesEndSomewhere) {
    EXPECT_EQ(statusOf([&] { first.file.tryLock(endOfRecords, HoldKind::change); }), 130);
    EXPECT_EQ(statusOf([&] { first.file.tryLock(INT64_MAX, HoldKind::change); }), 130);
    EXPECT_FALSE(first.file.isLockedByAnother(INT64_MAX));
}

TEST_F(LockFileTest, AllRecordsAreLockedAroundThoseOfOthers) {
    ASSERT_TRUE(first.file.tryLock(writeSide, HoldKind::change));
    for (int64_t address : {5, 6, 900})
        ASSERT_TRUE(second.file.tryLock(address, HoldKind::singleWait));
    first.file.lockAllRecords();
    User third(path, 3);
    for (int64_t address : {int64_t{1}, int64_t{4}, int64_t{7}, int64_t{901}, endOfRecords - 1})
        EXPECT_EQ(third.file.holderOf(address)->kind, HoldKind::change) << address;
    for (int64_t address : {5, 6, 900})
        EXPECT_EQ(third.file.holderOf(address)->kind, HoldKind::singleWait) << address;
    first.file.unlockRecords(1, endOfRecords);
    EXPECT_TRUE(third.file.tryLock(4, HoldKind::change));
    EXPECT_FALSE(third.file.tryLock(5, HoldKind::change));
}

TEST_F(LockFileTest, AnOpeningAloneNeedsAllOthersGone) {
    EXPECT_EQ(statusOf([&] { User third(path, 3, LockFile::Sharing::exclusive); }), 85);
    EXPECT_FALSE(first.file.makeExclusive());
    std::string other = path + "-other";
    {
        User alone(other, 4, LockFile::Sharing::exclusive);
        EXPECT_EQ(statusOf([&] { User third(other, 3); }), 85);
        alone.file.makeShared();
        EXPECT_EQ(statusOf([&] { User third(other, 3); }), 0);
        EXPECT_TRUE(alone.file.makeExclusive());
        EXPECT_EQ(statusOf([&] { User third(other, 3); }), 85);
    }
    EXPECT_NE(access(lockFilePath(other).c_str(), F_OK), 0);
}

TEST_F(LockFileTest, HandlesOfAllUsersAreCounted) {
    std::vector<std::unique_ptr<User>> users;
    for (uint8_t user = 10; user < 30; ++user) {
        users.push_back(std::make_unique<User>(path, user));
        for (int handle = 0; handle < user; ++handle)
            users.back()->file.addHandle();
    }
    EXPECT_EQ(first.file.handleCount(), 390u);
    EXPECT_EQ(users.front()->file.handleCount(), 390u);
    users.pop_back();
    EXPECT_EQ(first.file.handleCount(), 361u);
}

// More users than slots: those without one lock as well, but are not known by their locks.
TEST_F(LockFileTest, UsersBeyondTheSlotsAreNotKnown) {
    rlimit files;
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &files), 0);
    rlim_t needed = lastHolderSlot + 100;
    if (files.rlim_cur < needed) {
        files.rlim_cur = std::min(needed, files.rlim_max);
        ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &files), 0);
    }
    std::vector<std::unique_ptr<User>> users;
    for (int64_t user = 2; user < lastHolderSlot; ++user)
        users.push_back(std::make_unique<User>(path, 50));
    User known(path, 51, LockFile::Sharing::shared);
    users.pop_back();
    User takesTheFreeSlot(path, 52), withoutSlot(path, 53);
    ASSERT_TRUE(takesTheFreeSlot.file.tryLock(1, HoldKind::singleWait));
    ASSERT_TRUE(withoutSlot.file.tryLock(2, HoldKind::singleNoWait));
    EXPECT_FALSE(first.file.tryLock(2, HoldKind::singleWait));
    first.file.noteRefusal(1);
    EXPECT_EQ(first.user.refusal->holder->identifier[0], 52);
    first.file.noteRefusal(2);
    EXPECT_EQ(first.user.refusal->kind, HoldKind::singleNoWait);
    EXPECT_FALSE(first.user.refusal->holder.has_value());
}

}  // namespace
