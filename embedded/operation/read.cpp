#include "embedded/operation/read.h"

#include <algorithm>
#include <cstring>

#include "embedded/key/encoding.h"
#include "embedded/operation/key_only.h"
#include "embedded/operation/operations.h"
#include "engine/bytes.h"
#include "vantrel.h"

namespace vantrel::embedded {

void copyRecord(Storage &storage, const StoredRecord &record, uint64_t start, uint64_t length, void *target) {
    ByteView head =
        ByteView(record.data).substr(static_cast<size_t>(std::min<uint64_t>(start, record.data.size())));
    auto fromHead = static_cast<size_t>(std::min<uint64_t>(length, head.size()));
    if (fromHead != 0)
        memcpy(target, head.data(), fromHead);
    if (length > fromHead)
        storage.readTail(record.address, start + fromHead - headSize, length - fromHead,
                         static_cast<char *>(target) + fromHead);
}

int32_t deliverRecord(Request &request, Storage &storage, const StoredRecord &record) {
    if (request.keyOnly)
        return VANTREL_STATUS_NO_ERROR;
    uint64_t length = std::min<uint64_t>(request.offered, record.length);
    copyRecord(storage, record, 0, length, request.data);
    request.delivered = static_cast<uint32_t>(length);
    return length == record.length ? VANTREL_STATUS_NO_ERROR : VANTREL_STATUS_DATA_LENGTH_ERROR;
}

int32_t deliverFound(Position &position, Request &request, const IndexDefinition *index,
                     const StoredEntry &entry) {
    int64_t address = entry.record.address;
    uint64_t version = entry.record.updateTime;
    if (index != nullptr) {
        position.keepKey(entry.key);
        deliverKey(request, *index, entry.record);
    }
    // May end the validity of what was found.
    int32_t status = deliverRecord(request, position.file->storage(), entry.record);
    position.setCurrent(address, version);
    if (index != nullptr)
        position.setLogicalByKeptKey(index->number, address);
    return status;
}

int32_t searchKey(Storage &storage, uint16_t operation, uint8_t index, const Bytes &key, StoredEntry *entry) {
    bool isFound;
    switch (operation) {
        case codeGetEqual:
            isFound = storage.findEntry(index, Direction::forward, key, 0, entry) && entry->key == key;
            return isFound ? VANTREL_STATUS_NO_ERROR : VANTREL_STATUS_KEY_VALUE_NOT_FOUND;
        case codeGetGreater:
            isFound = storage.findEntry(index, Direction::forward, key, behindAllAddresses, entry);
            break;
        case codeGetGreaterOrEqual:
            isFound = storage.findEntry(index, Direction::forward, key, 0, entry);
            break;
        case codeGetLess:
            isFound = storage.findEntry(index, Direction::backward, key, 0, entry);
            break;
        default:
            isFound = storage.findEntry(index, Direction::backward, key, behindAllAddresses, entry);
            break;
    }
    return isFound ? VANTREL_STATUS_NO_ERROR : VANTREL_STATUS_END_OF_FILE;
}

namespace {

// Where next and previous go on after a search that found nothing.
int64_t placeAddressOf(uint16_t operation) {
    bool isBehindTheKey = operation == codeGetGreater || operation == codeGetLessOrEqual;
    return isBehindTheKey ? behindAllAddresses : 0;
}

int32_t readBySearch(Session &session, Position &position, Request &request, const IndexDefinition &index,
                     StoredEntry *entry) {
    thread_local Bytes key;
    key.clear();
    appendEncodedKey(index, keyBytes(request, index.keyLength), key);
    int32_t status = findAndLock(session, position, request, entry, [&](StoredEntry *found) {
        return searchKey(position.file->storage(), request.operation, index.number, key, found);
    });
    if (status != VANTREL_STATUS_NO_ERROR) {
        position.setLogical(index.number, key, placeAddressOf(request.operation));
        position.clearCurrent();
        position.physical.reset();
    }
    return status;
}

int32_t readFirstOrLast(Session &session, Position &position, Request &request, const IndexDefinition &index,
                        StoredEntry *entry) {
    return findAndLock(session, position, request, entry, [&](StoredEntry *found) {
        Storage &storage = position.file->storage();
        bool isFound = request.operation == codeGetFirst
                           ? storage.findEntry(index.number, Direction::forward, {}, 0, found)
                           : storage.findLastEntry(index.number, found);
        return isFound ? VANTREL_STATUS_NO_ERROR : VANTREL_STATUS_END_OF_FILE;
    });
}

int32_t readNeighbour(Session &session, Position &position, Request &request, const IndexDefinition &index,
                      StoredEntry *entry) {
    if (!position.logical)
        return VANTREL_STATUS_POSITION_NOT_SET;
    if (position.logical->index != index.number)
        return VANTREL_STATUS_DIFFERENT_INDEX_NUMBER;
    const LogicalPlace &place = *position.logical;
    Direction direction = request.operation == codeGetNext ? Direction::forward : Direction::backward;
    return findAndLock(session, position, request, entry, [&](StoredEntry *found) {
        bool isFound =
            position.file->storage().findEntry(index.number, direction, place.key, place.address, found);
        return isFound ? VANTREL_STATUS_NO_ERROR : VANTREL_STATUS_END_OF_FILE;
    });
}

int32_t findByKey(Session &session, Position &position, Request &request, const IndexDefinition &index,
                  StoredEntry *entry) {
    switch (request.operation) {
        case codeGetFirst:
        case codeGetLast:
            return readFirstOrLast(session, position, request, index, entry);
        case codeGetNext:
        case codeGetPrevious:
            return readNeighbour(session, position, request, index, entry);
        default:
            return readBySearch(session, position, request, index, entry);
    }
}

}  // namespace

int32_t readByKey(Session &session, Request &request) {
    Position &position = session.position(request.positionBlock);
    bool isNeighbour = request.operation == codeGetNext || request.operation == codeGetPrevious;
    if (isNeighbour && request.keyNumber == VANTREL_INDEX_NONE)
        return VANTREL_STATUS_POSITION_NOT_SET;
    std::shared_ptr<const IndexDefinition> index = position.file->index(request.keyNumber);
    StoredEntry entry;
    int32_t status = findByKey(session, position, request, *index, &entry);
    if (status != VANTREL_STATUS_NO_ERROR)
        return status;
    return deliverFound(position, request, index.get(), entry);
}

int32_t readByStep(Session &session, Request &request) {
    Position &position = session.position(request.positionBlock);
    requirePhysicalOrder(*position.file->storage().definition());
    bool isFromCurrent = request.operation == codeStepNext || request.operation == codeStepPrevious;
    if (isFromCurrent && !position.physical)
        return VANTREL_STATUS_POSITION_NOT_SET;
    bool isForward = request.operation == codeStepNext || request.operation == codeStepFirst;
    int64_t from = isFromCurrent ? *position.physical : isForward ? 0 : behindAllAddresses;
    StoredEntry entry;
    int32_t status = findAndLock(session, position, request, &entry, [&](StoredEntry *found) {
        bool isFound = position.file->storage().findRecord(
            isForward ? Direction::forward : Direction::backward, from, &found->record);
        return isFound ? VANTREL_STATUS_NO_ERROR : VANTREL_STATUS_END_OF_FILE;
    });
    if (status != VANTREL_STATUS_NO_ERROR)
        return status;
    return deliverFound(position, request, nullptr, entry);
}

}  // namespace vantrel::embedded
