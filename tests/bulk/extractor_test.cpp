#include "bulk/handles.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

class ExtractorTest : public testing::Test {
  protected:
    ExtractorTest() { keepStatus(attributes.get(), untouchedStatus); }

    Bytes entries() const {
        auto *first = &attributes->entries[0][0];
        return Bytes(first, first + 4 * loadU16(attributes->entryCount));
    }
    uint32_t extractedLength() const { return loadU32(attributes->extractedLength); }
    void addFields(int count, uint32_t length) {
        for (int added = 0; added < count; ++added)
            ASSERT_EQ(VantrelBulkRetrieveAttributesAddField(attributes, 0, length), 0);
    }

    RetrieveAttributes attributes;
};

using ComputedFieldAdder = VantrelStatus (*)(VantrelBulkRetrieveAttributes *, VantrelDataType, uint32_t,
                                             uint32_t);
struct ComputedField {
    ComputedFieldAdder add;
    uint8_t marker;
    const char *name;
};
const ComputedField computedFields[] = {{VantrelBulkRetrieveAttributesAddMinimumAggregate, 0xF9, "MI"},
                                        {VantrelBulkRetrieveAttributesAddMaximumAggregate, 0xF9, "MA"},
                                        {VantrelBulkRetrieveAttributesAddAbsoluteValueField, 0xFA, "AV"},
                                        {VantrelBulkRetrieveAttributesAddCeilingField, 0xFA, "CE"},
                                        {VantrelBulkRetrieveAttributesAddFloorField, 0xFA, "FL"}};

using RoundedFieldAdder = VantrelStatus (*)(VantrelBulkRetrieveAttributes *, VantrelDataType, uint32_t,
                                            uint32_t, int32_t);
struct RoundedField {
    RoundedFieldAdder add;
    const char *name;
};
const RoundedField roundedFields[] = {{VantrelBulkRetrieveAttributesAddRoundField, "RO"},
                                      {VantrelBulkRetrieveAttributesAddTruncateField, "TR"}};

// Every adder of fields, with a field and a data type, so that their common checks are tested together.
VantrelStatus addPlainly(VantrelBulkRetrieveAttributes *attributes, VantrelDataType, uint32_t offset,
                         uint32_t length) {
    return VantrelBulkRetrieveAttributesAddField(attributes, offset, length);
}
VantrelStatus addRounded(VantrelBulkRetrieveAttributes *attributes, VantrelDataType type, uint32_t offset,
                         uint32_t length) {
    return VantrelBulkRetrieveAttributesAddRoundField(attributes, type, offset, length, 0);
}
VantrelStatus addTruncated(VantrelBulkRetrieveAttributes *attributes, VantrelDataType type, uint32_t offset,
                           uint32_t length) {
    return VantrelBulkRetrieveAttributesAddTruncateField(attributes, type, offset, length, 0);
}

std::vector<ComputedFieldAdder> typedAdders() {
    std::vector<ComputedFieldAdder> adders = {addRounded, addTruncated};
    for (const ComputedField &field : computedFields)
        adders.push_back(field.add);
    return adders;
}

std::vector<ComputedFieldAdder> allAdders() {
    std::vector<ComputedFieldAdder> adders = typedAdders();
    adders.push_back(addPlainly);
    return adders;
}

TEST_F(ExtractorTest, EveryAdderRefusesMissingAttributes) {
    for (ComputedFieldAdder add : allAdders())
        EXPECT_EQ(add(nullptr, 99, 65535, 0), 2007);
    EXPECT_EQ(VantrelBulkRetrieveAttributesAddSystemField(nullptr, 2), 2007);
}

TEST_F(ExtractorTest, FieldTakesOneEntry) {
    EXPECT_EQ(VantrelBulkRetrieveAttributesAddField(attributes, 0x0304, 0x0102), 0);
    EXPECT_EQ(entries(), (Bytes{2, 1, 4, 3}));
    EXPECT_EQ(extractedLength(), 0x0102u);
    EXPECT_EQ(lastStatus(attributes.get()), untouchedStatus);
}

TEST_F(ExtractorTest, EntriesFollowTheFilters) {
    VantrelBulkRetrieveAttributesAddField(attributes, 0x0304, 0x0102);
    auto *bytes = reinterpret_cast<const uint8_t *>(attributes.get());
    size_t behindFilters = 14 + 128 * (sizeof(void *) == 4 ? 287 : 287 + sizeof(void *));
    EXPECT_EQ(Bytes(bytes + behindFilters, bytes + behindFilters + 4), (Bytes{2, 1, 4, 3}));
    EXPECT_EQ(Bytes(bytes + 12, bytes + 14), (Bytes{1, 0}));
    const Bytes record = bytesOfRecord(attributes.get());
    EXPECT_EQ(Bytes(record.end() - 4, record.end()), (Bytes{2, 1, 0, 0}));
}

