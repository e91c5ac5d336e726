#include <algorithm>

#include "embedded/key/encoding_forms.h"

namespace vantrel::embedded {

namespace {

constexpr char terminator = '\0';
constexpr char escape = '\1';

char collated(const Collation *collation, char byte) {
    return collation == nullptr ? byte : static_cast<char>(collation->table[static_cast<uint8_t>(byte)]);
}

bool needsEscape(char byte) {
    return static_cast<uint8_t>(byte) <= static_cast<uint8_t>(escape);
}

char *putEscaped(char byte, char *to) {
    if (needsEscape(byte)) {
        *to++ = escape;
        ++byte;
    }
    *to++ = byte;
    return to;
}

// A terminator of zero must sort before any byte of the text: the bytes 0 and 1 become 1 1 and 1 2.
void appendTerminated(const Collation *collation, ByteView text, Bytes &out) {
    if (collation == nullptr && std::none_of(text.begin(), text.end(), needsEscape)) {
        out.append(text);
    } else {
        char *to = appendRoom(out, 2 * text.size());
        for (const char byte : text)
            to = putEscaped(collated(collation, byte), to);
        out.resize(static_cast<size_t>(to - out.data()));
    }
    out.push_back(terminator);
}

}  // namespace

void appendBytes(const Collation *collation, ByteView value, Bytes &out) {
    if (collation == nullptr) {
        out.append(value);
        return;
    }
    char *to = appendRoom(out, value.size());
    for (const char byte : value)
        *to++ = collated(collation, byte);
}

void appendZeroTerminated(const Collation *collation, ByteView value, Bytes &out) {
    appendTerminated(collation, value.substr(0, value.find('\0')), out);
}

// A length beyond the segment counts as what the segment holds; the length byte behind tells it apart.
void appendLengthPrefixed(const Collation *collation, ByteView value, Bytes &out) {
    appendTerminated(collation, value.substr(1, static_cast<uint8_t>(value.front())), out);
    out.push_back(value.front());
}

void appendWide(ByteView value, Bytes &out) {
    char *to = appendRoom(out, value.size());
    for (size_t at = 0; at + 1 < value.size(); at += 2) {
        *to++ = value[at + 1];
        *to++ = value[at];
    }
}

void appendWideZeroTerminated(ByteView value, Bytes &out) {
    size_t length = 0;
    while (length + 1 < value.size() && (value[length] != 0 || value[length + 1] != 0))
        length += 2;
    appendWide(value.substr(0, length), out);
    out.append(2, terminator);
}

}  // namespace vantrel::embedded
