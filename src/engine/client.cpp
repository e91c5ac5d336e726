#include <pthread.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>

#include "engine/records.h"
#include "engine/status.h"

using namespace vantrel;

namespace {

constexpr uint32_t identifierLimit = 65536;

uint16_t identifierOrDefault(uint32_t identifier, uintptr_t defaultIdentifier) {
    return static_cast<uint16_t>(identifier == 0 ? defaultIdentifier : identifier);
}

}  // namespace

VantrelStatus VantrelClientAllocate(VantrelClient **client, uint32_t serviceAgentIdentifier,
                                    uint32_t clientIdentifier) {
    if (client == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    if (serviceAgentIdentifier >= identifierLimit || clientIdentifier >= identifierLimit)
        return VANTREL_STATUS_INVALID_OPTION;
    VantrelStatus status = allocateRecord(client);
    if (status != VANTREL_STATUS_NO_ERROR)
        return status;
    storeU16((*client)->serviceAgentIdentifier,
             identifierOrDefault(serviceAgentIdentifier, static_cast<uintptr_t>(getpid())));
    storeU16((*client)->clientIdentifier,
             identifierOrDefault(clientIdentifier, static_cast<uintptr_t>(pthread_self())));
    return VANTREL_STATUS_NO_ERROR;
}

VantrelStatus VantrelClientFree(VantrelClient *client) {
    free(client);
    return VANTREL_STATUS_NO_ERROR;
}

VantrelStatus VantrelClientGetLastStatusCode(const VantrelClient *client) {
    return client == nullptr ? VANTREL_STATUS_INVALID_POINTER_PARAMETER : lastStatus(client);
}

int32_t VantrelClientGetServiceAgentIdentifier(VantrelClient *client) {
    if (client == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    keepStatus(client, VANTREL_STATUS_NO_ERROR);
    return loadU16(client->serviceAgentIdentifier);
}

int32_t VantrelClientGetClientIdentifier(VantrelClient *client) {
    if (client == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    keepStatus(client, VANTREL_STATUS_NO_ERROR);
    return loadU16(client->clientIdentifier);
}

VantrelStatus VantrelFileGetLastStatusCode(const VantrelFile *file) {
    return file == nullptr ? VANTREL_STATUS_FILE_NOT_OPEN : lastStatus(file);
}
