#include "bulk/request_fixture.h"
#include "support/failing_allocation.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

TEST_F(BulkRequestTest, WithoutFiltersAndFieldsItHasTwelveBytes) {
    VantrelBulkRetrieveAttributesSetMaximumRejectCount(attributes, 0x0102);
    EXPECT_EQ(retrieve(), 0);
    const EngineCall &call = engine.onlyCall();
    EXPECT_EQ(call.dataLength, 258042u);
    EXPECT_EQ(Bytes(call.dataBytes.begin(), call.dataBytes.begin() + 12),
              (Bytes{12, 0, 'U', 'C', 2, 1, 0, 0, 0xCC, 0x64, 0, 0}));
    EXPECT_EQ(call.data, result->area);
}

TEST_F(BulkRequestTest, RecordCountIsCappedToWhatTheResultHolds) {
    VantrelBulkRetrieveAttributesAddField(attributes, 3, 1000);
    EXPECT_EQ(retrieve(), 0);
    const EngineCall &call = engine.onlyCall();
    EXPECT_EQ(call.dataLength, 257552u);
    EXPECT_EQ(Bytes(call.dataBytes.begin(), call.dataBytes.begin() + 16),
              (Bytes{16, 0, 'U', 'C', 0, 0, 0, 0, 255, 0, 1, 0, 0xE8, 0x03, 3, 0}));
}

TEST_F(BulkRequestTest, SmallerRecordCountIsSentAsItIs) {
    VantrelBulkRetrieveAttributesAddField(attributes, 3, 1000);
    VantrelBulkRetrieveAttributesSetMaximumRecordCount(attributes, 2);
    EXPECT_EQ(retrieve(), 0);
    EXPECT_EQ(engine.onlyCall().dataLength, 2022u);
    EXPECT_EQ(engine.onlyCall().dataBytes[8], 2);
}

TEST_F(BulkRequestTest, LongestExtractedRecordFitsThreeTimes) {
    VantrelBulkRetrieveAttributesAddField(attributes, 0, 65535);
    EXPECT_EQ(retrieve(), 0);
    EXPECT_EQ(engine.onlyCall().dataLength, 196637u);
    EXPECT_EQ(engine.onlyCall().dataBytes[8], 3);
}

TEST_F(BulkRequestTest, DataLengthIsAtLeastTheRequest) {
    VantrelBulkRetrieveAttributesSetMaximumRecordCount(attributes, 1);
    complete(filter);
    add(filter);
    EXPECT_EQ(retrieve(), 0);
    EXPECT_EQ(engine.onlyCall().dataLength, 21u);
    EXPECT_EQ(engine.onlyCall().dataBytes,
              (Bytes{21, 0, 'U', 'C', 0, 0, 1, 0, 11, 2, 0, 2, 1, 1, 0, 'x', 'y', 1, 0, 0, 0}));
}

TEST_F(BulkRequestTest, DeleteSendsNoFieldsAndRoomForTenBytesARecord) {
    DeleteAttributes deleteAttributes;
    DeleteResult deleteResult;
    complete(filter);
    VantrelBulkDeleteAttributesAddFilter(deleteAttributes, filter);
    EXPECT_EQ(VantrelFileBulkDeleteNext(file, deleteAttributes, deleteResult), 0);
    EXPECT_EQ(engine.onlyCall().dataLength, 258042u);
    EXPECT_EQ(Bytes(engine.onlyCall().dataBytes.begin(), engine.onlyCall().dataBytes.begin() + 21),
              (Bytes{21, 0, 'U', 'C', 0, 0, 1, 0, 11, 2, 0, 2, 1, 1, 0, 'x', 'y', 0xCC, 0x64, 0, 0}));
    VantrelBulkDeleteAttributesSetMaximumRecordCount(deleteAttributes, 1);
    EXPECT_EQ(VantrelFileBulkDeleteNext(file, deleteAttributes, deleteResult), 0);
    EXPECT_EQ(engine.calls()[1].dataLength, 21u);
    EXPECT_EQ(engine.calls()[1].dataBytes[17], 1);
}

