#include "embedded/operation/engine_session.h"

namespace {

using namespace vantrel::test;

// Records of a key byte and a value byte. Index 0 is on the key, unique; index 1 on the value, with
// duplicates and modifiable; value 0 keeps a record out of index 2.
class PositionsTest : public testing::Test {
  protected:
    PositionsTest() {
        std::string request =
            createRequest(2, 0,
                          {{{0, 1, extendedType, unsignedType}},
                           {{1, 1, extendedType | duplicates | modifiable, unsignedType}},
                           {{1, 1, extendedType | duplicates | modifiable | nullIfAll, unsignedType}}});
        EXPECT_EQ(session.create(path, request), 0);
        EXPECT_EQ(session.open(&block, path), 0);
        for (const char *record : {"b1", "d2", "f1", "h3"})
            EXPECT_EQ(session.call(2, &block, record, "-", -1).status, 0);
    }

    // The record that a call delivers, or its status.
    std::string read(uint32_t operation, const std::string &key = "?", int32_t index = 0) {
        return read(session, block, operation, key, index);
    }
    static std::string read(EngineSession &through, EngineSession::PositionBlock &at, uint32_t operation,
                            const std::string &key = "?", int32_t index = 0) {
        Reply reply = through.call(operation, &at, "", key, index, 2);
        return reply.status == 0 ? reply.data : std::to_string(reply.status);
    }
    std::string address() {
        Reply reply = session.call(22, &block, "", "", 0, 8);
        return reply.status == 0 ? reply.data : std::to_string(reply.status);
    }

