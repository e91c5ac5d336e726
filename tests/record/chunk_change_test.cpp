#include "record/chunk_fixture.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

// The change operations that take an offset; deleting takes no data.
struct Change {
    const char *name;
    VantrelStatus (*change)(VantrelFile *, int32_t, const void *, int32_t);
    uint32_t atOffset, continuing;
    bool takesData;
};

void PrintTo(const Change &change, std::ostream *out) {
    *out << change.name;
}

const Change changes[] = {
    {"Update", VantrelFileRecordUpdateChunk, 0x80000001, 0xC0000001, true},
    {"Insert", VantrelFileRecordInsertChunk, 0x80000009, 0xC0000009, true},
    {"Delete",
     [](VantrelFile *file, int32_t offset, const void *, int32_t length) {
         return VantrelFileRecordDeleteChunk(file, offset, length);
     },
     0x80000010, 0xC0000010, false},
};

class ChunkChangeTest : public ChunkTest, public testing::WithParamInterface<Change> {
  protected:
    const void *sent(size_t offset) { return GetParam().takesData ? bytes + offset : nullptr; }
};

INSTANTIATE_TEST_SUITE_P(Changes, ChunkChangeTest, testing::ValuesIn(changes),
                         [](const auto &row) { return row.param.name; });

TEST_P(ChunkChangeTest, DescribesTheChunk) {
    engine.reply({.status = 151});
    EXPECT_EQ(GetParam().change(file, 0x01020304, bytes, 100), 151);
    EXPECT_EQ(fileStatus(), 151);
    expectChange(engine.onlyCall(), {GetParam().atOffset, 0x01020304, 100, sent(0)});
}

TEST_P(ChunkChangeTest, MinusOneContinuesAtOffsetZero) {
    EXPECT_EQ(GetParam().change(file, -1, bytes, 100), 0);
    expectChange(engine.onlyCall(), {GetParam().continuing, 0, 100, sent(0)});
}

TEST_P(ChunkChangeTest, OffsetAndLengthMayBeZero) {
    EXPECT_EQ(GetParam().change(file, 0, bytes, 0), 0);
    expectChange(engine.onlyCall(), {GetParam().atOffset, 0, 0, sent(0)});
}

TEST_P(ChunkChangeTest, OnePieceHolds257024Bytes) {
    EXPECT_EQ(GetParam().change(file, 10, bytes, chunkPiece), 0);
    expectChange(engine.onlyCall(), {GetParam().atOffset, 10, 257024, sent(0)});
}

TEST_P(ChunkChangeTest, OneByteMoreTakesAnotherPiece) {
    EXPECT_EQ(GetParam().change(file, 10, bytes, chunkPiece + 1), 0);
    ASSERT_EQ(engine.calls().size(), 2u);
    expectChange(engine.calls()[0], {GetParam().atOffset, 10, 257024, sent(0)});
    expectChange(engine.calls()[1], {GetParam().continuing, 0, 1, sent(257024)});
}

TEST_P(ChunkChangeTest, TwoFullPiecesNeedNoThird) {
    EXPECT_EQ(GetParam().change(file, -1, bytes, 2 * chunkPiece), 0);
    ASSERT_EQ(engine.calls().size(), 2u);
    expectChange(engine.calls()[0], {GetParam().continuing, 0, 257024, sent(0)});
    expectChange(engine.calls()[1], {GetParam().continuing, 0, 257024, sent(257024)});
}

TEST_P(ChunkChangeTest, AFailingPieceEndsTheChange) {
    engine.reply({});
    engine.reply({.status = 132});
    EXPECT_EQ(GetParam().change(file, 10, bytes, 600000), 132);
    EXPECT_EQ(fileStatus(), 132);
    EXPECT_EQ(engine.calls().size(), 2u);
}

TEST_P(ChunkChangeTest, TheLastPiecesStatusIsTheResult) {
    engine.reply({});
    engine.reply({.status = 132});
    EXPECT_EQ(GetParam().change(file, 10, bytes, 300000), 132);
    EXPECT_EQ(fileStatus(), 132);
}

TEST_P(ChunkChangeTest, MissingDataIsMissingInEveryPiece) {
    EXPECT_EQ(GetParam().change(file, 10, nullptr, 600000), 0);
    ASSERT_EQ(engine.calls().size(), 3u);
    expectChange(engine.calls()[2], {GetParam().continuing, 0, 85952, nullptr});
}

TEST_P(ChunkChangeTest, RefusesOtherOffsetsAndNegativeLengthsBeforeAMissingClient) {
    makeFileUnusable();
    for (int32_t offset : {-2, INT_MIN}) {
        EXPECT_EQ(GetParam().change(file, offset, bytes, 100), 2002);
        expectRefused(2002);
        EXPECT_EQ(GetParam().change(file, offset, bytes, 300000), 2002);
        expectRefused(2002);
    }
    for (int32_t length : {-1, INT_MIN}) {
        EXPECT_EQ(GetParam().change(file, 0, bytes, length), 2002);
        expectRefused(2002);
    }
    EXPECT_EQ(GetParam().change(file, 0, bytes, 100), 2007);
    expectRefused(2007);
    EXPECT_EQ(GetParam().change(file, 0, bytes, 300000), 2007);
    expectRefused(2007);
}

