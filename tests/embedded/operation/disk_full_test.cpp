#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <optional>

#include "embedded/commit/child_process.h"
#include "embedded/file_size_limit.h"
#include "embedded/operation/owner_fixture.h"

namespace {

using namespace vantrel::test;

// Files may grow no longer: what is written behind the end fails.
class FullFiles {
  public:
    explicit FullFiles(const std::string &) {}
    bool isThere() const { return true; }
    void takeRoom() { limit_.emplace(256 * 1024); }
    void makeRoom() { limit_.reset(); }

  private:
    std::optional<FileSizeLimit> limit_;
};

// A file system of its own in the directory, that a file of no use fills.
class SmallDisk {
  public:
    explicit SmallDisk(const std::string &directory) : filler_(directory + "/filler") {
        bool isAlone = unshare(CLONE_NEWNS) == 0 || unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0;
        isMounted_ = isAlone && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                     mount("none", directory.c_str(), "tmpfs", 0, "size=16m") == 0;
    }
    bool isThere() const { return isMounted_; }
    void takeRoom() const {
        constexpr size_t left = 40 * 1024;
        std::string page(4096, 'x');
        std::ofstream filler(filler_, std::ios::binary);
        while (filler.write(page.data(), static_cast<std::streamsize>(page.size())).flush()) {
        }
        struct stat status;
        EXPECT_EQ(stat(filler_.c_str(), &status), 0);
        EXPECT_EQ(truncate(filler_.c_str(), status.st_size - static_cast<off_t>(left)), 0);
    }
    void makeRoom() const { unlink(filler_.c_str()); }

  private:
    std::string filler_;
    bool isMounted_ = false;
};

std::string recordOf(uint32_t number) {
    return u32(number) + std::string(996, static_cast<char>('a' + number % 26));
}

// A file as one session works on it.
struct Work {
    explicit Work(const std::string &file) : path(file) {
        std::string request = createRequest(1000, 0, {{{0, 4, extendedType, unsignedType}}});
        EXPECT_EQ(session.create(path, request), 0);
        EXPECT_EQ(session.open(&block, path), 0);
    }

    int32_t insert(uint32_t number) { return session.call(2, &block, recordOf(number), "", -1).status; }
    // Inserts records until that fails; how many there are then.
    uint32_t insertUntilFull(uint32_t number, int32_t expected) {
        constexpr uint32_t enough = 5000;
        int32_t status = 0;
        while (number < enough && (status = insert(number)) == 0)
            ++number;
        EXPECT_EQ(status, expected);
        return number;
    }
    int32_t insertInTransaction(uint32_t first, uint32_t end) {
        EXPECT_EQ(session.call(1019, nullptr).status, 0);
        for (uint32_t number = first; number < end; ++number)
            EXPECT_EQ(insert(number), 0);
        return session.call(20, nullptr).status;
    }
    // All numbers from 0 on, and nothing else; the file is whole.
    void expectRecords(uint32_t count) {
        EngineSession other(2);
        EngineSession::PositionBlock verified{};
        EXPECT_EQ(other.open(&verified, path, -3), 0);
        std::vector<std::string> records = recordsOf(other, &verified, 1000);
        EXPECT_EQ(records.size(), count);
        for (uint32_t number = 0; number < records.size(); ++number)
            EXPECT_EQ(records[number], recordOf(number));
    }

    std::string path;
    EngineSession session{1};
    EngineSession::PositionBlock block{};
};

template <class Shortage>
class DiskFullTest : public testing::Test {
  protected:
    // In a process of its own, whose limits and mounts are its own too.
    template <class Function>
    void run(const Function &function) {
        std::string result = ChildProcess::run([&]() -> std::string {
            Shortage shortage(directory.path());
            if (!shortage.isThere())
                return "cannot";
            {
                Work work(directory / "file");
                function(work, shortage);
            }
            return "done";
        });
        if (result == "cannot")
            GTEST_SKIP() << "no file system may be mounted here";
        EXPECT_EQ(result, "done");
    }

