#include "embedded/operation/engine_session.h"

namespace {

using namespace vantrel::test;

constexpr uint16_t keyOnlyFile = 0x0010;

class KeyOnlyTest : public testing::Test {
  protected:
    int32_t create(uint16_t fileFlags, const std::vector<std::vector<SegmentRequest>> &indexes) {
        return session.create(path, createRequest(4, fileFlags, indexes));
    }
    // Records of a name and a number, found by either; a number of zero is in no index of numbers.
    void open() {
        ASSERT_EQ(create(keyOnlyFile, {{{0, 3}}, {{3, 1, duplicates | nullIfAny}}}), 0);
        ASSERT_EQ(session.open(&block, path), 0);
        for (const char *record : {"one1", "two2"})
            ASSERT_EQ(session.call(2, &block, record, "", -1).status, 0);
        ASSERT_EQ(session.call(2, &block, std::string("nil\0", 4), "", -1).status, 0);
    }
    std::string filter(const std::string &signature) {
        std::string request = signature + u16(0) + u16(0) + u16(5) + u16(1) + u16(4) + u16(0);
        return u16(static_cast<uint16_t>(request.size() + 2)) + request;
    }

    TemporaryDirectory directory;
    std::string path = directory / "file";
    EngineSession session{1};
    EngineSession::PositionBlock block{};
};

TEST_F(KeyOnlyTest, DefinitionsHoldEveryRecordInAnIndex) {
    EXPECT_EQ(create(keyOnlyFile | variableLength, {{{0, 3}}}), 45);
    EXPECT_EQ(create(keyOnlyFile, {}), 26);
    EXPECT_EQ(create(keyOnlyFile, {{{0, 3, nullIfAny}}, {{3, 1, nullIfAll}}}), 45);
    EXPECT_EQ(create(keyOnlyFile, {{{0, 3, nullIfAny}}, {{3, 1}}}), 0);
}

TEST_F(KeyOnlyTest, RecordsAreFoundThroughIndexes) {
    open();
    EXPECT_EQ(session.call(12, &block, "", "???", 0, 4).data, std::string("nil\0", 4));
    EXPECT_EQ(session.call(6, &block, "", "???", 0, 4).data, "one1");
    EXPECT_EQ(session.call(13, &block, "", "?", 1, 4).data, "two2");
    Reply position = session.call(22, &block, "", "", 0, 8);
    EXPECT_EQ(position.data, u64(2));
    EXPECT_EQ(session.call(23, &block, position.data, "", -1).data, "two2");
    EXPECT_EQ(session.call(3, &block, "two3", "", -1).status, 10);
    EXPECT_EQ(session.call(4, &block).status, 0);
    EXPECT_EQ(session.call(13, &block, "", "?", 1, 4).data, "one1");
}

TEST_F(KeyOnlyTest, ThereIsNoPhysicalOrder) {
    open();
    ASSERT_EQ(session.call(12, &block, "", "???", 0, 4).status, 0);
    for (uint32_t step : {24, 33, 34, 35, 74, 83, 84, 85, 224, 433})
        EXPECT_EQ(session.call(step, &block, "", "", 0, step == 85 ? 0 : 4).status, 41) << step;
    for (uint32_t scan : {38, 39, 238, 87, 88}) {
        Reply reply = session.call(scan, &block, filter("FI"), "", 0, 100);
        EXPECT_EQ(reply.status, 41) << scan;
        EXPECT_EQ(reply.buffer.substr(0, 2), u16(0)) << scan;
    }
    EXPECT_EQ(session.call(36, &block, filter("FI"), "", 0, 100).buffer.substr(0, 2), u16(3));
}

TEST_F(KeyOnlyTest, TheLastIndexThatHoldsEveryRecordStays) {
    open();
    EXPECT_EQ(session.call(32, &block, "", "", 0).status, 41);
    EXPECT_EQ(session.call(12, &block, "", "???", 0, 4).status, 0);
    ASSERT_EQ(session.call(31, &block, segmentBytes({2, 2, duplicates}), "", 0).status, 0);
    EXPECT_EQ(session.call(32, &block, "", "", 0).status, 0);
    EXPECT_EQ(session.call(32, &block, "", "", 1).status, 0);
    EXPECT_EQ(session.call(32, &block, "", "", 2).status, 41);
    EXPECT_EQ(session.call(12, &block, "", "??", 2, 4).data, "one1");
}

}  // namespace