TEST_F(BulkRequestTest, FieldsFollowTheTerms) {
    VantrelBulkRetrieveAttributesSetMaximumRecordCount(attributes, 1);
    complete(filter);
    add(filter);
    VantrelBulkRetrieveAttributesAddMaximumAggregate(attributes, VANTREL_DATA_TYPE_INTEGER, 5, 4);
    VantrelBulkRetrieveAttributesAddSystemField(attributes, VANTREL_SYSTEM_FIELD_CREATE_TIME);
    EXPECT_EQ(retrieve(), 0);
    const Bytes &data = engine.onlyCall().dataBytes;
    EXPECT_EQ(data.size(), 37u);
    EXPECT_EQ(Bytes(data.begin() + 17, data.end()),
              (Bytes{1, 0, 4, 0, 0, 0xFF, 0xF9, 0xFF, 1, 0, 'M', 'A', 4, 0, 5, 0, 0x08, 0xFF, 0xFE, 0xFF}));
}

TEST_F(BulkRequestTest, TermsKeepTheOrderOfAdding) {
    complete(filter);
    VantrelFilterSetConnector(filter, VANTREL_CONNECTOR_OR);
    add(filter);
    VantrelFilterSetConnector(filter, VANTREL_CONNECTOR_LAST);
    VantrelFilterSetComparison(filter, VANTREL_COMPARISON_LESS);
    VantrelFilterSetComparisonField(filter, 0x0304);
    add(filter);
    EXPECT_EQ(sentTerms(), (Bytes{11, 2, 0, 2, 1, 1, 2, 'x', 'y', 11, 2, 0, 2, 1, 0x43, 0, 0x04, 0x03}));
    EXPECT_EQ(engine.onlyCall().dataBytes[6], 2);
}

TEST_F(BulkRequestTest, ComparisonNoneIsSentAsItIs) {
    complete(filter);
    VantrelFilterSetComparison(filter, VANTREL_COMPARISON_NONE);
    add(filter);
    EXPECT_EQ(sentTerms(), (Bytes{11, 2, 0, 2, 1, 0, 0, 'x', 'y'}));
}

TEST_F(BulkRequestTest, SystemFieldsTakeConstantsOfEightBytes) {
    VantrelFilterSetSystemField(filter, VANTREL_SYSTEM_FIELD_UPDATE_TIME);
    VantrelFilterSetComparison(filter, VANTREL_COMPARISON_GREATER);
    VantrelFilterSetComparisonConstant(filter, "12345678", 8);
    add(filter);
    EXPECT_EQ(sentTerms(), (Bytes{32, 0x08, 0xFF, 0xFB, 0xFF, 2, 0} + bytesOf("12345678")));
}

TEST_F(BulkRequestTest, SystemFieldsTakeNoOtherConstants) {
    VantrelFilterSetSystemField(filter, VANTREL_SYSTEM_FIELD_UPDATE_TIME);
    VantrelFilterSetComparison(filter, VANTREL_COMPARISON_GREATER);
    const Bytes constant(0xFF08);
    for (uint32_t length : {7u, 9u, 0xFF08u}) {
        VantrelFilterSetComparisonConstant(filter, constant.data(), length);
        RetrieveAttributes other;
        VantrelBulkRetrieveAttributesAddFilter(other, filter);
        EXPECT_EQ(VantrelFileBulkRetrieveNext(file, other, result, VANTREL_LOCK_MODE_NONE), 2002);
    }
    EXPECT_TRUE(engine.calls().empty());
}

TEST_F(BulkRequestTest, LongPlainFieldsAreNoSystemFields) {
    for (auto [offset, length] : {std::pair{2u, 0xFF08u}, {65531u, 4u}}) {
        VantrelFilterSetField(filter, offset, length, VANTREL_DATA_TYPE_CHAR);
        VantrelFilterSetComparison(filter, VANTREL_COMPARISON_EQUAL);
        VantrelFilterSetComparisonConstant(filter, Bytes(length, 7).data(), length);
        RetrieveAttributes other;
        VantrelBulkRetrieveAttributesAddFilter(other, filter);
        EXPECT_EQ(VantrelFileBulkRetrieveNext(file, other, result, VANTREL_LOCK_MODE_NONE), 0);
    }
    EXPECT_EQ(engine.calls().size(), 2u);
}

