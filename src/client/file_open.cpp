#include <cstdlib>

#include "client/request.h"
#include "engine/wide_text.h"

using namespace vantrel;

namespace {

constexpr uint32_t openModeCount = VANTREL_OPEN_MODE_VERIFY + 1;
constexpr uint32_t openVariantCount = VANTREL_OPEN_VARIANT_REMOTE + 1;

// The engine's exclusive and verifying modes stand in the opposite order.
constexpr int32_t openValues[openModeCount][openVariantCount] = {
    {0, 6, 99}, {-1, 7, 100}, {-2, 8, 101}, {-4, 10, 103}, {-3, 9, 102},
};

}  // namespace

VantrelStatus VantrelClientFileOpen(VantrelClient *client, VantrelFile **file, const char *fileName,
                                    const char *ownerName, VantrelOpenMode openMode,
                                    VantrelOpenVariant openVariant) {
    if (client == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    if (fileName == nullptr || file == nullptr)
        return keepStatus(client, VANTREL_STATUS_INVALID_POINTER_PARAMETER);
    if (static_cast<uint32_t>(openMode) >= openModeCount ||
        static_cast<uint32_t>(openVariant) >= openVariantCount)
        return keepStatus(client, VANTREL_STATUS_INVALID_OPTION);
    VantrelStatus status = allocateRecord(file);
    if (status != VANTREL_STATUS_NO_ERROR)
        return keepStatus(client, status);
    status = sendRequest(client, {.operation = operationOpen,
                                  .file = *file,
                                  .dataText = ownerName,
                                  .keyText = fileName,
                                  .keyNumber = openValues[openMode][openVariant]});
    if (status != VANTREL_STATUS_NO_ERROR) {
        free(*file);
        *file = nullptr;
        return status;
    }
    storePointer((*file)->client, client);
    storeI32((*file)->cachedKeyNumber, noCachedKey);
    return VANTREL_STATUS_NO_ERROR;
}

VantrelStatus VantrelClientFileOpenW(VantrelClient *client, VantrelFile **file, const wchar_t *fileName,
                                     const char *ownerName, VantrelOpenMode openMode,
                                     VantrelOpenVariant openVariant) {
    return withNarrowText(client, fileName, [=](const char *narrowFileName) {
        return VantrelClientFileOpen(client, file, narrowFileName, ownerName, openMode, openVariant);
    });
}

VantrelStatus VantrelClientFileClose(VantrelClient *client, VantrelFile *file) {
    if (file == nullptr)
        return keepStatusIfPresent(client, VANTREL_STATUS_FILE_NOT_OPEN);
    VantrelStatus status = checkOwner(client, file);
    if (status != VANTREL_STATUS_NO_ERROR)
        return keepStatusIfPresent(client, status);
    status = sendRequest(client, {.operation = operationClose, .file = file});
    if (status == VANTREL_STATUS_NO_ERROR)
        free(file);
    return status;
}
