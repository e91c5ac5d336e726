#ifndef VANTREL_DEFINITION_FILE_SPECIFICATION_H
#define VANTREL_DEFINITION_FILE_SPECIFICATION_H

#include <cstdint>

namespace vantrel {

// The head of create requests and statistics replies.
struct FileSpecification {
    uint8_t recordLength[2];
    uint8_t pageSize[2];
    uint8_t flags[2];
    uint8_t reserved[2];
    uint8_t recordCount[8];  // replies only
    uint8_t indexCount[2];
    uint8_t version[2];
    uint8_t duplicatePointerCount;  // to be reserved, or unused
    uint8_t pageCompression;        // requests only
    uint8_t pageCount[2];           // to be preallocated, or unused
    uint8_t reservedAtEnd[8];
};
static_assert(sizeof(FileSpecification) == 32);

// Flags of files; the bits of enumerations are in the enumeration maps.
inline constexpr uint16_t fileFlagPagePreallocation = 0x0004;
inline constexpr uint16_t fileFlagKeyOnly = 0x0010;
inline constexpr uint16_t fileFlagBalancedIndexes = 0x0020;
inline constexpr uint16_t fileFlagDuplicatePointers = 0x0100;
inline constexpr uint16_t fileFlagPageCompression = 0x2000;

}  // namespace vantrel

#endif
