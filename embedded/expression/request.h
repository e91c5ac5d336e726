#ifndef VANTREL_EMBEDDED_EXPRESSION_REQUEST_H
#define VANTREL_EMBEDDED_EXPRESSION_REQUEST_H

#include "embedded/expression/extractor.h"
#include "embedded/expression/filter.h"

namespace vantrel::embedded {

// Where a scan begins.
enum class Start : uint8_t {
    current,
    behindCurrent,
    first,
    last,
    equal,
    greater,
    less,
    greaterOrEqual,
    lessOrEqual,
};

inline bool startsAtKey(Start start) {
    return start >= Start::equal;
}

// What a request is for: records read along an index or in physical order, or deleted so.
struct RequestKind {
    bool isPhysical;
    bool deletes;
};

// A request understood; it keeps nothing of the caller's buffer.
struct ExtendedRequest {
    Start start;
    uint16_t rejectLimit;  // 0: none
    Filter filter;
    uint16_t recordLimit;
    Extractor extractor;
};

// The reply's count of records, and what precedes the bytes of each.
constexpr size_t replyCountSize = 2;
constexpr size_t replyRecordHead = 10;

// Throws 22 without a whole header, 62 for anything malformed up to the last term and for a length that is
// not the request's, 136 for an unknown collation, 65 for a malformed extractor, and 61 where the buffer that
// holds the request has no room for a reply of one record.
ExtendedRequest decodeExtendedRequest(ByteView buffer, const CollationList &registered, RequestKind kind);

}  // namespace vantrel::embedded

#endif
