#include "information/getters.h"

using namespace vantrel;

namespace {

struct SegmentFileName {
    const uint8_t *text;
    uint32_t length;
};

// A null text where there is no such entry or the reply ends before it does.
SegmentFileName findName(const VantrelFileInformation *information, int32_t segmentNumber) {
    uint32_t entryCount = loadU32(loadReply<SegmentFilesReply>(information).entryCount);
    if (segmentNumber < 1 || static_cast<uint32_t>(segmentNumber) > entryCount)
        return {};
    const uint8_t *entry = information->segmentFiles + sizeof(SegmentFilesReply);
    uint32_t remaining = sizeof information->segmentFiles - sizeof(SegmentFilesReply);
    while (remaining >= 4) {
        uint32_t length = loadU32(entry);
        entry += 4;
        remaining -= 4;
        if (length > remaining)
            return {};
        if (--segmentNumber == 0)
            return {entry, length};
        entry += length;
        remaining -= length;
    }
    return {};
}

}  // namespace

int32_t VantrelFileInformationGetSegmentCount(VantrelFileInformation *information) {
    if (information == nullptr)
        return noValue;
    uint32_t count = loadU32(readReply<SegmentFilesReply>(information).segmentCount);
    return count == 0 ? 0 : static_cast<int32_t>(count - 1);
}

VantrelStatus VantrelFileInformationGetSegmentFileName(VantrelFileInformation *information,
                                                       int32_t segmentNumber, char *buffer, int32_t size) {
    if (information == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    if (buffer == nullptr)
        return keepStatus(information, VANTREL_STATUS_INVALID_POINTER_PARAMETER);
    SegmentFileName name = findName(information, segmentNumber);
    if (name.text == nullptr || size < static_cast<int32_t>(name.length))
        return keepStatus(information, VANTREL_STATUS_INVALID_OPTION);
    copyText(buffer, name.text, name.length);
    if (name.length > 0)
        buffer[name.length - 1] = '\0';
    return keepStatus(information, VANTREL_STATUS_NO_ERROR);
}
