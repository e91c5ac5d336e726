#ifndef VANTREL_EMBEDDED_EXPRESSION_KEY_RANGE_H
#define VANTREL_EMBEDDED_EXPRESSION_KEY_RANGE_H

#include <optional>

#include "embedded/expression/filter.h"

namespace vantrel::embedded {

// The encoded keys of an index among which all records lie that can pass a filter: from `from` on, in front
// of `to`.
struct KeyRange {
    Bytes from;  // empty: from the first key on
    std::optional<Bytes> to;
    bool isEmpty = false;  // no record can pass, whatever the bounds

    bool isBelow(ByteView key) const { return key < from; }
    bool isAbove(ByteView key) const { return to && key >= *to; }
};

// The terms of a filter that is all conjunctions bound the range where they compare the index's first
// segment, by its own type and collation, with constants.
KeyRange keyRangeOf(const Filter &filter, const IndexDefinition &index);

}  // namespace vantrel::embedded

#endif
