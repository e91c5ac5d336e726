#ifndef VANTREL_EMBEDDED_KEY_DEFINITION_H
#define VANTREL_EMBEDDED_KEY_DEFINITION_H

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vantrel::embedded {

// Raw bytes; they compare as unsigned bytes.
using Bytes = std::string;
using ByteView = std::string_view;

// The engine's codes of the key types, and two of its own for the legacy ones, which have none.
enum class KeyType : uint16_t {
    character = 0,
    integer = 1,
    floatingPoint = 2,
    date = 3,
    time = 4,
    decimal = 5,
    money = 6,
    logical = 7,
    numeric = 8,
    binaryFloat = 9,
    lengthPrefixedString = 10,
    zeroTerminatedString = 11,
    unsignedBinary = 14,
    autoincrement = 15,
    bit = 16,
    numericSignTrailingSeparate = 17,
    numericAsciiOverpunch = 18,
    currency = 19,
    timestamp = 20,
    largeObjectText = 21,
    wideString = 25,
    wideZeroTerminatedString = 26,
    guid = 27,
    numericSignLeadingBinary = 28,
    numericSignLeadingSeparate = 29,
    numericSignTrailingBinary = 31,
    autoTimestamp = 32,
    timestamp2 = 34,
    nullIndicator = 255,
    legacyString = 0x100,
    legacyBinary = 0x101,
};

// Maps each byte of a text to the byte that it sorts as.
struct Collation {
    Bytes name;
    std::array<uint8_t, 256> table;
};

struct KeySegment {
    uint16_t offset = 0;  // in the record, from 0
    uint16_t length = 0;
    KeyType type = KeyType::legacyString;
    bool descending = false;
    uint8_t nullValue = 0;
    bool nullIfAll = false;  // the entry is left out when this and all others flagged so are null
    bool nullIfAny = false;  // the entry is left out when this segment is null
    std::shared_ptr<const Collation> collation;  // null for byte order
    // As requested, for the statistics: the specification's 24 bytes with counts and index number zero.
    std::array<uint8_t, 24> specification{};
};

// Where the bytes of a key come from.
enum class KeySource : uint8_t { record, createTime, updateTime };

struct IndexDefinition {
    uint8_t number = 0;  // 0 to 118; 124 and 125 for the times of the records
    KeySource source = KeySource::record;
    bool unique = false;
    bool modifiable = false;
    std::vector<KeySegment> segments;
    Bytes collationBlock;    // 265 bytes as requested, or empty
    uint32_t keyLength = 0;  // the sum of the segments' lengths
};

}  // namespace vantrel::embedded

#endif
