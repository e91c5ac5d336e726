#include <chrono>
#include <random>
#include <thread>

#include "embedded/commit/child_process.h"
#include "embedded/emulation.h"
#include "embedded/operation/engine_session.h"

namespace {

using namespace vantrel::test;

constexpr int64_t opening = 1000;
constexpr size_t fileCount = 3;

// Accounts in three files, one record in each; transfers between them never change the total.
class TransfersTest : public testing::Test {
  protected:
    TransfersTest() {
        EngineSession session(9);
        for (size_t file = 0; file < fileCount; ++file) {
            EngineSession::PositionBlock block{};
            EXPECT_EQ(session.create(path(file), createRequest(9, 0, {{{0, 1}}})), 0);
            EXPECT_EQ(session.open(&block, path(file)), 0);
            EXPECT_EQ(session.call(2, &block, 'a' + u64(opening), "", -1).status, 0);
        }
    }

    std::string path(size_t file) { return directory / std::to_string(file); }

    TemporaryDirectory directory;
};

class Teller {
  public:
    Teller(uint8_t number, const std::array<std::string, fileCount> &paths) : session_(number) {
        for (size_t file = 0; file < fileCount; ++file)
            EXPECT_EQ(session_.open(&blocks_[file], paths[file]), 0);
    }

    // True where the transfer happened; a refusal leaves everything as it was.
    bool transfer(size_t from, size_t to, int64_t amount) {
        EXPECT_EQ(session_.call(1519, nullptr).status, 0);
        if (add(from, -amount) && add(to, amount)) {
            int32_t status = session_.call(20, nullptr).status;
            EXPECT_EQ(status, 0);
            return status == 0;
        }
        EXPECT_EQ(session_.call(21, nullptr).status, 0);
        return false;
    }

    int64_t total() {
        int64_t total = 0;
        for (auto &block : blocks_)
            total += balance(session_.call(5, &block, "", "a", 0, 9));
        return total;
    }

  private:
    static int64_t balance(const Reply &reply) {
        EXPECT_EQ(reply.status, 0);
        return static_cast<int64_t>(number(reply.data, 1, 8));
    }
    bool add(size_t file, int64_t amount) {
        int64_t before = balance(session_.call(5, &blocks_[file], "", "a", 0, 9));
        int32_t status =
            session_.call(3, &blocks_[file], 'a' + u64(static_cast<uint64_t>(before + amount)), "", -1)
                .status;
        EXPECT_TRUE(status == 0 || status == 80 || status == 84 || status == 85) << status;
        return status == 0;
    }

    EngineSession session_;
    std::array<EngineSession::PositionBlock, fileCount> blocks_{};
};

TEST_F(TransfersTest, TheTotalNeverChanges) {
    uint32_t seed = std::random_device()();
    RecordProperty("seed", std::to_string(seed));
    SCOPED_TRACE(seed);
    const std::array<std::string, fileCount> paths = {path(0), path(1), path(2)};
    auto work = [&](uint32_t process, uint8_t sessionNumber) {
        Teller teller(sessionNumber, paths);
        std::mt19937 random(seed + process * 10 + sessionNumber);
        for (int done = 0; done < 50;) {
            size_t from = random() % fileCount, to = (from + 1 + random() % (fileCount - 1)) % fileCount;
            if (teller.transfer(from, to, static_cast<int64_t>(random() % 100)))
                ++done;
            else
                std::this_thread::sleep_for(std::chrono::microseconds(random() % 2000));
        }
    };
    auto process = [&](uint32_t number) {
        return [&, number]() -> std::string {
            std::thread other(work, number, uint8_t{2});
            work(number, 1);
            other.join();
            return "done";
        };
    };
    ChildProcess first(process(1)), second(process(2));
    EXPECT_EQ(first.result(), "done");
    EXPECT_EQ(second.result(), "done");
    EXPECT_EQ(Teller(3, paths).total(), opening * static_cast<int64_t>(fileCount));
}

// Processes die at any moment while others go on.
TEST_F(TransfersTest, NorDoesItWhenProcessesAreKilled) {
    uint32_t seed = std::random_device()();
    SCOPED_TRACE(seed);
    const std::array<std::string, fileCount> paths = {path(0), path(1), path(2)};
    std::mt19937 random(seed);
    auto forever = [&](std::mt19937::result_type seedOfOne) {
        return [&, seedOfOne]() -> std::string {
            Teller teller(1, paths);
            for (std::mt19937 chosen(seedOfOne);;) {
                size_t from = chosen() % fileCount;
                teller.transfer(from, (from + 1 + chosen() % 2) % fileCount, 1);
            }
        };
    };
    for (int round = 0; round < rounds(30, 5); ++round) {
        ChildProcess first(forever(random())), second(forever(random()));
        std::this_thread::sleep_for(std::chrono::microseconds(20000 + random() % 20000));
        first.kill();
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 20000));
        second.kill();
        EXPECT_EQ(first.result(), "killed");
        EXPECT_EQ(second.result(), "killed");
        EXPECT_EQ(ChildProcess::run([&] { return std::to_string(Teller(3, paths).total()); }), "3000")
            << round;
    }
}

}  // namespace
