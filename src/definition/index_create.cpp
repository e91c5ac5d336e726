#include <cstring>

#include "definition/index_attributes.h"
#include "engine/call.h"
#include "engine/records.h"
#include "engine/status.h"
#include "engine/translation.h"

using namespace vantrel;

namespace {

constexpr uint32_t dataLengthMaximum = 65535;

// The engine may answer in all of it.
constexpr uint32_t requestSize = 65536;
static_assert(requestSize >= 2 * sizeof(VantrelIndexAttributes::segments) + acsBlockSize);

VantrelStatus requestIndex(VantrelFile *file, VantrelIndexAttributes *attributes) {
    uint32_t segmentCount = loadU32(attributes->segmentCount);
    if (segmentCount > segmentMaximum)
        return keepStatus(file, VANTREL_STATUS_DATA_LENGTH_ERROR);
    uint32_t length = segmentCount * uint32_t{sizeof(KeySpecification)};
    uint8_t request[requestSize];
    // The data length counts every segment twice, and the engine may read all that it covers.
    memset(request, 0, 2 * length + acsBlockSize);
    int32_t keyNumber = 0;
    VantrelStatus status = writeIndexDefinition(attributes, request, dataLengthMaximum, &length, &keyNumber);
    if (status != VANTREL_STATUS_NO_ERROR)
        return keepStatus(file, status);
    return keepStatus(file, callVantrel(operationCreateIndex, file, request, &length, nullptr, 0, keyNumber,
                                        owningClient(file)));
}

// A named sequence that the engine does not find may be one that it knows by number.
VantrelStatus createIndexByNumber(VantrelFile *file, VantrelIndexAttributes *attributes) {
    storeI32(attributes->acsMode, VANTREL_ACS_MODE_NUMBERED);
    VantrelStatus status = VantrelFileIndexCreate(file, attributes);
    storeI32(attributes->acsMode, VANTREL_ACS_MODE_NAMED);
    return status;
}

}  // namespace

VantrelStatus VantrelFileIndexCreate(VantrelFile *file, VantrelIndexAttributes *attributes) {
    if (file == nullptr)
        return VANTREL_STATUS_FILE_NOT_OPEN;
    if (owningClient(file) == nullptr || attributes == nullptr)
        return keepStatus(file, VANTREL_STATUS_INVALID_POINTER_PARAMETER);
    VantrelStatus status = requestIndex(file, attributes);
    if (status == VANTREL_STATUS_ALTERNATE_COLLATING_SEQUENCE_NOT_FOUND &&
        loadI32(attributes->acsMode) == VANTREL_ACS_MODE_NAMED)
        return createIndexByNumber(file, attributes);
    return status;
}

VantrelStatus VantrelFileIndexDrop(VantrelFile *file, VantrelIndex index) {
    if (file == nullptr)
        return VANTREL_STATUS_FILE_NOT_OPEN;
    if (owningClient(file) == nullptr)
        return keepStatus(file, VANTREL_STATUS_INVALID_POINTER_PARAMETER);
    if (indexIsOutOfRange(index))
        return keepStatus(file, VANTREL_STATUS_INVALID_OPTION);
    return keepStatus(
        file, callVantrel(operationDropIndex, file, nullptr, nullptr, nullptr, 0, index, owningClient(file)));
}
