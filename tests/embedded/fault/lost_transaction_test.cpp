#include <gtest/gtest.h>

#include "embedded/fault/injection.h"
#include "embedded/fault/scenario.h"

namespace {

using namespace vantrel::test;

// Reads inside a transaction that fail for want of memory can take away what it has changed.
class LostTransactionTest : public testing::Test {
  protected:
    LostTransactionTest() {
        World world(directory.path());
        prepareFile(world);
    }

    // False when there was no such allocation any more.
    bool readWithoutMemory(World &world, uint64_t allocation, int32_t *status) {
        Injection injection(FaultKind::allocationFails, allocation, directory.path());
        *status = world.find("ab");
        return injection.counted()[static_cast<size_t>(FaultKind::allocationFails)] >= allocation;
    }
    static uint64_t countIn(World &world) {
        Reply statistics = world.call(15, std::string(4096, '\0'));
        EXPECT_EQ(statistics.status, 0);
        return number(statistics.data, 8, 8);
    }

    TemporaryDirectory directory;
};

TEST_F(LostTransactionTest, NothingOfItStaysAndItsEndSaysSo) {
    constexpr uint64_t before = 12;
    bool wasLost = false, isReached = true;
    for (uint64_t allocation = 1; isReached; ++allocation) {
        SCOPED_TRACE(allocation);
        {
            World world(directory.path());
            openIt(world);
            ASSERT_EQ(world.session().call(1019, nullptr).status, 0);
            ASSERT_EQ(world.insert("zz1r"), 0);
            int32_t read = 0;
            isReached = readWithoutMemory(world, allocation, &read);
            ASSERT_TRUE(read == 101 || read == 0) << read;
            int32_t insert = world.insert("zy1r"), end = world.session().call(20, nullptr).status;
            ASSERT_TRUE((insert == 0 && end == 0) || (insert == 74 && end == 74)) << insert << ' ' << end;
            wasLost |= end == 74;
            ASSERT_EQ(countIn(world), end == 0 ? before + 2 : before);
            for (const char *key : {"zz", "zy"}) {
                ASSERT_EQ(world.find(key), end == 0 ? 0 : 4);
                ASSERT_EQ(end == 0 ? world.call(4).status : 0, 0);
            }
        }
        World world(directory.path());
        ASSERT_EQ(world.open("file", -3), 0);
    }
    EXPECT_TRUE(wasLost);
}

}  // namespace
