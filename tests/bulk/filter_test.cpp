#include "bulk/handles.h"
#include "support/failing_allocation.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

class FilterTest : public testing::Test {
  protected:
    FilterTest() { keepStatus(filter.get(), untouchedStatus); }

    Bytes image() const { return imageOf(filter.get()); }
    void expectNoStatusStored() const { EXPECT_EQ(lastStatus(filter.get()), untouchedStatus); }
    Bytes constant() const {
        const uint8_t *bytes = constantOf(filter->slot);
        return Bytes(bytes, bytes + loadU16(filter->slot.constantLength));
    }

    Filter filter;
};

TEST(FilterAllocate, GivesAnEmptyRecord) {
    Filter filter;
    EXPECT_EQ(bytesOfRecord(filter.get()), Bytes(65539));
}

TEST(FilterAllocate, RefusesAMissingOutPointer) {
    EXPECT_EQ(VantrelFilterAllocate(nullptr), 2007);
}

TEST(FilterAllocate, MemoryRunsOut) {
    VantrelFilter sentinel, *filter = &sentinel;
    FailingAllocation failing;
    EXPECT_EQ(VantrelFilterAllocate(&filter), 101);
    EXPECT_EQ(filter, nullptr);
}

TEST(FilterMissing, EveryFunctionRefusesIt) {
    EXPECT_EQ(VantrelFilterFree(nullptr), 2007);
    EXPECT_EQ(VantrelFilterSetField(nullptr, 65535, 0, 99), 2007);
    EXPECT_EQ(VantrelFilterSetSystemField(nullptr, 2), 2007);
    EXPECT_EQ(VantrelFilterSetComparison(nullptr, 10), 2007);
    EXPECT_EQ(VantrelFilterSetConnector(nullptr, 3), 2007);
    EXPECT_EQ(VantrelFilterSetComparisonConstant(nullptr, nullptr, 65536), 2007);
    EXPECT_EQ(VantrelFilterSetComparisonField(nullptr, 65535), 2007);
    EXPECT_EQ(VantrelFilterSetACSUserDefined(nullptr, "123456789"), 2007);
    EXPECT_EQ(VantrelFilterSetACSName(nullptr, nullptr), 2007);
    EXPECT_EQ(VantrelFilterSetLikeCodePageName(nullptr, nullptr), 2007);
    EXPECT_EQ(VantrelFilterSetACSMode(nullptr, 1), 2007);
}

TEST_F(FilterTest, FieldKeepsTypeLengthAndOffset) {
    EXPECT_EQ(VantrelFilterSetField(filter, 0x0102, 0x0304, VANTREL_DATA_TYPE_UNSIGNED_BINARY), 0);
    EXPECT_EQ(image(), imageWith({{0, {14, 0x04, 0x03, 0x02, 0x01}}}));
    EXPECT_EQ(VantrelFilterSetField(filter, 0, 0, VANTREL_DATA_TYPE_NULL_INDICATOR_SEGMENT), 0);
    EXPECT_EQ(image(), imageWith({{0, {255, 0, 0, 0, 0}}}));
    expectNoStatusStored();
}

TEST_F(FilterTest, FieldEndsBelow65536) {
    EXPECT_EQ(VantrelFilterSetField(filter, 65534, 1, VANTREL_DATA_TYPE_CHAR), 0);
    EXPECT_EQ(VantrelFilterSetField(filter, 0, 65535, VANTREL_DATA_TYPE_CHAR), 0);
    EXPECT_EQ(VantrelFilterSetField(filter, 1, 2, VANTREL_DATA_TYPE_ZSTRING), 0);
    const Bytes before = image();
    for (auto [offset, length] : {std::pair{65534u, 2u},
                                  {65535u, 0u},
                                  {1u, 65535u},
                                  {0u, 65536u},
                                  {65536u, 1u},
                                  {0xFFFFFFFFu, 2u},
                                  {2u, 0xFFFFFFFFu}}) {
        EXPECT_EQ(VantrelFilterSetField(filter, offset, length, VANTREL_DATA_TYPE_CHAR), 2002);
        EXPECT_EQ(image(), before);
    }
    expectNoStatusStored();
}

