#ifndef VANTREL_TESTS_EMBEDDED_KEY_VALUE_ORDER_H
#define VANTREL_TESTS_EMBEDDED_KEY_VALUE_ORDER_H

#include "embedded/key/definition.h"

// The order of the values of a type, found from the values themselves: negative, zero or positive. Both have
// the same length.
int compareValues(vantrel::embedded::KeyType type, const vantrel::embedded::Collation *collation,
                  vantrel::embedded::ByteView left, vantrel::embedded::ByteView right);

#endif