TEST_F(ExtractorTest, SystemFieldsTakeOneEntryAndEightBytes) {
    EXPECT_EQ(VantrelBulkRetrieveAttributesAddSystemField(attributes, VANTREL_SYSTEM_FIELD_CREATE_TIME), 0);
    EXPECT_EQ(VantrelBulkRetrieveAttributesAddSystemField(attributes, VANTREL_SYSTEM_FIELD_UPDATE_TIME), 0);
    EXPECT_EQ(entries(), (Bytes{0x08, 0xFF, 0xFE, 0xFF, 0x08, 0xFF, 0xFB, 0xFF}));
    EXPECT_EQ(extractedLength(), 16u);
}

TEST_F(ExtractorTest, UnknownSystemFieldsAddNothing) {
    for (VantrelSystemField field : {2, -1})
        EXPECT_EQ(VantrelBulkRetrieveAttributesAddSystemField(attributes, field), 2002);
    EXPECT_EQ(entries(), Bytes{});
    EXPECT_EQ(extractedLength(), 0u);
    EXPECT_EQ(lastStatus(attributes.get()), untouchedStatus);
}

TEST_F(ExtractorTest, AggregatesAndFunctionsTakeThreeEntries) {
    for (const ComputedField &field : computedFields) {
        RetrieveAttributes fresh;
        EXPECT_EQ(field.add(fresh, VANTREL_DATA_TYPE_NUMERIC_STB, 0x0304, 0x0102), 0);
        auto *first = &fresh->entries[0][0];
        EXPECT_EQ(Bytes(first, first + 12),
                  (Bytes{0x00, 0xFF, field.marker, 0xFF, 31, 0} + bytesOf(field.name) + Bytes{2, 1, 4, 3}));
        EXPECT_EQ(loadU16(fresh->entryCount), 3);
        EXPECT_EQ(loadU32(fresh->extractedLength), 0x0102u);
    }
}

TEST_F(ExtractorTest, RoundingTakesFourEntriesWithThePrecisionLast) {
    for (const RoundedField &field : roundedFields) {
        for (auto [precision, bytes] :
             {std::pair<int32_t, Bytes>{-2, {0xFE, 0xFF}}, {-32768, {0x00, 0x80}}, {32767, {0xFF, 0x7F}}}) {
            RetrieveAttributes fresh;
            EXPECT_EQ(field.add(fresh, VANTREL_DATA_TYPE_FLOAT, 0x0304, 0x0102, precision), 0);
            auto *first = &fresh->entries[0][0];
            EXPECT_EQ(Bytes(first, first + 16), (Bytes{0x00, 0xFF, 0xFA, 0xFF, 2, 0} + bytesOf(field.name) +
                                                 Bytes{2, 1, 4, 3, 0, 0} + bytes));
            EXPECT_EQ(loadU16(fresh->entryCount), 4);
            EXPECT_EQ(loadU32(fresh->extractedLength), 0x0102u);
        }
    }
}

TEST_F(ExtractorTest, PrecisionOutOfRangeAddsNothing) {
    for (const RoundedField &field : roundedFields) {
        for (int32_t precision : {-32769, 32768})
            EXPECT_EQ(field.add(attributes, VANTREL_DATA_TYPE_FLOAT, 0, 8, precision), 2002);
    }
    EXPECT_EQ(entries(), Bytes{});
    EXPECT_EQ(extractedLength(), 0u);
}

TEST_F(ExtractorTest, FieldsEndBelow65536) {
    for (ComputedFieldAdder add : allAdders()) {
        RetrieveAttributes fresh;
        EXPECT_EQ(add(fresh, 0, 65534, 1), 0);
        EXPECT_EQ(add(fresh, 0, 1, 65534), 0);
        const Bytes before = bytesOfRecord(fresh.get());
        for (auto [offset, length] : {std::pair{65534u, 2u},
                                      {65535u, 0u},
                                      {1u, 65535u},
                                      {0u, 65536u},
                                      {65536u, 0u},
                                      {0xFFFFFFFFu, 1u},
                                      {1u, 0xFFFFFFFFu}})
            EXPECT_EQ(add(fresh, 0, offset, length), 2002);
        EXPECT_EQ(bytesOfRecord(fresh.get()), before);
    }
}

TEST_F(ExtractorTest, ExtractedRecordStaysBelow65536Bytes) {
    for (ComputedFieldAdder add : allAdders()) {
        RetrieveAttributes fresh;
        EXPECT_EQ(add(fresh, 0, 0, 40000), 0);
        const Bytes before = bytesOfRecord(fresh.get());
        EXPECT_EQ(add(fresh, 0, 0, 30000), 2002);
        EXPECT_EQ(add(fresh, 0, 0, 25536), 2002);
        EXPECT_EQ(bytesOfRecord(fresh.get()), before);
        EXPECT_EQ(add(fresh, 0, 0, 25535), 0);
        EXPECT_EQ(loadU32(fresh->extractedLength), 65535u);
        EXPECT_EQ(add(fresh, 0, 0, 1), 2002);
        EXPECT_EQ(add(fresh, 0, 0, 0), 0);
    }
}

