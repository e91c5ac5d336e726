#include <cstring>

#include "definition/file_attributes.h"
#include "definition/index_attributes.h"
#include "engine/bytes.h"
#include "engine/call.h"
#include "engine/status.h"
#include "engine/wide_text.h"
#include "information/file_information.h"

using namespace vantrel;

namespace {

constexpr uint32_t createModeCount = 2;
constexpr uint32_t locationModeCount = 3;
constexpr int32_t keyNumbers[createModeCount][locationModeCount] = {{0, 6, 99}, {-1, 7, 100}};

VantrelStatus keyNumberOfModes(VantrelCreateMode createMode, VantrelLocationMode locationMode,
                               int32_t *keyNumber) {
    if (static_cast<uint32_t>(createMode) >= createModeCount ||
        static_cast<uint32_t>(locationMode) >= locationModeCount)
        return VANTREL_STATUS_INVALID_OPTION;
    *keyNumber = keyNumbers[createMode][locationMode];
    return VANTREL_STATUS_NO_ERROR;
}

// The checks common to all forms of creating; the definition is whatever describes the file.
VantrelStatus checkCreate(VantrelClient *client, const void *definition, const char *fileName,
                          VantrelCreateMode createMode, VantrelLocationMode locationMode,
                          int32_t *keyNumber) {
    if (client == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    if (fileName == nullptr || definition == nullptr)
        return keepStatus(client, VANTREL_STATUS_INVALID_POINTER_PARAMETER);
    return keepStatus(client, keyNumberOfModes(createMode, locationMode, keyNumber));
}

VantrelStatus requestCreate(VantrelClient *client, void *request, uint32_t length, const char *fileName,
                            int32_t keyNumber) {
    auto keyLength = static_cast<int32_t>(strlen(fileName) + 1);
    return keepStatus(client, callVantrel(operationCreate, nullptr, request, &length,
                                          const_cast<char *>(fileName), keyLength, keyNumber, client));
}

}  // namespace

// An index number of its own takes the place of the modes' key number.
VantrelStatus VantrelClientFileCreate(VantrelClient *client, VantrelFileAttributes *fileAttributes,
                                      VantrelIndexAttributes *indexAttributes, const char *fileName,
                                      VantrelCreateMode createMode, VantrelLocationMode locationMode) {
    int32_t keyNumber = 0;
    VantrelStatus status =
        checkCreate(client, fileAttributes, fileName, createMode, locationMode, &keyNumber);
    if (status != VANTREL_STATUS_NO_ERROR)
        return status;
    uint32_t length = sizeof fileAttributes->specification;
    if (indexAttributes != nullptr) {
        status = fileIndexCreateHelper(indexAttributes, fileAttributes->indexDefinition,
                                       sizeof fileAttributes->indexDefinition, &length, &keyNumber);
        if (status != VANTREL_STATUS_NO_ERROR)
            return keepStatus(client, status);
        storeU16(fileAttributes->specification.indexCount, 1);
    }
    return requestCreate(client, fileAttributes, length, fileName, keyNumber);
}

VantrelStatus VantrelClientFileCreateW(VantrelClient *client, VantrelFileAttributes *fileAttributes,
                                       VantrelIndexAttributes *indexAttributes, const wchar_t *fileName,
                                       VantrelCreateMode createMode, VantrelLocationMode locationMode) {
    return withNarrowText(client, fileName, [&](const char *narrowName) {
        return VantrelClientFileCreate(client, fileAttributes, indexAttributes, narrowName, createMode,
                                       locationMode);
    });
}

// A statistics reply is a create request for a like file. Its length is what the engine returned, and no
// engine that keeps to the length offered returns more than there is room for.
VantrelStatus VantrelClientFileCreateUsingFileInformation(VantrelClient *client,
                                                          VantrelFileInformation *fileInformation,
                                                          const char *fileName, VantrelCreateMode createMode,
                                                          VantrelLocationMode locationMode) {
    int32_t keyNumber = 0;
    VantrelStatus status =
        checkCreate(client, fileInformation, fileName, createMode, locationMode, &keyNumber);
    if (status != VANTREL_STATUS_NO_ERROR)
        return status;
    uint32_t replyLength = loadU32(fileInformation->replyLength);
    if (replyLength > sizeof fileInformation->statistics)
        return keepStatus(client, VANTREL_STATUS_DATA_LENGTH_ERROR);
    return requestCreate(client, fileInformation->statistics, replyLength, fileName, keyNumber);
}

VantrelStatus VantrelClientFileCreateUsingFileInformationW(VantrelClient *client,
                                                           VantrelFileInformation *fileInformation,
                                                           const wchar_t *fileName,
                                                           VantrelCreateMode createMode,
                                                           VantrelLocationMode locationMode) {
    return withNarrowText(client, fileName, [&](const char *narrowName) {
        return VantrelClientFileCreateUsingFileInformation(client, fileInformation, narrowName, createMode,
                                                           locationMode);
    });
}
