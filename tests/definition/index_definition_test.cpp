#include <climits>

#include "definition/definition_test.h"
#include "definition/index_attributes.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

// Writes an index of two segments into a buffer that shows every byte written.
class IndexDefinitionTest : public testing::Test {
  protected:
    IndexDefinitionTest() {
        addIntegerSegment(attributes, 0);
        addIntegerSegment(attributes, 4);
        keepStatus(attributes, untouchedStatus);
    }

    VantrelStatus write(uint32_t capacity) {
        return fileIndexCreateHelper(attributes, output.data(), capacity, &dataLength, &keyNumber);
    }

    // The segments stand in front and the rest of the buffer is untouched.
    void expectOutput(const Bytes &written) const {
        Bytes expected = untouched;
        std::copy(written.begin(), written.end(), expected.begin());
        EXPECT_EQ(output, expected);
    }

    IndexAttributesPointer owner = newIndexAttributes();
    VantrelIndexAttributes *attributes = owner.get();
    const Bytes untouched = Bytes(600, 0x55);
    Bytes output = untouched;
    uint32_t dataLength = 32;
    int32_t keyNumber = -1;
};

TEST_F(IndexDefinitionTest, SegmentsAreStampedWrittenAndCountedTwice) {
    EXPECT_EQ(write(65503), 0);
    expectOutput(joined({integerSegment(1, 0x0112), integerSegment(5, 0x0102)}));
    EXPECT_EQ(dataLength, 128u);
    EXPECT_EQ(keyNumber, -1);
    EXPECT_EQ(lastStatus(attributes), untouchedStatus);
}

TEST_F(IndexDefinitionTest, TheIndexPathCountsThemOnce) {
    EXPECT_EQ(writeIndexDefinition(attributes, output.data(), 65535, &dataLength, &keyNumber), 0);
    expectOutput(joined({integerSegment(1, 0x0112), integerSegment(5, 0x0102)}));
    EXPECT_EQ(dataLength, 80u);
}

TEST_F(IndexDefinitionTest, SettingsStayInTheStoredSegments) {
    ASSERT_EQ(VantrelIndexAttributesSetDuplicateMode(attributes, VANTREL_DUPLICATE_MODE_ALLOWED_REPEATING),
              0);
    ASSERT_EQ(VantrelIndexAttributesSetModifiable(attributes, 0), 0);
    ASSERT_EQ(VantrelIndexAttributesSetACSNumber(attributes, 9), 0);
    EXPECT_EQ(write(65503), 0);
    Bytes stamped = joined({integerSegment(1, 0x05B1, 9), integerSegment(5, 0x05A1, 9)});
    expectOutput(stamped);
    EXPECT_EQ(joined({bytesIn(attributes->segments[0]), bytesIn(attributes->segments[1])}), stamped);
    EXPECT_EQ(bytesIn(attributes->segments[2]), Bytes(24));
}

TEST_F(IndexDefinitionTest, LaterSettingsReplaceStampedOnes) {
    ASSERT_EQ(VantrelIndexAttributesSetDuplicateMode(attributes, VANTREL_DUPLICATE_MODE_ALLOWED_REPEATING),
              0);
    ASSERT_EQ(VantrelIndexAttributesSetACSNumber(attributes, 9), 0);
    EXPECT_EQ(write(65503), 0);
    ASSERT_EQ(VantrelIndexAttributesSetDuplicateMode(attributes, VANTREL_DUPLICATE_MODE_NOT_ALLOWED), 0);
    ASSERT_EQ(VantrelIndexAttributesSetACSMode(attributes, VANTREL_ACS_MODE_DEFAULT), 0);
    EXPECT_EQ(write(65503), 0);
    expectOutput(joined({integerSegment(1, 0x0132), integerSegment(5, 0x0122)}));
}

TEST_F(IndexDefinitionTest, TheACSBlockFollowsTheLastSegment) {
    ASSERT_EQ(VantrelIndexAttributesSetACSName(attributes, "UPPER"), 0);
    EXPECT_EQ(write(65503), 0);
    expectOutput(joined({integerSegment(1, 0x0D32), integerSegment(5, 0x0D22), upperBlock()}));
    EXPECT_EQ(dataLength, 393u);
}

