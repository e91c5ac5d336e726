#ifndef VANTREL_EMBEDDED_EXPRESSION_FILTER_H
#define VANTREL_EMBEDDED_EXPRESSION_FILTER_H

#include <variant>
#include <vector>

#include "embedded/expression/field.h"
#include "embedded/expression/like_pattern.h"
#include "embedded/expression/regular_expression.h"
#include "embedded/expression/request_reader.h"
#include "embedded/expression/value_order.h"

namespace vantrel::embedded {

enum class Comparison : uint8_t {
    equal = 1,
    greater = 2,
    less = 3,
    notEqual = 4,
    greaterOrEqual = 5,
    lessOrEqual = 6,
    pattern = 7,
};

// How a term is joined to the next one.
enum class Connector : uint8_t { last = 0, conjunction = 1, disjunction = 2 };

// A constant of a comparison, as the request has it and as it is compared.
struct Constant {
    Bytes bytes;
    ValueOrder::Prepared prepared;
};

struct TextPattern {
    LikePattern pattern;
    bool isNegated;
};

// One condition of a filter: a field of the record against a constant, another field or a pattern.
struct Term {
    Field field;
    KeyType type;
    CollationPointer collation;  // null for byte order
    Comparison comparison;
    Connector connector;
    ValueOrder order;
    std::variant<Constant, Field, TextPattern, RegularExpression> comparand;
};

// Takes one term off the request; anything malformed is thrown as the reader's status, an unknown collation
// as 136.
Term decodeTerm(RequestReader &reader, const CollationList &registered);

// Terms joined strictly from left to right: a filter without terms lets every record pass.
class Filter {
  public:
    explicit Filter(std::vector<Term> terms) : terms_(std::move(terms)) {}

    bool passes(const RecordView &record);
    // How far into the record's bytes the terms look.
    size_t reach() const;
    const std::vector<Term> &terms() const { return terms_; }

  private:
    bool holds(Term &term, const RecordView &record);

    std::vector<Term> terms_;
    ValueOrder::Prepared otherValue_;
};

}  // namespace vantrel::embedded

#endif