TEST_F(FilterTest, RefusedDataTypeMovesTheFieldAndKeepsItsType) {
    VantrelFilterSetField(filter, 1, 2, VANTREL_DATA_TYPE_ZSTRING);
    for (VantrelDataType type : {22, 23, 31, -1}) {
        EXPECT_EQ(VantrelFilterSetField(filter, 3, 4, type), 2002);
        EXPECT_EQ(image(), imageWith({{0, {11, 4, 0, 3, 0}}}));
    }
    EXPECT_EQ(VantrelFilterSetField(filter, 65535, 9, 22), 2002);
    EXPECT_EQ(image(), imageWith({{0, {11, 4, 0, 3, 0}}}));
    expectNoStatusStored();
}

TEST_F(FilterTest, SystemFieldsHaveOffsetsOfTheirOwn) {
    EXPECT_EQ(VantrelFilterSetSystemField(filter, VANTREL_SYSTEM_FIELD_CREATE_TIME), 0);
    EXPECT_EQ(image(), imageWith({{0, {32, 0x08, 0xFF, 0xFE, 0xFF}}}));
    EXPECT_EQ(VantrelFilterSetSystemField(filter, VANTREL_SYSTEM_FIELD_UPDATE_TIME), 0);
    EXPECT_EQ(image(), imageWith({{0, {32, 0x08, 0xFF, 0xFB, 0xFF}}}));
    for (VantrelSystemField field : {2, -1}) {
        EXPECT_EQ(VantrelFilterSetSystemField(filter, field), 2002);
        EXPECT_EQ(image(), imageWith({{0, {32, 0x08, 0xFF, 0xFB, 0xFF}}}));
    }
    expectNoStatusStored();
}

TEST_F(FilterTest, ComparisonsHaveCodesAndPatternsSubCodes) {
    struct {
        VantrelComparison comparison;
        uint8_t code, subCode;
    } const rows[] = {{0, 0, 0}, {7, 7, 1}, {1, 1, 0}, {8, 7, 2}, {2, 2, 0},
                      {9, 7, 3}, {3, 3, 0}, {4, 4, 0}, {5, 5, 0}, {6, 6, 0}};
    for (auto [comparison, code, subCode] : rows) {
        EXPECT_EQ(VantrelFilterSetComparison(filter, comparison), 0);
        EXPECT_EQ(image(), imageWith({{5, {code, subCode}}, {8, {1}}}));
    }
    expectNoStatusStored();
}

TEST_F(FilterTest, ComparisonKeepsTheOtherFlags) {
    filter->slot.comparisonFlags = 0xFF;
    EXPECT_EQ(VantrelFilterSetComparison(filter, VANTREL_COMPARISON_EQUAL), 0);
    EXPECT_EQ(filter->slot.comparisonFlags, 0xF9);
}

TEST_F(FilterTest, RefusedComparisonClearsTheSubCodeAlone) {
    for (VantrelComparison comparison : {10, -1}) {
        VantrelFilterSetComparison(filter, VANTREL_COMPARISON_NOT_LIKE);
        EXPECT_EQ(VantrelFilterSetComparison(filter, comparison), 2002);
        EXPECT_EQ(image(), imageWith({{5, {7, 0}}, {8, {1}}}));
    }
    Filter fresh;
    EXPECT_EQ(VantrelFilterSetComparison(fresh, 10), 2002);
    EXPECT_EQ(imageOf(fresh), imageWith({}));
    expectNoStatusStored();
}

TEST_F(FilterTest, ConnectorsAreStoredUnchanged) {
    for (uint8_t connector : Bytes{1, 2, 0}) {
        EXPECT_EQ(VantrelFilterSetConnector(filter, connector), 0);
        EXPECT_EQ(image(), imageWith({{7, {connector}}}));
    }
    VantrelFilterSetConnector(filter, VANTREL_CONNECTOR_OR);
    for (VantrelConnector connector : {3, -1, 256}) {
        EXPECT_EQ(VantrelFilterSetConnector(filter, connector), 2002);
        EXPECT_EQ(image(), imageWith({{7, {2}}}));
    }
    expectNoStatusStored();
}

TEST_F(FilterTest, ConstantIsCopied) {
    Bytes original = {1, 2, 3};
    EXPECT_EQ(VantrelFilterSetComparisonConstant(filter, original.data(), 3), 0);
    original = {9, 9, 9};
    EXPECT_EQ(constant(), (Bytes{1, 2, 3}));
    EXPECT_EQ(image(), imageWith({{10, {1}}, {20, {3, 0}}}));
    expectNoStatusStored();
}

