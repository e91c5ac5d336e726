#include <vector>

#include "embedded/operation/change.h"
#include "embedded/operation/extended_reply.h"
#include "embedded/operation/operations.h"
#include "embedded/operation/reply.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

constexpr uint32_t countSize = 4;
constexpr uint32_t lengthSize = 4;
constexpr uint32_t addressSize = 8;

// The records of a request that is well-formed and leaves room for its reply; any other is thrown as
// status 63.
std::vector<ByteView> recordsIn(const Request &request) {
    constexpr int32_t illFormed = VANTREL_STATUS_INVALID_EXTENDED_INSERT_BUFFER;
    ByteView rest = dataBytes(request, countSize);
    uint32_t count = loadU32(request.data);
    require(count <= (request.offered - countSize) / addressSize, illFormed);
    rest = dataBytes(request, request.offered).substr(countSize);
    std::vector<ByteView> records;
    records.reserve(count);
    while (records.size() < count) {
        require(rest.size() >= lengthSize, illFormed);
        uint32_t length = loadU32(reinterpret_cast<const uint8_t *>(rest.data()));
        rest.remove_prefix(lengthSize);
        require(rest.size() >= length, illFormed);
        records.push_back(rest.substr(0, length));
        rest.remove_prefix(length);
    }
    return records;
}

// The records of one request on their way into a file.
struct ExtendedInsert {
    Session &session;
    Position &position;
    ChangeScope scope;
    std::shared_ptr<const IndexDefinition> index;  // null where the request names none
    Request &request;
    std::vector<int64_t> addresses;
    uint64_t lastVersion = 0;
    std::optional<LogicalPlace> place;

    int32_t insert(ByteView bytes);
    int32_t run(const std::vector<ByteView> &records);
    void finish() noexcept;
};

int32_t ExtendedInsert::insert(ByteView bytes) {
    Storage &storage = position.file->storage();
    if (!recordFits(*storage.definition(), bytes.size()))
        return VANTREL_STATUS_DATA_LENGTH_ERROR;
    Bytes record(bytes);
    RecordChange change(storage);
    try {
        if (auto duplicate = change.prepareInsert(record))
            return refuseDuplicate(position, *duplicate);
    } catch (const StatusError &error) {
        // Any other failure is not the record's.
        if (error.status != VANTREL_STATUS_AUTOINCREMENT_ERROR)
            throw;
        return error.status;
    }
    scope.beginChanges();
    auto [address, version] = change.apply();
    addresses.push_back(address);
    scope.noteVersionBefore(address, std::nullopt);
    lastVersion = version;
    place.reset();
    if (const Bytes *key = index == nullptr ? nullptr : change.newKey(index->number))
        place = LogicalPlace{index->number, *key, address};
    if (index != nullptr)
        deliverKey(request, *index, change.record());
    return VANTREL_STATUS_NO_ERROR;
}

int32_t ExtendedInsert::run(const std::vector<ByteView> &records) {
    addresses.reserve(records.size());
    for (ByteView record : records) {
        if (int32_t status = insert(record))
            return status;
    }
    return VANTREL_STATUS_NO_ERROR;
}

void ExtendedInsert::finish() noexcept {
    uint8_t *reply = request.data + countSize;
    for (int64_t address : addresses) {
        storeI64(reply, address);
        reply += addressSize;
    }
    request.delivered = static_cast<uint32_t>(reply - request.data);
    if (addresses.empty())
        return;
    position.setCurrent(addresses.back(), lastVersion);
    if (place)
        position.logical = std::move(place);
}

}  // namespace

int32_t insertExtended(Session &session, Request &request) {
    CountInFront count(request, countSize);
    Position &position = writablePosition(session, request);
    OpenFile &file = *position.file;
    bool namesIndex = request.keyNumber != VANTREL_INDEX_NONE;
    if (namesIndex)
        file.index(request.keyNumber);
    std::vector<ByteView> records = recordsIn(request);

    ExtendedInsert insert{session, position, ChangeScope(session, file), nullptr, request, {}, 0, {}};
    if (namesIndex)
        insert.index = file.index(request.keyNumber);
    int32_t status = insert.run(records);
    insert.scope.commit();

    insert.finish();
    count.set(static_cast<uint32_t>(insert.addresses.size()));
    return status;
}

}  // namespace vantrel::embedded
