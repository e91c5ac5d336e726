#include "embedded/operation/key_only.h"

#include <algorithm>

#include "embedded/status_error.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

bool isKeyOnly(const FileDefinition &file) {
    return (file.fileFlags & fileFlag::keyOnly) != 0;
}

bool holdsEveryRecord(const IndexDefinition &index) {
    return std::none_of(index.segments.begin(), index.segments.end(),
                        [](const KeySegment &segment) { return segment.nullIfAll || segment.nullIfAny; });
}

}  // namespace

void checkKeyOnly(const FileDefinition &file) {
    if (!isKeyOnly(file))
        return;
    bool isVariable = (file.fileFlags & fileFlag::variableLength) != 0;
    require(!isVariable, VANTREL_STATUS_INCONSISTENT_KEY_FLAGS);
    require(!file.indexes.empty(), VANTREL_STATUS_NUMBER_OF_INDEXES);
    bool isHeld = std::any_of(file.indexes.begin(), file.indexes.end(), holdsEveryRecord);
    require(isHeld, VANTREL_STATUS_INCONSISTENT_KEY_FLAGS);
}

void checkDropFromKeyOnly(const FileDefinition &file, const IndexDefinition &dropped) {
    if (!isKeyOnly(file))
        return;
    bool isHeldByAnother =
        std::any_of(file.indexes.begin(), file.indexes.end(), [&](const IndexDefinition &index) {
            return index.number != dropped.number && holdsEveryRecord(index);
        });
    require(isHeldByAnother, VANTREL_STATUS_OPERATION_NOT_ALLOWED);
}

void requirePhysicalOrder(const FileDefinition &file) {
    require(!isKeyOnly(file), VANTREL_STATUS_OPERATION_NOT_ALLOWED);
}

}  // namespace vantrel::embedded
