#include "embedded/expression/key_range.h"

#include <algorithm>

#include "embedded/key/encoding.h"

namespace vantrel::embedded {

namespace {

// The two legacy types are keys of older files only; the others sort as they do.
KeyType modernType(KeyType type) {
    if (type == KeyType::legacyString)
        return KeyType::character;
    return type == KeyType::legacyBinary ? KeyType::unsignedBinary : type;
}

bool sortAlike(const CollationPointer &left, const CollationPointer &right) {
    if (left == nullptr || right == nullptr)
        return left == right;
    return left == right || left->table == right->table;
}

Field::Source sourceOf(const IndexDefinition &index) {
    switch (index.source) {
        case KeySource::createTime:
            return Field::Source::createTime;
        case KeySource::updateTime:
            return Field::Source::updateTime;
        default:
            return Field::Source::bytes;
    }
}

bool isOnFirstSegment(const Term &term, const IndexDefinition &index) {
    const KeySegment &segment = index.segments.front();
    return term.field.source == sourceOf(index) && term.field.offset == segment.offset &&
           term.field.length == segment.length && term.type == modernType(segment.type) &&
           sortAlike(term.collation, typeIsText(segment.type) ? segment.collation : nullptr);
}

Comparison reversed(Comparison comparison) {
    switch (comparison) {
        case Comparison::greater:
            return Comparison::less;
        case Comparison::less:
            return Comparison::greater;
        case Comparison::greaterOrEqual:
            return Comparison::lessOrEqual;
        case Comparison::lessOrEqual:
            return Comparison::greaterOrEqual;
        default:
            return comparison;
    }
}

// The first byte string behind all that begin with this one; nothing where there is none.
std::optional<Bytes> successorOf(Bytes bytes) {
    while (!bytes.empty() && bytes.back() == '\xFF')
        bytes.pop_back();
    if (bytes.empty())
        return std::nullopt;
    ++bytes.back();
    return bytes;
}

void raiseFrom(KeyRange &range, const std::optional<Bytes> &from) {
    range.isEmpty = range.isEmpty || !from;
    if (from && *from > range.from)
        range.from = *from;
}

void lowerTo(KeyRange &range, const std::optional<Bytes> &to) {
    if (to && (!range.to || *to < *range.to))
        range.to = to;
}

// The segment's encodings begin the keys, and none begins with another one.
void narrow(KeyRange &range, Comparison comparison, const Bytes &encoded) {
    bool isEqual = comparison == Comparison::equal;
    if (isEqual || comparison == Comparison::greaterOrEqual)
        raiseFrom(range, encoded);
    if (comparison == Comparison::greater)
        raiseFrom(range, successorOf(encoded));
    if (isEqual || comparison == Comparison::lessOrEqual)
        lowerTo(range, successorOf(encoded));
    if (comparison == Comparison::less)
        lowerTo(range, encoded);
}

void narrowBy(KeyRange &range, const Term &term, const IndexDefinition &index) {
    const KeySegment &segment = index.segments.front();
    const Constant *constant = std::get_if<Constant>(&term.comparand);
    if (constant == nullptr || !isOnFirstSegment(term, index))
        return;
    Bytes encoded;
    appendEncodedValue(segment.type, segment.collation.get(), constant->bytes, encoded);
    if (!segment.descending)
        return narrow(range, term.comparison, encoded);
    for (char &byte : encoded)
        byte = static_cast<char>(~byte);
    narrow(range, reversed(term.comparison), encoded);
}

}  // namespace

KeyRange keyRangeOf(const Filter &filter, const IndexDefinition &index) {
    KeyRange range;
    const std::vector<Term> &terms = filter.terms();
    bool isConjunction = std::none_of(terms.begin(), terms.end(), [](const Term &term) {
        return term.connector == Connector::disjunction;
    });
    if (!isConjunction)
        return range;
    for (const Term &term : terms)
        narrowBy(range, term, index);
    return range;
}

}  // namespace vantrel::embedded