TEST_F(IndexDefinitionTest, WithoutSegmentsTheBlockStandsInFront) {
    storeI32(attributes->segmentCount, 0);
    ASSERT_EQ(VantrelIndexAttributesSetACSName(attributes, "UPPER"), 0);
    EXPECT_EQ(write(65503), 0);
    expectOutput(upperBlock());
    EXPECT_EQ(dataLength, 297u);
}

TEST_F(IndexDefinitionTest, AnIndexNumberReplacesTheKeyNumber) {
    const std::pair<VantrelIndex, int32_t> rows[] = {{0, 0x80},   {3, 0x83},   {118, 0xF6},
                                                     {124, 0xFC}, {125, 0xFD}, {-1, -1}};
    for (auto [index, expected] : rows) {
        ASSERT_EQ(VantrelIndexAttributesSetIndex(attributes, index), 0);
        keyNumber = 99;
        dataLength = 32;
        EXPECT_EQ(write(65503), 0);
        EXPECT_EQ(keyNumber, expected);
    }
}

TEST_F(IndexDefinitionTest, TheFirstCountMustFit) {
    EXPECT_EQ(write(79), 22);
    expectOutput({});
    EXPECT_EQ(bytesIn(attributes->segments[0]), integerSegment(1, 0x0110));
}

TEST_F(IndexDefinitionTest, EachSegmentMustFit) {
    EXPECT_EQ(write(103), 22);
    expectOutput({});
    dataLength = 32;
    EXPECT_EQ(write(127), 22);
    expectOutput(integerSegment(1, 0x0112));
    dataLength = 32;
    EXPECT_EQ(write(128), 0);
    expectOutput(joined({integerSegment(1, 0x0112), integerSegment(5, 0x0102)}));
}

TEST_F(IndexDefinitionTest, TheBlockMustFit) {
    ASSERT_EQ(VantrelIndexAttributesSetACSName(attributes, "UPPER"), 0);
    ASSERT_EQ(VantrelIndexAttributesSetIndex(attributes, 3), 0);
    EXPECT_EQ(write(392), 22);
    expectOutput(joined({integerSegment(1, 0x0D32), integerSegment(5, 0x0D22)}));
    EXPECT_EQ(keyNumber, -1);
    dataLength = 32;
    EXPECT_EQ(write(393), 0);
    EXPECT_EQ(keyNumber, 0x83);
}

// Settings that the setters would refuse, put into the record directly.
TEST_F(IndexDefinitionTest, ARefusedSettingEndsTheWriting) {
    uint8_t *fields[] = {attributes->duplicateMode, attributes->acsMode, attributes->acsNumber};
    for (uint8_t *field : fields) {
        storeU32(field, 256);
        EXPECT_EQ(write(65503), 2002);
        expectOutput({});
        EXPECT_EQ(keyNumber, -1);
        storeU32(field, 0);
    }
}

TEST_F(IndexDefinitionTest, SettingsAreStampedBeforeTheLengthIsChecked) {
    storeU32(attributes->duplicateMode, 3);
    EXPECT_EQ(write(103), 2002);
}

// The refused setting shows that no segment is looked at.
TEST_F(IndexDefinitionTest, MoreSegmentsThanTheTableHasAreRefusedAtOnce) {
    storeU32(attributes->duplicateMode, 3);
    for (int32_t segmentCount : {421, 1364}) {
        storeI32(attributes->segmentCount, segmentCount);
        dataLength = 0;
        EXPECT_EQ(writeIndexDefinition(attributes, output.data(), 65535, &dataLength, &keyNumber), 22);
        EXPECT_EQ(dataLength, 0u);
        EXPECT_EQ(write(65503), 22);
    }
    expectOutput({});
    EXPECT_EQ(keyNumber, -1);
    storeI32(attributes->segmentCount, 420);
    dataLength = 0;
    EXPECT_EQ(writeIndexDefinition(attributes, output.data(), 65535, &dataLength, &keyNumber), 2002);
}

TEST_F(IndexDefinitionTest, ANegativeCountWritesNoSegment) {
    storeI32(attributes->segmentCount, -1);
    dataLength = 0;
    EXPECT_EQ(writeIndexDefinition(attributes, output.data(), 65535, &dataLength, &keyNumber), 0);
    expectOutput({});
    EXPECT_EQ(dataLength, 0u);
}

}  // namespace
