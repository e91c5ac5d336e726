#include "information/information_test.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

constexpr size_t permissions = securityArea + 8;

constexpr FlagCase permissionCases[] = {
    {"Open", VantrelFileInformationGetSecurityPermissionOpen, 0x0001},
    {"Read", VantrelFileInformationGetSecurityPermissionRead, 0x0001},
    {"CreateRecord", VantrelFileInformationGetSecurityPermissionCreateRecord, 0x0002},
    {"Update", VantrelFileInformationGetSecurityPermissionUpdate, 0x0004},
    {"CreateFile", VantrelFileInformationGetSecurityPermissionCreateFile, 0x0008},
    {"Delete", VantrelFileInformationGetSecurityPermissionDelete, 0x0010},
    {"Execute", VantrelFileInformationGetSecurityPermissionExecute, 0x0020},
    {"Alter", VantrelFileInformationGetSecurityPermissionAlter, 0x0040},
    {"Refer", VantrelFileInformationGetSecurityPermissionRefer, 0x0080},
    {"CreateView", VantrelFileInformationGetSecurityPermissionCreateView, 0x0100},
    {"CreateStoredProcedure", VantrelFileInformationGetSecurityPermissionCreateStoredProcedure, 0x0200},
};

class SecurityPermissionGettersTest : public InformationTest {
  protected:
    void setPermissions(uint32_t bits) {
        storeU32(at(permissions), bits);
        resetStatus();
    }
};

TEST_F(SecurityPermissionGettersTest, MissingHandles) {
    EXPECT_EQ(VantrelFileInformationGetSecurityPermissionNoRights(nullptr), -1);
    for (const FlagCase &permission : permissionCases)
        EXPECT_EQ(permission.get(nullptr), -1) << permission.name;
}

TEST_F(SecurityPermissionGettersTest, PermissionsAreBitsOfTheLowHalf) {
    for (const FlagCase &permission : permissionCases) {
        SCOPED_TRACE(permission.name);
        expectFlag(permission.get, permissions, static_cast<uint16_t>(permission.mask));
    }
}

TEST_F(SecurityPermissionGettersTest, NoRightsNeedsAllOfTheWordClear) {
    auto noRights = VantrelFileInformationGetSecurityPermissionNoRights;
    expectReads(noRights, permissions, {0, 0, 0, 0}, 1);
    expectReads(noRights, permissions, {0xFF, 0xFF, 0xFF, 0xFF}, 0);
    for (uint32_t bit = 0; bit < 32; ++bit) {
        SCOPED_TRACE(bit);
        setPermissions(1u << bit);
        EXPECT_EQ(noRights(information), 0);
        EXPECT_EQ(status(), 0);
    }
}

TEST_F(SecurityPermissionGettersTest, BitsWithoutAMeaningAreNotReported) {
    setPermissions(0xFFFFFC00);
    for (const FlagCase &permission : permissionCases)
        EXPECT_EQ(permission.get(information), 0) << permission.name;
    EXPECT_EQ(VantrelFileInformationGetSecurityPermissionNoRights(information), 0);
}

}  // namespace