TEST_F(FilterTest, ConstantIsResized) {
    const Bytes longest(65535, 0xAB);
    for (uint32_t length : {3u, 65535u, 1u, 0u, 2u}) {
        EXPECT_EQ(VantrelFilterSetComparisonConstant(filter, longest.data(), length), 0);
        EXPECT_EQ(constant(), Bytes(length, 0xAB));
    }
    expectNoStatusStored();
}

TEST_F(FilterTest, ConstantOfNoBytesIsOneFromTheStart) {
    EXPECT_EQ(VantrelFilterSetComparisonConstant(filter, "", 0), 0);
    EXPECT_NE(constantOf(filter->slot), nullptr);
    EXPECT_EQ(image(), imageWith({{10, {1}}}));
}

TEST_F(FilterTest, MissingConstantStandsForZeroBytes) {
    EXPECT_EQ(VantrelFilterSetComparisonConstant(filter, nullptr, 4), 0);
    EXPECT_EQ(constant(), Bytes(4));
    VantrelFilterSetComparisonConstant(filter, "abcd", 4);
    EXPECT_EQ(VantrelFilterSetComparisonConstant(filter, nullptr, 5), 0);
    EXPECT_EQ(constant(), Bytes(5));
}

TEST_F(FilterTest, TooLongAConstantChangesNothing) {
    VantrelFilterSetComparisonConstant(filter, "ab", 2);
    for (uint32_t length : {65536u, 0xFFFFFFFFu}) {
        EXPECT_EQ(VantrelFilterSetComparisonConstant(filter, "", length), 2002);
        EXPECT_EQ(constant(), bytesOf("ab"));
    }
    FailingAllocation failing;
    EXPECT_EQ(VantrelFilterSetComparisonConstant(filter, "", 65536), 2002);
    expectNoStatusStored();
}

TEST_F(FilterTest, WithoutMemoryThereIsNoConstantAndFlagsStay) {
    VantrelFilterSetComparisonField(filter, 7);
    {
        FailingAllocation failing;
        EXPECT_EQ(VantrelFilterSetComparisonConstant(filter, "ab", 2), 101);
    }
    EXPECT_EQ(constantOf(filter->slot), nullptr);
    EXPECT_EQ(image(), imageWith({{5, {0x40}}, {12, {1}}, {14, {7}}}));
    VantrelFilterSetComparisonConstant(filter, "ab", 2);
    {
        FailingAllocation failing;
        EXPECT_EQ(VantrelFilterSetComparisonConstant(filter, "abc", 3), 101);
    }
    EXPECT_EQ(constantOf(filter->slot), nullptr);
    EXPECT_EQ(image(), imageWith({{10, {1}}, {20, {2}}}));
    expectNoStatusStored();
}

TEST_F(FilterTest, ConstantReplacesTheOtherField) {
    VantrelFilterSetComparisonField(filter, 0x0708);
    filter->slot.comparisonFlags = 0xFF;
    EXPECT_EQ(VantrelFilterSetComparisonConstant(filter, "a", 1), 0);
    EXPECT_EQ(image(), imageWith({{5, {0xBF}}, {10, {1}}, {20, {1}}}));
}

TEST_F(FilterTest, OtherFieldReplacesTheConstant) {
    VantrelFilterSetComparisonConstant(filter, "abc", 3);
    EXPECT_EQ(VantrelFilterSetComparisonField(filter, 65534), 0);
    EXPECT_EQ(constantOf(filter->slot), nullptr);
    EXPECT_EQ(image(), imageWith({{5, {0x40}}, {12, {1}}, {14, {0xFE, 0xFF}}}));
    expectNoStatusStored();
}

TEST_F(FilterTest, OtherFieldStartsBelow65535) {
    VantrelFilterSetComparisonConstant(filter, "abc", 3);
    for (uint32_t offset : {65535u, 65536u, 0xFFFFFFFFu}) {
        EXPECT_EQ(VantrelFilterSetComparisonField(filter, offset), 2002);
        EXPECT_EQ(constant(), bytesOf("abc"));
        EXPECT_EQ(image(), imageWith({{10, {1}}, {20, {3}}}));
    }
    expectNoStatusStored();
}

