#include "record/record_fixture.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

// A question how far into an index a position lies.
struct Question {
    const char *name;
    int32_t (*ask)(VantrelFile *, VantrelIndex, void *, uint32_t);
    Bytes request;
};

void PrintTo(const Question &question, std::ostream *out) {
    *out << question.name;
}

const Question questions[] = {
    {"Percentage",
     [](VantrelFile *file, VantrelIndex index, void *key, uint32_t keyLength) {
         return VantrelFileGetPercentage(file, index, key, keyLength, 0x8807060504030201);
     },
     {1, 2, 3, 4, 5, 6, 7, 0x88}},
    {"Numerator",
     [](VantrelFile *file, VantrelIndex index, void *key, uint32_t keyLength) {
         return VantrelFileGetNumerator(file, index, key, keyLength, 0x8807060504030201, 0x9C0B0A09);
     },
     {1, 2, 3, 4, 5, 6, 7, 0x88, 'E', 'x', 'P', 'c', 9, 10, 11, 0x9C}},
};

class ProportionTest : public RecordTest, public testing::WithParamInterface<Question> {
  protected:
    uint8_t key[3] = {9, 8, 7};
};

INSTANTIATE_TEST_SUITE_P(Questions, ProportionTest, testing::ValuesIn(questions),
                         [](const auto &row) { return row.param.name; });

TEST_P(ProportionTest, SendsTheRequestAndGivesTheEnginesAnswer) {
    GuardedBuffer guardedKey({9, 8, 7});
    engine.reply({.dataLength = 4, .data = {0xF1, 0xF2, 0xF3, 0xF4}, .key = {6, 6, 6, 6}});
    EXPECT_EQ(GetParam().ask(file, 2, guardedKey.get(), 3), static_cast<int32_t>(0xF4F3F2F1));
    EXPECT_EQ(fileStatus(), 0);

    const EngineCall &call = engine.onlyCall();
    expectCall(call, 45, 2);
    EXPECT_EQ(call.dataBytes, GetParam().request);
    expectKeyBuffer(call, 3);
    EXPECT_EQ(call.keyBytes, (Bytes{9, 8, 7}));
    EXPECT_EQ(guardedKey.content(), (Bytes{6, 6, 6}));
    EXPECT_TRUE(guardedKey.guardsHold());
    expectCachedKey(2, 3);
}

TEST_P(ProportionTest, AnyOtherStatusIsAFailure) {
    for (int32_t status : {43, 22, 41}) {
        engine.reset();
        engine.reply({.status = status, .data = {5, 0, 0, 0}});
        EXPECT_EQ(GetParam().ask(file, 2, key, 3), -1);
        EXPECT_EQ(fileStatus(), status);
    }
}

TEST_P(ProportionTest, TakesEveryIndexAndNoOther) {
    for (int32_t index : {-2, -7, 119, 120, 123, 126, INT_MIN, INT_MAX}) {
        EXPECT_EQ(GetParam().ask(file, index, key, 3), -1);
        expectRefused(2002);
    }
    for (int32_t index : {-1, 0, 118, 124, 125}) {
        engine.reset();
        engine.reply({.data = {5, 0, 0, 0}});
        EXPECT_EQ(GetParam().ask(file, index, key, 3), 5);
        expectCall(engine.onlyCall(), 45, index);
        expectCachedKey(index, 3);
    }
}

TEST_P(ProportionTest, CutsLongKeysTo1024Bytes) {
    for (uint32_t keyLength : {1024u, 1025u, 0xFFFFFFFFu}) {
        engine.reset();
        GuardedBuffer longKey(Bytes(1100, 0x11));
        engine.reply({.key = Bytes(1024, 0x22)});
        GetParam().ask(file, 2, longKey.get(), keyLength);
        expectKeyBuffer(engine.onlyCall(), 1024);
        EXPECT_EQ(longKey.content(), padded(Bytes(1024, 0x22), 1100, 0x11));
        expectCachedKey(2, 1024);
    }
}