TEST_F(ExtractorTest, SystemFieldNeedsEightBytesOfTheExtractedRecord) {
    addFields(1, 65527);
    EXPECT_EQ(VantrelBulkRetrieveAttributesAddSystemField(attributes, VANTREL_SYSTEM_FIELD_CREATE_TIME), 0);
    EXPECT_EQ(extractedLength(), 65535u);
    RetrieveAttributes other;
    VantrelBulkRetrieveAttributesAddField(other, 0, 65528);
    EXPECT_EQ(VantrelBulkRetrieveAttributesAddSystemField(other, VANTREL_SYSTEM_FIELD_CREATE_TIME), 2002);
    EXPECT_EQ(loadU16(other->entryCount), 1);
}

TEST_F(ExtractorTest, RefusedDataTypesAddNothing) {
    for (ComputedFieldAdder add : typedAdders()) {
        for (VantrelDataType type : {22, 23, 31, -1})
            EXPECT_EQ(add(attributes, type, 0, 1), 2002);
    }
    EXPECT_EQ(entries(), Bytes{});
    EXPECT_EQ(extractedLength(), 0u);
}

TEST_F(ExtractorTest, FullExtractorRefusesEverythingBeforeLookingAtIt) {
    addFields(8201, 1);
    EXPECT_EQ(VantrelBulkRetrieveAttributesAddField(attributes, 0, 1), 0);
    EXPECT_EQ(entries().size(), 4u * 8202);
    EXPECT_EQ(extractedLength(), 8202u);
    const Bytes before = bytesOfRecord(attributes.get());
    for (ComputedFieldAdder add : allAdders()) {
        EXPECT_EQ(add(attributes, 0, 0, 1), 101);
        EXPECT_EQ(add(attributes, 99, 65535, 65536), 101);
    }
    EXPECT_EQ(VantrelBulkRetrieveAttributesAddSystemField(attributes, 0), 101);
    EXPECT_EQ(VantrelBulkRetrieveAttributesAddSystemField(attributes, 2), 101);
    for (const RoundedField &field : roundedFields)
        EXPECT_EQ(field.add(attributes, 0, 0, 1, 40000), 101);
    EXPECT_EQ(bytesOfRecord(attributes.get()), before);
}

TEST_F(ExtractorTest, LastEntriesAreForWhoeverNeedsNoMore) {
    for (const RoundedField &field : roundedFields) {
        RetrieveAttributes four, three;
        for (int count = 0; count < 8198; ++count)
            VantrelBulkRetrieveAttributesAddField(four, 0, 1);
        for (int count = 0; count < 8199; ++count)
            VantrelBulkRetrieveAttributesAddField(three, 0, 1);
        EXPECT_EQ(field.add(three, 0, 0, 1, 0), 101);
        EXPECT_EQ(field.add(four, 0, 0, 1, 0), 0);
        EXPECT_EQ(loadU16(four->entryCount), 8202);
    }
    for (const ComputedField &field : computedFields) {
        RetrieveAttributes three, two;
        for (int count = 0; count < 8199; ++count)
            VantrelBulkRetrieveAttributesAddField(three, 0, 1);
        for (int count = 0; count < 8200; ++count)
            VantrelBulkRetrieveAttributesAddField(two, 0, 1);
        EXPECT_EQ(field.add(two, 0, 0, 1), 101);
        EXPECT_EQ(VantrelBulkRetrieveAttributesAddField(two, 0, 1), 0);
        EXPECT_EQ(field.add(three, 0, 0, 1), 0);
        EXPECT_EQ(loadU16(three->entryCount), 8202);
    }
    addFields(8201, 1);
    EXPECT_EQ(VantrelBulkRetrieveAttributesAddSystemField(attributes, 0), 0);
}

TEST_F(ExtractorTest, EntriesKeepTheOrderOfAdding) {
    VantrelBulkRetrieveAttributesAddField(attributes, 1, 2);
    VantrelBulkRetrieveAttributesAddMinimumAggregate(attributes, VANTREL_DATA_TYPE_INTEGER, 3, 4);
    VantrelBulkRetrieveAttributesAddRoundField(attributes, VANTREL_DATA_TYPE_FLOAT, 5, 8, 1);
    VantrelBulkRetrieveAttributesAddSystemField(attributes, VANTREL_SYSTEM_FIELD_UPDATE_TIME);
    EXPECT_EQ(entries(),
              (Bytes{2,    0,    1, 0, 0x00, 0xFF, 0xF9, 0xFF, 1, 0, 'M', 'I', 4, 0, 3, 0,    0x00, 0xFF,
                     0xFA, 0xFF, 2, 0, 'R',  'O',  8,    0,    5, 0, 0,   0,   1, 0, 8, 0xFF, 0xFB, 0xFF}));
    EXPECT_EQ(extractedLength(), 22u);
}

}  // namespace
