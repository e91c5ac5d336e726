#include "bulk/request_fixture.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

// Requests that reach the end of the area.
class BulkRequestEndTest : public BulkRequestTest {
  protected:
    // Adds filters until `left` bytes of the area are left behind the header and the terms.
    void fillAllBut(uint32_t left) {
        uint32_t rest = 258048 - 8 - left;
        const Bytes constant(65000, 1);
        VantrelFilterSetComparison(filter, VANTREL_COMPARISON_EQUAL);
        while (rest > 0) {
            uint32_t length = std::min(rest, 65007u) - 7;
            VantrelFilterSetField(filter, 0, length, VANTREL_DATA_TYPE_CHAR);
            VantrelFilterSetComparisonConstant(filter, constant.data(), length);
            add(filter);
            rest -= 7 + length;
        }
    }
};

TEST_F(BulkRequestEndTest, RequestMayEndWithTheArea) {
    fillAllBut(4);
    EXPECT_EQ(retrieve(), 0);
    EXPECT_EQ(engine.onlyCall().dataLength, 258048u);
    EXPECT_EQ(loadU16(engine.onlyCall().dataBytes.data()), 61440);
}

TEST_F(BulkRequestEndTest, ExtractorThatDoesNotFitIsRefused) {
    fillAllBut(3);
    expectRefusal(22);
    EXPECT_EQ(lastStatus(result.get()), 0);
}

TEST_F(BulkRequestEndTest, FieldsThatDoNotFitAreRefused) {
    fillAllBut(7);
    VantrelBulkRetrieveAttributesAddField(attributes, 0, 1);
    expectRefusal(22);
    EXPECT_EQ(lastStatus(result.get()), 0);
}

TEST_F(BulkRequestEndTest, FieldsMayEndWithTheArea) {
    fillAllBut(8);
    VantrelBulkRetrieveAttributesAddField(attributes, 1, 2);
    EXPECT_EQ(retrieve(), 0);
    EXPECT_EQ(Bytes(result->area + 258048 - 4, result->area + 258048), (Bytes{2, 0, 1, 0}));
}

TEST_F(BulkRequestEndTest, TermWhoseHeadDoesNotFitIsRefusedBeforeItIsChecked) {
    fillAllBut(6);
    Filter unfinished;
    add(unfinished);
    expectRefusal(22);
}

TEST_F(BulkRequestEndTest, TermWhoseHeadFitsIsChecked) {
    fillAllBut(7);
    Filter unfinished;
    add(unfinished);
    expectRefusal(2002);
}

TEST_F(BulkRequestEndTest, ComparandsThatDoNotFitAreRefused) {
    fillAllBut(8);
    Filter last;
    complete(last);
    VantrelFilterSetACSName(last, "named");
    last->slot.collationMarker = 173;  // would be refused later
    add(last);
    expectRefusal(22);
}

TEST_F(BulkRequestEndTest, OtherFieldThatDoesNotFitIsRefused) {
    fillAllBut(8);
    Filter last;
    complete(last);
    VantrelFilterSetComparisonField(last, 1);
    add(last);
    expectRefusal(22);
}

TEST_F(BulkRequestEndTest, PatternThatDoesNotFitIsRefused) {
    fillAllBut(12);
    Filter last;
    complete(last);
    VantrelFilterSetComparison(last, VANTREL_COMPARISON_LIKE);
    add(last);
    expectRefusal(22);
}

TEST_F(BulkRequestEndTest, CollationOfTermThatEndsWithTheAreaIsRefused) {
    fillAllBut(9);
    Filter last;
    complete(last);
    VantrelFilterSetACSName(last, "named");
    add(last);
    expectRefusal(22);
    EXPECT_EQ(lastStatus(result.get()), 0);
}

TEST_F(BulkRequestEndTest, CollationNamesThatDoNotFitAreRefused) {
    fillAllBut(25);
    Filter last;
    complete(last);
    VantrelFilterSetACSName(last, "named");
    add(last);
    expectRefusal(22);
    EXPECT_EQ(lastStatus(result.get()), 0);
}

}  // namespace