using NameSetter = VantrelStatus (*)(VantrelFilter *, const char *);
struct NamedCollation {
    NameSetter set;
    uint8_t marker;
    size_t limit;
};
const NamedCollation namedCollations[] = {{VantrelFilterSetACSUserDefined, 172, 8},
                                          {VantrelFilterSetACSName, 174, 16},
                                          {VantrelFilterSetLikeCodePageName, 171, 16}};

TEST_F(FilterTest, NamesArePaddedWithZeroBytes) {
    for (auto [set, marker, limit] : namedCollations) {
        for (const std::string &name : {std::string(limit, 'n'), std::string("ab"), std::string()}) {
            EXPECT_EQ(set(filter, name.c_str()), 0);
            EXPECT_EQ(image(), imageWith({{5, {0x08}}, {22, {marker}}, {23, bytesOf(name)}}));
        }
    }
    expectNoStatusStored();
}

TEST_F(FilterTest, TooLongANameChangesNothing) {
    VantrelFilterSetACSMode(filter, VANTREL_ACS_MODE_DEFAULT);
    for (auto [set, marker, limit] : namedCollations) {
        EXPECT_EQ(set(filter, std::string(limit + 1, 'n').c_str()), 22);
        EXPECT_EQ(image(), imageWith({{5, {0x20}}}));
    }
    expectNoStatusStored();
}

TEST_F(FilterTest, NamesAreReadNoFurtherThanTheyMayBeLong) {
    for (auto [set, marker, limit] : namedCollations) {
        const std::vector<char> unterminated(limit + 1, 'n');
        EXPECT_EQ(set(filter, unterminated.data()), 22);
    }
}

TEST_F(FilterTest, MissingNameIsKeptAsTheStatusAndChangesNothingElse) {
    VantrelFilterSetACSName(filter, "abc");
    const Bytes before = image();
    for (auto [set, marker, limit] : namedCollations) {
        keepStatus(filter.get(), untouchedStatus);
        EXPECT_EQ(set(filter, nullptr), 2007);
        EXPECT_EQ(image(), before);
        const Bytes record = bytesOfRecord(filter.get());
        EXPECT_EQ(Bytes(record.begin() + 65535, record.end()), (Bytes{0xD7, 0x07, 0, 0}));
    }
}

TEST_F(FilterTest, ModesReplaceNames) {
    for (auto [mode, flag] : {std::pair<VantrelACSMode, uint8_t>{VANTREL_ACS_MODE_NONE, 0x00},
                              {VANTREL_ACS_MODE_CASE_INSENSITIVE, 0x80},
                              {VANTREL_ACS_MODE_DEFAULT, 0x20}}) {
        VantrelFilterSetACSName(filter, "abc");
        EXPECT_EQ(VantrelFilterSetACSMode(filter, mode), 0);
        EXPECT_EQ(image(), imageWith({{5, {flag}}}));
    }
    expectNoStatusStored();
}

TEST_F(FilterTest, EveryWayOfComparingTextKeepsTheOtherFlags) {
    for (auto [set, marker, limit] : namedCollations) {
        filter->slot.comparisonFlags = 0xFF;
        set(filter, "abc");
        EXPECT_EQ(filter->slot.comparisonFlags, 0x5F);
    }
    filter->slot.comparisonFlags = 0xFF;
    VantrelFilterSetACSMode(filter, VANTREL_ACS_MODE_NONE);
    EXPECT_EQ(filter->slot.comparisonFlags, 0x57);
}

TEST_F(FilterTest, ModeClearsTheWholeBlock) {
    std::fill_n(&filter->slot.collationMarker, 1, uint8_t{174});
    std::fill_n(filter->slot.collationName, 264, uint8_t{0xEE});
    VantrelFilterSetACSMode(filter, VANTREL_ACS_MODE_NONE);
    EXPECT_EQ(image(), imageWith({}));
}

TEST_F(FilterTest, OtherModesChangeNothing) {
    VantrelFilterSetACSName(filter, "abc");
    const Bytes before = image();
    for (VantrelACSMode mode : {1, 2, 5, -1}) {
        EXPECT_EQ(VantrelFilterSetACSMode(filter, mode), 2002);
        EXPECT_EQ(image(), before);
    }
    expectNoStatusStored();
}

}  // namespace
