#include "information/getters.h"

using namespace vantrel;

namespace {

constexpr uint32_t permissionOpen = 0x0001;
constexpr uint32_t permissionCreateRecord = 0x0002;
constexpr uint32_t permissionUpdate = 0x0004;
constexpr uint32_t permissionCreateFile = 0x0008;
constexpr uint32_t permissionDelete = 0x0010;
constexpr uint32_t permissionExecute = 0x0020;
constexpr uint32_t permissionAlter = 0x0040;
constexpr uint32_t permissionRefer = 0x0080;
constexpr uint32_t permissionCreateView = 0x0100;
constexpr uint32_t permissionCreateStoredProcedure = 0x0200;

}  // namespace

int32_t VantrelFileInformationGetSecurityPermissionNoRights(VantrelFileInformation *information) {
    int32_t anyRight = getFlag(information, &SecurityReply::permissions);
    return anyRight == noValue ? noValue : !anyRight;
}

int32_t VantrelFileInformationGetSecurityPermissionOpen(VantrelFileInformation *information) {
    return getFlag(information, &SecurityReply::permissions, permissionOpen);
}

// A file that may be opened may be read.
int32_t VantrelFileInformationGetSecurityPermissionRead(VantrelFileInformation *information) {
    return VantrelFileInformationGetSecurityPermissionOpen(information);
}

int32_t VantrelFileInformationGetSecurityPermissionCreateRecord(VantrelFileInformation *information) {
    return getFlag(information, &SecurityReply::permissions, permissionCreateRecord);
}

int32_t VantrelFileInformationGetSecurityPermissionUpdate(VantrelFileInformation *information) {
    return getFlag(information, &SecurityReply::permissions, permissionUpdate);
}

int32_t VantrelFileInformationGetSecurityPermissionCreateFile(VantrelFileInformation *information) {
    return getFlag(information, &SecurityReply::permissions, permissionCreateFile);
}

int32_t VantrelFileInformationGetSecurityPermissionDelete(VantrelFileInformation *information) {
    return getFlag(information, &SecurityReply::permissions, permissionDelete);
}

int32_t VantrelFileInformationGetSecurityPermissionExecute(VantrelFileInformation *information) {
    return getFlag(information, &SecurityReply::permissions, permissionExecute);
}

int32_t VantrelFileInformationGetSecurityPermissionAlter(VantrelFileInformation *information) {
    return getFlag(information, &SecurityReply::permissions, permissionAlter);
}

int32_t VantrelFileInformationGetSecurityPermissionRefer(VantrelFileInformation *information) {
    return getFlag(information, &SecurityReply::permissions, permissionRefer);
}

int32_t VantrelFileInformationGetSecurityPermissionCreateView(VantrelFileInformation *information) {
    return getFlag(information, &SecurityReply::permissions, permissionCreateView);
}

int32_t VantrelFileInformationGetSecurityPermissionCreateStoredProcedure(
    VantrelFileInformation *information) {
    return getFlag(information, &SecurityReply::permissions, permissionCreateStoredProcedure);
}
