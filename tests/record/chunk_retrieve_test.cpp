#include "record/chunk_fixture.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

class ChunkRetrieveTest : public ChunkTest {};

TEST_F(ChunkRetrieveTest, FetchesThePositionAndDescribesTheChunk) {
    replyPosition(0x91);
    engine.reply({.dataLength = 60});
    EXPECT_EQ(VantrelFileRecordRetrieveChunk(file, 10, 100, bytes, 200, 0), 60);
    EXPECT_EQ(fileStatus(), 0);
    ASSERT_EQ(engine.calls().size(), 2u);
    expectCall(engine.calls()[0], 22, 0);
    expectRead(engine.calls()[1], 23, 0x91, {0x80000001, 10, 100, bytes});
    EXPECT_EQ(loadU64(file->savedCursorPosition), 0x91u);
}

TEST_F(ChunkRetrieveTest, MinusOneContinuesAtTheSavedPosition) {
    storeU64(file->savedCursorPosition, 0x92);
    engine.reply({.dataLength = 100});
    EXPECT_EQ(VantrelFileRecordRetrieveChunk(file, -1, 100, bytes, 100, 0), 100);
    expectRead(engine.onlyCall(), 23, 0x92, {0xC0000001, 0, 100, bytes});
    EXPECT_EQ(loadU64(file->savedCursorPosition), 0x92u);
}

TEST_F(ChunkRetrieveTest, AsksForTheSmallerOfLengthAndSize) {
    for (auto [length, size] : {std::pair{100, 50}, {50, 100}, {50, 300000}, {300000, 50}}) {
        engine.reset();
        replyPosition(1);
        engine.reply({.dataLength = 50});
        EXPECT_EQ(VantrelFileRecordRetrieveChunk(file, 10, length, bytes, size, 0), 50);
        expectRead(engine.calls().at(1), 23, 1, {0x80000001, 10, 50, bytes});
    }
}

TEST_F(ChunkRetrieveTest, ReportsNoMoreThanWasAskedFor) {
    replyPosition(1);
    engine.reply({.dataLength = 101});
    EXPECT_EQ(VantrelFileRecordRetrieveChunk(file, 0, 100, bytes, 100, 0), 100);
}

TEST_F(ChunkRetrieveTest, AFailingReadShowsInTheStatusAlone) {
    replyPosition(1);
    engine.reply({.status = 103, .dataLength = 0});
    EXPECT_EQ(VantrelFileRecordRetrieveChunk(file, 0, 100, bytes, 100, 0), 0);
    EXPECT_EQ(fileStatus(), 103);
    engine.reset();
    replyPosition(1);
    engine.reply({.status = 84, .dataLength = 7});
    EXPECT_EQ(VantrelFileRecordRetrieveChunk(file, 0, 100, bytes, 100, 0), 7);
    EXPECT_EQ(fileStatus(), 84);
}

TEST_F(ChunkRetrieveTest, AMissingPositionEndsTheReadAndIsSaved) {
    engine.reply({.status = 8});
    EXPECT_EQ(VantrelFileRecordRetrieveChunk(file, 0, 100, bytes, 100, 0), -1);
    EXPECT_EQ(fileStatus(), 8);
    expectCall(engine.onlyCall(), 22, 0);
    EXPECT_EQ(loadI64(file->savedCursorPosition), -1);
}

TEST_F(ChunkRetrieveTest, APositionOfMinusOneEndsTheReadWithSuccess) {
    engine.reply({.data = Bytes(8, 0xFF)});
    EXPECT_EQ(VantrelFileRecordRetrieveChunk(file, 0, 100, bytes, 100, 0), -1);
    EXPECT_EQ(fileStatus(), 0);
    expectCall(engine.onlyCall(), 22, 0);
    EXPECT_EQ(loadI64(file->savedCursorPosition), -1);
}

TEST_F(ChunkRetrieveTest, TheStatusIsInternalErrorUntilTheEngineAnswers) {
    VantrelStatus duringTheCall = -1;
    engine.reply({.effect = [&](const EngineCall &) { duringTheCall = fileStatus(); }});
    VantrelFileRecordRetrieveChunk(file, -1, 100, bytes, 100, 0);
    EXPECT_EQ(duringTheCall, 2000);
}

TEST_F(ChunkRetrieveTest, AddsTheLockToTheRead) {
    const uint32_t operations[] = {23, 123, 223, 323, 423};
    for (int32_t mode = 0; mode <= 4; ++mode) {
        engine.reset();
        replyPosition(1);
        engine.reply({.dataLength = 100});
        EXPECT_EQ(VantrelFileRecordRetrieveChunk(file, 0, 100, bytes, 100, mode), 100);
        expectCall(engine.calls().at(0), 22, 0);
        expectCall(engine.calls().at(1), operations[mode], -2);
    }
    for (int32_t mode : {-1, 5, INT_MIN, INT_MAX}) {
        engine.reset();
        EXPECT_EQ(VantrelFileRecordRetrieveChunk(file, 0, 100, bytes, 100, mode), -1);
        expectRefused(2002);
    }
}