    TemporaryDirectory directory;
    std::string path = directory / "file";
    EngineSession session{1};
    EngineSession::PositionBlock block{};
};

TEST_F(PositionsTest, NothingIsSetAfterOpening) {
    session.call(1, &block);
    ASSERT_EQ(session.open(&block, path), 0);
    EXPECT_EQ(read(6), "8");
    EXPECT_EQ(read(7), "8");
    EXPECT_EQ(read(6, "?", -1), "8");
    EXPECT_EQ(read(24), "8");
    EXPECT_EQ(read(35), "8");
    EXPECT_EQ(address(), "8");
    EXPECT_EQ(session.call(3, &block, "zz", "", -1).status, 8);
    EXPECT_EQ(session.call(4, &block).status, 8);
}

TEST_F(PositionsTest, SearchesFindTheirNeighbours) {
    EXPECT_EQ(read(5, "d"), "d2");
    EXPECT_EQ(read(5, "e"), "4");
    EXPECT_EQ(read(8, "d"), "f1");
    EXPECT_EQ(read(8, "h"), "9");
    EXPECT_EQ(read(9, "d"), "d2");
    EXPECT_EQ(read(9, "e"), "f1");
    EXPECT_EQ(read(9, "i"), "9");
    EXPECT_EQ(read(10, "d"), "b1");
    EXPECT_EQ(read(10, "b"), "9");
    EXPECT_EQ(read(11, "d"), "d2");
    EXPECT_EQ(read(11, "c"), "b1");
    EXPECT_EQ(read(11, "a"), "9");
    EXPECT_EQ(read(12), "b1");
    EXPECT_EQ(read(13), "h3");
}

TEST_F(PositionsTest, AFailedSearchLeavesThePlaceOfItsKey) {
    EXPECT_EQ(read(5, "e"), "4");
    EXPECT_EQ(address(), "8");
    EXPECT_EQ(read(24), "8");
    EXPECT_EQ(read(6), "f1");
    EXPECT_EQ(read(5, "e"), "4");
    EXPECT_EQ(read(7), "d2");
    EXPECT_EQ(read(8, "h"), "9");
    EXPECT_EQ(read(6), "9");
    EXPECT_EQ(read(7), "h3");
    EXPECT_EQ(read(10, "b"), "9");
    EXPECT_EQ(read(7), "9");
    EXPECT_EQ(read(6), "b1");
}

TEST_F(PositionsTest, AFailedNextLeavesThePlaceWhereItWas) {
    EXPECT_EQ(read(13), "h3");
    EXPECT_EQ(read(6), "9");
    EXPECT_EQ(read(6), "9");
    EXPECT_EQ(read(7), "f1");
    EXPECT_EQ(read(12), "b1");
    EXPECT_EQ(read(7), "9");
    EXPECT_EQ(read(6), "d2");
}

TEST_F(PositionsTest, NextNeedsTheSameIndex) {
    EXPECT_EQ(read(5, "d"), "d2");
    EXPECT_EQ(read(6, "?", 1), "7");
    EXPECT_EQ(read(6, "?", -1), "8");
    EXPECT_EQ(read(6, "?", 3), "6");
    EXPECT_EQ(read(6), "f1");
}

TEST_F(PositionsTest, MissingIndexesAreRefused) {
    for (uint32_t operation : {5u, 8u, 9u, 10u, 11u, 12u, 13u, 55u, 62u}) {
        EXPECT_EQ(read(operation, "d", 3), "6");
        EXPECT_EQ(read(operation, "d", -1), "6");
    }
    EXPECT_EQ(session.call(2, &block, "x1", "k", 3).status, 6);
    EXPECT_EQ(read(5, "x"), "4");
}

TEST_F(PositionsTest, DuplicatesStandInTheOrderOfInsertion) {
    EXPECT_EQ(read(12, "?", 1), "b1");
    EXPECT_EQ(read(6, "?", 1), "f1");
    EXPECT_EQ(read(6, "?", 1), "d2");
    EXPECT_EQ(read(5, "1", 1), "b1");
    EXPECT_EQ(read(11, "1", 1), "f1");
}

TEST_F(PositionsTest, KeyOnlyReadsMoveWithoutDelivering) {
    Reply reply = session.call(55, &block, "", "d", 0, 2);
    EXPECT_EQ(reply.status, 0);
    EXPECT_EQ(reply.data, "");
    EXPECT_EQ(session.call(56, &block, "", "?", 0).key, "f");
    EXPECT_EQ(session.call(22, &block, "", "", 0, 8).data, u64(3));
    EXPECT_EQ(session.call(85, &block, "", "", 0).status, 0);
    EXPECT_EQ(session.call(22, &block, "", "", 0, 8).data, u64(2));
    EXPECT_EQ(session.call(74, &block, "", "", 0).status, 0);
    EXPECT_EQ(session.call(22, &block, "", "", 0, 8).data, u64(3));
}

TEST_F(PositionsTest, StepsFollowThePhysicalOrder) {
    EXPECT_EQ(read(33), "b1");
    EXPECT_EQ(read(24), "d2");
    EXPECT_EQ(read(34), "h3");
    EXPECT_EQ(read(35), "f1");
    EXPECT_EQ(read(24), "h3");
    EXPECT_EQ(read(24), "9");
    EXPECT_EQ(read(35), "f1");
}

TEST_F(PositionsTest, StepsLeaveTheLogicalPlace) {
    EXPECT_EQ(read(5, "d"), "d2");
    EXPECT_EQ(read(34), "h3");
    EXPECT_EQ(read(6), "f1");
}

TEST_F(PositionsTest, DirectReadsTakeTheAddress) {
    EXPECT_EQ(session.call(23, &block, u64(3), "k", -1).data, "f1");
    EXPECT_EQ(session.call(23, &block, u64(5), "k", -1).status, 43);
    EXPECT_EQ(session.call(23, &block, u64(0), "k", -1).status, 43);
    EXPECT_EQ(session.call(23, &block, u64(UINT64_MAX), "k", -1).status, 43);
    EXPECT_EQ(session.call(23, &block, u64(3), "k", 9).status, 6);
    EXPECT_EQ(session.call(23, &block, "1234567", "k", -1).status, 22);
    Reply reply = session.call(23, &block, u64(2), "?", 0);
    EXPECT_EQ(reply.data, "d2");
    EXPECT_EQ(reply.key, "d");
    EXPECT_EQ(read(6), "f1");
}

TEST_F(PositionsTest, DirectReadsNeedAnEntryInTheIndexNamed) {
    ASSERT_EQ(session.call(2, &block, std::string("x\0", 2), "k", -1).status, 0);
    EXPECT_EQ(session.call(23, &block, u64(5), "k", 2).status, 44);
    EXPECT_EQ(session.call(23, &block, u64(5), "k", 1).status, 0);
}

TEST_F(PositionsTest, AnInsertIsCurrentAndMovesThePlaceOfTheIndexNamed) {
    EXPECT_EQ(read(5, "b"), "b1");
    Reply reply = session.call(2, &block, "g2", "?", 0);
    EXPECT_EQ(reply.key, "g");
    EXPECT_EQ(address(), u64(5));
    EXPECT_EQ(read(6), "h3");
    EXPECT_EQ(read(5, "b"), "b1");
    session.call(2, &block, "c2", "?", -1);
    EXPECT_EQ(address(), u64(6));
    EXPECT_EQ(read(6), "c2");
}

TEST_F(PositionsTest, AnUpdatedRecordThatMovedForwardIsMetAgain) {
    EXPECT_EQ(read(12, "?", 1), "b1");
    EXPECT_EQ(session.call(3, &block, "b9", "", -1).status, 0);
    EXPECT_EQ(session.call(3, &block, "b8", "", -1).status, 0);
    EXPECT_EQ(read(6, "?", 1), "f1");
    EXPECT_EQ(read(6, "?", 1), "d2");
    EXPECT_EQ(read(6, "?", 1), "h3");
    EXPECT_EQ(read(6, "?", 1), "b8");
    EXPECT_EQ(read(6, "?", 1), "9");
}

TEST_F(PositionsTest, ADeletedRecordLeavesItsPlace) {
    EXPECT_EQ(read(5, "d"), "d2");
    EXPECT_EQ(session.call(4, &block).status, 0);
    EXPECT_EQ(session.call(4, &block).status, 8);
    EXPECT_EQ(session.call(3, &block, "d2", "", -1).status, 8);
    EXPECT_EQ(address(), "8");
    EXPECT_EQ(read(6), "f1");
    EXPECT_EQ(read(5, "f"), "f1");
    EXPECT_EQ(session.call(4, &block).status, 0);
    EXPECT_EQ(read(24), "h3");
    EXPECT_EQ(read(33), "b1");
    EXPECT_EQ(session.call(4, &block).status, 0);
    EXPECT_EQ(read(35), "9");
    EXPECT_EQ(read(24), "h3");
}

TEST_F(PositionsTest, AddressesAreNeverUsedTwice) {
    EXPECT_EQ(read(13), "h3");
    EXPECT_EQ(session.call(4, &block).status, 0);
    EXPECT_EQ(session.call(2, &block, "i1", "", -1).status, 0);
    EXPECT_EQ(address(), u64(5));
}

TEST_F(PositionsTest, RefusedChangesKeepThePlace) {
    EXPECT_EQ(read(5, "d"), "d2");
    EXPECT_EQ(session.call(2, &block, "f9", "", -1).status, 5);
    EXPECT_EQ(session.call(3, &block, "e2", "", -1).status, 10);
    EXPECT_EQ(address(), u64(2));
    EXPECT_EQ(read(6), "f1");
}

TEST_F(PositionsTest, ShortKeysAreRefusedOnlyWhereTheyAreRead) {
    EXPECT_EQ(session.call(5, &block, "", "", 0, 2).status, 21);
    EXPECT_EQ(session.call(59, &block, "", "", 0, 2).status, 21);
    EXPECT_EQ(session.call(12, &block, "", "", 0, 2).data, "b1");
    EXPECT_EQ(session.call(6, &block, "", "", 0, 2).data, "d2");
}

TEST_F(PositionsTest, ACutReadMovesThePosition) {
    Reply reply = session.call(5, &block, "", "d", 0, 1);
    EXPECT_EQ(reply.status, 22);
    EXPECT_EQ(reply.data, "d");
    EXPECT_EQ(address(), u64(2));
    EXPECT_EQ(session.call(6, &block, "", "", 0, 0).status, 22);
    EXPECT_EQ(read(6), "h3");
}

TEST_F(PositionsTest, AnotherSessionsChangeIsAConflict) {
    EngineSession other(2);
    EngineSession::PositionBlock otherBlock{};
    ASSERT_EQ(other.open(&otherBlock, path), 0);
    EXPECT_EQ(read(5, "d"), "d2");
    EXPECT_EQ(read(other, otherBlock, 5, "d"), "d2");
    EXPECT_EQ(other.call(3, &otherBlock, "d7", "", -1).status, 0);
    EXPECT_EQ(session.call(3, &block, "d8", "", -1).status, 80);
    EXPECT_EQ(session.call(4, &block).status, 80);
    EXPECT_EQ(read(5, "d"), "d7");
    EXPECT_EQ(session.call(4, &block).status, 0);
    EXPECT_EQ(other.call(3, &otherBlock, "d9", "", -1).status, 80);
}

TEST_F(PositionsTest, TheSessionsOwnChangeIsNone) {
    EngineSession::PositionBlock second{};
    ASSERT_EQ(session.open(&second, path), 0);
    EXPECT_EQ(read(5, "d"), "d2");
    EXPECT_EQ(read(session, second, 5, "d"), "d2");
    EXPECT_EQ(session.call(3, &second, "d7", "", -1).status, 0);
    EXPECT_EQ(session.call(3, &block, "d8", "", -1).status, 0);
    EXPECT_EQ(session.call(4, &second).status, 0);
    EXPECT_EQ(session.call(3, &block, "d9", "", -1).status, 8);
}

TEST_F(PositionsTest, AbortTakesBackWhatItsSessionInserted) {
    ASSERT_EQ(session.call(1019, nullptr).status, 0);
    ASSERT_EQ(session.call(2, &block, "x1", "", -1).status, 0);
    ASSERT_EQ(session.call(21, nullptr).status, 0);
    EXPECT_EQ(address(), "8");
    EXPECT_EQ(session.call(3, &block, "x2", "", -1).status, 8);
    EXPECT_EQ(read(5, "x"), "4");
}

TEST_F(PositionsTest, AfterAnAbortTheCurrentRecordIsTheOldOne) {
    EXPECT_EQ(read(5, "d"), "d2");
    ASSERT_EQ(session.call(1019, nullptr).status, 0);
    ASSERT_EQ(session.call(3, &block, "d7", "", -1).status, 0);
    ASSERT_EQ(session.call(21, nullptr).status, 0);
    EXPECT_EQ(address(), u64(2));
    EXPECT_EQ(session.call(3, &block, "d8", "", -1).status, 0);
    EXPECT_EQ(read(5, "d"), "d8");
}

}  // namespace
