#include "record/record_fixture.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

// A read that describes the record wanted: by cursor position, percentage and fraction.
struct RequestedRead {
    const char *name;
    int32_t (*read)(VantrelFile *, VantrelIndex, void *, int32_t, void *, int32_t, VantrelLockMode);
    uint32_t operation;
    Bytes request;
};

void PrintTo(const RequestedRead &read, std::ostream *out) {
    *out << read.name;
}

const RequestedRead requestedReads[] = {
    {"ByCursorPosition",
     [](VantrelFile *file, VantrelIndex index, void *key, int32_t keyLength, void *record, int32_t recordSize,
        VantrelLockMode lockMode) {
         return VantrelFileRecordRetrieveByCursorPosition(file, index, 0x8807060504030201, key, keyLength,
                                                          record, recordSize, lockMode);
     },
     23,
     {1, 2, 3, 4, 5, 6, 7, 0x88}},
    {"ByPercentage",
     [](VantrelFile *file, VantrelIndex index, void *key, int32_t keyLength, void *record, int32_t recordSize,
        VantrelLockMode lockMode) {
         return VantrelFileRecordRetrieveByPercentage(file, index, 0x84030201, key, keyLength, record,
                                                      recordSize, lockMode);
     },
     44,
     {1, 2, 3, 0x84}},
    {"ByFraction",
     [](VantrelFile *file, VantrelIndex index, void *key, int32_t keyLength, void *record, int32_t recordSize,
        VantrelLockMode lockMode) {
         return VantrelFileRecordRetrieveByFraction(file, index, 0x84030201, 0x98070605, key, keyLength,
                                                    record, recordSize, lockMode);
     },
     44,
     {1, 2, 3, 0x84, 'E', 'x', 'P', 'c', 5, 6, 7, 0x98}},
};

class RequestedReadTest : public RecordTest, public testing::WithParamInterface<RequestedRead> {
  protected:
    int32_t read(int32_t recordSize, VantrelLockMode lockMode = 0) {
        return GetParam().read(file, 2, key, 3, record, recordSize, lockMode);
    }

    uint32_t requestLength() const { return static_cast<uint32_t>(GetParam().request.size()); }
    // What the engine was asked, without the rest of the buffer, which nobody has written.
    Bytes requestSent() {
        const Bytes &sent = engine.calls().back().dataBytes;
        return Bytes(sent.begin(), sent.begin() + requestLength());
    }

    uint8_t key[3] = {9, 8, 7};
    uint8_t record[100] = {};
};

INSTANTIATE_TEST_SUITE_P(Reads, RequestedReadTest, testing::ValuesIn(requestedReads),
                         [](const auto &row) { return row.param.name; });

// Fractions leave theirs in memory that later requests use.
TEST_P(RequestedReadTest, NoSignatureOfAnotherRequestFollows) {
    VantrelFileRecordRetrieveByFraction(file, 2, 1, 2, key, 3, record, 20, 0);
    read(20);
    const Bytes &sent = engine.calls().back().dataBytes;
    ASSERT_EQ(sent.size(), 20u);
    EXPECT_EQ(Bytes(sent.begin() + requestLength(), sent.begin() + requestLength() + 8), Bytes(8, 0));
}

TEST_P(RequestedReadTest, CopiesTheRecordOutOfTheWorkBuffer) {
    GuardedBuffer guardedKey({9, 8, 7}), guardedRecord(Bytes(50, 0x77));
    engine.reply({.dataLength = 30, .data = Bytes(30, 0x33), .key = {6, 6, 6, 6}});
    EXPECT_EQ(GetParam().read(file, 2, guardedKey.get(), 3, guardedRecord.get(), 50, 0), 30);
    EXPECT_EQ(fileStatus(), 0);

    const EngineCall &call = engine.onlyCall();
    expectCall(call, GetParam().operation, 2);
    EXPECT_EQ(call.dataLength, 50u);
    EXPECT_NE(call.data, guardedRecord.get());
    EXPECT_EQ(requestSent(), GetParam().request);
    expectKeyBuffer(call, 3);
    EXPECT_EQ(call.keyBytes, (Bytes{9, 8, 7}));
    EXPECT_EQ(guardedRecord.content(), padded(Bytes(30, 0x33), 50, 0x77));
    EXPECT_TRUE(guardedRecord.guardsHold());
    EXPECT_EQ(guardedKey.content(), (Bytes{6, 6, 6}));
    EXPECT_TRUE(guardedKey.guardsHold());
    expectCachedKey(2, 3);
}

