#ifndef VANTREL_EMBEDDED_EXPRESSION_FIELD_FUNCTION_H
#define VANTREL_EMBEDDED_EXPRESSION_FIELD_FUNCTION_H

#include <cstddef>
#include <cstdint>

#include "embedded/key/definition.h"

namespace vantrel::embedded {

// What happens to the digits behind a decimal place.
enum class Rounding : uint8_t { none, ceiling, floor, halfAwayFromZero, truncate };

// A function of one number, which keeps its type and length: the absolute value, or the number with so many
// decimal places (a negative count stands for places in front of the point). What the field cannot hold
// becomes the largest or smallest number that it can. Values that are no numbers stay as they are.
struct FieldFunction {
    KeyType type;
    Rounding rounding;  // none: the absolute value
    int16_t places = 0;

    void apply(char *value, size_t length) const;
};

// Whether values of the type and length are numbers that functions take.
bool functionsTake(KeyType type, size_t length);

// The decimal places that numbers of the type have.
int placesOf(KeyType type);

// Whether the rounding takes a number away from zero, given what is cut off.
inline bool roundsAway(Rounding rounding, bool isNegative, bool cutsSomething, bool cutsHalf) {
    if (rounding == Rounding::halfAwayFromZero)
        return cutsHalf;
    return cutsSomething && rounding == (isNegative ? Rounding::floor : Rounding::ceiling);
}

// The function of a decimal number of any kind.
void applyToDecimal(const FieldFunction &function, char *value, size_t length);

}  // namespace vantrel::embedded

#endif
