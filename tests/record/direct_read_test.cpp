#include "record/record_fixture.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

// A read into the caller's own record: by key, first and last of index 2, next and previous of index 3, which
// is the one used last.
struct DirectRead {
    const char *name;
    int32_t (*read)(VantrelFile *, void *, int32_t, void *, int32_t, VantrelLockMode);
    uint32_t operation;
    int32_t keyNumber;
};

void PrintTo(const DirectRead &read, std::ostream *out) {
    *out << read.name;
}

const DirectRead directReads[] = {
    {"ByKey",
     [](VantrelFile *file, void *key, int32_t keyLength, void *record, int32_t recordSize,
        VantrelLockMode lockMode) {
         return VantrelFileRecordRetrieve(file, 1, 2, key, keyLength, record, recordSize, lockMode);
     },
     5, 2},
    {"First",
     [](VantrelFile *file, void *key, int32_t keyLength, void *record, int32_t recordSize,
        VantrelLockMode lockMode) {
         return VantrelFileRecordRetrieveFirst(file, 2, key, keyLength, record, recordSize, lockMode);
     },
     12, 2},
    {"Last",
     [](VantrelFile *file, void *key, int32_t keyLength, void *record, int32_t recordSize,
        VantrelLockMode lockMode) {
         return VantrelFileRecordRetrieveLast(file, 2, key, keyLength, record, recordSize, lockMode);
     },
     13, 2},
    {"Next", VantrelFileRecordRetrieveNext, 6, 3},
    {"Previous", VantrelFileRecordRetrievePrevious, 7, 3},
};

class DirectReadTest : public RecordTest, public testing::WithParamInterface<DirectRead> {
  protected:
    int32_t read(VantrelLockMode lockMode = 0) { return read(8, lockMode); }
    int32_t read(int32_t recordSize, VantrelLockMode lockMode) {
        return GetParam().read(file, key, 3, record, recordSize, lockMode);
    }

    uint8_t key[3] = {9, 8, 7};
    uint8_t record[8] = {};
};

INSTANTIATE_TEST_SUITE_P(Reads, DirectReadTest, testing::ValuesIn(directReads),
                         [](const auto &row) { return row.param.name; });

TEST_P(DirectReadTest, FillsRecordAndKeyAndCachesTheKey) {
    GuardedBuffer guardedKey({9, 8, 7}), guardedRecord(Bytes(8, 0x77));
    engine.reply({.dataLength = 5, .data = {1, 2, 3, 4, 5}, .key = {6, 6, 6, 6}});
    EXPECT_EQ(GetParam().read(file, guardedKey.get(), 3, guardedRecord.get(), 8, 0), 5);
    EXPECT_EQ(fileStatus(), 0);

    const EngineCall &call = engine.onlyCall();
    expectCall(call, GetParam().operation, GetParam().keyNumber);
    expectData(call, guardedRecord.get(), 8);
    expectKeyBuffer(call, 3);
    EXPECT_EQ(call.keyBytes, (Bytes{9, 8, 7}));
    EXPECT_EQ(guardedRecord.content(), (Bytes{1, 2, 3, 4, 5, 0x77, 0x77, 0x77}));
    EXPECT_TRUE(guardedRecord.guardsHold());
    EXPECT_EQ(guardedKey.content(), (Bytes{6, 6, 6}));
    EXPECT_TRUE(guardedKey.guardsHold());
    expectCachedKey(GetParam().keyNumber, 3);
    EXPECT_EQ(lastStatus(client), untouchedStatus);
}

TEST_P(DirectReadTest, CutsLongKeysTo1024Bytes) {
    for (int32_t keyLength : {1023, 1024, 1025, INT_MAX}) {
        engine.reset();
        GuardedBuffer longKey(Bytes(1100, 0x11));
        uint32_t sent = std::min(keyLength, 1024);
        engine.reply({.key = Bytes(sent, 0x22)});
        EXPECT_EQ(GetParam().read(file, longKey.get(), keyLength, record, 8, 0), 8);
        expectKeyBuffer(engine.onlyCall(), static_cast<int32_t>(sent));
        EXPECT_EQ(longKey.content(), padded(Bytes(sent, 0x22), 1100, 0x11));
        expectCachedKey(GetParam().keyNumber, sent);
    }
}

TEST_P(DirectReadTest, TakesSizesUpTo65535) {
    std::vector<uint8_t> large(65535);
    engine.reply({});
    engine.reply({});
    EXPECT_EQ(GetParam().read(file, key, 3, large.data(), 65535, 0), 65535);
    EXPECT_EQ(GetParam().read(file, key, 3, large.data(), 0, 0), 0);
    EXPECT_EQ(engine.calls()[0].dataLength, 65535u);
    EXPECT_EQ(engine.calls()[1].dataLength, 0u);
}

TEST_P(DirectReadTest, RefusesOtherSizes) {
    for (int32_t size : {65536, INT_MAX, -1, INT_MIN}) {
        EXPECT_EQ(read(size, 0), -1);
        expectRefused(2002);
    }
}

