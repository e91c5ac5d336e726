#include "client/version.h"

#include <cstdlib>

#include "client/request.h"
#include "engine/status.h"

using namespace vantrel;

namespace {

constexpr int32_t failedNumber = -1;
constexpr VantrelVersionType failedType = -7;

// The engine's character of each version type.
constexpr uint8_t typeCharacters[] = {'\0', 'B', '9', 'D', 'N', 'T', 'U', 'C'};
static_assert(sizeof typeCharacters == VANTREL_VERSION_TYPE_CLIENT_ENGINE + 1);

using Entry = VersionEntry VantrelVersion::*;
using Number = uint8_t (VersionEntry::*)[2];

int32_t getNumber(VantrelVersion *version, Entry entry, Number number) {
    if (version == nullptr)
        return failedNumber;
    keepStatus(version, VANTREL_STATUS_NO_ERROR);
    return loadU16(version->*entry.*number);
}

VantrelVersionType getType(VantrelVersion *version, Entry entry) {
    if (version == nullptr)
        return failedType;
    keepStatus(version, VANTREL_STATUS_NO_ERROR);
    for (VantrelVersionType type = VANTREL_VERSION_TYPE_NONE; type <= VANTREL_VERSION_TYPE_CLIENT_ENGINE;
         ++type) {
        if (typeCharacters[type] == (version->*entry).typeCharacter)
            return type;
    }
    return failWith(version, VANTREL_STATUS_INVALID_OPTION, failedType);
}

}  // namespace

VantrelStatus VantrelClientGetVersion(VantrelClient *client, VantrelVersion *version, VantrelFile *file) {
    if (client == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    if (file != nullptr) {
        VantrelStatus status = checkOwner(client, file);
        if (status != VANTREL_STATUS_NO_ERROR)
            return keepStatus(client, status);
    }
    uint32_t dataLength = sizeof(VantrelVersion);
    return keepStatus(client,
                      callVantrel(operationVersion, file, version, &dataLength, nullptr, 0, 0, client));
}

VantrelStatus VantrelVersionAllocate(VantrelVersion **version) {
    return allocateRecord(version);
}

VantrelStatus VantrelVersionFree(VantrelVersion *version) {
    free(version);
    return VANTREL_STATUS_NO_ERROR;
}

int32_t VantrelVersionGetClientVersionNumber(VantrelVersion *version) {
    return getNumber(version, &VantrelVersion::client, &VersionEntry::versionNumber);
}

int32_t VantrelVersionGetClientRevisionNumber(VantrelVersion *version) {
    return getNumber(version, &VantrelVersion::client, &VersionEntry::revisionNumber);
}

VantrelVersionType VantrelVersionGetClientVersionType(VantrelVersion *version) {
    return getType(version, &VantrelVersion::client);
}

int32_t VantrelVersionGetLocalVersionNumber(VantrelVersion *version) {
    return getNumber(version, &VantrelVersion::local, &VersionEntry::versionNumber);
}

int32_t VantrelVersionGetLocalRevisionNumber(VantrelVersion *version) {
    return getNumber(version, &VantrelVersion::local, &VersionEntry::revisionNumber);
}

VantrelVersionType VantrelVersionGetLocalVersionType(VantrelVersion *version) {
    return getType(version, &VantrelVersion::local);
}

int32_t VantrelVersionGetRemoteVersionNumber(VantrelVersion *version) {
    return getNumber(version, &VantrelVersion::remote, &VersionEntry::versionNumber);
}

int32_t VantrelVersionGetRemoteRevisionNumber(VantrelVersion *version) {
    return getNumber(version, &VantrelVersion::remote, &VersionEntry::revisionNumber);
}

VantrelVersionType VantrelVersionGetRemoteVersionType(VantrelVersion *version) {
    return getType(version, &VantrelVersion::remote);
}

VantrelStatus VantrelVersionGetLastStatusCode(const VantrelVersion *version) {
    return version == nullptr ? VANTREL_STATUS_INVALID_POINTER_PARAMETER : lastStatus(version);
}
