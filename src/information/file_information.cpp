#include "information/file_information.h"

#include <cstdlib>
#include <cstring>

#include "definition/file_specification.h"
#include "definition/flags.h"
#include "definition/key_segment.h"
#include "engine/status.h"
#include "information/getters.h"

using namespace vantrel;

namespace {

constexpr uint32_t firstSegmentOffset = sizeof(FileSpecification);
constexpr uint32_t lastSegmentOffset = sizeof(VantrelFileInformation::statistics) - sizeof(KeySpecification);

// The segment, counted from 1 over all indexes; null behind the last index or the end of the reply.
const uint8_t *findSegment(const VantrelFileInformation *information, int32_t segmentNumber) {
    if (segmentNumber <= 0)
        return nullptr;
    int32_t unfinishedIndexes =
        static_cast<int16_t>(loadU16(loadReply<FileSpecification>(information).indexCount));
    for (uint32_t offset = firstSegmentOffset; unfinishedIndexes > 0 && offset <= lastSegmentOffset;
         offset += sizeof(KeySpecification)) {
        const uint8_t *segment = information->statistics + offset;
        if (--segmentNumber == 0)
            return segment;
        if (!hasFlag(segment + offsetof(KeySpecification, flags), keyFlagContinues))
            --unfinishedIndexes;
    }
    return nullptr;
}

}  // namespace

VantrelStatus VantrelFileInformationAllocate(VantrelFileInformation **information) {
    return allocateRecord(information);
}

VantrelStatus VantrelFileInformationFree(VantrelFileInformation *information) {
    free(information);
    return VANTREL_STATUS_NO_ERROR;
}

VantrelStatus VantrelFileInformationGetLastStatusCode(const VantrelFileInformation *information) {
    return information == nullptr ? VANTREL_STATUS_INVALID_POINTER_PARAMETER : lastStatus(information);
}

VantrelStatus VantrelFileInformationGetKeySegment(VantrelFileInformation *information,
                                                  VantrelKeySegment *segment, int32_t segmentNumber) {
    if (information == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    if (segment == nullptr)
        return keepStatus(information, VANTREL_STATUS_INVALID_POINTER_PARAMETER);
    const uint8_t *found = findSegment(information, segmentNumber);
    if (found == nullptr)
        return keepStatus(information, VANTREL_STATUS_INVALID_OPTION);
    memcpy(&segment->specification, found, sizeof segment->specification);
    return keepStatus(information, VANTREL_STATUS_NO_ERROR);
}
