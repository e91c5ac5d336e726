#include "embedded/expression/filter.h"

#include <algorithm>

namespace vantrel::embedded {

namespace {

// The text that a field of a text type holds.
ByteView textIn(KeyType type, ByteView value) {
    if (type == KeyType::zeroTerminatedString)
        return value.substr(0, value.find('\0'));
    if (type == KeyType::lengthPrefixedString)
        return value.substr(1, static_cast<uint8_t>(value.front()));
    if (type != KeyType::wideZeroTerminatedString)
        return value;
    size_t end = 0;
    while (end < value.size() && (value[end] != 0 || value[end + 1] != 0))
        end += 2;
    return value.substr(0, end);
}

bool answer(Comparison comparison, int order) {
    switch (comparison) {
        case Comparison::equal:
            return order == 0;
        case Comparison::greater:
            return order > 0;
        case Comparison::less:
            return order < 0;
        case Comparison::notEqual:
            return order != 0;
        case Comparison::greaterOrEqual:
            return order >= 0;
        default:
            return order <= 0;
    }
}

}  // namespace

bool Filter::passes(const RecordView &record) {
    bool result = true;
    Connector joined = Connector::conjunction;
    for (Term &term : terms_) {
        bool decides = joined == Connector::conjunction ? result : !result;
        if (decides)
            result = holds(term, record);
        joined = term.connector;
    }
    return result;
}

size_t Filter::reach() const {
    size_t reach = 0;
    for (const Term &term : terms_) {
        reach = std::max(reach, endOf(term.field));
        if (const Field *other = std::get_if<Field>(&term.comparand))
            reach = std::max(reach, endOf(*other));
    }
    return reach;
}

// A field that the record does not hold in whole makes its term fail, whatever it asks.
bool Filter::holds(Term &term, const RecordView &record) {
    FieldScratch scratch;
    ByteView value = valueOf(term.field, record, scratch);
    if (value.size() != term.field.length)
        return false;
    if (const Constant *constant = std::get_if<Constant>(&term.comparand))
        return answer(term.comparison, term.order.compare(value, constant->prepared));
    if (const Field *other = std::get_if<Field>(&term.comparand)) {
        FieldScratch otherScratch;
        ByteView otherValue = valueOf(*other, record, otherScratch);
        if (otherValue.size() != other->length)
            return false;
        term.order.prepare(otherValue, &otherValue_);
        return answer(term.comparison, term.order.compare(value, otherValue_));
    }
    ByteView text = textIn(term.type, value);
    if (const TextPattern *pattern = std::get_if<TextPattern>(&term.comparand))
        return pattern->pattern.matches(text) != pattern->isNegated;
    return std::get<RegularExpression>(term.comparand).matches(text);
}

}  // namespace vantrel::embedded