    TemporaryDirectory directory;
};

using Shortages = testing::Types<FullFiles, SmallDisk>;
TYPED_TEST_SUITE(DiskFullTest, Shortages);

TYPED_TEST(DiskFullTest, SingleChangesAreRefusedAndGoOnWhenThereIsRoom) {
    this->run([](Work &work, auto &shortage) {
        shortage.takeRoom();
        uint32_t count = work.insertUntilFull(0, 18);
        EXPECT_EQ(work.insert(count), 18);
        work.expectRecords(count);
        shortage.makeRoom();
        for (uint32_t number = count; number < count + 100; ++number)
            EXPECT_EQ(work.insert(number), 0);
        work.expectRecords(count + 100);
    });
}

TYPED_TEST(DiskFullTest, ATransactionThatDoesNotFitIsTakenBack) {
    this->run([](Work &work, auto &shortage) {
        EXPECT_EQ(work.insert(0), 0);
        shortage.takeRoom();
        EXPECT_EQ(work.insertInTransaction(1, 1000), 18);
        EXPECT_EQ(work.session.call(20, nullptr).status, 39);
        work.expectRecords(1);
        shortage.makeRoom();
        EXPECT_EQ(work.insertInTransaction(1, 1000), 0);
        work.expectRecords(1000);
    });
}

TYPED_TEST(DiskFullTest, WhatRewritesMuchChangesNothing) {
    this->run([](Work &work, auto &shortage) {
        EXPECT_EQ(work.insertInTransaction(0, 2000), 0);
        EXPECT_EQ(work.session.call(1, &work.block).status, 0);
        EXPECT_EQ(work.session.open(&work.block, work.path), 0);
        shortage.takeRoom();
        std::string wide = segmentBytes({4, 255, duplicates});
        EXPECT_EQ(work.session.call(31, &work.block, wide, "", 0).status, 18);
        EXPECT_EQ(setOwner(work.session, &work.block, deniedEncrypted, "owner"), 18);
        std::string request = createRequest(4, 0x0004, {});
        request.replace(22, 2, u16(2000));
        EXPECT_EQ(work.session.create(work.path + "2", request), 18);
        EXPECT_EQ(access((work.path + "2").c_str(), F_OK), -1);
        EXPECT_EQ(access((work.path + "-rekey").c_str(), F_OK), -1);
        work.expectRecords(2000);
        shortage.makeRoom();
        EXPECT_EQ(work.session.call(31, &work.block, wide, "", 0).status, 0);
        work.expectRecords(2000);
    });
}

TYPED_TEST(DiskFullTest, ReadingNeedsNoRoom) {
    this->run([](Work &work, auto &shortage) {
        for (uint32_t number = 0; number < 100; ++number)
            EXPECT_EQ(work.insert(number), 0);
        shortage.takeRoom();
        uint32_t count = work.insertUntilFull(100, 18);
        EXPECT_EQ(recordsOf(work.session, &work.block, 1000).size(), count);
        EXPECT_EQ(work.session.call(1, &work.block).status, 0);
        EXPECT_EQ(work.session.open(&work.block, work.path, -3), 0);
        EXPECT_EQ(recordsOf(work.session, &work.block, 1000).size(), count);
        shortage.makeRoom();
    });
}

// Each one describes itself at a place of its own in the side file of locks.
TYPED_TEST(DiskFullTest, OpeningNeedsNoRoom) {
    this->run([](Work &work, auto &shortage) {
        shortage.takeRoom();
        uint32_t count = work.insertUntilFull(0, 18);
        for (int opening = 0; opening < 80; ++opening) {
            SCOPED_TRACE(opening);
            EngineSession other(2);
            EngineSession::PositionBlock block{};
            ASSERT_EQ(other.open(&block, work.path), 0);
            ASSERT_EQ(other.call(5 + 100, &block, "", u32(0), 0, 1000).status, count == 0 ? 4 : 0);
            ASSERT_EQ(work.session.call(5 + 200, &work.block, "", u32(0), 0, 1000).status, 84);
            ASSERT_EQ(other.call(27, &block).status, 0);
        }
        shortage.makeRoom();
        work.expectRecords(count);
    });
}

}  // namespace
