#include "embedded/expression/value_order.h"

#include "embedded/key/encoding.h"
#include "embedded/key/little_endian.h"

namespace vantrel::embedded {

namespace {

constexpr uint64_t topBit = uint64_t{1} << 63;

}  // namespace

ValueOrder::ValueOrder(KeyType type, CollationPointer collation, size_t length)
    : type_(type), collation_(std::move(collation)), form_(formOf(type_, collation_, length)) {}

ValueOrder::Form ValueOrder::formOf(KeyType type, const CollationPointer &collation, size_t length) {
    if (!segmentLengthIsLegal(type, length))
        return Form::bytes;
    switch (type) {
        case KeyType::character:
        case KeyType::largeObjectText:
            return collation == nullptr ? Form::bytes : Form::key;
        case KeyType::guid:
            return Form::bytes;
        case KeyType::integer:
        case KeyType::autoincrement:
        case KeyType::currency:
            return Form::signedNumber;
        case KeyType::unsignedBinary:
        case KeyType::logical:
        case KeyType::date:
        case KeyType::time:
        case KeyType::timestamp:
        case KeyType::autoTimestamp:
        case KeyType::timestamp2:
            return length <= sizeof(uint64_t) ? Form::unsignedNumber : Form::key;
        default:
            return Form::key;
    }
}

uint64_t ValueOrder::numberOf(ByteView value) const {
    if (form_ == Form::unsignedNumber)
        return loadUnsigned(value);
    return static_cast<uint64_t>(loadSigned(value)) ^ topBit;
}

void ValueOrder::prepare(ByteView value, Prepared *prepared) const {
    prepared->bytes.clear();
    if (form_ == Form::bytes)
        prepared->bytes.assign(value);
    else if (form_ == Form::key)
        appendEncodedValue(type_, collation_.get(), value, prepared->bytes);
    else
        prepared->number = numberOf(value);
}

int ValueOrder::compare(ByteView value, const Prepared &other) {
    if (form_ == Form::bytes)
        return value.compare(other.bytes);
    if (form_ == Form::key) {
        scratch_.clear();
        appendEncodedValue(type_, collation_.get(), value, scratch_);
        return scratch_.compare(other.bytes);
    }
    uint64_t number = numberOf(value);
    return number < other.number ? -1 : number > other.number ? 1 : 0;
}

}  // namespace vantrel::embedded
