#include "information/getters.h"

using namespace vantrel;

namespace {

constexpr uint16_t flagImplicitLock = 0x0001;
constexpr uint16_t flagExplicitLock = 0x0002;
constexpr uint16_t flagFileLock = 0x0010;
constexpr uint16_t flagPageLock = 0x0020;
constexpr uint16_t flagRecordLock = 0x0040;
constexpr uint16_t flagSameProcess = 0x0800;
constexpr uint16_t flagWriteNoWait = 0x1000;
constexpr uint16_t flagWriteHold = 0x2000;

// Where an explicit lock is held, the top two bits say which, from VANTREL_LOCK_MODE_SINGLE_WAIT on.
constexpr uint32_t explicitLockModeShift = 14;

// The first flag set tells the type of a page lock.
constexpr struct {
    uint16_t flag;
    VantrelPageLockType type;
} pageLockTypes[] = {
    {0x0100, VANTREL_PAGE_LOCK_TYPE_DATA_PAGE},
    {0x0200, VANTREL_PAGE_LOCK_TYPE_INDEX_PAGE},
    {0x0400, VANTREL_PAGE_LOCK_TYPE_VARIABLE_PAGE},
};

}  // namespace

int32_t VantrelFileInformationGetLockOwnerServiceAgentIdentifier(VantrelFileInformation *information) {
    return getNumber(information, &LockOwnerReply::serviceAgentIdentifier,
                     VANTREL_STATUS_INVALID_POINTER_PARAMETER);
}

int32_t VantrelFileInformationGetLockOwnerClientIdentifier(VantrelFileInformation *information) {
    return getNumber(information, &LockOwnerReply::clientIdentifier,
                     VANTREL_STATUS_INVALID_POINTER_PARAMETER);
}

int32_t VantrelFileInformationGetLockOwnerImplicitLock(VantrelFileInformation *information) {
    return getFlag(information, &LockOwnerReply::flags, flagImplicitLock);
}

int32_t VantrelFileInformationGetLockOwnerFileLock(VantrelFileInformation *information) {
    return getFlag(information, &LockOwnerReply::flags, flagFileLock);
}

int32_t VantrelFileInformationGetLockOwnerRecordLock(VantrelFileInformation *information) {
    return getFlag(information, &LockOwnerReply::flags, flagRecordLock);
}

int32_t VantrelFileInformationGetLockOwnerSameProcess(VantrelFileInformation *information) {
    return getFlag(information, &LockOwnerReply::flags, flagSameProcess);
}

int32_t VantrelFileInformationGetLockOwnerWriteNoWait(VantrelFileInformation *information) {
    return getFlag(information, &LockOwnerReply::flags, flagWriteNoWait);
}

int32_t VantrelFileInformationGetLockOwnerWriteHold(VantrelFileInformation *information) {
    return getFlag(information, &LockOwnerReply::flags, flagWriteHold);
}

VantrelLockMode VantrelFileInformationGetLockOwnerExplicitLockMode(VantrelFileInformation *information) {
    if (information == nullptr)
        return noEnumerationValue;
    uint16_t flags = loadU16(readReply<LockOwnerReply>(information).flags);
    if ((flags & flagExplicitLock) == 0)
        return VANTREL_LOCK_MODE_NONE;
    return VANTREL_LOCK_MODE_SINGLE_WAIT + (flags >> explicitLockModeShift);
}

VantrelPageLockType VantrelFileInformationGetLockOwnerPageLockType(VantrelFileInformation *information) {
    if (information == nullptr)
        return noEnumerationValue;
    uint16_t flags = loadU16(readReply<LockOwnerReply>(information).flags);
    if ((flags & flagPageLock) == 0)
        return VANTREL_PAGE_LOCK_TYPE_NONE;
    for (const auto &pageLock : pageLockTypes) {
        if ((flags & pageLock.flag) != 0)
            return pageLock.type;
    }
    return failWith(information, VANTREL_STATUS_INVALID_OPTION, noEnumerationValue);
}

int32_t VantrelFileInformationGetLockOwnerTimeInTransaction(VantrelFileInformation *information) {
    return getNumber(information, &LockOwnerReply::timeInTransaction);
}

VantrelIndex VantrelFileInformationGetLockOwnerIndex(VantrelFileInformation *information) {
    return getNumber(information, &LockOwnerReply::index, noEnumerationValue);
}

int32_t VantrelFileInformationGetLockOwnerTransactionLevel(VantrelFileInformation *information) {
    return getNumber(information, &LockOwnerReply::transactionLevel);
}

VantrelStatus VantrelFileInformationGetLockOwnerName(VantrelFileInformation *information, char *buffer,
                                                     int32_t size) {
    return getText(information, &LockOwnerReply::name, buffer, size);
}
