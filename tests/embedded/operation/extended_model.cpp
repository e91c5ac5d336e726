#include "embedded/operation/extended_model.h"

#include <algorithm>
#include <cstdlib>

#include "value_order.h"

namespace vantrel::test {

namespace {

using vantrel::embedded::ByteView;
using vantrel::embedded::KeyType;

bool isSystem(const TermFields &term) {
    return term.length == 0xFF08;
}

std::string valueIn(const ModelRecord &record, uint16_t offset, size_t length) {
    return offset >= record.data.size() ? "" : record.data.substr(offset, length);
}

bool likes(ByteView pattern, ByteView text) {
    if (pattern.empty())
        return text.empty();
    if (pattern.front() == '%')
        return likes(pattern.substr(1), text) || (!text.empty() && likes(pattern, text.substr(1)));
    return !text.empty() && (pattern.front() == '_' || pattern.front() == text.front()) &&
           likes(pattern.substr(1), text.substr(1));
}

bool answer(int comparison, int order) {
    const bool answers[] = {order == 0, order > 0, order < 0, order != 0, order >= 0, order <= 0};
    return answers[comparison - 1];
}

bool holds(const ModelTerm &term, const ModelRecord &record) {
    size_t length = isSystem(term.fields) ? 8 : term.fields.length;
    std::string value = !isSystem(term.fields)         ? valueIn(record, term.fields.offset, length)
                        : term.fields.offset == 0xFFFE ? record.createTime
                                                       : record.updateTime;
    if (value.size() != length)
        return false;
    if (term.patternKind != 0)
        return likes(term.pattern, value) == (term.patternKind == 1);
    std::string other = term.fields.comparand;
    if ((term.fields.flags & fieldFlag) != 0) {
        auto offset =
            static_cast<uint16_t>(static_cast<uint8_t>(other[0]) | static_cast<uint8_t>(other[1]) << 8);
        other = valueIn(record, offset, length);
        if (other.size() != length)
            return false;
    }
    return answer(term.fields.flags & 7, compareValues(term.type, term.collation, value, other));
}

bool passes(const std::vector<ModelTerm> &terms, const ModelRecord &record) {
    if (terms.empty())
        return true;
    bool result = holds(terms[0], record);
    for (size_t term = 1; term < terms.size(); ++term) {
        bool next = holds(terms[term], record);
        result = terms[term - 1].fields.connector == joinAnd ? result && next : result || next;
    }
    return result;
}

int16_t shortIn(const std::string &value) {
    return static_cast<int16_t>(static_cast<uint8_t>(value[0]) | static_cast<uint8_t>(value[1]) << 8);
}

std::string itemOf(const ModelItem &item, const ModelRecord &record) {
    if (item.kind == ModelItem::Kind::createTime)
        return record.createTime;
    if (item.kind == ModelItem::Kind::updateTime)
        return record.updateTime;
    std::string value = valueIn(record, item.offset, item.length);
    if (item.kind != ModelItem::Kind::absolute || value.size() != 2)
        return value;
    int number = std::abs(shortIn(value));
    return {static_cast<char>(number), static_cast<char>(number >> 8)};
}

bool aggregates(const std::vector<ModelItem> &items) {
    return std::any_of(items.begin(), items.end(), [](const ModelItem &item) {
        return item.kind == ModelItem::Kind::minimum || item.kind == ModelItem::Kind::maximum;
    });
}

// Aggregates are of whole numbers of two bytes.
std::string aggregate(const ModelItem &item, const std::vector<const ModelRecord *> &passed) {
    if (item.kind != ModelItem::Kind::minimum && item.kind != ModelItem::Kind::maximum)
        return itemOf(item, *passed.back());
    std::string best;
    for (const ModelRecord *record : passed) {
        std::string value = itemOf(item, *record);
        if (value.size() != 2)
            continue;
        bool isMaximum = item.kind == ModelItem::Kind::maximum;
        bool isBetter =
            best.empty() || (isMaximum ? shortIn(value) > shortIn(best) : shortIn(value) < shortIn(best));
        if (isBetter)
            best = value;
    }
    return best;
}

}  // namespace

int ExtendedModel::compareKeys(const ModelIndex &index, const std::string &left,
                               const std::string &right) const {
    int order = compareValues(index.type, index.collation, left, right);
    return index.descending ? -order : order;
}

std::vector<const ModelRecord *> ExtendedModel::inOrder(const ModelRequest &request) const {
    std::vector<const ModelRecord *> order;
    for (const auto &[address, record] : records)
        order.push_back(&record);
    if (!request.isPhysical) {
        const ModelIndex &index = indexes[request.index];
        std::stable_sort(order.begin(), order.end(), [&](const ModelRecord *left, const ModelRecord *right) {
            return compareKeys(index, valueIn(*left, index.offset, index.length),
                               valueIn(*right, index.offset, index.length)) < 0;
        });
    }
    return order;
}

std::optional<size_t> ExtendedModel::start(const ModelRequest &request,
                                           const std::vector<const ModelRecord *> &order, uint64_t current,
                                           int32_t *status) const {
    *status = 9;
    const std::string &signature = request.fields.signature;
    if (signature == "FI" || signature == "LA")
        return order.empty() ? std::nullopt : std::optional(signature == "FI" ? 0 : order.size() - 1);
    if (signature == "UC" || signature == "EG") {
        size_t at = 0;
        while (order[at]->address != current)
            ++at;
        if (signature == "UC")
            return at;
        if (request.isForward ? at + 1 == order.size() : at == 0)
            return std::nullopt;
        return request.isForward ? at + 1 : at - 1;
    }
    const ModelIndex &index = indexes[request.index];
    bool wantsLast = signature[0] == 'L';
    std::optional<size_t> found;
    for (size_t at = 0; at < order.size(); ++at) {
        int compared = compareKeys(index, valueIn(*order[at], index.offset, index.length), request.key);
        bool fits = signature == "EQ"   ? compared == 0
                    : signature == "GT" ? compared > 0
                    : signature == "GE" ? compared >= 0
                    : signature == "LT" ? compared < 0
                                        : compared <= 0;
        if (fits && (wantsLast || !found))
            found = at;
    }
    if (!found && signature == "EQ")
        *status = 4;
    return found;
}

// Whether a term of a filter that is all conjunctions keeps the record out of the range of the index, on its
// near or far side.
bool ExtendedModel::isOutside(const ModelRequest &request, const ModelRecord &record, bool isBelow) const {
    if (request.isPhysical)
        return false;
    const ModelIndex &index = indexes[request.index];
    for (const ModelTerm &term : request.terms) {
        if (term.fields.connector == joinOr)
            return false;
    }
    for (const ModelTerm &term : request.terms) {
        bool bounds = term.patternKind == 0 && (term.fields.flags & fieldFlag) == 0 &&
                      !isSystem(term.fields) && term.fields.offset == index.offset &&
                      term.fields.length == index.length && term.type == index.type &&
                      term.collation == index.collation;
        int comparison = term.fields.flags & 7;
        if (!bounds || comparison == notEqualTo)
            continue;
        std::string value = valueIn(record, index.offset, index.length);
        int compared = compareKeys(index, value, term.fields.comparand);
        // The constant itself is kept out by the bound beyond which it lies.
        bool liesBelow = compared != 0 ? compared < 0 : (comparison == greaterThan) != index.descending;
        int byValue = compareValues(index.type, index.collation, value, term.fields.comparand);
        if (liesBelow == isBelow && !answer(comparison, byValue))
            return true;
    }
    return false;
}

ModelOutcome ExtendedModel::run(const ModelRequest &request, uint64_t current) const {
    ModelOutcome outcome;
    std::vector<const ModelRecord *> order = inOrder(request);
    std::optional<size_t> first = start(request, order, current, &outcome.status);
    if (!first)
        return outcome;
    std::vector<const ModelRecord *> rest;
    for (size_t at = *first; at < order.size(); at = request.isForward ? at + 1 : at - 1)
        rest.push_back(order[at]);

    std::vector<const ModelRecord *> passed;
    outcome.status = 9;
    size_t rejected = 0;
    for (const ModelRecord *record : rest) {
        if (outcome.examined.empty() && isOutside(request, *record, request.isForward))
            continue;
        if (isOutside(request, *record, !request.isForward)) {
            outcome.status = 64;
            break;
        }
        outcome.examined.push_back(record->address);
        if (!passes(request.terms, *record)) {
            if (++rejected == request.fields.rejectLimit) {
                outcome.status = 60;
                break;
            }
            continue;
        }
        passed.push_back(record);
        if (passed.size() == request.fields.recordLimit && !aggregates(request.items)) {
            outcome.status = 0;
            break;
        }
    }
    if (aggregates(request.items) && !passed.empty()) {
        std::string bytes;
        for (const ModelItem &item : request.items)
            bytes += aggregate(item, passed);
        outcome.records.emplace_back(passed.back()->address, bytes);
        return outcome;
    }
    for (const ModelRecord *record : passed) {
        std::string bytes;
        for (const ModelItem &item : request.items)
            bytes += itemOf(item, *record);
        outcome.records.emplace_back(record->address, bytes);
    }
    return outcome;
}

}  // namespace vantrel::test
