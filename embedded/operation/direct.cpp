#include "embedded/operation/operations.h"
#include "embedded/operation/read.h"
#include "embedded/operation/record_key.h"
#include "engine/bytes.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

constexpr uint32_t addressSize = 8;
constexpr uint32_t recordTimesSize = 24;
constexpr int32_t keyNumberOfRecordTimes = -3;
constexpr int32_t keyNumberOfChunk = -2;
constexpr ByteView recordTimesSignature = "SysD";

constexpr int32_t unlockSingle = 0;
constexpr int32_t unlockOneOfMultiple = -1;
constexpr int32_t unlockAllMultiple = -2;

int64_t addressIn(const Request &request) {
    return loadI64(reinterpret_cast<const uint8_t *>(dataBytes(request, addressSize).data()));
}

int32_t deliverRecordTimes(Position &position, Request &request) {
    if (dataBytes(request, recordTimesSize).substr(0, recordTimesSignature.size()) != recordTimesSignature)
        return VANTREL_STATUS_DATA_LENGTH_ERROR;
    StoredRecord record;
    if (!position.file->storage().readRecord(*position.physical, &record))
        return VANTREL_STATUS_POSITION_NOT_SET;
    storeU64(request.data + 8, record.createTime);
    storeU64(request.data + 16, record.updateTime);
    request.delivered = recordTimesSize;
    return VANTREL_STATUS_NO_ERROR;
}

}  // namespace

int32_t getPosition(Session &session, Request &request) {
    Position &position = session.position(request.positionBlock);
    if (!position.version)
        return VANTREL_STATUS_POSITION_NOT_SET;
    if (request.keyNumber == keyNumberOfRecordTimes)
        return deliverRecordTimes(position, request);
    dataBytes(request, addressSize);
    storeI64(request.data, *position.physical);
    request.delivered = addressSize;
    return VANTREL_STATUS_NO_ERROR;
}

int32_t readDirect(Session &session, Request &request) {
    if (request.keyNumber == keyNumberOfChunk)
        return readChunk(session, request);
    Position &position = session.position(request.positionBlock);
    bool namesIndex = request.keyNumber != VANTREL_INDEX_NONE;
    std::shared_ptr<const IndexDefinition> index =
        namesIndex ? position.file->index(request.keyNumber) : nullptr;
    int64_t address = addressIn(request);
    Storage &storage = position.file->storage();
    Bytes key;
    StoredEntry entry;
    int32_t status = findAndLock(session, position, request, &entry, [&](StoredEntry *found) -> int32_t {
        if (!storage.readRecord(address, &found->record))
            return VANTREL_STATUS_INVALID_RECORD_ADDRESS;
        if (index == nullptr)
            return VANTREL_STATUS_NO_ERROR;
        return encodedKeyOf(*index, found->record, key) ? VANTREL_STATUS_NO_ERROR
                                                        : VANTREL_STATUS_NULL_KEY_PATH;
    });
    if (status != VANTREL_STATUS_NO_ERROR)
        return status;
    entry.key = key;
    return deliverFound(position, request, index.get(), entry);
}

int32_t unlock(Session &session, Request &request) {
    Position &position = session.position(request.positionBlock);
    OpenFile &file = *position.file;
    switch (request.keyNumber) {
        case unlockSingle:
            if (position.lockKind == LockKind::single)
                file.unlockAll(position);
            return VANTREL_STATUS_NO_ERROR;
        case unlockOneOfMultiple: {
            int64_t address = addressIn(request);
            if (position.lockKind != LockKind::multiple || position.locks.count(address) == 0)
                return VANTREL_STATUS_LOCK_ERROR;
            file.unlock(position, address);
            return VANTREL_STATUS_NO_ERROR;
        }
        case unlockAllMultiple:
            file.unlockAll(position);
            return VANTREL_STATUS_NO_ERROR;
        default:
            return VANTREL_STATUS_INVALID_KEY_OPTION;
    }
}

}  // namespace vantrel::embedded
