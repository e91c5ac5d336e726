#include "definition/index_attributes.h"

#include <climits>
#include <cstring>
#include <string>

#include "definition/definition_test.h"
#include "support/failing_allocation.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

class IndexAttributesTest : public testing::Test {
  protected:
    IndexAttributesTest() { keepStatus(attributes, untouchedStatus); }

    uint16_t flagsOfSegment(int slot) const { return loadU16(attributes->segments[slot].flags); }
    Bytes record() const { return bytesIn(*attributes); }

    void expectACS(const Bytes &block, int32_t mode, uint32_t number) const {
        EXPECT_EQ(bytesIn(attributes->acsBlock), block);
        EXPECT_EQ(loadI32(attributes->acsMode), mode);
        EXPECT_EQ(loadU32(attributes->acsNumber), number);
        EXPECT_EQ(lastStatus(attributes), untouchedStatus);
    }

    // Expects the status returned, nothing changed and no status stored.
    void expectRefusal(VantrelStatus status, VantrelStatus expected, const Bytes &before) const {
        EXPECT_EQ(status, expected);
        EXPECT_EQ(record(), before);
    }

    // Expects the status both returned and stored, and nothing else changed.
    void expectStoredRefusal(VantrelStatus status, const Bytes &before) {
        EXPECT_EQ(status, 2007);
        EXPECT_EQ(lastStatus(attributes), 2007);
        keepStatus(attributes, untouchedStatus);
        EXPECT_EQ(record(), before);
    }

    IndexAttributesPointer owner = newIndexAttributes();
    VantrelIndexAttributes *attributes = owner.get();
};

TEST(IndexAttributesAllocate, GivesAZeroedRecordThatIsModifiable) {
    IndexAttributesPointer attributes = newIndexAttributes();
    Bytes expected(10373);
    expected[10080 + 4 + 2 + 4 + 4] = 1;
    EXPECT_EQ(bytesIn(*attributes), expected);
}

TEST(IndexAttributesAllocate, RefusesAMissingOutPointer) {
    EXPECT_EQ(VantrelIndexAttributesAllocate(nullptr), 2007);
}

TEST(IndexAttributesAllocate, MemoryRunsOut) {
    VantrelIndexAttributes sentinel, *attributes = &sentinel;
    FailingAllocation failing;
    EXPECT_EQ(VantrelIndexAttributesAllocate(&attributes), 101);
    EXPECT_EQ(attributes, nullptr);
}

TEST(IndexAttributesFree, TakesNull) {
    EXPECT_EQ(VantrelIndexAttributesFree(nullptr), 0);
}

TEST_F(IndexAttributesTest, FunctionsRefuseMissingAttributesFirst) {
    EXPECT_EQ(VantrelIndexAttributesAddKeySegment(nullptr, nullptr), 2007);
    EXPECT_EQ(VantrelIndexAttributesSetIndex(nullptr, 119), 2007);
    EXPECT_EQ(VantrelIndexAttributesSetDuplicateMode(nullptr, 3), 2007);
    EXPECT_EQ(VantrelIndexAttributesSetModifiable(nullptr, 1), 2007);
    EXPECT_EQ(VantrelIndexAttributesSetACSName(nullptr, "12345678901234567"), 2007);
    EXPECT_EQ(VantrelIndexAttributesSetACSUserDefined(nullptr, "123456789", "", 255), 2007);
    EXPECT_EQ(VantrelIndexAttributesSetACSNumber(nullptr, 256), 2007);
    EXPECT_EQ(VantrelIndexAttributesSetACSMode(nullptr, 1), 2007);
}

TEST_F(IndexAttributesTest, MissingPointersAreStored) {
    ASSERT_EQ(VantrelIndexAttributesSetACSName(attributes, "UPPER"), 0);
    Bytes before = record();
    expectStoredRefusal(VantrelIndexAttributesAddKeySegment(attributes, nullptr), before);
    expectStoredRefusal(VantrelIndexAttributesSetACSName(attributes, nullptr), before);
    expectStoredRefusal(VantrelIndexAttributesSetACSUserDefined(attributes, nullptr, "", 255), before);
    expectStoredRefusal(VantrelIndexAttributesSetACSUserDefined(attributes, "123456789", nullptr, 255),
                        before);
}

TEST_F(IndexAttributesTest, AddingCopiesTheSpecification) {
    KeySegmentPointer segment = newKeySegment();
    for (uint8_t i = 0; i < 28; ++i)
        reinterpret_cast<uint8_t *>(segment.get())[i] = static_cast<uint8_t>(i + 1);
    Bytes given = bytesIn(*segment);
    ASSERT_EQ(VantrelIndexAttributesAddKeySegment(attributes, segment.get()), 0);
    EXPECT_EQ(bytesIn(*segment), given);
    memset(segment.get(), 0, 28);
    EXPECT_EQ(bytesIn(attributes->segments[0]),
              (Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24}));
    EXPECT_EQ(bytesIn(attributes->segments[1]), Bytes(24));
    EXPECT_EQ(loadI32(attributes->segmentCount), 1);
    EXPECT_EQ(lastStatus(attributes), untouchedStatus);
}

