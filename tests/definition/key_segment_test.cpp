#include "definition/key_segment.h"

#include <climits>

#include "definition/definition_test.h"
#include "support/failing_allocation.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

class KeySegmentTest : public testing::Test {
  protected:
    KeySegmentTest() { keepStatus(segment, untouchedStatus); }

    void expectStatus(VantrelStatus status) const {
        EXPECT_EQ(VantrelKeySegmentGetLastStatusCode(segment), status);
    }
    void setFlags(int32_t flags) { storeU16(segment->specification.flags, static_cast<uint16_t>(flags)); }
    uint16_t flags() const { return loadU16(segment->specification.flags); }
    Bytes specification() const { return bytesIn(segment->specification); }

    KeySegmentPointer owner = newKeySegment();
    VantrelKeySegment *segment = owner.get();
};

TEST(KeySegmentAllocate, GivesAZeroedRecord) {
    KeySegmentPointer segment = newKeySegment();
    EXPECT_EQ(bytesIn(*segment), Bytes(28));
}

TEST(KeySegmentAllocate, RefusesAMissingOutPointer) {
    EXPECT_EQ(VantrelKeySegmentAllocate(nullptr), 2007);
}

TEST(KeySegmentAllocate, MemoryRunsOut) {
    VantrelKeySegment sentinel, *segment = &sentinel;
    FailingAllocation failing;
    EXPECT_EQ(VantrelKeySegmentAllocate(&segment), 101);
    EXPECT_EQ(segment, nullptr);
}

TEST(KeySegmentFree, TakesNull) {
    EXPECT_EQ(VantrelKeySegmentFree(nullptr), 0);
}

TEST_F(KeySegmentTest, FreshSegmentReportsItsDefaults) {
    EXPECT_EQ(VantrelKeySegmentGetOffset(segment), -1);
    EXPECT_EQ(VantrelKeySegmentGetLength(segment), 0);
    EXPECT_EQ(VantrelKeySegmentGetDataType(segment), 22);
    EXPECT_EQ(VantrelKeySegmentGetNullKeyMode(segment), 2);
    EXPECT_EQ(VantrelKeySegmentGetACSMode(segment), 0);
    EXPECT_EQ(VantrelKeySegmentGetDuplicateMode(segment), 0);
    EXPECT_EQ(VantrelKeySegmentGetNullValue(segment), 0);
}

TEST_F(KeySegmentTest, SetFieldFillsTheSpecification) {
    ASSERT_EQ(VantrelKeySegmentSetField(segment, 0x1233, 0x0256, VANTREL_DATA_TYPE_TIMESTAMP_2), 0);
    expectStatus(0);
    EXPECT_EQ(specification(), (Bytes{0x34, 0x12, 0x56, 0x02, 0x00, 0x01, 0, 0, 0, 0, 0, 0,
                                      0,    0,    0,    0,    34,   0,    0, 0, 0, 0, 0, 0}));
}

TEST_F(KeySegmentTest, OffsetsCountFromZeroAndPositionsFromOne) {
    ASSERT_EQ(VantrelKeySegmentSetField(segment, 0, 10, VANTREL_DATA_TYPE_CHAR), 0);
    EXPECT_EQ(loadU16(segment->specification.position), 1);
    EXPECT_EQ(VantrelKeySegmentGetOffset(segment), 0);
    EXPECT_EQ(VantrelKeySegmentGetLength(segment), 10);
}

TEST_F(KeySegmentTest, SetFieldTakesPlacesUpToTheLimits) {
    for (auto [offset, length] : {std::pair{64511, 1024}, {65535, 0}, {0, 0}, {64999, 536}, {65534, 1}}) {
        EXPECT_EQ(VantrelKeySegmentSetField(segment, offset, length, VANTREL_DATA_TYPE_CHAR), 0);
        EXPECT_EQ(VantrelKeySegmentGetOffset(segment), offset == 65535 ? -1 : offset);
        EXPECT_EQ(VantrelKeySegmentGetLength(segment), length);
    }
}

