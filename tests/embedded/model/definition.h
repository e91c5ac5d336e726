#ifndef VANTREL_TESTS_EMBEDDED_MODEL_DEFINITION_H
#define VANTREL_TESTS_EMBEDDED_MODEL_DEFINITION_H

#include <array>
#include <cstdint>
#include <map>
#include <vector>

#include "vantrel.h"

// Files and indexes as the model knows them, and how keys compare: by the values of their fields, type by
// type.

namespace vantrel::test {

using Bytes = std::vector<uint8_t>;

struct SegmentDefinition {
    int32_t offset;
    int32_t length;
    VantrelDataType type;
    bool isDescending = false;
    uint8_t nullValue = 0;

    bool operator==(const SegmentDefinition &) const = default;
};

enum class Collation { none, caseInsensitive, userDefined };

struct IndexDefinition {
    std::vector<SegmentDefinition> segments;
    bool isUnique = false;
    bool isModifiable = true;
    VantrelNullKeyMode nullKeyMode = VANTREL_NULL_KEY_MODE_NONE;
    Collation collation = Collation::none;

    bool operator==(const IndexDefinition &) const = default;
};

struct FileDefinition {
    uint32_t fixedLength = 0;
    bool isVariable = false;
    std::map<VantrelIndex, IndexDefinition> indexes;
};

// The one user-defined table: capital letters after small ones, "b" before "a", and "c" equal to "b".
inline constexpr const char *collationName = "MIXED";
const std::array<uint8_t, 256> &collatingTable();

uint32_t keyLengthOf(const IndexDefinition &index);
Bytes keyOf(const IndexDefinition &index, const Bytes &record);

// Whether a record with this key stays out of the index.
bool isLeftOut(const IndexDefinition &index, const Bytes &key);

// Below 0, 0 or above 0 as the first key stands before, with or behind the second one in the index.
int compareKeys(const IndexDefinition &index, const Bytes &first, const Bytes &second);

}  // namespace vantrel::test

#endif
