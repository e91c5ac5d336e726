#include "information/getters.h"

using namespace vantrel;

int32_t VantrelFileInformationGetReferentialIntegrityOperationCode(VantrelFileInformation *information) {
    return getNumber(information, &ReferentialIntegrityReply::operationCode);
}

VantrelCursorPosition VantrelFileInformationGetReferentialIntegrityCursorPosition(
    VantrelFileInformation *information) {
    return getNumber(information, &ReferentialIntegrityReply::cursorPosition);
}

VantrelStatus VantrelFileInformationGetReferentialIntegrityFileName(VantrelFileInformation *information,
                                                                    char *buffer, int32_t size) {
    return getText(information, &ReferentialIntegrityReply::fileName, buffer, size);
}
