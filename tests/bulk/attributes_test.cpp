#include "bulk/handles.h"
#include "support/failing_allocation.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

struct Retrieving {
    using Record = VantrelBulkRetrieveAttributes;
    using Owned = RetrieveAttributes;
    static constexpr size_t sizeBesidePointers = 69562;
    static constexpr auto allocate = VantrelBulkRetrieveAttributesAllocate;
    static constexpr auto release = VantrelBulkRetrieveAttributesFree;
    static constexpr auto addFilter = VantrelBulkRetrieveAttributesAddFilter;
    static constexpr auto setMaximumRecordCount = VantrelBulkRetrieveAttributesSetMaximumRecordCount;
    static constexpr auto setMaximumRejectCount = VantrelBulkRetrieveAttributesSetMaximumRejectCount;
    static constexpr auto setSkipCurrentRecord = VantrelBulkRetrieveAttributesSetSkipCurrentRecord;
};

struct Deleting {
    using Record = VantrelBulkDeleteAttributes;
    using Owned = DeleteAttributes;
    static constexpr size_t sizeBesidePointers = 36750;
    static constexpr auto allocate = VantrelBulkDeleteAttributesAllocate;
    static constexpr auto release = VantrelBulkDeleteAttributesFree;
    static constexpr auto addFilter = VantrelBulkDeleteAttributesAddFilter;
    static constexpr auto setMaximumRecordCount = VantrelBulkDeleteAttributesSetMaximumRecordCount;
    static constexpr auto setMaximumRejectCount = VantrelBulkDeleteAttributesSetMaximumRejectCount;
    static constexpr auto setSkipCurrentRecord = VantrelBulkDeleteAttributesSetSkipCurrentRecord;
};

template <class Kind>
class BulkAttributesTest : public testing::Test {
  protected:
    BulkAttributesTest() { keepStatus(attributes.get(), untouchedStatus); }

    // The 14 bytes in front of the filters, behind the last status.
    Bytes head() const {
        auto *bytes = reinterpret_cast<const uint8_t *>(attributes.get());
        return Bytes(bytes + 4, bytes + 14);
    }
    void expectNoStatusStored() const { EXPECT_EQ(lastStatus(attributes.get()), untouchedStatus); }

    typename Kind::Owned attributes;
};

using Kinds = testing::Types<Retrieving, Deleting>;
TYPED_TEST_SUITE(BulkAttributesTest, Kinds);

TYPED_TEST(BulkAttributesTest, ANewRecordTakesEverythingFromTheCurrentRecordOn) {
    typename TypeParam::Owned fresh;
    size_t pointers = sizeof(void *) == 4 ? 0 : 128 * sizeof(void *);
    Bytes expected(TypeParam::sizeBesidePointers + pointers);
    expected[4] = 'U';
    expected[5] = 'C';
    expected[10] = 0xCC;
    expected[11] = 0x64;
    EXPECT_EQ(bytesOfRecord(fresh.get()), expected);
}

TYPED_TEST(BulkAttributesTest, AllocationRefusesAMissingOutPointer) {
    EXPECT_EQ(TypeParam::allocate(nullptr), 2007);
}

TYPED_TEST(BulkAttributesTest, MemoryRunsOutAtAllocation) {
    typename TypeParam::Record *record = this->attributes;
    FailingAllocation failing;
    EXPECT_EQ(TypeParam::allocate(&record), 101);
    EXPECT_EQ(record, nullptr);
}

TYPED_TEST(BulkAttributesTest, MissingAttributesComeFirst) {
    EXPECT_EQ(TypeParam::release(nullptr), 0);
    EXPECT_EQ(TypeParam::addFilter(nullptr, nullptr), 2007);
    EXPECT_EQ(TypeParam::setMaximumRecordCount(nullptr, 0), 2007);
    EXPECT_EQ(TypeParam::setMaximumRejectCount(nullptr, 65536), 2007);
    EXPECT_EQ(TypeParam::setSkipCurrentRecord(nullptr, 1), 2007);
}

TYPED_TEST(BulkAttributesTest, RecordCountIs1To25804) {
    EXPECT_EQ(TypeParam::setMaximumRecordCount(this->attributes, 1), 0);
    EXPECT_EQ(this->head(), (Bytes{'U', 'C', 0, 0, 0, 0, 1, 0, 0, 0}));
    EXPECT_EQ(TypeParam::setMaximumRecordCount(this->attributes, 25804), 0);
    EXPECT_EQ(this->head(), (Bytes{'U', 'C', 0, 0, 0, 0, 0xCC, 0x64, 0, 0}));
    for (uint32_t count : {0u, 25805u, 65536u + 7u, 0xFFFFFFFFu}) {
        EXPECT_EQ(TypeParam::setMaximumRecordCount(this->attributes, count), 2002);
        EXPECT_EQ(this->head(), (Bytes{'U', 'C', 0, 0, 0, 0, 0xCC, 0x64, 0, 0}));
    }
    this->expectNoStatusStored();
}

