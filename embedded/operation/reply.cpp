#include "embedded/operation/reply.h"

#include <algorithm>
#include <cstring>

#include "embedded/operation/record_key.h"
#include "embedded/status_error.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

std::string textIn(const uint8_t *buffer, uint32_t length) {
    auto *text = reinterpret_cast<const char *>(buffer);
    return std::string(text, strnlen(text, length));
}

ByteView bytesIn(const uint8_t *buffer, uint32_t length) {
    return ByteView(reinterpret_cast<const char *>(buffer), length);
}

}  // namespace

int32_t deliverData(Request &request, ByteView bytes) {
    size_t length = std::min<size_t>(request.offered, bytes.size());
    if (length != 0)
        memcpy(request.data, bytes.data(), length);
    request.delivered = static_cast<uint32_t>(length);
    return length == bytes.size() ? VANTREL_STATUS_NO_ERROR : VANTREL_STATUS_DATA_LENGTH_ERROR;
}

void deliverKey(Request &request, const IndexDefinition &index, const StoredRecord &record) {
    if (request.keyLength == 0)
        return;
    thread_local Bytes rawKey;
    rawKeyOf(index, record, rawKey);
    memcpy(request.key, rawKey.data(), std::min<size_t>(request.keyLength, rawKey.size()));
}

std::string textInKey(const Request &request) {
    if (request.key == nullptr || request.keyLength == 0)
        throw StatusError{VANTREL_STATUS_KEY_BUFFER_TOO_SHORT};
    return textIn(request.key, request.keyLength);
}

std::string textInData(const Request &request) {
    if (request.data == nullptr || request.offered == 0)
        throw StatusError{VANTREL_STATUS_DATA_LENGTH_ERROR};
    return textIn(request.data, request.offered);
}

ByteView ownerNameIn(const uint8_t *buffer, uint32_t length) {
    if (buffer == nullptr)
        return {};
    ByteView bytes = bytesIn(buffer, length);
    return bytes.substr(0, bytes.find('\0'));
}

ByteView keyBytes(const Request &request, uint32_t needed) {
    if (request.keyLength < needed)
        throw StatusError{VANTREL_STATUS_KEY_BUFFER_TOO_SHORT};
    return bytesIn(request.key, needed);
}

ByteView dataBytes(const Request &request, uint32_t needed) {
    if (request.offered < needed)
        throw StatusError{VANTREL_STATUS_DATA_LENGTH_ERROR};
    return bytesIn(request.data, needed);
}

}  // namespace vantrel::embedded
