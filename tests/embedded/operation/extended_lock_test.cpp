#include <chrono>
#include <thread>

#include "embedded/operation/extended_fixture.h"

namespace {

using namespace vantrel::test;

class ExtendedLockTest : public ExtendedFixture {
  protected:
    ExtendedLockTest() { EXPECT_EQ(other.open(&otherBlock, path), 0); }

    // The letters that another session finds locked.
    std::string locked() {
        std::string letters;
        for (std::string letter : {"a", "b", "c", "d", "e", "f"}) {
            int32_t status = other.call(205, &otherBlock, "", letter, 0, 4).status;
            EXPECT_TRUE(status == 0 || status == 84) << status;
            if (status == 84)
                letters += letter;
            other.call(27, &otherBlock, "", "", 0);
        }
        return letters;
    }

    EngineSession other{2};
    EngineSession::PositionBlock otherBlock{};
};

TEST_F(ExtendedLockTest, ASingleLockIsOnTheLastRecordReturned) {
    EXPECT_EQ(run(236, request("FI", {onDigit(equalTo, '1')})), "acf 9");
    EXPECT_EQ(locked(), "f");
    EXPECT_EQ(run(136, request("FI", {onDigit(equalTo, '2')})), "be 9");
    EXPECT_EQ(locked(), "e");
    EXPECT_EQ(run(238, request("FI", {onDigit(equalTo, '1')}), -1), "caf 9");
    EXPECT_EQ(locked(), "f");
}

TEST_F(ExtendedLockTest, MultipleLocksAreOnEachRecordReturned) {
    EXPECT_EQ(run(436, request("FI", {onDigit(equalTo, '1')})), "acf 9");
    EXPECT_EQ(locked(), "acf");
    EXPECT_EQ(run(339, request("LA", {onDigit(equalTo, '2')}), -1), "eb 9");
    EXPECT_EQ(locked(), "abcef");
}

TEST_F(ExtendedLockTest, KindsOfLocksDoNotMix) {
    ASSERT_EQ(session.call(205, &block, "", "b", 0, 4).status, 0);
    EXPECT_EQ(run(436, request("FI")), " 93");
    EXPECT_EQ(current(), "b");
    EXPECT_EQ(locked(), "b");
}

TEST_F(ExtendedLockTest, ALockedRecordEndsTheScanWithStatus84) {
    ASSERT_EQ(other.call(205, &otherBlock, "", "c", 0, 4).status, 0);
    EXPECT_EQ(run(436, request("FI")), "ab 84");
    EXPECT_EQ(current(), "b");
    EXPECT_EQ(run(236, request("EG")), " 93");
    ASSERT_EQ(session.call(27, &block, "", "", -2).status, 0);
    EXPECT_EQ(run(236, request("EG")), " 84");
    EXPECT_EQ(current(), "b");
    EXPECT_EQ(run(36, request("FI")), "abcdef 9");
}

TEST_F(ExtendedLockTest, ARecordThatDoesNotPassNeedsNoLock) {
    ASSERT_EQ(other.call(205, &otherBlock, "", "b", 0, 4).status, 0);
    EXPECT_EQ(run(436, request("FI", {onDigit(equalTo, '1')})), "acf 9");
}

TEST_F(ExtendedLockTest, AWaitEndsWithTheLockAndReadsWhatIsThen) {
    ASSERT_EQ(other.call(205, &otherBlock, "", "c", 0, 4).status, 0);
    std::thread holder([this] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        EXPECT_EQ(other.call(3, &otherBlock, "c9yy", "", -1).status, 0);
    });
    RequestFields fields = request("FI", {onDigit(equalTo, '1')});
    std::string outcome = run(336, fields);
    holder.join();
    EXPECT_EQ(outcome, "af 9");
    EXPECT_EQ(locked(), "af");
}

TEST_F(ExtendedLockTest, ATransactionsBiasIsTheDefault) {
    ASSERT_EQ(session.call(1419, nullptr).status, 0);
    EXPECT_EQ(run(36, request("FI", {onDigit(equalTo, '2')})), "be 9");
    EXPECT_EQ(locked(), "be");
    ASSERT_EQ(session.call(20, nullptr).status, 0);
    EXPECT_EQ(locked(), "");
}

TEST_F(ExtendedLockTest, AggregatesLockWhatTheyTakeIn) {
    RequestFields fields = request("FI", {onDigit(equalTo, '1')});
    fields.entries = aggregateEntries(14, "MI", {1, 0});
    EXPECT_EQ(run(436, fields), "a 9");
    EXPECT_EQ(locked(), "acf");
}

TEST_F(ExtendedLockTest, ARecordWithoutRoomIsNotLocked) {
    RequestFields fields = request("FI");
    Reply reply = session.call(436, &block, fields.bytes(), "", 0, 2 + 2 * 11 + 5);
    EXPECT_EQ(reply.status, 61);
    EXPECT_EQ(locked(), "ab");
}

}  // namespace
