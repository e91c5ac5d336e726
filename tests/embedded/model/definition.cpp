#include "definition.h"

#include <algorithm>

namespace vantrel::test {

namespace {

uint8_t collated(Collation collation, uint8_t byte) {
    if (collation == Collation::userDefined)
        return collatingTable()[byte];
    bool isSmallLetter = byte >= 'a' && byte <= 'z';
    if (collation == Collation::caseInsensitive && isSmallLetter)
        return static_cast<uint8_t>(byte - 'a' + 'A');
    return byte;
}

int compareText(Collation collation, const Bytes &first, const Bytes &second) {
    for (size_t i = 0; i < std::min(first.size(), second.size()); ++i) {
        int difference = collated(collation, first[i]) - collated(collation, second[i]);
        if (difference != 0)
            return difference;
    }
    if (first.size() == second.size())
        return 0;
    return first.size() < second.size() ? -1 : 1;
}

Bytes upToZero(const Bytes &text) {
    return Bytes(text.begin(), std::find(text.begin(), text.end(), uint8_t{0}));
}

uint64_t unsignedValue(const Bytes &bytes) {
    uint64_t value = 0;
    for (size_t i = bytes.size(); i-- > 0;)
        value = value * 256 + bytes[i];
    return value;
}

int64_t signedValue(const Bytes &bytes) {
    auto value = static_cast<int64_t>(unsignedValue(bytes));
    bool isNegative = bytes.back() >= 128;
    return isNegative ? value - (int64_t{1} << (8 * bytes.size())) : value;
}

template <typename Value>
int compareValues(Value first, Value second) {
    if (first == second)
        return 0;
    return first < second ? -1 : 1;
}

int compareFields(VantrelDataType type, Collation collation, const Bytes &first, const Bytes &second) {
    switch (type) {
        case VANTREL_DATA_TYPE_UNSIGNED_BINARY:
        case VANTREL_DATA_TYPE_LEGACY_BINARY:
            return compareValues(unsignedValue(first), unsignedValue(second));
        case VANTREL_DATA_TYPE_INTEGER:
            return compareValues(signedValue(first), signedValue(second));
        case VANTREL_DATA_TYPE_ZSTRING:
            return compareText(collation, upToZero(first), upToZero(second));
        default:
            return compareText(collation, first, second);
    }
}

Bytes slice(const Bytes &bytes, int32_t offset, int32_t length) {
    return Bytes(bytes.begin() + offset, bytes.begin() + offset + length);
}

}  // namespace

const std::array<uint8_t, 256> &collatingTable() {
    static const std::array<uint8_t, 256> table = [] {
        std::array<uint8_t, 256> weights;
        for (size_t i = 0; i < weights.size(); ++i)
            weights[i] = static_cast<uint8_t>(i);
        for (uint8_t letter = 'A'; letter <= 'Z'; ++letter)
            weights[letter] = static_cast<uint8_t>(letter + 100);
        weights['a'] = 'b';
        weights['b'] = 'a';
        weights['c'] = 'a';
        return weights;
    }();
    return table;
}

uint32_t keyLengthOf(const IndexDefinition &index) {
    int32_t length = 0;
    for (const SegmentDefinition &segment : index.segments)
        length += segment.length;
    return static_cast<uint32_t>(length);
}

Bytes keyOf(const IndexDefinition &index, const Bytes &record) {
    Bytes key;
    for (const SegmentDefinition &segment : index.segments) {
        Bytes field = slice(record, segment.offset, segment.length);
        key.insert(key.end(), field.begin(), field.end());
    }
    return key;
}

bool isLeftOut(const IndexDefinition &index, const Bytes &key) {
    size_t nullCount = 0;
    int32_t offset = 0;
    for (const SegmentDefinition &segment : index.segments) {
        Bytes field = slice(key, offset, segment.length);
        if (field == Bytes(field.size(), segment.nullValue))
            ++nullCount;
        offset += segment.length;
    }
    if (index.nullKeyMode == VANTREL_NULL_KEY_MODE_ANY_SEGMENTS)
        return nullCount > 0;
    if (index.nullKeyMode == VANTREL_NULL_KEY_MODE_ALL_SEGMENTS)
        return nullCount == index.segments.size();
    return false;
}

int compareKeys(const IndexDefinition &index, const Bytes &first, const Bytes &second) {
    int32_t offset = 0;
    for (const SegmentDefinition &segment : index.segments) {
        int order = compareFields(segment.type, index.collation, slice(first, offset, segment.length),
                                  slice(second, offset, segment.length));
        if (order != 0)
            return segment.isDescending ? -order : order;
        offset += segment.length;
    }
    return 0;
}

}  // namespace vantrel::test
