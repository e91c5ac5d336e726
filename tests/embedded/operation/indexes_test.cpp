#include "embedded/operation/engine_session.h"

namespace {

using namespace vantrel::test;

class IndexesTest : public testing::Test {
  protected:
    IndexesTest() {
        EXPECT_EQ(session.create(path, createRequest(3, 0, {{{0, 1, extendedType, unsignedType}}})), 0);
        EXPECT_EQ(session.open(&block, path), 0);
        for (const char *record : {"a2x", "b1y", "c2z", "d0x"})
            EXPECT_EQ(session.call(2, &block, record, "", -1).status, 0);
    }

    int32_t createIndex(const SegmentRequest &segment, int32_t keyNumber = 0) {
        return session.call(31, &block, segmentBytes(segment), "", keyNumber).status;
    }
    std::string walk(int32_t index) {
        std::string walked;
        Reply reply = session.call(12, &block, "", "???", index, 3);
        for (; reply.status == 0; reply = session.call(6, &block, "", "???", index, 3))
            walked += reply.data + ' ';
        return walked + std::to_string(reply.status);
    }
    uint64_t uniqueCount(size_t segment) {
        Reply reply = session.call(15, &block, std::string(65535, '\0'), "k", -1);
        return number(reply.data, 32 + 24 * segment + 8, 8);
    }
    uint64_t indexNumber(size_t segment) {
        Reply reply = session.call(15, &block, std::string(65535, '\0'), "k", -1);
        return number(reply.data, 32 + 24 * segment + 20, 2);
    }

    TemporaryDirectory directory;
    std::string path = directory / "file";
    EngineSession session{1};
    EngineSession::PositionBlock block{};
};

TEST_F(IndexesTest, AreBuiltFromTheRecords) {
    EXPECT_EQ(createIndex({1, 1, duplicates | descending}), 0);
    EXPECT_EQ(walk(1), "a2x c2z b1y d0x 9");
    EXPECT_EQ(uniqueCount(1), 3u);
    EXPECT_EQ(session.call(2, &block, "e1x", "", -1).status, 0);
    EXPECT_EQ(walk(1), "a2x c2z b1y e1x d0x 9");
    EXPECT_EQ(uniqueCount(1), 3u);
}

TEST_F(IndexesTest, ADuplicateInAUniqueOneChangesNothing) {
    EXPECT_EQ(createIndex({1, 1}), 5);
    Reply conflict = session.call(65, &block, "ExSt" + u32(3) + "??");
    EXPECT_EQ(conflict.data, u64(1) + u16(1));
    EXPECT_EQ(session.call(12, &block, "", "k", 1, 3).status, 6);
    EXPECT_EQ(walk(0), "a2x b1y c2z d0x 9");
    EXPECT_EQ(createIndex({1, 1, duplicates}), 0);
}

TEST_F(IndexesTest, TakeTheLowestFreeNumberOrTheOneNamed) {
    EXPECT_EQ(createIndex({1, 1, duplicates}, 0x85), 0);
    EXPECT_EQ(createIndex({1, 1, duplicates}, 0x85), 6);
    EXPECT_EQ(createIndex({2, 1, duplicates}, 0), 0);
    EXPECT_EQ(indexNumber(0), 0u);
    EXPECT_EQ(indexNumber(1), 1u);
    EXPECT_EQ(indexNumber(2), 5u);
    EXPECT_EQ(walk(1), "a2x d0x b1y c2z 9");
    EXPECT_EQ(walk(5), "d0x b1y a2x c2z 9");
    EXPECT_EQ(createIndex({1, 1, duplicates}, 0x80 + 119), 6);
    EXPECT_EQ(createIndex({1, 1, duplicates}, -1), 6);
}

TEST_F(IndexesTest, DroppingKeepsTheOthersNumbers) {
    ASSERT_EQ(createIndex({1, 1, duplicates}), 0);
    ASSERT_EQ(createIndex({2, 1, duplicates}), 0);
    EXPECT_EQ(session.call(32, &block, "", "", 1).status, 0);
    EXPECT_EQ(session.call(32, &block, "", "", 1).status, 6);
    EXPECT_EQ(session.call(32, &block, "", "", 125).status, 6);
    EXPECT_EQ(walk(2), "a2x d0x b1y c2z 9");
    EXPECT_EQ(uniqueCount(1), 3u);
    EXPECT_EQ(session.call(12, &block, "", "k", 1, 3).status, 6);
    ASSERT_EQ(createIndex({1, 1, duplicates}), 0);
    EXPECT_EQ(walk(1), "d0x b1y a2x c2z 9");
}

TEST_F(IndexesTest, ADroppedIndexIsNoPlaceToGoOnFrom) {
    ASSERT_EQ(createIndex({1, 1, duplicates}), 0);
    ASSERT_EQ(session.call(12, &block, "", "k", 1, 3).status, 0);
    ASSERT_EQ(session.call(32, &block, "", "", 1).status, 0);
    ASSERT_EQ(createIndex({2, 1, duplicates}), 0);
    EXPECT_EQ(session.call(6, &block, "", "k", 1, 3).status, 8);
}

TEST_F(IndexesTest, OtherSessionsSeeThemComeAndGo) {
    EngineSession other(2);
    EngineSession::PositionBlock otherBlock{};
    ASSERT_EQ(other.open(&otherBlock, path), 0);
    ASSERT_EQ(other.call(12, &otherBlock, "", "k", 0, 3).status, 0);
    ASSERT_EQ(createIndex({1, 1, duplicates}), 0);
    EXPECT_EQ(other.call(12, &otherBlock, "", "k", 1, 3).data, "d0x");
    ASSERT_EQ(other.call(2, &otherBlock, "e0y", "", -1).status, 0);
    EXPECT_EQ(walk(1), "d0x e0y b1y a2x c2z 9");
    ASSERT_EQ(session.call(32, &block, "", "", 1).status, 0);
    EXPECT_EQ(other.call(12, &otherBlock, "", "k", 1, 3).status, 6);
    EXPECT_EQ(other.call(6, &otherBlock, "", "k", 0, 3).status, 7);
}

TEST_F(IndexesTest, RequestsAreChecked) {
    EXPECT_EQ(createIndex({3, 1, duplicates}), 27);
    EXPECT_EQ(createIndex({1, 0, duplicates}), 29);
    EXPECT_EQ(createIndex({1, 1, duplicates | extendedType, 33}), 49);
    EXPECT_EQ(session.call(31, &block, segmentBytes({1, 1, duplicates | continues}), "", 0).status, 29);
    EXPECT_EQ(session.call(31, &block, "", "", 0).status, 22);
}

}  // namespace
