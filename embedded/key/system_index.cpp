#include <algorithm>

#include "embedded/key/specification.h"
#include "embedded/key/specification_layout.h"

namespace vantrel::embedded {

namespace {

constexpr uint8_t updateTimeIndex = 124;
constexpr uint8_t createTimeIndex = 125;
constexpr uint16_t timeSize = 8;

bool hasUniqueIndex(const FileDefinition &file) {
    return std::any_of(file.indexes.begin(), file.indexes.end(),
                       [](const IndexDefinition &index) { return index.unique; });
}

IndexDefinition systemIndex(uint8_t number) {
    KeySegment segment;
    segment.length = timeSize;
    segment.type = KeyType::timestamp;
    IndexDefinition index;
    index.number = number;
    index.source = number == createTimeIndex ? KeySource::createTime : KeySource::updateTime;
    index.unique = true;
    index.modifiable = true;
    index.segments.push_back(segment);
    index.keyLength = timeSize;
    return index;
}

}  // namespace

std::vector<IndexDefinition> systemIndexesFor(const FileDefinition &file) {
    constexpr uint16_t setting = fileFlag::systemData | fileFlag::noSystemData | fileFlag::systemDataVersion2;
    switch (file.fileFlags & setting) {
        case fileFlag::systemData:
            return {systemIndex(createTimeIndex)};
        case fileFlag::systemData | fileFlag::systemDataVersion2:
            return {systemIndex(updateTimeIndex), systemIndex(createTimeIndex)};
        case 0:
            if (!hasUniqueIndex(file))
                return {systemIndex(createTimeIndex)};
            return {};
        default:
            return {};
    }
}

std::vector<IndexDefinition> systemIndexesIn(uint8_t bits) {
    std::vector<IndexDefinition> indexes;
    if ((bits & systemIndexBit::updateTime) != 0)
        indexes.push_back(systemIndex(updateTimeIndex));
    if ((bits & systemIndexBit::createTime) != 0)
        indexes.push_back(systemIndex(createTimeIndex));
    return indexes;
}

}  // namespace vantrel::embedded