TEST_F(BulkRequestTest, PatternEndsAtItsFirstZeroByte) {
    complete(filter);
    const uint8_t constant[10] = {'a', '%'};
    for (auto [comparison, subCode] : {std::pair<VantrelComparison, uint8_t>{VANTREL_COMPARISON_LIKE, 1},
                                       {VANTREL_COMPARISON_NOT_LIKE, 2},
                                       {VANTREL_COMPARISON_REGULAR_EXPRESSION, 3}}) {
        engine.reset();
        VantrelFilterSetComparison(filter, comparison);
        VantrelFilterSetComparisonConstant(filter, constant, 10);
        RetrieveAttributes other;
        VantrelBulkRetrieveAttributesAddFilter(other, filter);
        VantrelFileBulkRetrieveNext(file, other, result, VANTREL_LOCK_MODE_NONE);
        const Bytes &data = engine.onlyCall().dataBytes;
        EXPECT_EQ(Bytes(data.begin() + 8, data.begin() + 25),
                  (Bytes{11, 2, 0, 2, 1, 7, 0, subCode, 3, 0, 'a', '%', 0, 0xCC, 0x64, 0, 0}));
    }
}

TEST_F(BulkRequestTest, PatternWithoutZeroByteEndsWithTheConstant) {
    complete(filter);
    VantrelFilterSetComparison(filter, VANTREL_COMPARISON_LIKE);
    VantrelFilterSetComparisonConstant(filter, "abc", 3);
    add(filter);
    EXPECT_EQ(sentTerms(), (Bytes{11, 2, 0, 2, 1, 7, 0, 1, 4, 0, 'a', 'b', 'c', 0}));
}

TEST_F(BulkRequestTest, EmptyPatternIsSentAsItsTerminator) {
    complete(filter);
    VantrelFilterSetComparison(filter, VANTREL_COMPARISON_LIKE);
    VantrelFilterSetComparisonConstant(filter, "", 0);
    add(filter);
    EXPECT_EQ(sentTerms(), (Bytes{11, 2, 0, 2, 1, 7, 0, 1, 1, 0, 0}));
}

TEST_F(BulkRequestTest, PatternsHaveAtMost65534Bytes) {
    const Bytes longest(65535, 'p');
    complete(filter);
    VantrelFilterSetComparison(filter, VANTREL_COMPARISON_LIKE);
    VantrelFilterSetComparisonConstant(filter, longest.data(), 65534);
    RetrieveAttributes other;
    VantrelBulkRetrieveAttributesAddFilter(other, filter);
    EXPECT_EQ(VantrelFileBulkRetrieveNext(file, other, result, VANTREL_LOCK_MODE_NONE), 0);
    EXPECT_EQ(loadU16(engine.onlyCall().dataBytes.data() + 16), 65535);
    engine.reset();
    VantrelFilterSetComparisonConstant(filter, longest.data(), 65535);
    add(filter);
    expectRefusal(22);
}

TEST_F(BulkRequestTest, PatternWithoutConstantIsRefused) {
    complete(filter);
    VantrelFilterSetComparison(filter, VANTREL_COMPARISON_LIKE);
    VantrelFilterSetComparisonField(filter, 1);
    add(filter);
    expectRefusal(2002);
}

TEST_F(BulkRequestTest, PatternWithoutKindIsRefused) {
    complete(filter);
    VantrelFilterSetComparison(filter, VANTREL_COMPARISON_LIKE);
    VantrelFilterSetComparison(filter, 10);
    add(filter);
    expectRefusal(2002);
}

