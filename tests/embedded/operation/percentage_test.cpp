#include "embedded/emulation.h"
#include "embedded/operation/percentage_fixture.h"

namespace {

using namespace vantrel::test;

class PercentageTest : public PercentageFixture {};

TEST_F(PercentageTest, NothingIsTheFirstAndTheWholeTheLast) {
    for (const char *record : {"b1x1", "c0x2", "a1y3"})
        insert(record);
    EXPECT_EQ(read(percentage(0), physical), "b1x1");
    EXPECT_EQ(read(percentage(10000), physical), "a1y3");
    EXPECT_EQ(read(percentage(5000), physical), "c0x2");
    EXPECT_EQ(read(percentage(0), 0), "c0x2");
    EXPECT_EQ(read(percentage(10000), 0), "b1x1");
    EXPECT_EQ(read(percentage(0), 1), "a1y3");
    EXPECT_EQ(read(percentage(10000), 1), "c0x2");
    EXPECT_EQ(read(fraction(0, 1), 2), "b1x1");
    EXPECT_EQ(read(fraction(1, 1), 2), "a1y3");
    EXPECT_EQ(read(fraction(UINT32_MAX, UINT32_MAX), 125), "a1y3");
    EXPECT_EQ(read(fraction(UINT32_MAX / 2, UINT32_MAX), 125), "c0x2");
}

TEST_F(PercentageTest, MoreThanTheWholeIsPastTheEnd) {
    insert("b1x1");
    EXPECT_EQ(read(percentage(10001), 0), "9");
    EXPECT_EQ(read(percentage(UINT32_MAX), physical), "9");
    EXPECT_EQ(read(fraction(2, 1), 0), "9");
    EXPECT_EQ(read(fraction(10001, 10001), 0), "b1x1");
}

TEST_F(PercentageTest, AnEmptyOrderHasNoRecords) {
    for (int32_t order : orders)
        EXPECT_EQ(read(percentage(0), order), "9");
    insert(std::string("b1x\0", 4));
    EXPECT_EQ(read(percentage(0), 2), "9");
    EXPECT_EQ(read(percentage(0), physical), std::string("b1x\0", 4));
    EXPECT_EQ(read(percentage(0), 0), std::string("b1x\0", 4));
}

TEST_F(PercentageTest, ADenominatorOfZeroIsRefused) {
    EXPECT_EQ(read(fraction(0, 0), 0), "41");
    insert("b1x1");
    EXPECT_EQ(read(fraction(1, 0), 0), "41");
    EXPECT_EQ(session.call(45, &block, place(1, 0), "b1", 0).status, 41);
}

TEST_F(PercentageTest, WithoutTheSignatureTheUnitIsThePercentage) {
    insertMany(3);
    std::string second = recordOf(1);
    EXPECT_EQ(read(percentage(5000) + "ExPx" + u32(0), physical), second);
    EXPECT_EQ(read(percentage(5000) + "ExPc" + "abc", physical).size(), 4u);
    EXPECT_EQ(session.call(44, &block, percentage(5000) + "ExPc" + "abc", "", physical).data, second);
    EXPECT_EQ(proportion(session, block, place(2) + "ExPx" + u32(7), physical, ""), 5000);
    EXPECT_EQ(proportion(session, block, place(2) + "ExPc" + "abc", physical, ""), 5000);
    EXPECT_EQ(proportion(session, block, place(2) + "ExPc" + u32(8), physical, ""), 4);
}

TEST_F(PercentageTest, EveryPercentageOfASmallFileIsExact) {
    for (uint32_t count : {1u, 2u, 3u, 7u, 40u}) {
        while (walk(session, block, physical).size() < count)
            insert(recordOf(count * 3));
        for (int32_t order : {physical, 0, 1}) {
            std::vector<Found> found = walk(session, block, order);
            for (uint32_t value = 0; value <= 10000; value += rounds(1u, 16u)) {
                uint32_t rank = (2 * value * (count - 1) + 10000) / 20000;
                ASSERT_EQ(session.call(44, &block, percentage(value), "", order).status, 0);
                ASSERT_EQ(number(session.call(22, &block, "", "", 0, 8).data, 0, 8), found[rank].address)
                    << value << " of " << count << " in order " << order;
            }
            for (uint32_t rank = 0; rank < count; ++rank) {
                int64_t expected = count == 1 ? 0 : (rank * 20000 + count - 1) / (2 * (count - 1));
                ASSERT_EQ(proportion(session, block, place(found[rank].address), order, found[rank].key),
                          expected);
            }
        }
    }
}

TEST_F(PercentageTest, ARecordIsFoundAtItsOwnProportion) {
    insertMany(333);
    for (int32_t order : orders) {
        for (const Found &entry : walk(session, block, order)) {
            int64_t value = proportion(session, block, place(entry.address), order, entry.key);
            ASSERT_EQ(read(percentage(static_cast<uint32_t>(value)), order), entry.record);
            value = proportion(session, block, place(entry.address, UINT32_MAX), order, entry.key);
            ASSERT_EQ(read(fraction(static_cast<uint32_t>(value), UINT32_MAX), order), entry.record);
        }
    }
}

TEST_F(PercentageTest, KeyAndAddressNameAnEntry) {
    insert("b1x1");
    insert("b1y2");
    insert(std::string("a1z\0", 4));
    EXPECT_EQ(proportion(session, block, place(1), 0, "b1"), 5000);
    EXPECT_EQ(proportion(session, block, place(2), 0, "b1"), 10000);
    EXPECT_EQ(proportion(session, block, place(3), 0, "a1 and more"), 0);
    EXPECT_EQ(proportion(session, block, place(3), 0, "b1"), -44);
    EXPECT_EQ(proportion(session, block, place(3), 2, std::string(1, '\0')), -44);
    EXPECT_EQ(proportion(session, block, place(4), 0, "b1"), -43);
    EXPECT_EQ(proportion(session, block, place(UINT64_MAX), 0, "b1"), -43);
    EXPECT_EQ(proportion(session, block, place(4), physical, ""), -43);
    EXPECT_EQ(proportion(session, block, place(0), physical, ""), -43);
    EXPECT_EQ(proportion(session, block, place(2), physical, ""), 5000);
    EXPECT_EQ(proportion(session, block, place(1), 0, "b"), -21);
    EXPECT_EQ(proportion(session, block, place(1), 3, "b1"), -6);
    EXPECT_EQ(session.call(45, &block, u32(1), "b1", 0).status, 22);
    EXPECT_EQ(session.call(45, &block, "", "b1", 0).status, 22);
    EngineSession::PositionBlock none{};
    EXPECT_EQ(session.call(45, &none, place(1), "b1", 0).status, 3);
    EXPECT_EQ(session.call(145, &block, place(1), "b1", 0).status, 1);
}

TEST_F(PercentageTest, TellingAProportionMovesNothing) {
    for (const char *record : {"b1x1", "c0x2", "a1y3"})
        insert(record);
    ASSERT_EQ(session.call(5, &block, "", "a1", 0, 4).data, "a1y3");
    EXPECT_EQ(proportion(session, block, place(1), 0, "b1"), 10000);
    EXPECT_EQ(number(session.call(22, &block, "", "", 0, 8).data, 0, 8), 3u);
    EXPECT_EQ(session.call(6, &block, "", "", 0, 4).data, "b1x1");
}

TEST_F(PercentageTest, TheRecordFoundIsCurrentAndItsKeyThePlace) {
    for (const char *record : {"b1x1", "c0x2", "a1y3", "d1z4"})
        insert(record);
    Reply reply = session.call(44, &block, percentage(6700), "?????", 0, 4);
    EXPECT_EQ(reply.data, "b1x1");
    EXPECT_EQ(reply.key, "b1???");
    EXPECT_EQ(session.call(6, &block, "", "", 0, 4).data, "d1z4");
    EXPECT_EQ(session.call(44, &block, percentage(0), "?????", physical, 4).key, "?????");
    EXPECT_EQ(session.call(6, &block, "", "", 0, 4).status, 9);
    EXPECT_EQ(session.call(24, &block, "", "", 0, 4).data, "c0x2");
    EXPECT_EQ(session.call(44, &block, percentage(0), "", 7, 4).status, 6);
    EXPECT_EQ(session.call(44, &block, "abc", "", 0).status, 22);
    EXPECT_EQ(number(session.call(22, &block, "", "", 0, 8).data, 0, 8), 2u);
}

TEST_F(PercentageTest, ALongRecordIsCut) {
    ASSERT_EQ(session.call(1, &block).status, 0);
    ASSERT_EQ(session.create(path, createRequest(4, variableLength, {{{0, 2, common}}})), 0);
    ASSERT_EQ(session.open(&block, path), 0);
    insert("aabbcc");
    Reply reply = session.call(44, &block, percentage(0), "", 0, 5);
    EXPECT_EQ(reply.status, 22);
    EXPECT_EQ(reply.data, "aabbc");
    EXPECT_EQ(number(session.call(22, &block, "", "", 0, 8).data, 0, 8), 1u);
}

TEST_F(PercentageTest, ALockBiasLocksTheRecordFound) {
    insertMany(3);
    EngineSession other(2);
    EngineSession::PositionBlock otherBlock{};
    ASSERT_EQ(other.open(&otherBlock, path), 0);
    EXPECT_EQ(session.call(244, &block, percentage(5000), "", physical, 4).status, 0);
    EXPECT_EQ(other.call(244, &otherBlock, percentage(5000), "", physical, 4).status, 84);
    EXPECT_EQ(other.call(244, &otherBlock, percentage(0), "", physical, 4).status, 0);
    EXPECT_EQ(other.call(44, &otherBlock, percentage(5000), "", physical, 4).status, 0);
    EXPECT_EQ(session.call(27, &block, "", "", 0).status, 0);
    EXPECT_EQ(other.call(444, &otherBlock, percentage(5000), "", physical, 4).status, 93);
    EXPECT_EQ(other.call(244, &otherBlock, percentage(5000), "", physical, 4).status, 0);
}

// The first to ask has the records counted, which is a change of its own.
TEST_F(PercentageTest, AskingInsideATransactionKeepsItsLocks) {
    constexpr uint32_t beginConcurrent = 1019, getEqual = 5, multipleWait = 300, multipleNoWait = 400;
    for (const char *record : {"b1x1", "c0x2", "a1y3"})
        insert(record);
    EngineSession other(2);
    EngineSession::PositionBlock otherBlock{};
    ASSERT_EQ(other.open(&otherBlock, path), 0);
    ASSERT_EQ(session.call(beginConcurrent, nullptr).status, 0);
    ASSERT_EQ(session.call(getEqual + multipleWait, &block, "", "c0", 0, 4).status, 0);
    EXPECT_EQ(read(percentage(0), physical), "b1x1");
    EXPECT_EQ(other.call(getEqual + multipleNoWait, &otherBlock, "", "c0", 0, 4).status, 84);
    ASSERT_EQ(session.call(21, nullptr).status, 0);
    EXPECT_EQ(other.call(getEqual + multipleNoWait, &otherBlock, "", "c0", 0, 4).status, 0);
}

}  // namespace
