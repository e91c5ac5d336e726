#include <gtest/gtest.h>

#include "embedded/fault/injection.h"
#include "embedded/fault/scenario.h"

// What a session goes on with after a call of its own that found no memory, whichever allocation it was.

namespace {

using namespace vantrel::test;

class FailedCallTest : public testing::Test {
  protected:
    // Makes a call without the n-th allocation. False when there was none any more.
    template <class Call>
    bool callWithout(uint64_t allocation, int32_t *status, const Call &call) {
        Injection injection(FaultKind::allocationFails, allocation, directory.path());
        *status = call();
        return injection.counted()[static_cast<size_t>(FaultKind::allocationFails)] >= allocation;
    }

    // With keys that are too long to be kept without an allocation, in the opposite order by the second
    // index.
    static std::string recordOf(char number) {
        return std::string(30, number) + std::string(40, static_cast<char>('z' - (number - 'a')));
    }
    void makeFileOfLongKeys() {
        World world(directory.path());
        std::string request = createRequest(70, 0, {{{0, 30}}, {{30, 40}}});
        ASSERT_EQ(world.session().create(world.path("file"), request), 0);
        openIt(world);
        for (char number = 'a'; number <= 'f'; ++number)
            ASSERT_EQ(world.insert(recordOf(number)), 0);
    }

    TemporaryDirectory directory;
};

TEST_F(FailedCallTest, AReadLeavesThePlace) {
    constexpr uint32_t getEqual = 5, getNext = 6, getGreater = 8, getFirst = 12;
    makeFileOfLongKeys();
    auto read = [](World &world, uint32_t operation, const std::string &key = {}, int32_t index = 0) {
        return world.call(operation, "", key, index, 70);
    };
    int failures = 0;
    for (bool isOtherIndex : {false, true}) {
        bool isReached = true;
        for (uint64_t allocation = 1; isReached; ++allocation) {
            SCOPED_TRACE(allocation);
            World world(directory.path());
            openIt(world);
            ASSERT_EQ(read(world, getFirst).data, recordOf('a'));
            ASSERT_EQ(read(world, getNext).data, recordOf('b'));
            std::string key = recordOf('e').substr(isOtherIndex ? 30 : 0, isOtherIndex ? 40 : 30);
            int32_t status = 0;
            isReached = callWithout(allocation, &status, [&] {
                return read(world, isOtherIndex ? getEqual : getGreater, key, isOtherIndex ? 1 : 0).status;
            });
            ASSERT_TRUE(status == 101 || status == 0) << status;
            failures += status == 101 ? 1 : 0;
            if (status == 101) {
                ASSERT_EQ(read(world, getNext).data, recordOf('c'));
            }
        }
    }
    EXPECT_GT(failures, 2);
}

TEST_F(FailedCallTest, AChangeLeavesNoLock) {
    makeFileOfLongKeys();
    constexpr uint32_t getEqual = 5, update = 3;
    std::string key = recordOf('b').substr(0, 30), record = recordOf('b');
    int failures = 0;
    bool isReached = true;
    for (uint64_t allocation = 1; isReached; ++allocation) {
        SCOPED_TRACE(allocation);
        World world(directory.path());
        openIt(world);
        ASSERT_EQ(world.open("file", 0, 1, 1), 0);
        ASSERT_EQ(world.call(getEqual, "", key, 0, 70).status, 0);
        int32_t status = 0;
        isReached =
            callWithout(allocation, &status, [&] { return world.call(update, record, "", -1).status; });
        ASSERT_TRUE(status == 101 || status == 0) << status;
        failures += status == 101 ? 1 : 0;
        ASSERT_EQ(world.session(1).call(getEqual, world.block(1), "", key, 0, 70).status, 0);
        ASSERT_EQ(world.session(1).call(update, world.block(1), record, "", -1).status, 0);
    }
    EXPECT_GT(failures, 2);
}

TEST_F(FailedCallTest, ASessionThatWasNotMadeIsNoneToStop) {
    int failures = 0;
    bool isReached = true;
    for (uint64_t allocation = 1; isReached; ++allocation) {
        SCOPED_TRACE(allocation);
        EngineSession session(static_cast<uint8_t>(100 + allocation)), other(1);
        int32_t status = 0;
        isReached = callWithout(allocation, &status,
                                [&] { return session.call(26, nullptr, std::string(15, '\0')).status; });
        ASSERT_TRUE(status == 101 || status == 0) << status;
        failures += status == 101 ? 1 : 0;
        ASSERT_EQ(other.call(25, nullptr).status, 0);
        ASSERT_EQ(session.call(26, nullptr, std::string(15, '\0')).status, 0);
    }
    EXPECT_GT(failures, 0);
}

}  // namespace