TEST_F(ChunkRetrieveTest, OnePieceHolds257024Bytes) {
    replyPosition(1);
    engine.reply({.dataLength = 257024});
    EXPECT_EQ(VantrelFileRecordRetrieveChunk(file, 10, chunkPiece, bytes, chunkPiece + 1, 0), 257024);
    ASSERT_EQ(engine.calls().size(), 2u);
    expectRead(engine.calls()[1], 23, 1, {0x80000001, 10, 257024, bytes});
}

TEST_F(ChunkRetrieveTest, LaterPiecesContinue) {
    replyPosition(1);
    for (uint32_t length : {257024u, 257024u, 85952u})
        engine.reply({.dataLength = length});
    EXPECT_EQ(VantrelFileRecordRetrieveChunk(file, 10, 600000, bytes, 700000, 1), 600000);
    ASSERT_EQ(engine.calls().size(), 4u);
    expectRead(engine.calls()[1], 123, 1, {0x80000001, 10, 257024, bytes});
    expectRead(engine.calls()[2], 123, 1, {0xC0000001, 0, 257024, bytes + 257024});
    expectRead(engine.calls()[3], 123, 1, {0xC0000001, 0, 85952, bytes + 514048});
}

TEST_F(ChunkRetrieveTest, AContinuingReadOfManyPiecesContinuesFromTheFirst) {
    storeU64(file->savedCursorPosition, 5);
    engine.reply({.dataLength = 257024});
    engine.reply({.dataLength = 1});
    EXPECT_EQ(VantrelFileRecordRetrieveChunk(file, -1, 700000, bytes, chunkPiece + 1, 0), 257025);
    ASSERT_EQ(engine.calls().size(), 2u);
    expectRead(engine.calls()[0], 23, 5, {0xC0000001, 0, 257024, bytes});
    expectRead(engine.calls()[1], 23, 5, {0xC0000001, 0, 1, bytes + 257024});
}

TEST_F(ChunkRetrieveTest, AShortPieceInTheMiddleIsTheResult) {
    replyPosition(1);
    engine.reply({.dataLength = 257024});
    engine.reply({.status = 103, .dataLength = 257023});
    EXPECT_EQ(VantrelFileRecordRetrieveChunk(file, 0, 600000, bytes, 700000, 0), 257023);
    EXPECT_EQ(fileStatus(), 103);
    EXPECT_EQ(engine.calls().size(), 3u);
}

TEST_F(ChunkRetrieveTest, AShortLastPieceIsAdded) {
    replyPosition(1);
    engine.reply({.dataLength = 257024});
    engine.reply({.status = 103, .dataLength = 3});
    EXPECT_EQ(VantrelFileRecordRetrieveChunk(file, 0, 300000, bytes, 700000, 0), 257027);
    EXPECT_EQ(fileStatus(), 103);
}

TEST_F(ChunkRetrieveTest, ALastPieceThatCannotBeAskedForGivesMinusOne) {
    replyPosition(1);
    engine.reply({.dataLength = 257024, .effect = [&](const EngineCall &) { makeFileUnusable(); }});
    EXPECT_EQ(VantrelFileRecordRetrieveChunk(file, 0, 300000, bytes, 700000, 0), -1);
    EXPECT_EQ(fileStatus(), 2007);
}

TEST_F(ChunkRetrieveTest, AMissingBufferIsMissingInEveryPiece) {
    replyPosition(1);
    engine.reply({.dataLength = 257024});
    engine.reply({.dataLength = 1});
    EXPECT_EQ(VantrelFileRecordRetrieveChunk(file, 0, chunkPiece + 1, nullptr, chunkPiece + 1, 0), 257025);
    expectRead(engine.calls().at(2), 23, 1, {0xC0000001, 0, 1, nullptr});
}

TEST_F(ChunkRetrieveTest, RefusesOtherOffsetsAndNegativeLengthsAndSizes) {
    for (int32_t offset : {-2, INT_MIN}) {
        EXPECT_EQ(VantrelFileRecordRetrieveChunk(file, offset, 100, bytes, 100, 0), -1);
        expectRefused(2002);
        EXPECT_EQ(VantrelFileRecordRetrieveChunk(file, offset, 300000, bytes, 300000, 0), -1);
        expectRefused(2002);
    }
    for (int32_t negative : {-1, INT_MIN}) {
        EXPECT_EQ(VantrelFileRecordRetrieveChunk(file, 0, negative, bytes, 100, 0), -1);
        expectRefused(2002);
        EXPECT_EQ(VantrelFileRecordRetrieveChunk(file, 0, 100, bytes, negative, 0), -1);
        expectRefused(2002);
    }
}

TEST_F(ChunkRetrieveTest, ChecksFileAndClientFirst) {
    EXPECT_EQ(VantrelFileRecordRetrieveChunk(nullptr, -2, -1, nullptr, -1, 5), -1);
    EXPECT_EQ(VantrelFileRecordRetrieveChunk(nullptr, 0, 300000, nullptr, 300000, 0), -1);
    expectRefused(untouchedStatus);
    makeFileUnusable();
    EXPECT_EQ(VantrelFileRecordRetrieveChunk(file, -2, -1, bytes, -1, 5), -1);
    expectRefused(2007);
    EXPECT_EQ(VantrelFileRecordRetrieveChunk(file, 0, 300000, bytes, 300000, 0), -1);
    expectRefused(2007);
}

}  // namespace
