#include "embedded/operation/change.h"

#include "embedded/operation/reply.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

constexpr size_t longestRecord = 65535;

}  // namespace

Position &writablePosition(Session &session, const Request &request) {
    Position &position = session.position(request.positionBlock);
    if (position.isReadOnly)
        throw StatusError{VANTREL_STATUS_ACCESS_TO_FILE_DENIED};
    return position;
}

bool recordFits(const FileDefinition &definition, size_t length) {
    bool isVariable = (definition.fileFlags & fileFlag::variableLength) != 0;
    return isVariable ? length >= definition.recordLength && length <= longestRecord
                      : length == definition.recordLength;
}

ByteView recordIn(const Request &request, const FileDefinition &definition) {
    if (!recordFits(definition, request.offered))
        throw StatusError{VANTREL_STATUS_DATA_LENGTH_ERROR};
    return dataBytes(request, request.offered);
}

int32_t refuseDuplicate(Position &position, const DuplicateKey &duplicate) {
    position.conflictAddress = duplicate.address;
    position.conflictIndex = duplicate.index;
    return VANTREL_STATUS_DUPLICATE_KEY_VALUE;
}

StoredRecord currentRecord(ChangeScope &scope, Position &position) {
    int64_t address = *position.physical;
    if (!scope.tryLock(address))
        throw StatusError{VANTREL_STATUS_RECORD_IN_USE};
    StoredRecord record;
    if (!position.file->storage().readRecord(address, &record) || record.updateTime != *position.version)
        throw StatusError{VANTREL_STATUS_CONFLICT};
    return record;
}

void settleLocks(Session &session, Position &position, int64_t address) {
    if (!session.insideTransaction() && position.lockKind == LockKind::single)
        position.file->unlock(position, address);
}

}  // namespace vantrel::embedded
