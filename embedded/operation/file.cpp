#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "embedded/operation/live_sessions.h"
#include "embedded/operation/operations.h"
#include "embedded/operation/path.h"
#include "embedded/operation/reply.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

constexpr int32_t localVariantBase = 6;
constexpr int32_t firstRemoteVariant = 99;
constexpr int32_t lastRemoteVariant = 103;

enum class OpenMode : int32_t { normal = 0, accelerated = -1, readOnly = -2, verify = -3, exclusive = -4 };

OpenMode openModeOf(int32_t keyNumber) {
    if (keyNumber >= firstRemoteVariant && keyNumber <= lastRemoteVariant)
        throw StatusError{VANTREL_STATUS_OSTRAND_CANT_FIND_ENGINE};
    int32_t mode = keyNumber >= localVariantBase ? localVariantBase - keyNumber : keyNumber;
    if (mode > 0 || mode < static_cast<int32_t>(OpenMode::exclusive))
        throw StatusError{VANTREL_STATUS_INVALID_KEY_OPTION};
    return static_cast<OpenMode>(mode);
}

void checkAccess(const std::string &path, OpenMode mode) {
    requireFile(path);
    requireAccess(path, mode == OpenMode::readOnly ? R_OK : R_OK | W_OK);
}

// The file as the session has it open already, or opened for it now, and what the owner's name allows there.
OpenFile &openFileAt(Session &session, const std::string &path, OpenMode mode, ByteView ownerName,
                     Access *access) {
    OpenFile *known = session.findFile(path);
    bool isExclusive = mode == OpenMode::exclusive;
    if (known == nullptr) {
        StorageOptions options;
        options.readOnly = ::access(path.c_str(), W_OK) != 0;
        options.accelerated = mode == OpenMode::accelerated;
        options.ownerName = ownerName;
        auto sharing = isExclusive ? LockFile::Sharing::exclusive : LockFile::Sharing::shared;
        auto file = std::make_unique<OpenFile>(path, sharing, options, session.lockUser);
        *access = file->storage().authenticate(ownerName);
        return session.addFile(std::move(file));
    }
    *access = known->storage().authenticate(ownerName);
    if (isExclusive && (!known->positions().empty() || !known->lockFile().makeExclusive())) {
        known->lockFile().noteRefusal(openedFile);
        throw StatusError{VANTREL_STATUS_FILE_IN_USE};
    }
    return *known;
}

}  // namespace

int32_t openFile(Session &session, Request &request) {
    if (request.positionBlock == nullptr)
        return VANTREL_STATUS_FILE_NOT_OPEN;
    OpenMode mode = openModeOf(request.keyNumber);
    std::string path = resolvePath(session, textInKey(request));
    checkAccess(path, mode);
    Access access = Access::full;
    OpenFile &file = openFileAt(session, path, mode, ownerNameIn(request.data, request.offered), &access);
    try {
        if (mode == OpenMode::verify)
            file.storage().verify();
        file.storage().setAccelerated(mode == OpenMode::accelerated && file.allAccelerated());
        startHousekeeping();
        Position &position = session.addPosition(file, request.positionBlock);
        position.isWithoutOwner = access == Access::reading;
        position.isReadOnly = mode == OpenMode::readOnly || position.isWithoutOwner;
        position.isExclusive = mode == OpenMode::exclusive;
        position.isAccelerated = mode == OpenMode::accelerated;
    } catch (...) {
        if (mode == OpenMode::exclusive)
            file.lockFile().makeShared();
        session.removeFileIfUnused(file);
        throw;
    }
    return VANTREL_STATUS_NO_ERROR;
}

int32_t closeFile(Session &session, Request &request) {
    Position &position = session.position(request.positionBlock);
    OpenFile &file = *position.file;
    bool isLast = file.positions().size() == 1;
    // What cannot be synced keeps the position open.
    if ((position.isAccelerated || isLast) && !file.storage().isWriting()) {
        file.storage().setAccelerated(false);
        file.storage().sync();
    }
    session.removePosition(position);
    memset(request.positionBlock, 0, positionBlockSize);
    return VANTREL_STATUS_NO_ERROR;
}

}  // namespace vantrel::embedded
