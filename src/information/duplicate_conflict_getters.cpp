#include "information/getters.h"

using namespace vantrel;

VantrelCursorPosition VantrelFileInformationGetDuplicateRecordConflictCursorPosition(
    VantrelFileInformation *information) {
    return getNumber(information, &DuplicateConflictReply::cursorPosition);
}

VantrelIndex VantrelFileInformationGetDuplicateRecordConflictIndex(VantrelFileInformation *information) {
    return getNumber(information, &DuplicateConflictReply::index, noEnumerationValue);
}
