#include "record/key_call.h"

#include "record/record_fixture.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

class KeyCallTest : public RecordTest {
  protected:
    VantrelStatus call(void *key, uint32_t keyLength, int32_t keyNumber) {
        return callVantrelKeyHelper(file, 36, data, &dataLength, key, keyLength, keyNumber);
    }

    uint8_t data[4] = {1, 2, 3, 4};
    uint32_t dataLength = 4;
};

TEST_F(KeyCallTest, CopiesTheKeyInAndBackAndCachesIt) {
    GuardedBuffer key({9, 8, 7});
    engine.reply({.status = 60, .dataLength = 70000, .data = {5}, .key = {6, 6, 6, 6}});
    EXPECT_EQ(call(key.get(), 3, 2), 60);
    EXPECT_EQ(fileStatus(), 60);

    const EngineCall &sent = engine.onlyCall();
    expectCall(sent, 36, 2);
    expectData(sent, data, 4);
    expectKeyBuffer(sent, 3);
    EXPECT_EQ(sent.keyBytes, (Bytes{9, 8, 7}));
    EXPECT_EQ(dataLength, 70000u);
    EXPECT_EQ(key.content(), (Bytes{6, 6, 6}));
    EXPECT_TRUE(key.guardsHold());
    EXPECT_EQ(keyBuffer(5), (Bytes{6, 6, 6, 6, 0x4B}));
    expectCachedKey(2, 3);
}

TEST_F(KeyCallTest, CutsLongKeysTo1024Bytes) {
    const struct {
        uint32_t given, sent;
    } rows[] = {{1023, 1023}, {1024, 1024}, {1025, 1024}, {0xFFFFFFFF, 1024}};
    for (auto row : rows) {
        engine.reset();
        engine.reply({.key = Bytes(row.sent, 0x22)});
        GuardedBuffer key(Bytes(1100, 0x11));
        EXPECT_EQ(call(key.get(), row.given, 2), 0);
        expectKeyBuffer(engine.onlyCall(), static_cast<int32_t>(row.sent));
        EXPECT_EQ(engine.onlyCall().keyBytes, Bytes(row.sent, 0x11));
        EXPECT_EQ(key.content(), padded(Bytes(row.sent, 0x22), 1100, 0x11));
        expectCachedKey(2, row.sent);
    }
}

TEST_F(KeyCallTest, TakesAKeyOfNoBytes) {
    uint8_t key = 0x11;
    engine.reply({.key = {0x22}});
    EXPECT_EQ(call(&key, 0, 2), 0);
    expectKeyBuffer(engine.onlyCall(), 0);
    EXPECT_EQ(key, 0x11);
    expectCachedKey(2, 0);
}

TEST_F(KeyCallTest, ThePhysicalOrderTakesAKeyAndIsCached) {
    uint8_t key[] = {9, 8};
    EXPECT_EQ(call(key, 2, -1), 0);
    expectCall(engine.onlyCall(), 36, -1);
    expectKeyBuffer(engine.onlyCall(), 2);
    expectCachedKey(-1, 2);
}

TEST_F(KeyCallTest, WithoutAnIndexTheCacheStays) {
    uint8_t key[] = {9, 8};
    engine.reply({.key = {7, 6}});
    EXPECT_EQ(call(key, 2, -7), 0);
    expectCall(engine.onlyCall(), 36, -1);
    expectKeyBuffer(engine.onlyCall(), 2);
    EXPECT_EQ(engine.onlyCall().keyBytes, (Bytes{9, 8}));
    EXPECT_EQ(key[0], 7);
    EXPECT_EQ(key[1], 6);
    expectCachedKey(3, 5);
}

// How much of the key buffer goes along where the caller gives no key.
TEST_F(KeyCallTest, WithoutAKeyTheKeyBufferGoesAsItIs) {
    const struct {
        int32_t keyNumber, sentNumber, sentLength, cachedNumber;
        uint32_t cachedLength;
    } rows[] = {{-7, -1, 0, 3, 5},       {-1, -1, 0, -1, 0},    {3, 3, 5, 3, 5},
                {4, 4, 1024, 4, 1024},   {0, 0, 1024, 0, 1024}, {125, 125, 1024, 125, 1024},
                {-2, -2, 1024, -2, 1024}};
    for (auto row : rows) {
        engine.reset();
        cacheKey(3, 5);
        memset(file->keyBuffer, 0x4B, sizeof file->keyBuffer);
        engine.reply({.status = 9, .key = {0x11}});
        EXPECT_EQ(call(nullptr, 77, row.keyNumber), 9);
        EXPECT_EQ(fileStatus(), 9);
        expectCall(engine.onlyCall(), 36, row.sentNumber);
        expectData(engine.onlyCall(), data, 4);
        expectKeyBuffer(engine.onlyCall(), row.sentLength);
        EXPECT_EQ(engine.onlyCall().keyBytes, Bytes(static_cast<size_t>(row.sentLength), 0x4B));
        expectCachedKey(row.cachedNumber, row.cachedLength);
        EXPECT_EQ(keyBuffer(2), (Bytes{0x11, 0x4B}));
    }
}

TEST_F(KeyCallTest, RightAfterOpenNoKeyIsHeld) {
    cacheKey(-7, 0);
    EXPECT_EQ(call(nullptr, 0, -7), 0);
    expectCall(engine.onlyCall(), 36, -1);
    expectKeyBuffer(engine.onlyCall(), 0);
    expectCachedKey(-7, 0);
}

TEST_F(KeyCallTest, RefusesAMissingFileAndAFileWithoutAClient) {
    uint8_t key[] = {9, 8};
    EXPECT_EQ(callVantrelKeyHelper(nullptr, 36, data, &dataLength, key, 2, 2), 3);
    EXPECT_EQ(replayCachedKey(nullptr, 53, data, &dataLength), 3);
    EXPECT_EQ(callFile(nullptr, 4), 3);
    expectRefused(untouchedStatus);
    makeFileUnusable();
    EXPECT_EQ(call(key, 2, 2), 2007);
    expectRefused(2007);
    EXPECT_EQ(call(nullptr, 0, 2), 2007);
    expectRefused(2007);
    EXPECT_EQ(replayCachedKey(file, 53, data, &dataLength), 2007);
    expectRefused(2007);
    EXPECT_EQ(callFile(file, 4), 2007);
    expectRefused(2007);
    EXPECT_EQ(key[0], 9);
}

TEST_F(KeyCallTest, ReplaysTheCachedKeyAndLeavesIt) {
    const struct {
        int32_t cachedNumber;
        uint32_t cachedLength;
        int32_t sentNumber, sentLength;
    } rows[] = {{-7, 0, -1, 0}, {-1, 9, -1, 0}, {2, 10, 2, 10}, {118, 1024, 118, 1024}, {125, 8, 125, 8}};
    for (auto row : rows) {
        engine.reset();
        cacheKey(row.cachedNumber, row.cachedLength);
        engine.reply({.status = 80, .dataLength = 2});
        dataLength = 4;
        EXPECT_EQ(replayCachedKey(file, 53, data, &dataLength), 80);
        EXPECT_EQ(fileStatus(), 80);
        expectCall(engine.onlyCall(), 53, row.sentNumber);
        expectData(engine.onlyCall(), data, 4);
        expectKeyBuffer(engine.onlyCall(), row.sentLength);
        EXPECT_EQ(dataLength, 2u);
        expectCachedKey(row.cachedNumber, row.cachedLength);
    }
}

}  // namespace
