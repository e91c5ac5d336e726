#include "information/getters.h"

using namespace vantrel;

namespace {

// In the order of the names.
enum Name : uint32_t {
    handleDatabaseName,
    handleTableName,
    handleUserName,
    currentDatabaseName,
    currentUserName
};

// The terminator goes to the last byte of the buffer, not behind the name.
VantrelStatus getName(VantrelFileInformation *information, Name wanted, char *buffer, int32_t size) {
    if (information == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    if (buffer == nullptr)
        return keepStatus(information, VANTREL_STATUS_INVALID_POINTER_PARAMETER);
    SecurityReply reply = loadReply<SecurityReply>(information);
    uint32_t offset = sizeof reply;
    for (uint32_t name = 0; name < wanted; ++name)
        offset += loadU16(reply.nameLengths[name]);
    int32_t length = loadU16(reply.nameLengths[wanted]);
    if (length > size || offset + static_cast<uint32_t>(length) > sizeof information->security)
        return keepStatus(information, VANTREL_STATUS_INVALID_OPTION);
    copyText(buffer, information->security + offset, static_cast<uint32_t>(length));
    if (size > 0)
        buffer[size - 1] = '\0';
    return keepStatus(information, VANTREL_STATUS_NO_ERROR);
}

}  // namespace

VantrelStatus VantrelFileInformationGetSecurityHandleDatabaseName(VantrelFileInformation *information,
                                                                  char *buffer, int32_t size) {
    return getName(information, handleDatabaseName, buffer, size);
}

VantrelStatus VantrelFileInformationGetSecurityHandleTableName(VantrelFileInformation *information,
                                                               char *buffer, int32_t size) {
    return getName(information, handleTableName, buffer, size);
}

VantrelStatus VantrelFileInformationGetSecurityHandleUserName(VantrelFileInformation *information,
                                                              char *buffer, int32_t size) {
    return getName(information, handleUserName, buffer, size);
}

VantrelStatus VantrelFileInformationGetSecurityCurrentDatabaseName(VantrelFileInformation *information,
                                                                   char *buffer, int32_t size) {
    return getName(information, currentDatabaseName, buffer, size);
}

VantrelStatus VantrelFileInformationGetSecurityCurrentUserName(VantrelFileInformation *information,
                                                               char *buffer, int32_t size) {
    return getName(information, currentUserName, buffer, size);
}
