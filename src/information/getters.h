#ifndef VANTREL_INFORMATION_GETTERS_H
#define VANTREL_INFORMATION_GETTERS_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "definition/enumeration_maps.h"
#include "engine/bytes.h"
#include "engine/status.h"
#include "information/replies.h"

// What the getters of file information have in common: each names a field of a reply and how it is read.

namespace vantrel {

// What getters of plain values return for a null handle.
inline constexpr int32_t noValue = -1;

inline int32_t loadField(const uint8_t &field) {
    return field;
}

inline int32_t loadField(const uint8_t (&field)[2]) {
    return loadU16(field);
}

inline int32_t loadField(const uint8_t (&field)[4]) {
    return loadI32(field);
}

inline int64_t loadField(const uint8_t (&field)[8]) {
    return loadI64(field);
}

template <class Reply>
Reply loadReply(const VantrelFileInformation *information) {
    static_assert(sizeof(Reply) <= sizeof(information->*areaOf<Reply>));
    Reply reply;
    memcpy(&reply, information->*areaOf<Reply>, sizeof reply);
    return reply;
}

// The reply for a getter that will find a value in it.
template <class Reply>
Reply readReply(VantrelFileInformation *information) {
    keepStatus(information, VANTREL_STATUS_NO_ERROR);
    return loadReply<Reply>(information);
}

template <class Reply, class Field>
auto getNumber(VantrelFileInformation *information, Field Reply::*field, int32_t failureValue = noValue)
    -> decltype(loadField(Reply().*field)) {
    return information == nullptr ? failureValue : loadField(readReply<Reply>(information).*field);
}

inline constexpr uint32_t anyBit = 0xFFFFFFFF;

// 1 where a bit of the mask is set, otherwise 0.
template <class Reply, class Field>
int32_t getFlag(VantrelFileInformation *information, Field Reply::*field, uint32_t mask = anyBit) {
    if (information == nullptr)
        return noValue;
    return (static_cast<uint32_t>(loadField(readReply<Reply>(information).*field)) & mask) != 0;
}

template <class Reply, size_t count>
int32_t getEnumeration(VantrelFileInformation *information, uint8_t (Reply::*field)[2],
                       const EnumerationMap<count> &map) {
    if (information == nullptr)
        return noEnumerationValue;
    return getEnumeration(information, map, loadReply<Reply>(information).*field);
}

// Copies the bytes up to a zero byte and fills the rest with zeros.
inline void copyText(char *buffer, const uint8_t *text, uint32_t length) {
    strncpy(buffer, reinterpret_cast<const char *>(text), length);
}

// The whole field, its last byte replaced by a terminator.
template <class Reply, size_t width>
VantrelStatus getText(VantrelFileInformation *information, uint8_t (Reply::*field)[width], char *buffer,
                      int32_t size) {
    if (information == nullptr)
        return VANTREL_STATUS_INVALID_POINTER_PARAMETER;
    if (buffer == nullptr)
        return keepStatus(information, VANTREL_STATUS_INVALID_POINTER_PARAMETER);
    if (size < static_cast<int32_t>(width))
        return keepStatus(information, VANTREL_STATUS_INVALID_OPTION);
    copyText(buffer, loadReply<Reply>(information).*field, width);
    buffer[width - 1] = '\0';
    return keepStatus(information, VANTREL_STATUS_NO_ERROR);
}

}  // namespace vantrel

#endif