TEST_F(BulkRequestTest, PatternSubCodeAboveThreeIsRefused) {
    complete(filter);
    VantrelFilterSetComparison(filter, VANTREL_COMPARISON_REGULAR_EXPRESSION);
    filter->slot.patternSubCode = 4;
    add(filter);
    expectRefusal(2002);
}

TEST_F(BulkRequestTest, FilterWithoutComparisonIsRefused) {
    VantrelFilterSetField(filter, 0, 2, VANTREL_DATA_TYPE_CHAR);
    VantrelFilterSetComparisonConstant(filter, "xy", 2);
    add(filter);
    expectRefusal(2002);
}

TEST_F(BulkRequestTest, FilterWithoutConstantAndFieldIsRefused) {
    VantrelFilterSetField(filter, 0, 2, VANTREL_DATA_TYPE_CHAR);
    VantrelFilterSetComparison(filter, VANTREL_COMPARISON_EQUAL);
    add(filter);
    expectRefusal(2002);
}

TEST_F(BulkRequestTest, ConstantOfAnotherLengthThanTheFieldIsRefused) {
    complete(filter);
    VantrelFilterSetComparisonConstant(filter, "abcd", 4);
    add(filter);
    expectRefusal(2002);
}

TEST_F(BulkRequestTest, ConstantLostForWantOfMemoryIsRefused) {
    complete(filter);
    {
        FailingAllocation failing;
        EXPECT_EQ(VantrelFilterSetComparisonConstant(filter, "ab", 2), 101);
    }
    add(filter);
    expectRefusal(2002);
}

TEST_F(BulkRequestTest, ConstantOfNoBytesServesAFieldOfNone) {
    VantrelFilterSetField(filter, 1, 0, VANTREL_DATA_TYPE_CHAR);
    VantrelFilterSetComparison(filter, VANTREL_COMPARISON_EQUAL);
    VantrelFilterSetComparisonConstant(filter, "", 0);
    add(filter);
    EXPECT_EQ(sentTerms(), (Bytes{0, 0, 0, 1, 0, 1, 0}));
}

TEST_F(BulkRequestTest, CollationNamesFollowTheComparand) {
    complete(filter);
    VantrelFilterSetACSUserDefined(filter, "user");
    add(filter);
    VantrelFilterSetACSName(filter, "named");
    add(filter);
    VantrelFilterSetComparison(filter, VANTREL_COMPARISON_LIKE);
    VantrelFilterSetLikeCodePageName(filter, "sixteen letters!");
    add(filter);
    VantrelFilterSetComparison(filter, VANTREL_COMPARISON_EQUAL);
    VantrelFilterSetACSMode(filter, VANTREL_ACS_MODE_CASE_INSENSITIVE);
    add(filter);
    EXPECT_EQ(sentTerms(), (Bytes{11, 2, 0, 2, 1, 0x09, 0, 'x', 'y', 172} + bytesOf("user") + Bytes(4) +
                            Bytes{11, 2, 0, 2, 1, 0x09, 0, 'x', 'y', 174} + bytesOf("named") + Bytes(11) +
                            Bytes{11, 2, 0, 2, 1, 0x0F, 0, 1, 3, 0, 'x', 'y', 0, 171} +
                            bytesOf("sixteen letters!") + Bytes{11, 2, 0, 2, 1, 0x81, 0, 'x', 'y'}));
}

TEST_F(BulkRequestTest, UnknownCollationMarkerIsAnInternalError) {
    complete(filter);
    filter->slot.collationMarker = 173;
    add(filter);
    expectRefusal(2000);
}

TEST_F(BulkRequestTest, FirstBadFilterDecides) {
    complete(filter);
    add(filter);
    filter->slot.collationMarker = 173;
    add(filter);
    Filter unfinished;
    add(unfinished);
    expectRefusal(2000);
}

TEST_F(BulkRequestTest, FilterIsCheckedBeforeItsCollation) {
    complete(filter);
    filter->slot.collationMarker = 173;
    VantrelFilterSetComparisonConstant(filter, "x", 1);
    add(filter);
    expectRefusal(2002);
}

}  // namespace
