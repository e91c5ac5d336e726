#include <algorithm>
#include <cstring>

#include "embedded/operation/change.h"
#include "embedded/operation/operations.h"
#include "embedded/operation/read.h"
#include "engine/bytes.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

constexpr uint32_t continuesBit = 0x40000000;
constexpr uint64_t longestRecord = 0x7FFFFFFF;
constexpr uint32_t addressSize = 8;

enum SubFunction : uint32_t {
    readOrOverwrite = 0x80000001,
    truncateRecord = 0x80000004,
    insertBytes = 0x80000009,
    deleteBytes = 0x80000010,
    appendBytes = 0xA0000001,
};

// A descriptor: sub-function, number of chunks (one), offset, length and address of the caller's bytes. The
// truncation has only the first and the third.
struct Descriptor {
    uint32_t subFunction;
    bool continues;
    uint32_t offset;
    uint32_t length = 0;
    char *bytes = nullptr;
};

constexpr uint32_t truncationSize = 8;
constexpr uint32_t descriptorSize = 16 + sizeof(void *);

Descriptor descriptorIn(const Request &request, uint32_t start) {
    auto *fields =
        reinterpret_cast<const uint8_t *>(dataBytes(request, start + truncationSize).data()) + start;
    uint32_t code = loadU32(fields);
    Descriptor descriptor{.subFunction = code & ~continuesBit,
                          .continues = (code & continuesBit) != 0,
                          .offset = loadU32(fields + 4)};
    if (descriptor.subFunction == truncateRecord)
        return descriptor;
    dataBytes(request, start + descriptorSize);
    if (loadU32(fields + 4) != 1)
        throw StatusError{VANTREL_STATUS_OPERATION_NOT_ALLOWED};
    descriptor.offset = loadU32(fields + 8);
    descriptor.length = loadU32(fields + 12);
    uint8_t address[sizeof(void *)];
    memcpy(address, fields + 16, sizeof address);
    descriptor.bytes = loadPointer<char>(address);
    return descriptor;
}

// The place in the record at which the chunk starts.
uint64_t startOf(const Descriptor &descriptor, const Position &position, int64_t address) {
    if (!descriptor.continues)
        return descriptor.offset;
    if (position.chunkAddress != address)
        throw StatusError{VANTREL_STATUS_CHUNK_CANNOT_GET_NEXT};
    bool isTruncation = descriptor.subFunction == truncateRecord;
    return position.chunkEnd + (isTruncation ? 0 : descriptor.offset);
}

void rememberEnd(Position &position, int64_t address, uint64_t end) {
    position.chunkAddress = address;
    position.chunkEnd = end;
}

// What a change asks for: bytes of the caller in the place of bytes of the record.
struct Edit {
    uint64_t offset;
    uint64_t removed;
    ByteView inserted;
};

Edit editOf(const Descriptor &descriptor, const Position &position, const StoredRecord &record) {
    uint64_t start =
        descriptor.subFunction == appendBytes ? record.length : startOf(descriptor, position, record.address);
    if (start > record.length)
        throw StatusError{VANTREL_STATUS_CHUNK_OFFSET_TOO_LONG};
    uint64_t behind = record.length - start;
    switch (descriptor.subFunction) {
        case readOrOverwrite:
            return {
                start, std::min<uint64_t>(behind, descriptor.length), {descriptor.bytes, descriptor.length}};
        case insertBytes:
        case appendBytes:
            return {start, 0, {descriptor.bytes, descriptor.length}};
        case deleteBytes:
            return {start, std::min<uint64_t>(behind, descriptor.length), {}};
        case truncateRecord:
            return {start, behind, {}};
        default:
            throw StatusError{VANTREL_STATUS_OPERATION_NOT_ALLOWED};
    }
}

void checkEdit(const Descriptor &descriptor, const Edit &edit, const StoredRecord &record,
               const FileDefinition &definition) {
    bool isVariable = (definition.fileFlags & fileFlag::variableLength) != 0;
    if (!isVariable && edit.removed != edit.inserted.size())
        throw StatusError{VANTREL_STATUS_CHUNK_INCOMPATIBLE_FILE};
    bool staysOutOfFixedPart =
        descriptor.subFunction != readOrOverwrite && descriptor.subFunction != appendBytes;
    if (staysOutOfFixedPart && edit.offset < definition.recordLength)
        throw StatusError{VANTREL_STATUS_CHUNK_OFFSET_TOO_SMALL};
    if (record.length - edit.removed + edit.inserted.size() > longestRecord)
        throw StatusError{VANTREL_STATUS_FILE_FULL};
    if (descriptor.bytes == nullptr && !edit.inserted.empty())
        throw StatusError{VANTREL_STATUS_DATA_LENGTH_ERROR};
}