TEST_F(IndexAttributesTest, AllSegmentsButTheLastContinue) {
    for (int32_t offset : {0, 4, 8})
        addIntegerSegment(attributes, offset);
    EXPECT_EQ(bytesIn(attributes->segments[0]), integerSegment(1, 0x0110));
    EXPECT_EQ(bytesIn(attributes->segments[1]), integerSegment(5, 0x0110));
    EXPECT_EQ(bytesIn(attributes->segments[2]), integerSegment(9, 0x0100));
    EXPECT_EQ(bytesIn(attributes->segments[3]), Bytes(24));
    EXPECT_EQ(loadI32(attributes->segmentCount), 3);
}

TEST_F(IndexAttributesTest, ASegmentThatContinuesByItselfStaysSo) {
    KeySegmentPointer segment = newKeySegment();
    storeU16(segment->specification.flags, 0x0010);
    ASSERT_EQ(VantrelIndexAttributesAddKeySegment(attributes, segment.get()), 0);
    EXPECT_EQ(flagsOfSegment(0), 0x0010);
}

TEST_F(IndexAttributesTest, TheTableHolds420Segments) {
    KeySegmentPointer segment = newKeySegment();
    for (int i = 0; i < 420; ++i)
        ASSERT_EQ(VantrelIndexAttributesAddKeySegment(attributes, segment.get()), 0);
    EXPECT_EQ(loadI32(attributes->segmentCount), 420);
    EXPECT_EQ(flagsOfSegment(418), 0x0010);
    EXPECT_EQ(flagsOfSegment(419), 0x0000);
    Bytes before = record();
    expectRefusal(VantrelIndexAttributesAddKeySegment(attributes, segment.get()), 101, before);
    expectStoredRefusal(VantrelIndexAttributesAddKeySegment(attributes, nullptr), before);
}

TEST_F(IndexAttributesTest, IndexNumbersAreRemembered) {
    for (VantrelIndex index : {0, 118, 124, 125, -1}) {
        storeU16(attributes->indexGiven, 0);
        EXPECT_EQ(VantrelIndexAttributesSetIndex(attributes, index), 0);
        EXPECT_EQ(loadU16(attributes->indexGiven), 1);
        EXPECT_EQ(loadI32(attributes->index), index);
    }
    EXPECT_EQ(lastStatus(attributes), untouchedStatus);
}

TEST_F(IndexAttributesTest, OtherIndexNumbersAreRefused) {
    ASSERT_EQ(VantrelIndexAttributesSetIndex(attributes, 3), 0);
    Bytes before = record();
    for (VantrelIndex index : {-2, 119, 123, 126, INT_MAX, INT_MIN})
        expectRefusal(VantrelIndexAttributesSetIndex(attributes, index), 2002, before);
}

TEST_F(IndexAttributesTest, DuplicateModes) {
    for (VantrelDuplicateMode mode : {0, 1, 2}) {
        EXPECT_EQ(VantrelIndexAttributesSetDuplicateMode(attributes, mode), 0);
        EXPECT_EQ(loadI32(attributes->duplicateMode), mode);
    }
    EXPECT_EQ(lastStatus(attributes), untouchedStatus);
    Bytes before = record();
    for (VantrelDuplicateMode mode : {3, -1, INT_MAX, INT_MIN})
        expectRefusal(VantrelIndexAttributesSetDuplicateMode(attributes, mode), 2002, before);
}

TEST_F(IndexAttributesTest, ModifiableIsZeroOrOne) {
    EXPECT_EQ(VantrelIndexAttributesSetModifiable(attributes, 0), 0);
    EXPECT_EQ(loadU16(attributes->modifiable), 0);
    for (int32_t set : {1, -1, 0x10000}) {
        storeU16(attributes->modifiable, 0);
        EXPECT_EQ(VantrelIndexAttributesSetModifiable(attributes, set), 0);
        EXPECT_EQ(loadU16(attributes->modifiable), 1);
    }
    EXPECT_EQ(lastStatus(attributes), untouchedStatus);
}

TEST_F(IndexAttributesTest, ACSNamesFillTheirBlock) {
    EXPECT_EQ(VantrelIndexAttributesSetACSName(attributes, "UPPER"), 0);
    expectACS(upperBlock(), 1, 0);
    EXPECT_EQ(VantrelIndexAttributesSetACSName(attributes, "ABCDEFGHIJKLMNOP"), 0);
    expectACS(joined({{0xAE}, bytesOf("ABCDEFGHIJKLMNOP"), Bytes(248)}), 1, 0);
    EXPECT_EQ(VantrelIndexAttributesSetACSName(attributes, ""), 0);
    expectACS(joined({{0xAE}, Bytes(264)}), 1, 0);
}