TEST_P(ProportionTest, WithoutAKeySendsWhatTheIndexHolds) {
    const struct {
        int32_t index, sentLength;
        uint32_t cachedLength;
    } rows[] = {{3, 5, 5}, {4, 1024, 1024}, {-1, 0, 0}};
    for (auto row : rows) {
        engine.reset();
        cacheKey(3, 5);
        engine.reply({.data = {5, 0, 0, 0}});
        EXPECT_EQ(GetParam().ask(file, row.index, nullptr, 77), 5);
        expectCall(engine.onlyCall(), 45, row.index);
        expectKeyBuffer(engine.onlyCall(), row.sentLength);
        expectCachedKey(row.index, row.cachedLength);
    }
}

TEST_P(ProportionTest, ChecksFileIndexAndClientInThisOrder) {
    EXPECT_EQ(GetParam().ask(nullptr, 119, key, 3), -1);
    expectRefused(untouchedStatus);
    makeFileUnusable();
    EXPECT_EQ(GetParam().ask(file, 119, key, 3), -1);
    expectRefused(2002);
    EXPECT_EQ(GetParam().ask(file, 2, key, 3), -1);
    expectRefused(2007);
}

class NumeratorTest : public RecordTest {};

TEST_F(NumeratorTest, ADenominatorOfZeroIsPassed) {
    engine.reply({.status = 41});
    EXPECT_EQ(VantrelFileGetNumerator(file, -1, nullptr, 0, 1, 0), -1);
    EXPECT_EQ(engine.onlyCall().dataBytes, (Bytes{1, 0, 0, 0, 0, 0, 0, 0, 'E', 'x', 'P', 'c', 0, 0, 0, 0}));
}

class RecordTimesTest : public RecordTest {
  protected:
    const Bytes times = {1,  2,  3,  4,    5,  6,  7,  8,  9,  10, 11, 12,
                         13, 14, 15, 0x90, 17, 18, 19, 20, 21, 22, 23, 0x98};
};

TEST_F(RecordTimesTest, AreTheEnginesTwoTimestamps) {
    engine.reply({.data = times});
    EXPECT_EQ(VantrelFileGetRecordCreateTime(file), static_cast<int64_t>(0x900F0E0D0C0B0A09));
    EXPECT_EQ(fileStatus(), 0);
    engine.reply({.data = times});
    EXPECT_EQ(VantrelFileGetRecordUpdateTime(file), static_cast<int64_t>(0x9817161514131211));
    EXPECT_EQ(fileStatus(), 0);

    ASSERT_EQ(engine.calls().size(), 2u);
    for (const EngineCall &call : engine.calls()) {
        expectCall(call, 22, -3);
        EXPECT_EQ(call.dataBytes, padded({'S', 'y', 's', 'D'}, 24, 0));
        expectNoKey(call);
    }
    expectCachedKey(3, 5);
}

TEST_F(RecordTimesTest, AFailureGivesMinusOne) {
    engine.reply({.status = 8, .data = times});
    EXPECT_EQ(VantrelFileGetRecordCreateTime(file), -1);
    EXPECT_EQ(fileStatus(), 8);
    engine.reply({.status = 22, .data = times});
    EXPECT_EQ(VantrelFileGetRecordUpdateTime(file), -1);
    EXPECT_EQ(fileStatus(), 22);
}

TEST_F(RecordTimesTest, MinusOneCanBeATime) {
    engine.reply({.data = Bytes(24, 0xFF)});
    EXPECT_EQ(VantrelFileGetRecordUpdateTime(file), -1);
    EXPECT_EQ(fileStatus(), 0);
}

TEST_F(RecordTimesTest, RefuseAMissingFileAndAFileWithoutAClient) {
    EXPECT_EQ(VantrelFileGetRecordCreateTime(nullptr), -1);
    EXPECT_EQ(VantrelFileGetRecordUpdateTime(nullptr), -1);
    expectRefused(untouchedStatus);
    makeFileUnusable();
    EXPECT_EQ(VantrelFileGetRecordCreateTime(file), -1);
    expectRefused(2007);
    EXPECT_EQ(VantrelFileGetRecordUpdateTime(file), -1);
    expectRefused(2007);
}

}  // namespace
