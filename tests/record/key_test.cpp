#include "record/record_fixture.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

// A read of a key alone: by value, first and last of index 2, next and previous of index 3, which is the one
// used last.
struct KeyRead {
    const char *name;
    VantrelStatus (*read)(VantrelFile *, void *, int32_t);
    uint32_t operation;
    int32_t keyNumber;
};

void PrintTo(const KeyRead &read, std::ostream *out) {
    *out << read.name;
}

const KeyRead keyReads[] = {
    {"ByValue",
     [](VantrelFile *file, void *key, int32_t keyLength) {
         return VantrelFileKeyRetrieve(file, 1, 2, key, keyLength);
     },
     55, 2},
    {"First",
     [](VantrelFile *file, void *key, int32_t keyLength) {
         return VantrelFileKeyRetrieveFirst(file, 2, key, keyLength);
     },
     62, 2},
    {"Last",
     [](VantrelFile *file, void *key, int32_t keyLength) {
         return VantrelFileKeyRetrieveLast(file, 2, key, keyLength);
     },
     63, 2},
    {"Next", VantrelFileKeyRetrieveNext, 56, 3},
    {"Previous", VantrelFileKeyRetrievePrevious, 57, 3},
};

class KeyReadTest : public RecordTest, public testing::WithParamInterface<KeyRead> {};

INSTANTIATE_TEST_SUITE_P(Reads, KeyReadTest, testing::ValuesIn(keyReads),
                         [](const auto &row) { return row.param.name; });

TEST_P(KeyReadTest, FillsTheKeyAndCachesIt) {
    GuardedBuffer key({9, 8, 7});
    engine.reply({.status = 9, .key = {6, 6, 6, 6}});
    EXPECT_EQ(GetParam().read(file, key.get(), 3), 9);
    EXPECT_EQ(fileStatus(), 9);

    expectCall(engine.onlyCall(), GetParam().operation, GetParam().keyNumber);
    expectData(engine.onlyCall(), nullptr, 0);
    expectKeyBuffer(engine.onlyCall(), 3);
    EXPECT_EQ(engine.onlyCall().keyBytes, (Bytes{9, 8, 7}));
    EXPECT_EQ(key.content(), (Bytes{6, 6, 6}));
    EXPECT_TRUE(key.guardsHold());
    expectCachedKey(GetParam().keyNumber, 3);
}

TEST_P(KeyReadTest, CutsLongKeysTo1024Bytes) {
    GuardedBuffer key(Bytes(1100, 0x11));
    engine.reply({.key = Bytes(1024, 0x22)});
    EXPECT_EQ(GetParam().read(file, key.get(), 1025), 0);
    expectKeyBuffer(engine.onlyCall(), 1024);
    EXPECT_EQ(key.content(), padded(Bytes(1024, 0x22), 1100, 0x11));
    expectCachedKey(GetParam().keyNumber, 1024);
}

TEST_P(KeyReadTest, ChecksFileKeyLengthAndClientInThisOrder) {
    uint8_t key[3] = {9, 8, 7};
    EXPECT_EQ(GetParam().read(nullptr, nullptr, -1), 3);
    expectRefused(untouchedStatus);
    makeFileUnusable();
    EXPECT_EQ(GetParam().read(file, nullptr, -1), 2007);
    expectRefused(2007);
    for (int32_t keyLength : {-1, INT_MIN}) {
        EXPECT_EQ(GetParam().read(file, key, keyLength), 2002);
        expectRefused(2002);
    }
    EXPECT_EQ(GetParam().read(file, key, 3), 2007);
    expectRefused(2007);
}

TEST_P(KeyReadTest, RightAfterOpenNextAndPreviousNameNoIndex) {
    cacheKey(-7, 0);
    uint8_t key[3] = {9, 8, 7};
    EXPECT_EQ(GetParam().read(file, key, 3), 0);
    bool namesIndex = GetParam().keyNumber == 2;
    expectCall(engine.onlyCall(), GetParam().operation, namesIndex ? 2 : -1);
    expectCachedKey(namesIndex ? 2 : -7, namesIndex ? 3 : 0);
}

class KeyRetrieveTest : public RecordTest {
  protected:
    uint8_t key[3] = {9, 8, 7};
};

TEST_F(KeyRetrieveTest, EachComparisonHasItsOperation) {
    const struct {
        int32_t comparison;
        uint32_t operation;
    } rows[] = {{1, 55}, {2, 58}, {3, 60}, {5, 59}, {6, 61}};
    for (auto row : rows) {
        engine.reset();
        EXPECT_EQ(VantrelFileKeyRetrieve(file, row.comparison, 2, key, 3), 0);
        expectCall(engine.onlyCall(), row.operation, 2);
    }
}

TEST_F(KeyRetrieveTest, OtherComparisonsGiveMinusOne) {
    for (int32_t comparison : {0, 4, 7, 8, 9, -1, INT_MIN, INT_MAX}) {
        EXPECT_EQ(VantrelFileKeyRetrieve(file, comparison, 2, key, 3), -1);
        expectRefused(2002);
    }
}

TEST_F(KeyRetrieveTest, ChecksTheComparisonBetweenKeyAndLength) {
    EXPECT_EQ(VantrelFileKeyRetrieve(nullptr, 4, 2, key, 3), 3);
    EXPECT_EQ(VantrelFileKeyRetrieve(file, 4, 2, nullptr, -1), 2007);
    expectRefused(2007);
    makeFileUnusable();
    EXPECT_EQ(VantrelFileKeyRetrieve(file, 4, 2, key, -1), -1);
    expectRefused(2002);
}

TEST_F(KeyRetrieveTest, AnyIndexIsPassed) {
    for (int32_t index : {-1, 0, 119, 126, INT_MIN}) {
        engine.reset();
        EXPECT_EQ(VantrelFileKeyRetrieveFirst(file, index, key, 3), 0);
        expectCall(engine.onlyCall(), 62, index);
        expectCachedKey(index, 3);
        EXPECT_EQ(VantrelFileKeyRetrieveLast(file, index, key, 3), 0);
        expectCall(engine.calls().at(1), 63, index);
    }
}

TEST_F(KeyRetrieveTest, NextAndPreviousAlwaysGoAlongAnIndex) {
    cacheKey(-1, 0);
    EXPECT_EQ(VantrelFileKeyRetrieveNext(file, key, 3), 0);
    EXPECT_EQ(VantrelFileKeyRetrievePrevious(file, key, 3), 0);
    expectCall(engine.calls().at(0), 56, -1);
    expectCall(engine.calls().at(1), 57, -1);
}

}  // namespace