TEST_F(IndexAttributesTest, LongerACSNamesAreRefused) {
    ASSERT_EQ(VantrelIndexAttributesSetACSNumber(attributes, 5), 0);
    Bytes before = record();
    expectRefusal(VantrelIndexAttributesSetACSName(attributes, "ABCDEFGHIJKLMNOPQ"), 22, before);
    expectRefusal(VantrelIndexAttributesSetACSName(attributes, std::string(5000, 'A').c_str()), 22, before);
}

TEST_F(IndexAttributesTest, NamesAreReadNoFurtherThanTheyMayBeLong) {
    const std::vector<char> name(17, 'n');
    const std::vector<char> userDefinedName(9, 'n');
    const Bytes table(256);
    Bytes before = record();
    expectRefusal(VantrelIndexAttributesSetACSName(attributes, name.data()), 22, before);
    expectRefusal(
        VantrelIndexAttributesSetACSUserDefined(attributes, userDefinedName.data(), table.data(), 256), 22,
        before);
}

class UserDefinedACSTest : public IndexAttributesTest {
  protected:
    UserDefinedACSTest() {
        for (size_t i = 0; i < 256; ++i)
            table[i] = static_cast<uint8_t>(255 - i);
    }

    Bytes table = Bytes(256);
};

TEST_F(UserDefinedACSTest, FillsItsBlock) {
    EXPECT_EQ(VantrelIndexAttributesSetACSUserDefined(attributes, "REVERSED", table.data(), 256), 0);
    expectACS(joined({{0xAC}, bytesOf("REVERSED"), table}), 1, 0);
    EXPECT_EQ(VantrelIndexAttributesSetACSUserDefined(attributes, "MINE", table.data(), 256), 0);
    expectACS(joined({{0xAC}, bytesOf("MINE"), Bytes(4), table}), 1, 0);
}

TEST_F(UserDefinedACSTest, LongerNamesAndOtherLengthsAreRefused) {
    Bytes before = record();
    auto define = [&](const char *name, int32_t length) {
        return VantrelIndexAttributesSetACSUserDefined(attributes, name, table.data(), length);
    };
    expectRefusal(define("REVERSED1", 256), 22, before);
    for (int32_t length : {255, 257, 0, -1, INT_MAX, INT_MIN})
        expectRefusal(define("REVERSED", length), 22, before);
}

TEST_F(UserDefinedACSTest, EachChoiceReplacesTheOthers) {
    auto *all = attributes;
    const std::pair<std::function<VantrelStatus()>, std::function<void()>> choices[] = {
        {[&] { return VantrelIndexAttributesSetACSName(all, "UPPER"); },
         [&] { expectACS(upperBlock(), 1, 0); }},
        {[&] { return VantrelIndexAttributesSetACSUserDefined(all, "R", table.data(), 256); },
         [&] {
             expectACS(joined({{0xAC, 'R'}, Bytes(7), table}), 1, 0);
         }},
        {[&] { return VantrelIndexAttributesSetACSNumber(all, 255); },
         [&] { expectACS(Bytes(265), 2, 255); }},
        {[&] { return VantrelIndexAttributesSetACSMode(all, 3); }, [&] { expectACS(Bytes(265), 3, 0); }},
        {[&] { return VantrelIndexAttributesSetACSMode(all, 4); }, [&] { expectACS(Bytes(265), 4, 0); }},
        {[&] { return VantrelIndexAttributesSetACSMode(all, 0); }, [&] { expectACS(Bytes(265), 0, 0); }}};
    for (const auto &first : choices) {
        for (const auto &second : choices) {
            EXPECT_EQ(first.first(), 0);
            EXPECT_EQ(second.first(), 0);
            second.second();
        }
    }
}

TEST_F(IndexAttributesTest, ACSNumbersAreOneByte) {
    for (int32_t number : {0, 1, 255}) {
        EXPECT_EQ(VantrelIndexAttributesSetACSNumber(attributes, number), 0);
        expectACS(Bytes(265), 2, static_cast<uint32_t>(number));
    }
    Bytes before = record();
    for (int32_t number : {256, -1, INT_MAX, INT_MIN})
        expectRefusal(VantrelIndexAttributesSetACSNumber(attributes, number), 2002, before);
}

TEST_F(IndexAttributesTest, ACSModesThatNeedMoreAreRefused) {
    ASSERT_EQ(VantrelIndexAttributesSetACSName(attributes, "UPPER"), 0);
    Bytes before = record();
    for (VantrelACSMode mode : {1, 2, 5, -1, INT_MAX, INT_MIN})
        expectRefusal(VantrelIndexAttributesSetACSMode(attributes, mode), 2002, before);
}

}  // namespace
