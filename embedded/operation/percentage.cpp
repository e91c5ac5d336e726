#include "embedded/key/encoding.h"
#include "embedded/operation/operations.h"
#include "embedded/operation/proportion.h"
#include "embedded/operation/read.h"
#include "engine/bytes.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

constexpr ByteView fractionSignature = "ExPc";
constexpr uint32_t numeratorSize = 4;
constexpr uint32_t addressSize = 8;
constexpr uint32_t denominatorSize = 8;  // with its signature

// The denominator that may follow the first part of a request; without one the unit is the percentage.
uint32_t denominatorBehind(const Request &request, uint32_t offset) {
    if (request.offered < offset + denominatorSize)
        return wholeInPercentages;
    ByteView bytes = dataBytes(request, offset + denominatorSize).substr(offset);
    if (bytes.substr(0, fractionSignature.size()) != fractionSignature)
        return wholeInPercentages;
    uint32_t denominator =
        loadU32(reinterpret_cast<const uint8_t *>(bytes.data()) + fractionSignature.size());
    require(denominator != 0, VANTREL_STATUS_OPERATION_NOT_ALLOWED);
    return denominator;
}

const uint8_t *requestBytes(const Request &request, uint32_t size) {
    return reinterpret_cast<const uint8_t *>(dataBytes(request, size).data());
}

// Null for the physical order.
std::shared_ptr<const IndexDefinition> indexNamed(const Position &position, const Request &request) {
    return request.keyNumber == VANTREL_INDEX_NONE ? nullptr : position.file->index(request.keyNumber);
}

uint8_t orderOf(const IndexDefinition *index) {
    return index == nullptr ? physicalOrder : index->number;
}

}  // namespace

int32_t readAtProportion(Session &session, Request &request) {
    Position &position = session.position(request.positionBlock);
    std::shared_ptr<const IndexDefinition> index = indexNamed(position, request);
    Proportion proportion{loadU32(requestBytes(request, numeratorSize)),
                          denominatorBehind(request, numeratorSize)};
    Storage &storage = position.file->storage();
    auto choice = [&](uint64_t total) { return rankAt(proportion, total); };
    StoredEntry entry;
    int32_t status = findAndLock(session, position, request, &entry, [&](StoredEntry *found) {
        bool isFound = proportion.numerator <= proportion.denominator &&
                       storage.findAtRank(orderOf(index.get()), choice, found);
        return isFound ? VANTREL_STATUS_NO_ERROR : VANTREL_STATUS_END_OF_FILE;
    });
    if (status != VANTREL_STATUS_NO_ERROR)
        return status;
    return deliverFound(position, request, index.get(), entry);
}

int32_t getProportion(Session &session, Request &request) {
    Position &position = session.position(request.positionBlock);
    std::shared_ptr<const IndexDefinition> index = indexNamed(position, request);
    Bytes key;
    if (index != nullptr)
        appendEncodedKey(*index, keyBytes(request, index->keyLength), key);
    int64_t address = loadI64(requestBytes(request, addressSize));
    uint32_t denominator = denominatorBehind(request, addressSize);
    session.touch(*position.file);
    Storage &storage = position.file->storage();
    std::optional<Rank> rank = storage.rankOf(orderOf(index.get()), key, address);
    StoredRecord record;
    if (!storage.readRecord(address, &record))
        return VANTREL_STATUS_INVALID_RECORD_ADDRESS;
    if (!rank)
        return VANTREL_STATUS_NULL_KEY_PATH;
    if (index != nullptr)
        deliverKey(request, *index, record);
    storeU32(request.data, numeratorAt(rank->inFront, rank->total, denominator));
    request.delivered = numeratorSize;
    return VANTREL_STATUS_NO_ERROR;
}

}  // namespace vantrel::embedded
