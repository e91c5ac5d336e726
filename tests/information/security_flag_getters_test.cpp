#include "information/information_test.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

constexpr FlagCase handleCases[] = {
    {"Trusted", VantrelFileInformationGetSecurityHandleTrusted, 0x0001},
    {"Implicit", VantrelFileInformationGetSecurityHandleImplicit, 0x0002},
    {"Explicit", VantrelFileInformationGetSecurityHandleExplicit, 0x0004},
    {"AuthenticationByDatabase", VantrelFileInformationGetSecurityHandleAuthenticationByDatabase, 0x0008},
    {"AuthorizationByDatabase", VantrelFileInformationGetSecurityHandleAuthorizationByDatabase, 0x0010},
    {"WindowsNamedPipe", VantrelFileInformationGetSecurityHandleWindowsNamedPipe, 0x0020},
    {"Workgroup", VantrelFileInformationGetSecurityHandleWorkgroup, 0x0040},
    {"Vnpasswd", VantrelFileInformationGetSecurityHandleVnpasswd, 0x0080},
    {"PAM", VantrelFileInformationGetSecurityHandlePAM, 0x0100},
    {"RTSSComplete", VantrelFileInformationGetSecurityHandleRTSSComplete, 0x0200},
    {"RTSSPreauthorized", VantrelFileInformationGetSecurityHandleRTSSPreauthorized, 0x0400},
    {"RTSSDisabled", VantrelFileInformationGetSecurityHandleRTSSDisabled, 0x0800},
};

constexpr FlagCase currentDatabaseCases[] = {
    {"Trusted", VantrelFileInformationGetSecurityCurrentDatabaseTrusted, 0x0001},
    {"Implicit", VantrelFileInformationGetSecurityCurrentDatabaseImplicit, 0x0002},
    {"Explicit", VantrelFileInformationGetSecurityCurrentDatabaseExplicit, 0x0004},
    {"AuthenticationByDatabase", VantrelFileInformationGetSecurityCurrentDatabaseAuthenticationByDatabase,
     0x0008},
    {"AuthorizationByDatabase", VantrelFileInformationGetSecurityCurrentDatabaseAuthorizationByDatabase,
     0x0010},
    {"WindowsNamedPipe", VantrelFileInformationGetSecurityCurrentDatabaseWindowsNamedPipe, 0x0020},
    {"Workgroup", VantrelFileInformationGetSecurityCurrentDatabaseWorkgroup, 0x0040},
    {"Vnpasswd", VantrelFileInformationGetSecurityCurrentDatabaseVnpasswd, 0x0080},
    {"PAM", VantrelFileInformationGetSecurityCurrentDatabasePAM, 0x0100},
    {"RTSSComplete", VantrelFileInformationGetSecurityCurrentDatabaseRTSSComplete, 0x0200},
    {"RTSSPreauthorized", VantrelFileInformationGetSecurityCurrentDatabaseRTSSPreauthorized, 0x0400},
    {"RTSSDisabled", VantrelFileInformationGetSecurityCurrentDatabaseRTSSDisabled, 0x0800},
};

class SecurityFlagGettersTest : public InformationTest {};

TEST_F(SecurityFlagGettersTest, MissingHandles) {
    for (const FlagCase &flag : handleCases)
        EXPECT_EQ(flag.get(nullptr), -1) << flag.name;
    for (const FlagCase &flag : currentDatabaseCases)
        EXPECT_EQ(flag.get(nullptr), -1) << flag.name;
}

TEST_F(SecurityFlagGettersTest, FlagsOfTheHandle) {
    for (const FlagCase &flag : handleCases) {
        SCOPED_TRACE(flag.name);
        expectFlag(flag.get, securityArea, static_cast<uint16_t>(flag.mask));
    }
}

TEST_F(SecurityFlagGettersTest, FlagsOfTheCurrentDatabase) {
    for (const FlagCase &flag : currentDatabaseCases) {
        SCOPED_TRACE(flag.name);
        expectFlag(flag.get, securityArea + 4, static_cast<uint16_t>(flag.mask));
    }
}

}  // namespace
