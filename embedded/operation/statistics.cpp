#include <sys/stat.h>

#include <algorithm>

#include "embedded/key/little_endian.h"
#include "embedded/operation/lock_owner.h"
#include "embedded/operation/operations.h"
#include "embedded/operation/reply.h"
#include "engine/bytes.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

constexpr ByteView signature = "ExSt";
constexpr uint32_t requestSize = 8;

enum SubFunction : uint32_t {
    segmentFiles = 1,
    systemData = 2,
    duplicateConflict = 3,
    fileUsage = 4,
    gateway = 5,
    lockOwner = 6,
    security = 7,
    referentialIntegrity = 8,
};

constexpr uint32_t usageExplicitLocks = 0x0001;
constexpr uint32_t usageTransactions = 0x0002;
constexpr uint32_t usageReadOnly = 0x0004;
constexpr uint32_t usageContinuousOperation = 0x0008;
constexpr uint32_t usageOwnerDenies = 0x0020;
constexpr uint32_t usageOwnerLetsRead = 0x0040;
constexpr uint32_t usageWrongOwner = 0x0080;
constexpr uint32_t usageEncrypted = 0x0100;
constexpr uint32_t usageAes256 = 0x2000;

constexpr uint32_t rightsToRead = 0x001;
constexpr uint32_t allRights = 0x3FF;

Bytes duplicateConflictReply(const Position &position) {
    Bytes reply;
    appendNumber(reply, static_cast<uint64_t>(position.conflictAddress), 8);
    appendNumber(reply, position.conflictIndex, 2);
    return reply;
}

// Whether the times of the records are indexed; and the index by which a log could name each record: that of
// the times, or else the first unique one.
Bytes systemDataReply(const FileDefinition &definition) {
    bool hasTimes = !definition.systemIndexes.empty();
    const IndexDefinition *logIndex = hasTimes ? &definition.systemIndexes.back() : nullptr;
    for (const IndexDefinition &index : definition.indexes) {
        if (logIndex == nullptr && index.unique)
            logIndex = &index;
    }
    Bytes reply;
    appendNumber(reply, hasTimes, 1);
    appendNumber(reply, hasTimes, 1);
    appendNumber(reply, logIndex != nullptr, 1);
    appendNumber(reply, logIndex != nullptr ? logIndex->number : 0, 1);
    appendNumber(reply, hasTimes ? definition.systemIndexes.back().keyLength : 0, 2);
    appendNumber(reply, definition.systemIndexes.size(), 2);
    return reply;
}

// A number that stays with the file: of its inode, which no other file on the device has.
uint32_t fileIdentifier(const std::string &path) {
    struct stat status;
    if (stat(path.c_str(), &status) != 0)
        return 0;
    return static_cast<uint32_t>(status.st_ino ^ (static_cast<uint64_t>(status.st_ino) >> 32) ^
                                 status.st_dev);
}

uint32_t ownerFlags(const Position &position) {
    std::optional<OwnerMode> owner = position.file->storage().owner();
    if (!owner)
        return 0;
    return (owner->isReadable ? usageOwnerLetsRead : usageOwnerDenies) |
           (owner->isEncrypted ? usageEncrypted | usageAes256 : 0) |
           (position.isWithoutOwner ? usageWrongOwner : 0);
}

Bytes fileUsageReply(Session &session, Position &position) {
    OpenFile &file = *position.file;
    bool hasLocks = std::any_of(file.positions().begin(), file.positions().end(),
                                [](const Position *other) { return !other->locks.empty(); });
    uint32_t handleCount = file.lockFile().handleCount();
    uint32_t flags =
        (hasLocks ? usageExplicitLocks : 0) | (session.insideTransaction() ? usageTransactions : 0) |
        (position.isReadOnly ? usageReadOnly : 0) |
        (file.lockFile().isInContinuousOperation() ? usageContinuousOperation : 0) | ownerFlags(position);
    Bytes reply;
    appendNumber(reply, fileIdentifier(file.path()), 4);
    appendNumber(reply, handleCount, 4);
    appendNumber(reply, file.openTime(), 4);
    appendNumber(reply, handleCount, 4);
    appendNumber(reply, flags, 2);
    appendNumber(reply, 0, 2);
    return reply;
}

// The rights of the handle, and five names behind their lengths: database, table and user of the handle,
// current database and current user.
Bytes securityReply(const Session &session, const Position &position) {
    const std::string &path = position.file->path();
    std::string table = path.substr(path.rfind('/') + 1);
    const std::string *names[] = {&session.login.database, &table, &session.login.user,
                                  &session.login.database, &session.login.user};
    Bytes reply(8, '\0');
    appendNumber(reply, position.isReadOnly ? rightsToRead : allRights, 4);
    for (const std::string *name : names)
        appendNumber(reply, name->size() + 1, 2);
    for (const std::string *name : names)
        reply.append(name->c_str(), name->size() + 1);
    return reply;
}

// The count of segments is one more than their number, as readers of the reply expect; the entries are the
// paths with their terminators.
Bytes segmentFilesReply(const std::string &path) {
    Bytes reply;
    appendNumber(reply, 2, 4);
    appendNumber(reply, 1, 4);
    appendNumber(reply, path.size() + 1, 4);
    reply.append(path.c_str(), path.size() + 1);
    return reply;
}

Bytes replyTo(uint32_t subFunction, Session &session, Position &position) {
    switch (subFunction) {
        case segmentFiles:
            return segmentFilesReply(position.file->path());
        case systemData:
            return systemDataReply(*position.file->storage().definition());
        case duplicateConflict:
            return duplicateConflictReply(position);
        case fileUsage:
            return fileUsageReply(session, position);
        case gateway:
            return Bytes(72, '\0');
        case lockOwner:
            return lockOwnerReply(session.lockUser.refusal);
        case security:
            return securityReply(session, position);
        case referentialIntegrity:
            return Bytes(267, '\0');
        default:
            throw StatusError{VANTREL_STATUS_OPERATION_NOT_ALLOWED};
    }
}

}  // namespace

int32_t statistics(Session &session, Request &request) {
    Position &position = session.position(request.positionBlock);
    session.touch(*position.file);
    Storage &storage = position.file->storage();
    std::shared_ptr<const FileDefinition> definition = storage.definition();
    FileState state = storage.readState();
    uint64_t unusedPages = storage.unusedBytes() / definition->pageSize;
    Bytes reply =
        statisticsReply(*definition, state.recordCount,
                        static_cast<uint16_t>(std::min<uint64_t>(unusedPages, 0xFFFF)), state.uniqueCounts);
    if (request.keyLength > 0)
        request.key[0] = 0;  // the file is not segmented
    return deliverData(request, reply);
}

int32_t extendedStatistics(Session &session, Request &request) {
    Position &position = session.position(request.positionBlock);
    ByteView bytes = dataBytes(request, requestSize);
    if (bytes.substr(0, signature.size()) != signature)
        return VANTREL_STATUS_DATA_LENGTH_ERROR;
    uint32_t subFunction = loadU32(request.data + signature.size());
    return deliverData(request, replyTo(subFunction, session, position));
}

}  // namespace vantrel::embedded
