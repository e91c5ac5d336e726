#ifndef VANTREL_EMBEDDED_KEY_SPECIFICATION_LAYOUT_H
#define VANTREL_EMBEDDED_KEY_SPECIFICATION_LAYOUT_H

#include <array>
#include <cstddef>
#include <cstdint>

#include "embedded/key/definition.h"
#include "engine/bytes.h"

// Where the fields of create requests and statistics replies lie.

namespace vantrel::embedded {

constexpr size_t fileSpecificationSize = 32;
constexpr size_t segmentSize = 24;

namespace fileField {
constexpr size_t recordLength = 0;
constexpr size_t pageSize = 2;
constexpr size_t flags = 4;
constexpr size_t keptPreallocation = 6;  // in a marked reply, whose bytes 22 and 23 count unused pages
constexpr size_t recordCount = 8;
constexpr size_t indexCount = 16;
constexpr size_t versionCode = 18;
constexpr size_t duplicatePointers = 20;
constexpr size_t pageCompression = 21;
constexpr size_t pages = 22;
constexpr size_t mark = 24;
constexpr size_t collationCount = 30;  // in a marked reply
constexpr size_t systemIndexes = 31;   // in a marked reply
}  // namespace fileField

// Bits of fileField::systemIndexes.
namespace systemIndexBit {
constexpr uint8_t updateTime = 0x01;
constexpr uint8_t createTime = 0x02;
}  // namespace systemIndexBit

namespace segmentField {
constexpr size_t position = 0;
constexpr size_t length = 2;
constexpr size_t flags = 4;
constexpr size_t uniqueCount = 8;
constexpr size_t type = 16;
constexpr size_t nullValue = 18;
constexpr size_t index = 20;
constexpr size_t collationNumber = 22;
}  // namespace segmentField

namespace keyFlag {
constexpr uint16_t duplicates = 0x0001;
constexpr uint16_t modifiable = 0x0002;
constexpr uint16_t binary = 0x0004;
constexpr uint16_t nullIfAll = 0x0008;
constexpr uint16_t continues = 0x0010;
constexpr uint16_t descending = 0x0040;
constexpr uint16_t repeatingDuplicates = 0x0080;
constexpr uint16_t extendedType = 0x0100;
constexpr uint16_t nullIfAny = 0x0200;
}  // namespace keyFlag

// The three bits of the key flags that choose a collation, and their patterns.
namespace collationMode {
constexpr uint16_t bits = 0x0C20;
constexpr uint16_t none = 0x0000;
constexpr uint16_t byDefault = 0x0020;
constexpr uint16_t caseInsensitive = 0x0400;
constexpr uint16_t numbered = 0x0420;
constexpr uint16_t named = 0x0C20;
}  // namespace collationMode

// In the file specification of a reply. What an application left in its request cannot be taken for it.
constexpr std::array<uint8_t, 6> replyMark = {'V', 'N', 'T', 'D', 'E', 'F'};

inline const uint8_t *bytesOf(ByteView view) {
    return reinterpret_cast<const uint8_t *>(view.data());
}

inline uint16_t flagsOf(const KeySegment &segment) {
    return loadU16(segment.specification.data() + segmentField::flags);
}

inline uint16_t collationModeOf(const KeySegment &segment) {
    return flagsOf(segment) & collationMode::bits;
}

}  // namespace vantrel::embedded

#endif
