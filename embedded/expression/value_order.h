#ifndef VANTREL_EMBEDDED_EXPRESSION_VALUE_ORDER_H
#define VANTREL_EMBEDDED_EXPRESSION_VALUE_ORDER_H

#include <cstddef>
#include <cstdint>

#include "embedded/key/collation.h"

namespace vantrel::embedded {

// Compares values of one type and length in the order of keys of that type.
class ValueOrder {
  public:
    // A value made ready to be compared with many others; it keeps nothing of the caller's.
    struct Prepared {
        uint64_t number = 0;
        Bytes bytes;
    };

    ValueOrder(KeyType type, CollationPointer collation, size_t length);

    void prepare(ByteView value, Prepared *prepared) const;
    // Negative, zero or positive. The value has the length of the order.
    int compare(ByteView value, const Prepared &other);

  private:
    // Plain bytes and whole numbers are compared as they stand, everything else as a key.
    enum class Form : uint8_t { bytes, unsignedNumber, signedNumber, key };
    static Form formOf(KeyType type, const CollationPointer &collation, size_t length);
    uint64_t numberOf(ByteView value) const;

    KeyType type_;
    CollationPointer collation_;
    Form form_;
    Bytes scratch_;
};

}  // namespace vantrel::embedded

#endif
