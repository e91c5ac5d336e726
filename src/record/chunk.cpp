#include <algorithm>

#include "engine/translation.h"
#include "record/key_call.h"

using namespace vantrel;

namespace {

// The most that one request moves.
constexpr int32_t chunkLimit = 257024;

// Given as an offset, it continues where the last chunk operation on the record ended.
constexpr int32_t continuingOffset = -1;

// Sent with operationGetDirect.
constexpr int32_t readChunkKeyNumber = -2;

// The codes of one chunk operation: at an offset, and where the last one ended.
struct Subfunctions {
    uint32_t atOffset;
    uint32_t continuing;

    uint32_t forOffset(int32_t offset) const { return offset == continuingOffset ? continuing : atOffset; }
};

constexpr Subfunctions moveChunk = {0x80000001, 0xC0000001};
constexpr Subfunctions insertChunk = {0x80000009, 0xC0000009};
constexpr Subfunctions deleteChunk = {0x80000010, 0xC0000010};
constexpr Subfunctions truncateRecord = {0x80000004, 0xC0000004};
// The end of the record is where each of these starts.
constexpr Subfunctions appendChunk = {0xA0000001, 0xA0000001};

struct ChunkDescriptor {
    uint8_t subfunction[4];
    uint8_t chunkCount[4];
    uint8_t offset[4];
    uint8_t length[4];
    uint8_t data[sizeof(void *)];
};
static_assert(sizeof(ChunkDescriptor) == 16 + sizeof(void *));

struct ReadDescriptor {
    uint8_t cursorPosition[8];
    ChunkDescriptor chunk;
};
static_assert(sizeof(ReadDescriptor) == 24 + sizeof(void *));

struct TruncateDescriptor {
    uint8_t subfunction[4];
    uint8_t offset[4];
};
static_assert(sizeof(TruncateDescriptor) == 8);

bool chunkIsInvalid(int32_t offset, int32_t length) {
    return offset < 0 || static_cast<uint32_t>(length) > chunkLimit;
}

void describeChunk(ChunkDescriptor *descriptor, uint32_t subfunction, int32_t offset, const void *data,
                   int32_t length) {
    storeU32(descriptor->subfunction, subfunction);
    storeU32(descriptor->chunkCount, 1);
    storeI32(descriptor->offset, offset);
    storeI32(descriptor->length, length);
    storePointer(descriptor->data, data);
}

// The data of the next piece; no data stays none.
template <class Data>
Data *afterPiece(Data *data) {
    return data == nullptr ? nullptr : data + chunkLimit;
}

VantrelStatus fileRecordUpdateChunk(VantrelFile *file, int32_t offset, const void *data, int32_t length,
                                    uint32_t subfunction) {
    if (file == nullptr)
        return VANTREL_STATUS_FILE_NOT_OPEN;
    if (chunkIsInvalid(offset, length))
        return keepStatus(file, VANTREL_STATUS_INVALID_OPTION);
    ChunkDescriptor descriptor;
    describeChunk(&descriptor, subfunction, offset, data, length);
    uint32_t dataLength = sizeof descriptor;
    return replayCachedKey(file, operationUpdateChunk, &descriptor, &dataLength);
}

// Changes a range of any length, piece by piece, each continuing the one before.
VantrelStatus changeRange(VantrelFile *file, const Subfunctions &subfunctions, int32_t offset,
                          const void *data, int32_t length) {
    auto *bytes = static_cast<const uint8_t *>(data);
    uint32_t subfunction = subfunctions.forOffset(offset);
    int32_t sentOffset = offset == continuingOffset ? 0 : offset;
    while (length > chunkLimit) {
        VantrelStatus status = fileRecordUpdateChunk(file, sentOffset, bytes, chunkLimit, subfunction);
        if (status != VANTREL_STATUS_NO_ERROR)
            return status;
        bytes = afterPiece(bytes);
        length -= chunkLimit;
        sentOffset = 0;
        subfunction = subfunctions.continuing;
    }
    return fileRecordUpdateChunk(file, sentOffset, bytes, length, subfunction);
}

int32_t fileRecordRetrieveChunk(VantrelFile *file, int32_t offset, void *buffer, int32_t length,
                                VantrelLockMode lockMode, bool continues) {
    if (file == nullptr)
        return -1;
    if (owningClient(file) == nullptr)
        return failWith(file, VANTREL_STATUS_INVALID_POINTER_PARAMETER, -1);
    if (chunkIsInvalid(offset, length))
        return failWith(file, VANTREL_STATUS_INVALID_OPTION, -1);
    uint32_t operation = operationGetDirect;
    if (keepStatus(file, setLockBias(&operation, lockMode)) != VANTREL_STATUS_NO_ERROR)
        return -1;
    keepStatus(file, VANTREL_STATUS_INTERNAL_ERROR);
    if (!continues) {
        VantrelCursorPosition position = VantrelFileGetCursorPosition(file);
        storeI64(file->savedCursorPosition, position);
        if (position == -1)
            return -1;
    }
    ReadDescriptor descriptor;
    storeU64(descriptor.cursorPosition, loadU64(file->savedCursorPosition));
    describeChunk(&descriptor.chunk, continues ? moveChunk.continuing : moveChunk.atOffset, offset, buffer,
                  length);
    uint32_t dataLength = sizeof descriptor;
    callFile(file, operation, &descriptor, &dataLength, nullptr, 0, readChunkKeyNumber);
    return static_cast<int32_t>(std::min(static_cast<uint32_t>(length), dataLength));
}

}  // namespace

