#include "client/request.h"

#include <cstring>

#include "engine/status.h"

namespace vantrel {

namespace {

uint32_t sizeOf(const char *text) {
    return text == nullptr ? 0 : static_cast<uint32_t>(strlen(text)) + 1;
}

}  // namespace

VantrelStatus sendRequest(VantrelClient *client, const ClientRequest &request) {
    if (client == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    uint32_t dataLength = sizeOf(request.dataText);
    auto keyLength = static_cast<int32_t>(sizeOf(request.keyText));
    return keepStatus(
        client,
        callVantrel(request.operation, request.file, const_cast<char *>(request.dataText), &dataLength,
                    const_cast<char *>(request.keyText), keyLength, request.keyNumber, client));
}

VantrelStatus checkOwner(const VantrelClient *client, const VantrelFile *file) {
    const VantrelClient *owner = owningClient(file);
    if (owner == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    return owner == client ? VANTREL_STATUS_NO_ERROR : VANTREL_STATUS_INVALID_OPTION;
}

}  // namespace vantrel
