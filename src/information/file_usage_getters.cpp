#include "information/getters.h"

using namespace vantrel;

namespace {

constexpr uint32_t flagExplicitLocks = 0x0001;
constexpr uint32_t flagClientTransactions = 0x0002;
constexpr uint32_t flagReadOnly = 0x0004;
constexpr uint32_t flagContinuousOperation = 0x0008;
constexpr uint32_t flagReferentialIntegrityConstraints = 0x0010;
constexpr uint32_t flagWrongOwner = 0x0080;

// Bits of the usage flags.
constexpr EnumerationMap<5> ownerModeMap = {0x0160, {0x0000, 0x0020, 0x0040, 0x0120, 0x0140}};
constexpr EnumerationMap<5> encryptionTypeMap = {0x3C00, {0x0000, 0x0400, 0x0800, 0x1000, 0x2000}};

}  // namespace

int32_t VantrelFileInformationGetIdentifier(VantrelFileInformation *information) {
    return getNumber(information, &FileUsageReply::identifier);
}

int32_t VantrelFileInformationGetHandleCount(VantrelFileInformation *information) {
    return getNumber(information, &FileUsageReply::handleCount);
}

int32_t VantrelFileInformationGetOpenTimestamp(VantrelFileInformation *information) {
    return getNumber(information, &FileUsageReply::openTimestamp);
}

int32_t VantrelFileInformationGetUsageCount(VantrelFileInformation *information) {
    return getNumber(information, &FileUsageReply::usageCount);
}

int32_t VantrelFileInformationGetExplicitLocks(VantrelFileInformation *information) {
    return getFlag(information, &FileUsageReply::flags, flagExplicitLocks);
}

int32_t VantrelFileInformationGetClientTransactions(VantrelFileInformation *information) {
    return getFlag(information, &FileUsageReply::flags, flagClientTransactions);
}

int32_t VantrelFileInformationGetReadOnly(VantrelFileInformation *information) {
    return getFlag(information, &FileUsageReply::flags, flagReadOnly);
}

int32_t VantrelFileInformationGetContinuousOperation(VantrelFileInformation *information) {
    return getFlag(information, &FileUsageReply::flags, flagContinuousOperation);
}

int32_t VantrelFileInformationGetReferentialIntegrityConstraints(VantrelFileInformation *information) {
    return getFlag(information, &FileUsageReply::flags, flagReferentialIntegrityConstraints);
}

int32_t VantrelFileInformationGetWrongOwner(VantrelFileInformation *information) {
    return getFlag(information, &FileUsageReply::flags, flagWrongOwner);
}

VantrelOwnerMode VantrelFileInformationGetOwnerMode(VantrelFileInformation *information) {
    return getEnumeration(information, &FileUsageReply::flags, ownerModeMap);
}

VantrelEncryptionType VantrelFileInformationGetEncryptionType(VantrelFileInformation *information) {
    return getEnumeration(information, &FileUsageReply::flags, encryptionTypeMap);
}
