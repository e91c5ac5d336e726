#ifndef VANTREL_EMBEDDED_EXPRESSION_REQUEST_READER_H
#define VANTREL_EMBEDDED_EXPRESSION_REQUEST_READER_H

#include "embedded/key/definition.h"
#include "embedded/status_error.h"
#include "engine/bytes.h"

namespace vantrel::embedded {

// Takes a request apart from its front. Running out of bytes is the status that the part being read has for
// anything malformed.
class RequestReader {
  public:
    RequestReader(ByteView request, int32_t status) : request_(request), status_(status) {}

    void setStatus(int32_t status) { status_ = status; }
    void refuseUnless(bool condition) const { require(condition, status_); }

    ByteView bytes(size_t count) {
        refuseUnless(count <= request_.size() - at_);
        at_ += count;
        return request_.substr(at_ - count, count);
    }
    uint8_t u8() { return static_cast<uint8_t>(bytes(1).front()); }
    uint16_t u16() { return loadU16(reinterpret_cast<const uint8_t *>(bytes(2).data())); }

    size_t taken() const { return at_; }

  private:
    ByteView request_;
    size_t at_ = 0;
    int32_t status_;
};

}  // namespace vantrel::embedded

#endif