int32_t VantrelFileRecordRetrieveChunk(VantrelFile *file, int32_t offset, int32_t length, void *buffer,
                                       int32_t bufferSize, VantrelLockMode lockMode) {
    auto *bytes = static_cast<uint8_t *>(buffer);
    bool continues = offset == continuingOffset;
    int32_t sentOffset = continues ? 0 : offset;
    int32_t remaining = std::min(length, bufferSize);
    int32_t delivered = 0;
    while (remaining > chunkLimit) {
        int32_t count = fileRecordRetrieveChunk(file, sentOffset, bytes, chunkLimit, lockMode, continues);
        if (count != chunkLimit)
            return count;
        bytes = afterPiece(bytes);
        remaining -= chunkLimit;
        delivered += chunkLimit;
        sentOffset = 0;
        continues = true;
    }
    int32_t count = fileRecordRetrieveChunk(file, sentOffset, bytes, remaining, lockMode, continues);
    return count == -1 ? -1 : delivered + count;
}

VantrelStatus VantrelFileRecordUpdateChunk(VantrelFile *file, int32_t offset, const void *data,
                                           int32_t length) {
    return changeRange(file, moveChunk, offset, data, length);
}

VantrelStatus VantrelFileRecordInsertChunk(VantrelFile *file, int32_t offset, const void *data,
                                           int32_t length) {
    return changeRange(file, insertChunk, offset, data, length);
}

VantrelStatus VantrelFileRecordDeleteChunk(VantrelFile *file, int32_t offset, int32_t length) {
    return changeRange(file, deleteChunk, offset, nullptr, length);
}

VantrelStatus VantrelFileRecordAppendChunk(VantrelFile *file, const void *data, int32_t length) {
    return changeRange(file, appendChunk, 0, data, length);
}

VantrelStatus VantrelFileRecordTruncate(VantrelFile *file, int32_t offset) {
    TruncateDescriptor descriptor;
    storeU32(descriptor.subfunction, truncateRecord.forOffset(offset));
    storeI32(descriptor.offset, offset);
    uint32_t dataLength = sizeof descriptor;
    return replayCachedKey(file, operationUpdateChunk, &descriptor, &dataLength);
}
