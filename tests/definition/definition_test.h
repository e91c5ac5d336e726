#ifndef VANTREL_TESTS_DEFINITION_DEFINITION_TEST_H
#define VANTREL_TESTS_DEFINITION_DEFINITION_TEST_H

#include <gtest/gtest.h>

#include <memory>

#include "definition/file_attributes.h"
#include "definition/index_attributes.h"
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
using IndexAttributesPointer = std::unique_ptr<VantrelIndexAttributes, FreedBy<VantrelIndexAttributesFree>>;
using FileAttributesPointer = std::unique_ptr<VantrelFileAttributes, FreedBy<VantrelFileAttributesFree>>;

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

inline IndexAttributesPointer newIndexAttributes() {
    return allocated<IndexAttributesPointer>(VantrelIndexAttributesAllocate);
}

inline FileAttributesPointer newFileAttributes() {
    return allocated<FileAttributesPointer>(VantrelFileAttributesAllocate);
}

// The bytes of a record or of an area in it, to be compared as a whole.
template <class Area>
Bytes bytesIn(const Area &area) {
    auto *first = reinterpret_cast<const uint8_t *>(&area);
    return Bytes(first, first + sizeof area);
}

inline Bytes joined(std::initializer_list<Bytes> parts) {
    Bytes whole;
    for (const Bytes &part : parts)
        whole.insert(whole.end(), part.begin(), part.end());
    return whole;
}

// Adds a segment of four bytes, of type integer, at the offset.
inline void addIntegerSegment(VantrelIndexAttributes *attributes, int32_t offset) {
    KeySegmentPointer segment = newKeySegment();
    EXPECT_EQ(VantrelKeySegmentSetField(segment.get(), offset, 4, VANTREL_DATA_TYPE_INTEGER), 0);
    EXPECT_EQ(VantrelIndexAttributesAddKeySegment(attributes, segment.get()), 0);
}

// That segment as a request holds it, with flags from 0x0000 to 0xFFFF.
inline Bytes integerSegment(uint8_t position, uint16_t flags, uint8_t acsNumber = 0) {
    return {position,
            0,
            4,
            0,
            static_cast<uint8_t>(flags),
            static_cast<uint8_t>(flags >> 8),
            0,
            0,
            0,
            0,
            0,
            0,
            0,
            0,
            0,
            0,
            1,
            0,
            0,
            0,
            0,
            0,
            acsNumber,
            0};
}

// The ACS block of the name "UPPER".
inline Bytes upperBlock() {
    Bytes block(265);
    block[0] = 0xAE;
    memcpy(&block[1], "UPPER", 5);
    return block;
}

}  // namespace vantrel::test

#endif
