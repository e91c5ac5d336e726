#include <cstring>

#include "embedded/operation/change.h"
#include "embedded/operation/operations.h"
#include "embedded/operation/reply.h"
#include "vantrel.h"

namespace vantrel::embedded {

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
    scope.noteVersionBefore(address, std::nullopt);
    std::optional<LogicalPlace> place;
    if (const Bytes *key = index == nullptr ? nullptr : change.newKey(index->number))
        place = LogicalPlace{index->number, *key, address};
    if (index != nullptr)
        deliverKey(request, *index, change.record());
    scope.commit();

    // Nothing fails from here on. The caller's bytes may be constant: they are written only where a field was
    // filled in.
    if (!record.empty() && memcmp(request.data, record.data(), record.size()) != 0)
        memcpy(request.data, record.data(), record.size());
    position.setCurrent(address, version);
    if (place)
        position.logical = std::move(place);
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
    StoredRecord old = currentRecord(scope, position);
    if (auto duplicate = change.prepareUpdate(old, record))
        return refuseDuplicate(position, *duplicate);
    scope.noteVersionBefore(old.address, old.updateTime);
    scope.beginChanges();
    auto [address, version] = change.apply();
    scope.commit();

    file.recordChanged(address, old.updateTime, version);
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
    StoredRecord old = currentRecord(scope, position);
    change.prepareDelete(old);
    scope.noteVersionBefore(old.address, old.updateTime);
    scope.beginChanges();
    int64_t address = change.apply().address;
    scope.commit();

    file.recordDeleted(position, address, old.updateTime, session.insideTransaction());
    settleLocks(session, position, address);
    return VANTREL_STATUS_NO_ERROR;
}

}  // namespace vantrel::embedded