TEST_P(ChunkChangeTest, TakesAMissingFile) {
    EXPECT_EQ(GetParam().change(nullptr, -2, nullptr, -1), 3);
    EXPECT_EQ(GetParam().change(nullptr, 0, nullptr, 300000), 3);
    expectRefused(untouchedStatus);
}

TEST_P(ChunkChangeTest, ReplaysThePhysicalOrderAndNoKeyAsNone) {
    for (int32_t keyNumber : {-1, -7}) {
        engine.reset();
        cacheKey(keyNumber, 9);
        EXPECT_EQ(GetParam().change(file, 0, bytes, 100), 0);
        expectCall(engine.onlyCall(), 53, -1);
        expectKeyBuffer(engine.onlyCall(), 0);
        expectCachedKey(keyNumber, 9);
    }
}

class ChunkAppendTest : public ChunkTest {};

TEST_F(ChunkAppendTest, EveryPieceGoesToTheEnd) {
    EXPECT_EQ(VantrelFileRecordAppendChunk(file, bytes, 600000), 0);
    ASSERT_EQ(engine.calls().size(), 3u);
    expectChange(engine.calls()[0], {0xA0000001, 0, 257024, bytes});
    expectChange(engine.calls()[1], {0xA0000001, 0, 257024, bytes + 257024});
    expectChange(engine.calls()[2], {0xA0000001, 0, 85952, bytes + 514048});
}

TEST_F(ChunkAppendTest, OnePieceHolds257024Bytes) {
    engine.reply({.status = 107});
    EXPECT_EQ(VantrelFileRecordAppendChunk(file, bytes, chunkPiece), 107);
    EXPECT_EQ(fileStatus(), 107);
    expectChange(engine.onlyCall(), {0xA0000001, 0, 257024, bytes});
    engine.reset();
    EXPECT_EQ(VantrelFileRecordAppendChunk(file, bytes, 0), 0);
    expectChange(engine.onlyCall(), {0xA0000001, 0, 0, bytes});
}

TEST_F(ChunkAppendTest, AFailingPieceEndsIt) {
    engine.reply({.status = 132});
    EXPECT_EQ(VantrelFileRecordAppendChunk(file, bytes, 600000), 132);
    EXPECT_EQ(fileStatus(), 132);
    EXPECT_EQ(engine.calls().size(), 1u);
}

TEST_F(ChunkAppendTest, ChecksFileLengthAndClientInThisOrder) {
    EXPECT_EQ(VantrelFileRecordAppendChunk(nullptr, nullptr, -1), 3);
    expectRefused(untouchedStatus);
    makeFileUnusable();
    for (int32_t length : {-1, INT_MIN}) {
        EXPECT_EQ(VantrelFileRecordAppendChunk(file, bytes, length), 2002);
        expectRefused(2002);
    }
    EXPECT_EQ(VantrelFileRecordAppendChunk(file, bytes, 100), 2007);
    expectRefused(2007);
    EXPECT_EQ(VantrelFileRecordAppendChunk(file, bytes, 300000), 2007);
    expectRefused(2007);
}

class TruncateTest : public ChunkTest {};

TEST_F(TruncateTest, SendsTheOffsetAsItIs) {
    const struct {
        int32_t offset;
        Bytes descriptor;
    } rows[] = {{0x01020304, {4, 0, 0, 0x80, 4, 3, 2, 1}},
                {0, {4, 0, 0, 0x80, 0, 0, 0, 0}},
                {-1, {4, 0, 0, 0xC0, 0xFF, 0xFF, 0xFF, 0xFF}},
                {-2, {4, 0, 0, 0x80, 0xFE, 0xFF, 0xFF, 0xFF}}};
    for (const auto &row : rows) {
        engine.reset();
        engine.reply({.status = 103});
        EXPECT_EQ(VantrelFileRecordTruncate(file, row.offset), 103);
        EXPECT_EQ(fileStatus(), 103);
        expectCall(engine.onlyCall(), 53, 3);
        EXPECT_EQ(engine.onlyCall().dataBytes, row.descriptor);
        expectKeyBuffer(engine.onlyCall(), 5);
        expectCachedKey(3, 5);
    }
}

TEST_F(TruncateTest, RefusesAMissingFileAndAFileWithoutAClient) {
    EXPECT_EQ(VantrelFileRecordTruncate(nullptr, 0), 3);
    expectRefused(untouchedStatus);
    makeFileUnusable();
    EXPECT_EQ(VantrelFileRecordTruncate(file, -1), 2007);
    expectRefused(2007);
}

}  // namespace