TYPED_TEST(BulkAttributesTest, RejectCountIs0To65535) {
    EXPECT_EQ(TypeParam::setMaximumRejectCount(this->attributes, 0x0102), 0);
    EXPECT_EQ(this->head(), (Bytes{'U', 'C', 2, 1, 0, 0, 0xCC, 0x64, 0, 0}));
    EXPECT_EQ(TypeParam::setMaximumRejectCount(this->attributes, 0), 0);
    EXPECT_EQ(TypeParam::setMaximumRejectCount(this->attributes, 65535), 0);
    for (uint32_t count : {65536u, 0xFFFFFFFFu}) {
        EXPECT_EQ(TypeParam::setMaximumRejectCount(this->attributes, count), 2002);
        EXPECT_EQ(this->head(), (Bytes{'U', 'C', 0xFF, 0xFF, 0, 0, 0xCC, 0x64, 0, 0}));
    }
    this->expectNoStatusStored();
}

TYPED_TEST(BulkAttributesTest, SkippingTheCurrentRecordIsOnForAnythingButZero) {
    for (int32_t skip : {1, 2, -1, 256}) {
        EXPECT_EQ(TypeParam::setSkipCurrentRecord(this->attributes, skip), 0);
        EXPECT_EQ(this->head(), (Bytes{'E', 'G', 0, 0, 0, 0, 0xCC, 0x64, 0, 0}));
        EXPECT_EQ(TypeParam::setSkipCurrentRecord(this->attributes, 0), 0);
        EXPECT_EQ(this->head(), (Bytes{'U', 'C', 0, 0, 0, 0, 0xCC, 0x64, 0, 0}));
    }
    this->expectNoStatusStored();
}

TYPED_TEST(BulkAttributesTest, FiltersAreCopiedIntoTheSlotsInTheirOrder) {
    Filter first, second;
    VantrelFilterSetField(first, 1, 2, VANTREL_DATA_TYPE_ZSTRING);
    VantrelFilterSetACSName(first, "abc");
    VantrelFilterSetComparisonField(second, 5);
    EXPECT_EQ(TypeParam::addFilter(this->attributes, first), 0);
    EXPECT_EQ(TypeParam::addFilter(this->attributes, second), 0);
    EXPECT_EQ(this->head(), (Bytes{'U', 'C', 0, 0, 2, 0, 0xCC, 0x64, 0, 0}));
    auto *slots = reinterpret_cast<const uint8_t *>(this->attributes.get()) + 14;
    EXPECT_EQ(imageOf(slots), imageWith({{0, {11, 2, 0, 1, 0, 0x08}}, {22, {174, 'a', 'b', 'c'}}}));
    EXPECT_EQ(imageOf(slots + sizeof(FilterSlot)), imageWith({{5, {0x40}}, {12, {1}}, {14, {5}}}));
    EXPECT_EQ(constantOf(this->attributes->filters[0]), nullptr);
    this->expectNoStatusStored();
}

TYPED_TEST(BulkAttributesTest, ConstantsAreCopiedAndOutliveTheFilter) {
    {
        Filter filter;
        VantrelFilterSetComparisonConstant(filter, "abc", 3);
        EXPECT_EQ(TypeParam::addFilter(this->attributes, filter), 0);
        EXPECT_NE(constantOf(this->attributes->filters[0]), constantOf(filter->slot));
        VantrelFilterSetComparisonConstant(filter, "xyz", 3);
    }
    const uint8_t *constant = constantOf(this->attributes->filters[0]);
    EXPECT_EQ(Bytes(constant, constant + 3), bytesOf("abc"));
}

TYPED_TEST(BulkAttributesTest, ConstantOfNoBytesStaysOne) {
    Filter filter;
    VantrelFilterSetComparisonConstant(filter, "", 0);
    EXPECT_EQ(TypeParam::addFilter(this->attributes, filter), 0);
    EXPECT_NE(constantOf(this->attributes->filters[0]), nullptr);
}

TYPED_TEST(BulkAttributesTest, MissingFilterIsKeptAsTheStatus) {
    EXPECT_EQ(TypeParam::addFilter(this->attributes, nullptr), 2007);
    EXPECT_EQ(lastStatus(this->attributes.get()), 2007);
    EXPECT_EQ(this->head(), (Bytes{'U', 'C', 0, 0, 0, 0, 0xCC, 0x64, 0, 0}));
}

TYPED_TEST(BulkAttributesTest, The129thFilterIsRefused) {
    Filter filter;
    VantrelFilterSetComparisonConstant(filter, "abc", 3);
    for (int count = 0; count < 128; ++count)
        ASSERT_EQ(TypeParam::addFilter(this->attributes, filter), 0);
    const Bytes before = bytesOfRecord(this->attributes.get());
    EXPECT_EQ(TypeParam::addFilter(this->attributes, filter), 2013);
    FailingAllocation failing;
    EXPECT_EQ(TypeParam::addFilter(this->attributes, filter), 2013);
    EXPECT_EQ(bytesOfRecord(this->attributes.get()), before);
    this->expectNoStatusStored();
    EXPECT_EQ(TypeParam::addFilter(this->attributes, nullptr), 2007);
}

TYPED_TEST(BulkAttributesTest, WithoutMemoryForTheConstantNothingIsAdded) {
    Filter filter;
    VantrelFilterSetComparisonConstant(filter, "abc", 3);
    const Bytes before = bytesOfRecord(this->attributes.get());
    {
        FailingAllocation failing;
        EXPECT_EQ(TypeParam::addFilter(this->attributes, filter), 101);
    }
    EXPECT_EQ(bytesOfRecord(this->attributes.get()), before);
}

TYPED_TEST(BulkAttributesTest, FilterWithoutConstantNeedsNoMemory) {
    Filter filter;
    FailingAllocation failing;
    EXPECT_EQ(TypeParam::addFilter(this->attributes, filter), 0);
}

}  // namespace