TEST_P(DirectReadTest, RefusesNegativeKeyLengths) {
    for (int32_t keyLength : {-1, INT_MIN}) {
        EXPECT_EQ(GetParam().read(file, key, keyLength, record, 8, 0), -1);
        expectRefused(2002);
    }
}

TEST_P(DirectReadTest, AddsTheLockToTheOperation) {
    const uint32_t biases[] = {0, 100, 200, 300, 400};
    for (int32_t mode = 0; mode <= 4; ++mode) {
        engine.reset();
        EXPECT_EQ(read(mode), 8);
        EXPECT_EQ(engine.onlyCall().operation, GetParam().operation + biases[mode]);
    }
}

TEST_P(DirectReadTest, RefusesUnknownLockModes) {
    for (int32_t mode : {-1, 5, INT_MIN, INT_MAX}) {
        EXPECT_EQ(read(mode), -1);
        expectRefused(2002);
    }
}

TEST_P(DirectReadTest, ReadsTheKeyAloneWithoutARecord) {
    engine.reply({.key = {6, 6, 6}});
    EXPECT_EQ(GetParam().read(file, key, 3, nullptr, 0, 0), 0);
    expectCall(engine.onlyCall(), GetParam().operation + 50, GetParam().keyNumber);
    expectData(engine.onlyCall(), nullptr, 0);
    EXPECT_EQ(key[0], 6);
    expectCachedKey(GetParam().keyNumber, 3);
}

TEST_P(DirectReadTest, RefusesToLockAKeyAlone) {
    for (int32_t mode : {1, 2, 3, 4}) {
        EXPECT_EQ(GetParam().read(file, key, 3, nullptr, 0, mode), -1);
        expectRefused(2002);
    }
}

TEST_P(DirectReadTest, ARecordOfNoBytesOrAMissingOneWithASizeIsNoKeyAlone) {
    EXPECT_EQ(GetParam().read(file, key, 3, record, 0, 1), 0);
    EXPECT_EQ(engine.onlyCall().operation, GetParam().operation + 100);
    expectData(engine.onlyCall(), record, 0);
    engine.reset();
    EXPECT_EQ(GetParam().read(file, key, 3, nullptr, 8, 1), 8);
    EXPECT_EQ(engine.onlyCall().operation, GetParam().operation + 100);
    expectData(engine.onlyCall(), nullptr, 8);
}

TEST_P(DirectReadTest, ACutRecordStillHasALength) {
    engine.reply({.status = 22, .dataLength = 6});
    EXPECT_EQ(read(), 6);
    EXPECT_EQ(fileStatus(), 22);
}

TEST_P(DirectReadTest, ALengthAboveTheSizeIsReportedAsTheEngineGivesIt) {
    for (int32_t status : {0, 22}) {
        engine.reset();
        engine.reply({.status = status, .dataLength = 100});
        EXPECT_EQ(read(), 100);
        EXPECT_EQ(fileStatus(), status);
        expectData(engine.onlyCall(), record, 8);
    }
}

TEST_P(DirectReadTest, OtherStatusesOfTheEngineAreFailures) {
    for (int32_t status : {4, 9, 21, 23, 84, -1}) {
        engine.reset();
        engine.reply({.status = status, .dataLength = 6, .key = {6, 6, 6}});
        EXPECT_EQ(read(), -1);
        EXPECT_EQ(fileStatus(), status);
        EXPECT_EQ(key[0], 6);
        expectCachedKey(GetParam().keyNumber, 3);
        cacheKey(3, 5);
    }
}

TEST_P(DirectReadTest, KeepsTheLockModesSuccessBeforeTheRequest) {
    VantrelStatus duringTheCall = -1;
    engine.reply({.status = 9, .effect = [&](const EngineCall &) { duringTheCall = fileStatus(); }});
    read();
    EXPECT_EQ(duringTheCall, 0);
}

TEST_P(DirectReadTest, AFileWithoutAClientIsRefusedLast) {
    makeFileUnusable();
    EXPECT_EQ(read(), -1);
    expectRefused(2007);
    EXPECT_EQ(read(65536, 0), -1);
    expectRefused(2002);
    EXPECT_EQ(GetParam().read(file, key, -1, record, 8, 0), -1);
    expectRefused(2002);
    EXPECT_EQ(read(5), -1);
    expectRefused(2002);
    EXPECT_EQ(GetParam().read(file, key, 3, nullptr, 0, 1), -1);
    expectRefused(2002);
}

TEST_P(DirectReadTest, TakesAMissingFile) {
    EXPECT_EQ(GetParam().read(nullptr, key, -1, record, 65536, 5), -1);
    EXPECT_EQ(GetParam().read(nullptr, nullptr, 0, nullptr, 0, 0), -1);
    expectRefused(untouchedStatus);
}

}  // namespace