// The record after an edit. The head stays full as long as there is a tail, so that bytes move between them.
struct EditedRecord {
    Bytes head;
    uint64_t length;
    TailEdit tail;
    Bytes movedToTail;
};

void applyEdit(const Edit &edit, const StoredRecord &old, Storage &storage, EditedRecord *edited) {
    edited->length = old.length - edit.removed + edit.inserted.size();
    edited->head = old.data;
    if (edit.offset >= headSize) {
        edited->tail = {edit.offset - headSize, edit.removed, edit.inserted};
        return;
    }
    auto offset = static_cast<size_t>(edit.offset);
    auto removedFromHead = static_cast<size_t>(std::min<uint64_t>(edit.removed, old.data.size() - offset));
    uint64_t removedFromTail = edit.removed - removedFromHead;
    edited->head.replace(offset, removedFromHead, edit.inserted);
    if (edited->head.size() > headSize) {
        edited->movedToTail = edited->head.substr(headSize);
        edited->head.resize(headSize);
    } else {
        uint64_t tailLeft = old.length - old.data.size() - removedFromTail;
        auto moved = static_cast<size_t>(std::min<uint64_t>(headSize - edited->head.size(), tailLeft));
        size_t end = edited->head.size();
        edited->head.resize(end + moved);
        if (moved != 0)
            storage.readTail(old.address, removedFromTail, moved, edited->head.data() + end);
        removedFromTail += moved;
    }
    edited->tail = {0, removedFromTail, edited->movedToTail};
}

}  // namespace

int32_t changeChunk(Session &session, Request &request) {
    Position &position = writablePosition(session, request);
    if (!position.version)
        return VANTREL_STATUS_POSITION_NOT_SET;
    OpenFile &file = *position.file;
    if (request.keyNumber != VANTREL_INDEX_NONE)
        file.index(request.keyNumber);
    Descriptor descriptor = descriptorIn(request, 0);

    ChangeScope scope(session, file);
    RecordChange change(file.storage());
    StoredRecord old = currentRecord(scope, position);
    Edit edit = editOf(descriptor, position, old);
    checkEdit(descriptor, edit, old, *file.storage().definition());
    // Reading the tail below ends the validity of the stored head.
    Bytes head(old.data);
    old.data = head;
    EditedRecord edited;
    applyEdit(edit, old, file.storage(), &edited);
    if (auto duplicate = change.prepareEdit(old, edited.head, edited.length, edited.tail))
        return refuseDuplicate(position, *duplicate);
    scope.noteVersionBefore(old.address, old.updateTime);
    scope.beginChanges();
    auto [address, version] = change.apply();
    scope.commit();

    file.recordChanged(address, old.updateTime, version);
    settleLocks(session, position, address);
    rememberEnd(position, address, edit.offset + edit.inserted.size());
    return VANTREL_STATUS_NO_ERROR;
}

int32_t readChunk(Session &session, Request &request) {
    Position &position = session.position(request.positionBlock);
    int64_t address = loadI64(reinterpret_cast<const uint8_t *>(dataBytes(request, addressSize).data()));
    Descriptor descriptor = descriptorIn(request, addressSize);
    if (descriptor.subFunction != readOrOverwrite)
        return VANTREL_STATUS_OPERATION_NOT_ALLOWED;
    Storage &storage = position.file->storage();
    StoredEntry entry;
    int32_t status = findAndLock(session, position, request, &entry, [&](StoredEntry *found) {
        return storage.readRecord(address, &found->record) ? VANTREL_STATUS_NO_ERROR
                                                           : VANTREL_STATUS_INVALID_RECORD_ADDRESS;
    });
    if (status != VANTREL_STATUS_NO_ERROR)
        return status;
    uint64_t start = startOf(descriptor, position, address);
    if (start > entry.record.length)
        return VANTREL_STATUS_CHUNK_OFFSET_TOO_LONG;
    uint64_t length = std::min<uint64_t>(descriptor.length, entry.record.length - start);
    if (descriptor.bytes == nullptr && length != 0)
        return VANTREL_STATUS_DATA_LENGTH_ERROR;
    copyRecord(storage, entry.record, start, length, descriptor.bytes);
    position.setCurrent(address, entry.record.updateTime);
    rememberEnd(position, address, start + length);
    request.delivered = static_cast<uint32_t>(length);
    return VANTREL_STATUS_NO_ERROR;
}

}  // namespace vantrel::embedded