TEST_F(KeySegmentTest, SetFieldRefusesPlacesBeyondTheLimits) {
    ASSERT_EQ(VantrelKeySegmentSetField(segment, 7, 8, VANTREL_DATA_TYPE_LEGACY_BINARY), 0);
    Bytes before = specification();
    for (auto [offset, length] : {std::pair{0, 1025},
                                  {65536, 0},
                                  {65000, 536},
                                  {64512, 1024},
                                  {65535, 1},
                                  {-1, 4},
                                  {0, -1},
                                  {INT_MAX, 1024},
                                  {INT_MIN, 0},
                                  {0, INT_MIN},
                                  {-1, 2}}) {
        keepStatus(segment, untouchedStatus);
        EXPECT_EQ(VantrelKeySegmentSetField(segment, offset, length, VANTREL_DATA_TYPE_INTEGER), 2002);
        expectStatus(2002);
        EXPECT_EQ(specification(), before) << offset << ' ' << length;
    }
}

TEST_F(KeySegmentTest, SetFieldChecksThePlaceBeforeTheType) {
    EXPECT_EQ(VantrelKeySegmentSetField(segment, 0, 1025, 31), 2002);
    EXPECT_EQ(flags(), 0);
    EXPECT_EQ(VantrelKeySegmentSetField(segment, 0, 1025, VANTREL_DATA_TYPE_LEGACY_BINARY), 2002);
    EXPECT_EQ(flags(), 0);
}

