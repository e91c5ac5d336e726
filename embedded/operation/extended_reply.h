#ifndef VANTREL_EMBEDDED_OPERATION_EXTENDED_REPLY_H
#define VANTREL_EMBEDDED_OPERATION_EXTENDED_REPLY_H

#include <cstddef>

#include "embedded/core.h"
#include "embedded/expression/request.h"
#include "engine/bytes.h"

namespace vantrel::embedded {

// The count at the front of a reply, which is true however the operation ends: 0 unless it is set.
class CountInFront {
  public:
    CountInFront(Request &request, uint32_t size) : request_(request), size_(size) {}
    ~CountInFront() {
        if (request_.offered < size_)
            return;
        if (size_ == sizeof(uint16_t))
            storeU16(request_.data, static_cast<uint16_t>(count_));
        else
            storeU32(request_.data, count_);
    }
    CountInFront(const CountInFront &) = delete;
    CountInFront &operator=(const CountInFront &) = delete;

    void set(uint32_t count) { count_ = count; }

  private:
    Request &request_;
    uint32_t size_;
    uint32_t count_ = 0;
};

// The records of a reply, written over the request from behind the count.
class ExtendedReply {
  public:
    explicit ExtendedReply(const Request &request) : data_(request.data), room_(request.offered) {}

    bool hasRoomFor(size_t byteCount) const { return room_ - length_ >= replyRecordHead + byteCount; }
    // Where the bytes of the next record go.
    uint8_t *nextBytes() const { return data_ + length_ + replyRecordHead; }
    // Puts a record's head in front of its bytes. The length stated has 16 bits.
    void add(int64_t address, size_t statedLength, size_t byteCount) {
        storeU16(data_ + length_, static_cast<uint16_t>(statedLength));
        storeI64(data_ + length_ + sizeof(uint16_t), address);
        length_ += replyRecordHead + byteCount;
        ++count_;
    }
    int64_t deletedAddress(uint32_t record) const {
        return loadI64(data_ + replyCountSize + record * replyRecordHead + sizeof(uint16_t));
    }

    uint32_t count() const { return count_; }
    uint32_t length() const { return static_cast<uint32_t>(length_); }

  private:
    uint8_t *data_;
    size_t room_;
    size_t length_ = replyCountSize;
    uint32_t count_ = 0;
};

}  // namespace vantrel::embedded

#endif
