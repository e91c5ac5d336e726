#include <unistd.h>

#include "embedded/operation/key_only.h"
#include "embedded/operation/operations.h"
#include "embedded/operation/path.h"
#include "embedded/operation/reply.h"
#include "embedded/operation/structure.h"
#include "embedded/system_error.h"

namespace vantrel::embedded {

namespace {

constexpr int32_t keyNumberDelete = -128;
constexpr int32_t keyNumberRename = -127;
constexpr int32_t firstNamedIndex = 0x80;
constexpr int32_t lastNamedIndex = 0xFF;

struct CreateMode {
    bool replaces = false;
    std::optional<uint8_t> indexNumber;
};

CreateMode createModeOf(int32_t keyNumber) {
    switch (keyNumber) {
        case 0:
        case 6:
            return {.replaces = true, .indexNumber = {}};
        case -1:
        case 7:
            return {};
        case 99:
        case 100:
            throw StatusError{VANTREL_STATUS_OSTRAND_CANT_FIND_ENGINE};
        default:
            if (keyNumber < firstNamedIndex || keyNumber > lastNamedIndex)
                throw StatusError{VANTREL_STATUS_INVALID_KEY_OPTION};
            return {.replaces = false, .indexNumber = namedIndexNumber(keyNumber)};
    }
}

void requireWritableDirectory(const std::string &path) {
    std::string directory = path.substr(0, path.rfind('/') + 1);
    if (access(directory.c_str(), W_OK | X_OK) != 0)
        throwSystemError(errno);
}

int32_t deleteFile(Session &session, const std::string &path) {
    requireFile(path);
    requireWritableDirectory(path);
    LockFile nobodyElse(path, LockFile::Sharing::exclusive, session.lockUser);
    // Whatever is no file of this format is left alone.
    requireStorage(path);
    removeStorage(path);
    return VANTREL_STATUS_NO_ERROR;
}

int32_t renameFile(Session &session, const std::string &from, const std::string &to) {
    requireFile(from);
    if (pathExists(to))
        return VANTREL_STATUS_FILE_ALREADY_EXISTS;
    requireWritableDirectory(from);
    requireWritableDirectory(to);
    LockFile nobodyElse(from, LockFile::Sharing::exclusive, session.lockUser);
    LockFile nobodyThere(to, LockFile::Sharing::exclusive, session.lockUser);
    moveStorage(from, to);
    return VANTREL_STATUS_NO_ERROR;
}

}  // namespace

int32_t createFile(Session &session, Request &request) {
    refuseInsideTransaction(session);
    if (request.keyNumber == keyNumberDelete)
        return deleteFile(session, resolvePath(session, textInKey(request)));
    if (request.keyNumber == keyNumberRename) {
        std::string from = resolvePath(session, textInData(request));
        return renameFile(session, from, resolvePath(session, textInKey(request)));
    }
    CreateMode mode = createModeOf(request.keyNumber);
    std::string path = resolvePath(session, textInKey(request));
    FileDefinition definition = parseCreateRequest(dataBytes(request, request.offered));
    checkKeyOnly(definition);
    if (mode.indexNumber && definition.indexes.size() == 1)
        definition.indexes.front().number = *mode.indexNumber;

    bool exists = pathExists(path);
    if (exists && !mode.replaces)
        return VANTREL_STATUS_FILE_ALREADY_EXISTS;
    if (exists)
        requireFile(path);
    requireWritableDirectory(path);
    LockFile nobodyElse(path, LockFile::Sharing::exclusive, session.lockUser);
    if (exists)
        requireStorage(path);
    createStorage(path, definition);
    return VANTREL_STATUS_NO_ERROR;
}

}  // namespace vantrel::embedded
