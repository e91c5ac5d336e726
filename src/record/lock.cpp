#include <cstring>

#include "record/key_call.h"

using namespace vantrel;

namespace {

// What an unlock releases, as the engine's key number.
constexpr int32_t unlockSingle = 0;
constexpr int32_t unlockPosition = -1;
constexpr int32_t unlockAllMultiple = -2;

uint32_t sizeWithTerminator(const char *text) {
    return static_cast<uint32_t>(strlen(text) + 1);
}

}  // namespace

VantrelStatus VantrelFileRecordUnlock(VantrelFile *file, VantrelUnlockMode unlockMode) {
    if (file == nullptr)
        return VANTREL_STATUS_FILE_NOT_OPEN;
    if (owningClient(file) == nullptr)
        return keepStatus(file, VANTREL_STATUS_INVALID_POINTER_PARAMETER);
    if (unlockMode != VANTREL_UNLOCK_MODE_SINGLE && unlockMode != VANTREL_UNLOCK_MODE_ALL_MULTIPLE)
        return keepStatus(file, VANTREL_STATUS_INVALID_OPTION);
    int32_t keyNumber = unlockMode == VANTREL_UNLOCK_MODE_SINGLE ? unlockSingle : unlockAllMultiple;
    return callFile(file, operationUnlock, nullptr, nullptr, nullptr, 0, keyNumber);
}

VantrelStatus VantrelFileUnlockCursorPosition(VantrelFile *file, VantrelCursorPosition cursorPosition) {
    uint8_t position[sizeof cursorPosition];
    storeI64(position, cursorPosition);
    uint32_t length = sizeof position;
    return callFile(file, operationUnlock, position, &length, nullptr, 0, unlockPosition);
}

VantrelStatus VantrelFileSetOwner(VantrelFile *file, VantrelOwnerMode ownerMode, const char *ownerName,
                                  const char *ownerNameAgain, int32_t isLongName) {
    if (file == nullptr)
        return VANTREL_STATUS_FILE_NOT_OPEN;
    if (ownerMode == VANTREL_OWNER_MODE_NONE)
        return callFile(file, operationClearOwner);
    if (owningClient(file) == nullptr || ownerName == nullptr || ownerNameAgain == nullptr)
        return keepStatus(file, VANTREL_STATUS_INVALID_POINTER_PARAMETER);
    if (ownerMode < VANTREL_OWNER_MODE_NO_ENCRYPTION_NO_READ_ALLOWED ||
        ownerMode > VANTREL_OWNER_MODE_ENCRYPTION_READ_ALLOWED)
        return keepStatus(file, VANTREL_STATUS_INVALID_OPTION);
    uint32_t length = sizeWithTerminator(ownerName);
    return callFile(file, isLongName != 0 ? operationSetLongOwner : operationSetOwner,
                    const_cast<char *>(ownerName), &length, const_cast<char *>(ownerNameAgain),
                    sizeWithTerminator(ownerNameAgain), ownerMode - 1);
}
