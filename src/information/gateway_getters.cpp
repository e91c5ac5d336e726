#include "information/getters.h"

using namespace vantrel;

int32_t VantrelFileInformationGetGatewayMajorVersion(VantrelFileInformation *information) {
    return getNumber(information, &GatewayReply::majorVersion);
}

int32_t VantrelFileInformationGetGatewayMinorVersion(VantrelFileInformation *information) {
    return getNumber(information, &GatewayReply::minorVersion);
}

int32_t VantrelFileInformationGetGatewayPatchLevel(VantrelFileInformation *information) {
    return getNumber(information, &GatewayReply::patchLevel);
}

int32_t VantrelFileInformationGetGatewayPlatform(VantrelFileInformation *information) {
    return getNumber(information, &GatewayReply::platform);
}

VantrelStatus VantrelFileInformationGetGatewayName(VantrelFileInformation *information, char *buffer,
                                                   int32_t size) {
    return getText(information, &GatewayReply::name, buffer, size);
}
