#ifndef VANTREL_EMBEDDED_KEY_ENCODING_FORMS_H
#define VANTREL_EMBEDDED_KEY_ENCODING_FORMS_H

#include <cstddef>
#include <cstdint>

#include "embedded/key/definition.h"

// The few forms that the encodings of all types come down to.

namespace vantrel::embedded {

// How a decimal number carries its sign.
enum class DecimalSign : uint8_t {
    packed,       // two digits a byte; the sign is the last half byte
    overpunched,  // one digit a byte; the last digit is a letter that carries the sign too
    asciiOverpunched,
    bitLeading,  // one digit a byte; bit 0x40 of the first digit is set in negative numbers
    bitTrailing,
    separateLeading,  // one digit a byte; a byte of its own is + or -
    separateTrailing,
};

void appendBytes(const Collation *collation, ByteView value, Bytes &out);
void appendZeroTerminated(const Collation *collation, ByteView value, Bytes &out);
void appendLengthPrefixed(const Collation *collation, ByteView value, Bytes &out);
void appendWide(ByteView value, Bytes &out);
void appendWideZeroTerminated(ByteView value, Bytes &out);

void appendUnsigned(ByteView value, Bytes &out);
void appendSigned(ByteView value, Bytes &out);
void appendFloatingPoint(ByteView value, Bytes &out);
void appendBinaryFloat(ByteView value, Bytes &out);
void appendFlag(ByteView value, Bytes &out);

void appendDecimal(DecimalSign sign, ByteView value, Bytes &out);

// Makes room for so many more bytes and returns where they start.
inline char *appendRoom(Bytes &out, size_t count) {
    const size_t start = out.size();
    out.resize(start + count);
    return out.data() + start;
}

}  // namespace vantrel::embedded

#endif
