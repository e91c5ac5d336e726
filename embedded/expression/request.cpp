#include "embedded/expression/request.h"

#include <algorithm>

#include "vantrel.h"

namespace vantrel::embedded {

namespace {

struct Signature {
    ByteView letters;
    Start start;
};
constexpr Signature signatures[] = {
    {"UC", Start::current}, {"EG", Start::behindCurrent},  {"FI", Start::first},
    {"LA", Start::last},    {"EQ", Start::equal},          {"GT", Start::greater},
    {"LT", Start::less},    {"GE", Start::greaterOrEqual}, {"LE", Start::lessOrEqual},
};
constexpr size_t signatureSize = 2;
constexpr size_t headerSize = 8;

Start readStart(RequestReader &reader, bool isPhysical) {
    ByteView letters = reader.bytes(signatureSize);
    const auto *found = std::find_if(std::begin(signatures), std::end(signatures),
                                     [letters](const Signature &known) { return known.letters == letters; });
    reader.refuseUnless(found != std::end(signatures));
    reader.refuseUnless(!isPhysical || !startsAtKey(found->start));
    return found->start;
}

// Every term but the last one says how the next one joins.
Filter readFilter(RequestReader &reader, const CollationList &registered, size_t termCount) {
    std::vector<Term> terms;
    for (size_t term = 0; term < termCount; ++term) {
        terms.push_back(decodeTerm(reader, registered));
        bool isLast = term + 1 == termCount;
        reader.refuseUnless((terms.back().connector == Connector::last) == isLast);
    }
    return Filter(std::move(terms));
}

}  // namespace

ExtendedRequest decodeExtendedRequest(ByteView buffer, const CollationList &registered, RequestKind kind) {
    require(buffer.size() >= headerSize, VANTREL_STATUS_DATA_LENGTH_ERROR);
    RequestReader reader(buffer, VANTREL_STATUS_INVALID_GET_EXPRESSION);
    uint16_t statedLength = reader.u16();
    Start start = readStart(reader, kind.isPhysical);
    uint16_t rejectLimit = reader.u16();
    uint16_t termCount = reader.u16();
    Filter filter = readFilter(reader, registered, termCount);
    reader.setStatus(VANTREL_STATUS_INVALID_EXTRACTOR);
    uint16_t recordLimit = reader.u16();
    uint16_t entryCount = reader.u16();
    reader.refuseUnless(recordLimit != 0 && (!kind.deletes || entryCount == 0));
    Extractor extractor(reader, entryCount);
    require(statedLength == static_cast<uint16_t>(reader.taken()), VANTREL_STATUS_INVALID_GET_EXPRESSION);
    require(buffer.size() >= replyCountSize + replyRecordHead + extractor.longest(),
            VANTREL_STATUS_SMALL_EXTENDED_GET_BUFFER_ERROR);
    return {start, rejectLimit, std::move(filter), recordLimit, std::move(extractor)};
}

}  // namespace vantrel::embedded
