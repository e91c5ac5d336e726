#include "client/request.h"
#include "engine/wide_text.h"

using namespace vantrel;

namespace {

// These take the place of a create mode.
constexpr int32_t deleteKeyNumber = -128;
constexpr int32_t renameKeyNumber = -127;

}  // namespace

VantrelStatus VantrelClientFileDelete(VantrelClient *client, const char *fileName) {
    if (fileName == nullptr)
        return keepStatusIfPresent(client, VANTREL_STATUS_INVALID_POINTER_PARAMETER);
    return sendRequest(client,
                       {.operation = operationCreate, .keyText = fileName, .keyNumber = deleteKeyNumber});
}

VantrelStatus VantrelClientFileDeleteW(VantrelClient *client, const wchar_t *fileName) {
    return withNarrowText(client, fileName, [client](const char *narrowName) {
        return VantrelClientFileDelete(client, narrowName);
    });
}

VantrelStatus VantrelClientFileRename(VantrelClient *client, const char *existingName, const char *newName) {
    if (existingName == nullptr || newName == nullptr)
        return keepStatusIfPresent(client, VANTREL_STATUS_INVALID_POINTER_PARAMETER);
    return sendRequest(client, {.operation = operationCreate,
                                .dataText = existingName,
                                .keyText = newName,
                                .keyNumber = renameKeyNumber});
}

VantrelStatus VantrelClientFileRenameW(VantrelClient *client, const wchar_t *existingName,
                                       const wchar_t *newName) {
    // A missing name counts before one too long.
    if (newName == nullptr)
        return keepStatusIfPresent(client, VANTREL_STATUS_INVALID_POINTER_PARAMETER);
    return withNarrowText(client, existingName, [=](const char *narrowExistingName) {
        return withNarrowText(client, newName, [=](const char *narrowNewName) {
            return VantrelClientFileRename(client, narrowExistingName, narrowNewName);
        });
    });
}