TEST_P(RequestedReadTest, OffersAtLeastTheRequest) {
    for (uint32_t size : {0u, 1u, requestLength() - 1, requestLength(), requestLength() + 1}) {
        engine.reset();
        engine.reply({.dataLength = 0});
        EXPECT_EQ(read(static_cast<int32_t>(size)), 0);
        EXPECT_EQ(engine.onlyCall().dataLength, std::max(size, requestLength()));
        EXPECT_EQ(requestSent(), GetParam().request);
        EXPECT_EQ(fileStatus(), 0);
    }
}

TEST_P(RequestedReadTest, CutsTheRecordToTheSize) {
    for (int32_t engineStatus : {0, 22}) {
        GuardedBuffer small(Bytes(2, 0x77));
        engine.reset();
        engine.reply({.status = engineStatus, .dataLength = 4, .data = {1, 2, 3, 4}});
        EXPECT_EQ(GetParam().read(file, 2, key, 3, small.get(), 2, 0), 2);
        EXPECT_EQ(fileStatus(), 22);
        EXPECT_EQ(small.content(), (Bytes{1, 2}));
        EXPECT_TRUE(small.guardsHold());
    }
}

TEST_P(RequestedReadTest, ARecordThatFitsExactlyIsNotCut) {
    engine.reply({.dataLength = 4, .data = {1, 2, 3, 4}});
    EXPECT_EQ(read(4), 4);
    EXPECT_EQ(fileStatus(), 0);
}

TEST_P(RequestedReadTest, ALengthBeyondWhatWasOfferedCopiesNoMoreThanTheSize) {
    for (uint32_t length : {65536u, 0xFFFFFFFFu}) {
        GuardedBuffer small(Bytes(20, 0x77));
        engine.reset();
        engine.reply({.dataLength = length, .data = Bytes(20, 0x33)});
        EXPECT_EQ(GetParam().read(file, 2, key, 3, small.get(), 20, 0), 20);
        EXPECT_EQ(fileStatus(), 22);
        EXPECT_EQ(small.content(), Bytes(20, 0x33));
        EXPECT_TRUE(small.guardsHold());
    }
}

TEST_P(RequestedReadTest, NoRecordAndNoSizeStillReadsAndLocks) {
    engine.reply({.dataLength = 12});
    EXPECT_EQ(GetParam().read(file, 2, key, 3, nullptr, 0, 1), 0);
    EXPECT_EQ(engine.onlyCall().operation, GetParam().operation + 100);
    EXPECT_EQ(fileStatus(), 22);
}

TEST_P(RequestedReadTest, TakesSizesUpTo65535) {
    GuardedBuffer large(Bytes(65535, 0x77));
    engine.reply({.dataLength = 65535, .data = Bytes(65535, 0x33)});
    EXPECT_EQ(GetParam().read(file, 2, key, 3, large.get(), 65535, 0), 65535);
    EXPECT_EQ(engine.onlyCall().dataLength, 65535u);
    EXPECT_EQ(large.content(), Bytes(65535, 0x33));
    EXPECT_TRUE(large.guardsHold());
}

TEST_P(RequestedReadTest, RefusesOtherSizesAndIndexes) {
    for (int32_t size : {65536, INT_MAX, -1, INT_MIN}) {
        EXPECT_EQ(read(size), -1);
        expectRefused(2002);
    }
    for (int32_t index : {-2, -7, 119, 120, 123, 126, INT_MIN, INT_MAX}) {
        EXPECT_EQ(GetParam().read(file, index, key, 3, record, 8, 0), -1);
        expectRefused(2002);
    }
}

TEST_P(RequestedReadTest, TakesEveryIndex) {
    for (int32_t index : {-1, 0, 118, 124, 125}) {
        engine.reset();
        EXPECT_EQ(GetParam().read(file, index, key, 3, record, 50, 0), 50);
        expectCall(engine.onlyCall(), GetParam().operation, index);
        expectKeyBuffer(engine.onlyCall(), 3);
        expectCachedKey(index, 3);
    }
}

