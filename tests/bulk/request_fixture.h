#ifndef VANTREL_TESTS_BULK_REQUEST_FIXTURE_H
#define VANTREL_TESTS_BULK_REQUEST_FIXTURE_H

#include "bulk/handles.h"

namespace vantrel::test {

// Requests as the engine sees them.
class BulkRequestTest : public FileTest {
  protected:
    VantrelStatus retrieve() {
        return VantrelFileBulkRetrieveNext(file, attributes, result, VANTREL_LOCK_MODE_NONE);
    }
    // A filter of a two-byte field at 0x0102 that equals "xy".
    void complete(VantrelFilter *target) {
        VantrelFilterSetField(target, 0x0102, 2, VANTREL_DATA_TYPE_ZSTRING);
        VantrelFilterSetComparison(target, VANTREL_COMPARISON_EQUAL);
        VantrelFilterSetComparisonConstant(target, "xy", 2);
    }
    void add(const VantrelFilter *added) {
        ASSERT_EQ(VantrelBulkRetrieveAttributesAddFilter(attributes, added), 0);
    }
    // The terms that were sent: what lies between the header and the extractor of a request without fields.
    Bytes sentTerms() {
        EXPECT_EQ(retrieve(), 0);
        const Bytes &data = engine.onlyCall().dataBytes;
        size_t length = loadU16(data.data());
        return Bytes(data.begin() + 8, data.begin() + static_cast<ptrdiff_t>(length - 4));
    }
    void expectRefusal(VantrelStatus status) {
        EXPECT_EQ(retrieve(), status);
        EXPECT_EQ(fileStatus(), status);
        EXPECT_TRUE(engine.calls().empty());
    }

    Filter filter;
    RetrieveAttributes attributes;
    RetrieveResult result;
};

}  // namespace vantrel::test

#endif
