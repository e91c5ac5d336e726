#ifndef VANTREL_TESTS_DEFINITION_DEFINITION_TEST_H
#define VANTREL_TESTS_DEFINITION_DEFINITION_TEST_H

#include <gtest/gtest.h>

#include <memory>

#include "definition/key_segment.h"
#include "support/client_test.h"

namespace vantrel::test {

template <auto freeRecord>
struct FreedBy {
    template <class Record>
    void operator()(Record *record) const {
        EXPECT_EQ(freeRecord(record), 0);
    }
};

using KeySegmentPointer = std::unique_ptr<VantrelKeySegment, FreedBy<VantrelKeySegmentFree>>;

// A fresh record from the function that allocates it.
template <class Pointer, class Record>
Pointer allocated(VantrelStatus (*allocate)(Record **)) {
    Record *record = nullptr;
    EXPECT_EQ(allocate(&record), 0);
    return Pointer(record);
}

inline KeySegmentPointer newKeySegment() {
    return allocated<KeySegmentPointer>(VantrelKeySegmentAllocate);
}

// The bytes of a record or of an area in it, to be compared as a whole.
template <class Area>
Bytes bytesIn(const Area &area) {
    auto *first = reinterpret_cast<const uint8_t *>(&area);
    return Bytes(first, first + sizeof area);
}

}  // namespace vantrel::test

#endif