TEST_P(RequestedReadTest, AddsTheLockToTheOperation) {
    const uint32_t biases[] = {0, 100, 200, 300, 400};
    for (int32_t mode = 0; mode <= 4; ++mode) {
        engine.reset();
        EXPECT_EQ(read(50, mode), 50);
        EXPECT_EQ(engine.onlyCall().operation, GetParam().operation + biases[mode]);
    }
    for (int32_t mode : {-1, 5, INT_MIN, INT_MAX}) {
        cacheKey(3, 5);
        engine.reset();
        memset(file->keyBuffer, 0x4B, sizeof file->keyBuffer);
        EXPECT_EQ(read(50, mode), -1);
        expectRefused(2002);
    }
}

TEST_P(RequestedReadTest, WithoutAKeySendsWhatTheIndexHolds) {
    const struct {
        int32_t index, sentLength;
        uint32_t cachedLength;
    } rows[] = {{3, 5, 5}, {4, 1024, 1024}, {-1, 0, 0}};
    for (auto row : rows) {
        engine.reset();
        cacheKey(3, 5);
        EXPECT_EQ(GetParam().read(file, row.index, nullptr, -1, record, 50, 0), 50);
        expectCall(engine.onlyCall(), GetParam().operation, row.index);
        expectKeyBuffer(engine.onlyCall(), row.sentLength);
        EXPECT_EQ(engine.onlyCall().keyBytes, Bytes(static_cast<size_t>(row.sentLength), 0x4B));
        expectCachedKey(row.index, row.cachedLength);
    }
}

TEST_P(RequestedReadTest, CutsLongKeysTo1024BytesAndRefusesNegativeLengths) {
    GuardedBuffer longKey(Bytes(1100, 0x11));
    for (int32_t keyLength : {-1, INT_MIN}) {
        EXPECT_EQ(GetParam().read(file, 2, longKey.get(), keyLength, record, 50, 0), -1);
        expectRefused(2002);
    }
    engine.reply({.key = Bytes(1024, 0x22)});
    EXPECT_EQ(GetParam().read(file, 2, longKey.get(), 1025, record, 50, 0), 50);
    expectKeyBuffer(engine.onlyCall(), 1024);
    EXPECT_EQ(longKey.content(), padded(Bytes(1024, 0x22), 1100, 0x11));
    expectCachedKey(2, 1024);
}

TEST_P(RequestedReadTest, AFailureCopiesTheKeyButNoRecord) {
    for (int32_t status : {43, 9, 84}) {
        GuardedBuffer untouched(Bytes(50, 0x77));
        engine.reset();
        engine.reply({.status = status, .dataLength = 60, .data = Bytes(40, 0x33), .key = {6}});
        EXPECT_EQ(GetParam().read(file, 2, key, 3, untouched.get(), 50, 0), -1);
        EXPECT_EQ(fileStatus(), status);
        EXPECT_EQ(untouched.content(), Bytes(50, 0x77));
        EXPECT_EQ(key[0], 6);
        expectCachedKey(2, 3);
    }
}

TEST_P(RequestedReadTest, RefusesAMissingRecordThatHasASize) {
    EXPECT_EQ(GetParam().read(file, 2, key, 3, nullptr, 1, 0), -1);
    expectRefused(2007);
    EXPECT_EQ(GetParam().read(file, 2, key, 3, nullptr, 1, 5), -1);
    expectRefused(2002);
    EXPECT_EQ(GetParam().read(file, 119, key, 3, nullptr, 1, 0), -1);
    expectRefused(2002);
}

TEST_P(RequestedReadTest, AFileWithoutAClientIsRefusedLast) {
    makeFileUnusable();
    EXPECT_EQ(read(50), -1);
    expectRefused(2007);
    EXPECT_EQ(read(65536), -1);
    expectRefused(2002);
    EXPECT_EQ(read(50, 5), -1);
    expectRefused(2002);
    EXPECT_EQ(GetParam().read(file, 119, key, 3, record, 50, 0), -1);
    expectRefused(2002);
}

TEST_P(RequestedReadTest, TakesAMissingFile) {
    EXPECT_EQ(GetParam().read(nullptr, 119, nullptr, -1, nullptr, 65536, 5), -1);
    expectRefused(untouchedStatus);
}

}  // namespace
