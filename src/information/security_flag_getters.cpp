#include "information/getters.h"

using namespace vantrel;

namespace {

// Flags of the handle and of the current database alike.
constexpr uint32_t flagTrusted = 0x0001;
constexpr uint32_t flagImplicit = 0x0002;
constexpr uint32_t flagExplicit = 0x0004;
constexpr uint32_t flagAuthenticationByDatabase = 0x0008;
constexpr uint32_t flagAuthorizationByDatabase = 0x0010;
constexpr uint32_t flagWindowsNamedPipe = 0x0020;
constexpr uint32_t flagWorkgroup = 0x0040;
constexpr uint32_t flagVnpasswd = 0x0080;
constexpr uint32_t flagPAM = 0x0100;
constexpr uint32_t flagRTSSComplete = 0x0200;
constexpr uint32_t flagRTSSPreauthorized = 0x0400;
constexpr uint32_t flagRTSSDisabled = 0x0800;

}  // namespace

int32_t VantrelFileInformationGetSecurityHandleTrusted(VantrelFileInformation *information) {
    return getFlag(information, &SecurityReply::handleFlags, flagTrusted);
}

int32_t VantrelFileInformationGetSecurityHandleImplicit(VantrelFileInformation *information) {
    return getFlag(information, &SecurityReply::handleFlags, flagImplicit);
}

int32_t VantrelFileInformationGetSecurityHandleExplicit(VantrelFileInformation *information) {
    return getFlag(information, &SecurityReply::handleFlags, flagExplicit);
}

int32_t VantrelFileInformationGetSecurityHandleAuthenticationByDatabase(VantrelFileInformation *information) {
    return getFlag(information, &SecurityReply::handleFlags, flagAuthenticationByDatabase);
}

int32_t VantrelFileInformationGetSecurityHandleAuthorizationByDatabase(VantrelFileInformation *information) {
    return getFlag(information, &SecurityReply::handleFlags, flagAuthorizationByDatabase);
}

int32_t VantrelFileInformationGetSecurityHandleWindowsNamedPipe(VantrelFileInformation *information) {
    return getFlag(information, &SecurityReply::handleFlags, flagWindowsNamedPipe);
}

int32_t VantrelFileInformationGetSecurityHandleWorkgroup(VantrelFileInformation *information) {
    return getFlag(information, &SecurityReply::handleFlags, flagWorkgroup);
}

int32_t VantrelFileInformationGetSecurityHandleVnpasswd(VantrelFileInformation *information) {
    return getFlag(information, &SecurityReply::handleFlags, flagVnpasswd);
}

int32_t VantrelFileInformationGetSecurityHandlePAM(VantrelFileInformation *information) {
    return getFlag(information, &SecurityReply::handleFlags, flagPAM);
}

int32_t VantrelFileInformationGetSecurityHandleRTSSComplete(VantrelFileInformation *information) {
    return getFlag(information, &SecurityReply::handleFlags, flagRTSSComplete);
}

int32_t VantrelFileInformationGetSecurityHandleRTSSPreauthorized(VantrelFileInformation *information) {
    return getFlag(information, &SecurityReply::handleFlags, flagRTSSPreauthorized);
}

int32_t VantrelFileInformationGetSecurityHandleRTSSDisabled(VantrelFileInformation *information) {
    return getFlag(information, &SecurityReply::handleFlags, flagRTSSDisabled);
}

int32_t VantrelFileInformationGetSecurityCurrentDatabaseTrusted(VantrelFileInformation *information) {
    return getFlag(information, &SecurityReply::currentDatabaseFlags, flagTrusted);
}

int32_t VantrelFileInformationGetSecurityCurrentDatabaseImplicit(VantrelFileInformation *information) {
    return getFlag(information, &SecurityReply::currentDatabaseFlags, flagImplicit);
}

int32_t VantrelFileInformationGetSecurityCurrentDatabaseExplicit(VantrelFileInformation *information) {
    return getFlag(information, &SecurityReply::currentDatabaseFlags, flagExplicit);
}

int32_t VantrelFileInformationGetSecurityCurrentDatabaseAuthenticationByDatabase(
    VantrelFileInformation *information) {
    return getFlag(information, &SecurityReply::currentDatabaseFlags, flagAuthenticationByDatabase);
}

int32_t VantrelFileInformationGetSecurityCurrentDatabaseAuthorizationByDatabase(
    VantrelFileInformation *information) {
    return getFlag(information, &SecurityReply::currentDatabaseFlags, flagAuthorizationByDatabase);
}

int32_t VantrelFileInformationGetSecurityCurrentDatabaseWindowsNamedPipe(
    VantrelFileInformation *information) {
    return getFlag(information, &SecurityReply::currentDatabaseFlags, flagWindowsNamedPipe);
}

int32_t VantrelFileInformationGetSecurityCurrentDatabaseWorkgroup(VantrelFileInformation *information) {
    return getFlag(information, &SecurityReply::currentDatabaseFlags, flagWorkgroup);
}

int32_t VantrelFileInformationGetSecurityCurrentDatabaseVnpasswd(VantrelFileInformation *information) {
    return getFlag(information, &SecurityReply::currentDatabaseFlags, flagVnpasswd);
}

int32_t VantrelFileInformationGetSecurityCurrentDatabasePAM(VantrelFileInformation *information) {
    return getFlag(information, &SecurityReply::currentDatabaseFlags, flagPAM);
}

int32_t VantrelFileInformationGetSecurityCurrentDatabaseRTSSComplete(VantrelFileInformation *information) {
    return getFlag(information, &SecurityReply::currentDatabaseFlags, flagRTSSComplete);
}

int32_t VantrelFileInformationGetSecurityCurrentDatabaseRTSSPreauthorized(
    VantrelFileInformation *information) {
    return getFlag(information, &SecurityReply::currentDatabaseFlags, flagRTSSPreauthorized);
}

int32_t VantrelFileInformationGetSecurityCurrentDatabaseRTSSDisabled(VantrelFileInformation *information) {
    return getFlag(information, &SecurityReply::currentDatabaseFlags, flagRTSSDisabled);
}