TEST_F(KeySegmentTest, AnUnknownTypeLeavesTheFlagsOfAnExtendedOne) {
    ASSERT_EQ(VantrelKeySegmentSetField(segment, 7, 8, VANTREL_DATA_TYPE_LEGACY_BINARY), 0);
    for (VantrelDataType unknown : {31, -1, INT_MAX, INT_MIN}) {
        setFlags(0x0004);
        EXPECT_EQ(VantrelKeySegmentSetField(segment, 100, 200, unknown), 2002);
        expectStatus(2002);
        EXPECT_EQ(specification(),
                  (Bytes{8, 0, 8, 0, 0x00, 0x01, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
    }
}

TEST_F(KeySegmentTest, DataTypesAreStoredAsEngineCodesAndReadBack) {
    const struct {
        VantrelDataType type;
        uint16_t code;
    } rows[] = {{0, 0},   {1, 11},  {2, 1},   {3, 14},  {4, 2},   {5, 15},   {6, 3},   {7, 17},
                {8, 4},   {9, 18},  {10, 5},  {11, 19}, {12, 6},  {13, 20},  {14, 7},  {15, 25},
                {16, 8},  {17, 26}, {18, 9},  {19, 27}, {20, 10}, {21, 255}, {24, 32}, {25, 21},
                {26, 34}, {27, 16}, {28, 28}, {29, 29}, {30, 31}};
    for (auto [type, code] : rows) {
        setFlags(0x0004);
        EXPECT_EQ(VantrelKeySegmentSetField(segment, 0, 1, type), 0);
        EXPECT_EQ(flags(), 0x0100);
        EXPECT_EQ(loadU16(segment->specification.extendedDataType), code);
        keepStatus(segment, untouchedStatus);
        EXPECT_EQ(VantrelKeySegmentGetDataType(segment), type);
        expectStatus(0);
    }
}

TEST_F(KeySegmentTest, LegacyTypesAreFlagsAlone) {
    ASSERT_EQ(VantrelKeySegmentSetField(segment, 0, 1, VANTREL_DATA_TYPE_GUID), 0);
    keepStatus(segment, untouchedStatus);
    ASSERT_EQ(VantrelKeySegmentSetField(segment, 0, 1, VANTREL_DATA_TYPE_LEGACY_BINARY), 0);
    expectStatus(0);
    EXPECT_EQ(flags(), 0x0004);
    EXPECT_EQ(VantrelKeySegmentGetDataType(segment), 23);
    keepStatus(segment, untouchedStatus);
    ASSERT_EQ(VantrelKeySegmentSetField(segment, 0, 1, VANTREL_DATA_TYPE_LEGACY_STRING), 0);
    expectStatus(0);
    EXPECT_EQ(flags(), 0x0000);
    EXPECT_EQ(VantrelKeySegmentGetDataType(segment), 22);
    EXPECT_EQ(loadU16(segment->specification.extendedDataType), 27);
}

TEST_F(KeySegmentTest, SetFieldLeavesOtherFlags) {
    setFlags(0xFEFB);
    ASSERT_EQ(VantrelKeySegmentSetField(segment, 0, 1, VANTREL_DATA_TYPE_CHAR), 0);
    EXPECT_EQ(flags(), 0xFFFB);
    ASSERT_EQ(VantrelKeySegmentSetField(segment, 0, 1, VANTREL_DATA_TYPE_LEGACY_BINARY), 0);
    EXPECT_EQ(flags(), 0xFEFF);
    ASSERT_EQ(VantrelKeySegmentSetField(segment, 0, 1, VANTREL_DATA_TYPE_LEGACY_STRING), 0);
    EXPECT_EQ(flags(), 0xFEFB);
}

TEST_F(KeySegmentTest, UnknownEngineCodesHaveNoDataType) {
    setFlags(0x0100);
    for (int32_t code : {12, 13, 22, 23, 24, 30, 33, 35, 254, 256, 0xFFFF}) {
        storeU16(segment->specification.extendedDataType, static_cast<uint16_t>(code));
        keepStatus(segment, untouchedStatus);
        EXPECT_EQ(VantrelKeySegmentGetDataType(segment), -7) << code;
        expectStatus(2002);
    }
}

TEST_F(KeySegmentTest, NullKeyModesAreStoredAndReadBack) {
    const std::pair<VantrelNullKeyMode, uint16_t> rows[] = {{0, 0x0008}, {1, 0x0200}, {2, 0x0000}};
    for (int32_t others : {0x0000, 0xFDF7}) {
        for (auto [mode, bits] : rows) {
            setFlags(others | 0x0208);
            keepStatus(segment, untouchedStatus);
            EXPECT_EQ(VantrelKeySegmentSetNullKeyMode(segment, mode), 0);
            expectStatus(0);
            EXPECT_EQ(flags(), others | bits);
            keepStatus(segment, untouchedStatus);
            EXPECT_EQ(VantrelKeySegmentGetNullKeyMode(segment), mode);
            expectStatus(0);
        }
    }
}

TEST_F(KeySegmentTest, OtherNullKeyModesAreRefused) {
    setFlags(0x0200);
    for (VantrelNullKeyMode mode : {3, -1, INT_MAX, INT_MIN}) {
        keepStatus(segment, untouchedStatus);
        EXPECT_EQ(VantrelKeySegmentSetNullKeyMode(segment, mode), 2002);
        expectStatus(2002);
        EXPECT_EQ(flags(), 0x0200);
    }
}

TEST_F(KeySegmentTest, NullValuesAreOneByte) {
    for (int32_t value : {0, 1, 32, 255}) {
        keepStatus(segment, untouchedStatus);
        EXPECT_EQ(VantrelKeySegmentSetNullValue(segment, value), 0);
        expectStatus(0);
        EXPECT_EQ(VantrelKeySegmentGetNullValue(segment), value);
    }
    EXPECT_EQ(specification(),
              (Bytes{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 255, 0, 0, 0, 0, 0}));
    for (int32_t value : {256, -1, INT_MAX, INT_MIN}) {
        keepStatus(segment, untouchedStatus);
        EXPECT_EQ(VantrelKeySegmentSetNullValue(segment, value), 2002);
        expectStatus(2002);
        EXPECT_EQ(VantrelKeySegmentGetNullValue(segment), 255);
    }
}

TEST_F(KeySegmentTest, SortOrderIsAFlag) {
    for (int32_t set : {1, 2, -1, 0x10000}) {
        setFlags(0);
        keepStatus(segment, untouchedStatus);
        EXPECT_EQ(VantrelKeySegmentSetDescendingSortOrder(segment, set), 0);
        expectStatus(0);
        EXPECT_EQ(flags(), 0x0040);
        EXPECT_EQ(VantrelKeySegmentGetDescendingSortOrder(segment), 1);
    }
    setFlags(0xFFFF);
    keepStatus(segment, untouchedStatus);
    EXPECT_EQ(VantrelKeySegmentSetDescendingSortOrder(segment, 0), 0);
    expectStatus(0);
    EXPECT_EQ(flags(), 0xFFBF);
    EXPECT_EQ(VantrelKeySegmentGetDescendingSortOrder(segment), 0);
}

TEST_F(KeySegmentTest, SettersRefuseAMissingSegmentFirst) {
    EXPECT_EQ(VantrelKeySegmentSetField(nullptr, 65536, 1025, 31), 2007);
    EXPECT_EQ(VantrelKeySegmentSetNullKeyMode(nullptr, 3), 2007);
    EXPECT_EQ(VantrelKeySegmentSetNullValue(nullptr, 256), 2007);
    EXPECT_EQ(VantrelKeySegmentSetDescendingSortOrder(nullptr, 1), 2007);
}

TEST(KeySegmentGetters, MissingSegment) {
    EXPECT_EQ(VantrelKeySegmentGetOffset(nullptr), -1);
    EXPECT_EQ(VantrelKeySegmentGetLength(nullptr), -1);
    EXPECT_EQ(VantrelKeySegmentGetModifiable(nullptr), -1);
    EXPECT_EQ(VantrelKeySegmentGetKeyContinues(nullptr), -1);
    EXPECT_EQ(VantrelKeySegmentGetDescendingSortOrder(nullptr), -1);
    EXPECT_EQ(VantrelKeySegmentGetUniqueValueCount(nullptr), -1);
    EXPECT_EQ(VantrelKeySegmentGetNullValue(nullptr), -1);
    EXPECT_EQ(VantrelKeySegmentGetACSNumber(nullptr), -1);
    EXPECT_EQ(VantrelKeySegmentGetIndex(nullptr), -7);
    EXPECT_EQ(VantrelKeySegmentGetDataType(nullptr), -7);
    EXPECT_EQ(VantrelKeySegmentGetNullKeyMode(nullptr), -7);
    EXPECT_EQ(VantrelKeySegmentGetACSMode(nullptr), -7);
    EXPECT_EQ(VantrelKeySegmentGetDuplicateMode(nullptr), -7);
    EXPECT_EQ(VantrelKeySegmentGetLastStatusCode(nullptr), 2007);
}

// Every byte of the specification has a value of its own.
class ReportedKeySegmentTest : public KeySegmentTest {
  protected:
    ReportedKeySegmentTest() {
        for (uint8_t i = 0; i < 24; ++i)
            reinterpret_cast<uint8_t *>(segment)[i] = static_cast<uint8_t>(0xF0 - i);
    }

    // Reads through the getter and expects that it clears the last status.
    template <class Value>
    Value read(Value (*getter)(VantrelKeySegment *)) {
        keepStatus(segment, untouchedStatus);
        Value value = getter(segment);
        expectStatus(0);
        return value;
    }
};

TEST_F(ReportedKeySegmentTest, GettersReadTheirFields) {
    Bytes before = specification();
    EXPECT_EQ(read(VantrelKeySegmentGetOffset), 0xEFEF);
    EXPECT_EQ(read(VantrelKeySegmentGetLength), 0xEDEE);
    EXPECT_EQ(read(VantrelKeySegmentGetUniqueValueCount), static_cast<int64_t>(0xE1E2E3E4E5E6E7E8));
    EXPECT_EQ(read(VantrelKeySegmentGetNullValue), 0xDE);
    EXPECT_EQ(read(VantrelKeySegmentGetIndex), 0xDBDC);
    EXPECT_EQ(read(VantrelKeySegmentGetACSNumber), 0xDA);
    EXPECT_EQ(specification(), before);
}

TEST_F(ReportedKeySegmentTest, FlagsAreReadAsZeroOrOne) {
    const std::pair<int32_t (*)(VantrelKeySegment *), uint16_t> rows[] = {
        {VantrelKeySegmentGetModifiable, 0x0002},
        {VantrelKeySegmentGetKeyContinues, 0x0010},
        {VantrelKeySegmentGetDescendingSortOrder, 0x0040}};
    for (auto [getter, flag] : rows) {
        setFlags(flag);
        EXPECT_EQ(read(getter), 1);
        setFlags(~flag);
        EXPECT_EQ(read(getter), 0);
    }
}

TEST_F(ReportedKeySegmentTest, ModesAreReadFromTheirBitsAlone) {
    const struct {
        int32_t (*getter)(VantrelKeySegment *);
        uint16_t mask;
        std::vector<std::pair<uint16_t, int32_t>> patterns;
    } rows[] = {{VantrelKeySegmentGetNullKeyMode, 0x0208, {{0x0008, 0}, {0x0200, 1}, {0x0000, 2}}},
                {VantrelKeySegmentGetACSMode,
                 0x0C20,
                 {{0x0000, 0}, {0x0C20, 1}, {0x0420, 2}, {0x0400, 3}, {0x0020, 4}}},
                {VantrelKeySegmentGetDuplicateMode, 0x0081, {{0x0000, 0}, {0x0001, 1}, {0x0081, 2}}}};
    for (const auto &row : rows) {
        for (auto [pattern, mode] : row.patterns) {
            setFlags(pattern);
            EXPECT_EQ(read(row.getter), mode);
            setFlags(pattern | ~row.mask);
            EXPECT_EQ(read(row.getter), mode);
        }
    }
}

TEST_F(ReportedKeySegmentTest, BitsThatStandForNoModeAreRefused) {
    const std::pair<int32_t (*)(VantrelKeySegment *), uint16_t> rows[] = {
        {VantrelKeySegmentGetNullKeyMode, 0x0208},
        {VantrelKeySegmentGetACSMode, 0x0800},
        {VantrelKeySegmentGetACSMode, 0x0820},
        {VantrelKeySegmentGetACSMode, 0x0C00},
        {VantrelKeySegmentGetDuplicateMode, 0x0080}};
    for (auto [getter, bits] : rows) {
        setFlags(bits);
        keepStatus(segment, untouchedStatus);
        EXPECT_EQ(getter(segment), -7) << bits;
        expectStatus(2002);
    }
}

TEST_F(KeySegmentTest, LastStatusStays) {
    keepStatus(segment, -123456789);
    expectStatus(-123456789);
    expectStatus(-123456789);
}

TEST_F(KeySegmentTest, IndexWideDuplicateModes) {
    KeySpecification *stored = &segment->specification;
    const std::pair<VantrelDuplicateMode, uint16_t> rows[] = {{0, 0x0000}, {1, 0x0001}, {2, 0x0081}};
    for (int32_t others : {0x0000, 0xFF7E}) {
        for (auto [mode, bits] : rows) {
            setFlags(others | 0x0081);
            EXPECT_EQ(keySegmentSetDuplicateMode(stored, mode), 0);
            EXPECT_EQ(flags(), others | bits);
        }
    }
    for (VantrelDuplicateMode mode : {3, -1, INT_MAX, INT_MIN})
        EXPECT_EQ(keySegmentSetDuplicateMode(stored, mode), 2002);
    EXPECT_EQ(flags(), 0xFFFF);
    expectStatus(untouchedStatus);
}

TEST_F(KeySegmentTest, IndexWideModifiability) {
    EXPECT_EQ(keySegmentSetModifiable(&segment->specification, -1), 0);
    EXPECT_EQ(flags(), 0x0002);
    setFlags(0xFFFF);
    EXPECT_EQ(keySegmentSetModifiable(&segment->specification, 0), 0);
    EXPECT_EQ(flags(), 0xFFFD);
    expectStatus(untouchedStatus);
}

TEST_F(KeySegmentTest, IndexWideACSModes) {
    KeySpecification *stored = &segment->specification;
    const std::pair<VantrelACSMode, uint16_t> rows[] = {
        {0, 0x0000}, {1, 0x0C20}, {2, 0x0420}, {3, 0x0400}, {4, 0x0020}};
    for (int32_t others : {0x0000, 0xF3DF}) {
        for (auto [mode, bits] : rows) {
            setFlags(others | 0x0C20);
            EXPECT_EQ(keySegmentSetACSMode(stored, mode), 0);
            EXPECT_EQ(flags(), others | bits);
        }
    }
    setFlags(0x0420);
    for (VantrelACSMode mode : {5, -1, INT_MAX, INT_MIN})
        EXPECT_EQ(keySegmentSetACSMode(stored, mode), 2002);
    EXPECT_EQ(flags(), 0x0420);
    expectStatus(untouchedStatus);
}

TEST_F(KeySegmentTest, IndexWideACSNumbers) {
    EXPECT_EQ(keySegmentSetACSNumber(&segment->specification, 255), 0);
    EXPECT_EQ(keySegmentSetACSNumber(&segment->specification, 256), 2002);
    EXPECT_EQ(keySegmentSetACSNumber(&segment->specification, 0xFFFFFFFF), 2002);
    EXPECT_EQ(specification(),
              (Bytes{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 255, 0}));
    EXPECT_EQ(keySegmentSetACSNumber(&segment->specification, 0), 0);
    EXPECT_EQ(specification(), Bytes(24));
    expectStatus(untouchedStatus);
}

}  // namespace
