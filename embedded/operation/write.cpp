#include <cstring>

#include "embedded/operation/operations.h"
#include "embedded/operation/record_change.h"
#include "embedded/operation/reply.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

constexpr uint32_t longestRecord = 65535;

Position &writablePosition(Session &session, const Request &request) {
    Position &position = session.position(request.positionBlock);
    if (position.isReadOnly)
        throw StatusError{VANTREL_STATUS_ACCESS_TO_FILE_DENIED};
    return position;
}

// A fixed-length record has its file's length, a variable one at least the length of the fixed part.
ByteView recordIn(const Request &request, const FileDefinition &definition) {
    bool isVariable = (definition.fileFlags & fileFlag::variableLength) != 0;
    bool fits = isVariable ? request.offered >= definition.recordLength && request.offered <= longestRecord
                           : request.offered == definition.recordLength;
    if (!fits)
        throw StatusError{VANTREL_STATUS_DATA_LENGTH_ERROR};
    return dataBytes(request, request.offered);
}

int32_t refuseDuplicate(Position &position, const DuplicateKey &duplicate) {
    position.conflictAddress = duplicate.address;
    position.conflictIndex = duplicate.index;
    return VANTREL_STATUS_DUPLICATE_KEY_VALUE;
}

// The current record as it is stored now, under the write transaction. A record that another session has
// locked is status 84, one that another session changed or deleted since it was read 80.
StoredRecord currentRecord(Position &position) {
    OpenFile &file = *position.file;
    int64_t address = *position.physical;
    if (file.lockFile().recordIsLockedByAnother(address))
        throw StatusError{VANTREL_STATUS_RECORD_IN_USE};
    StoredRecord record;
    if (!file.storage().readRecord(address, &record) || record.updateTime != *position.version)
        throw StatusError{VANTREL_STATUS_CONFLICT};
    return record;
}

// Inside a transaction changed records stay locked for others until it ends; outside one the change releases
// the single lock.
void settleLocks(Session &session, Position &position, int64_t address) {
    if (session.insideTransaction())
        position.file->lockChanged(address);
    else if (position.lockKind == LockKind::single)
        position.file->unlock(position, address);
}

}  // namespace

int32_t insertRecord(Session &session, Request &request) {
    Position &position = writablePosition(session, request);
    OpenFile &file = *position.file;
    bool namesIndex = request.keyNumber != VANTREL_INDEX_NONE;
    if (namesIndex)
        file.index(request.keyNumber);
    Bytes record(recordIn(request, *file.storage().definition()));

    ChangeScope scope(session, file);
    RecordChange change(file.storage());
    std::shared_ptr<const IndexDefinition> index = namesIndex ? file.index(request.keyNumber) : nullptr;
    if (auto duplicate = change.prepareInsert(record))
        return refuseDuplicate(position, *duplicate);
    scope.beginChanges();
    auto [address, version] = change.apply();
    scope.commit();

    memcpy(request.data, record.data(), record.size());
    position.setCurrent(address, version);
    if (index != nullptr) {
        if (const Bytes *key = change.newKey(index->number))
            position.setLogical(index->number, *key, address);
        deliverKey(request, *index, change.record());
    }
    return VANTREL_STATUS_NO_ERROR;
}

int32_t updateRecord(Session &session, Request &request) {
    Position &position = writablePosition(session, request);
    if (!position.version)
        return VANTREL_STATUS_POSITION_NOT_SET;
    OpenFile &file = *position.file;
    ByteView record = recordIn(request, *file.storage().definition());

    ChangeScope scope(session, file);
    RecordChange change(file.storage());
    StoredRecord old = currentRecord(position);
    if (auto duplicate = change.prepareUpdate(old, record))
        return refuseDuplicate(position, *duplicate);
    scope.beginChanges();
    auto [address, version] = change.apply();
    scope.commit();

    file.recordChanged(address, version, session.insideTransaction());
    settleLocks(session, position, address);
    return VANTREL_STATUS_NO_ERROR;
}

int32_t deleteRecord(Session &session, Request &request) {
    Position &position = writablePosition(session, request);
    if (!position.version)
        return VANTREL_STATUS_POSITION_NOT_SET;
    OpenFile &file = *position.file;

    ChangeScope scope(session, file);
    RecordChange change(file.storage());
    StoredRecord old = currentRecord(position);
    change.prepareDelete(old);
    scope.beginChanges();
    int64_t address = change.apply().address;
    scope.commit();

    file.recordDeleted(address);
    settleLocks(session, position, address);
    return VANTREL_STATUS_NO_ERROR;
}

}  // namespace vantrel::embedded
