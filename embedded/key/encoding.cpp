#include "embedded/key/encoding.h"

#include <algorithm>

#include "embedded/key/encoding_forms.h"

namespace vantrel::embedded {

namespace {

// The lengths up to 16 that a type takes, as bits, and what longer ones must be multiples of (0: none).
struct LengthRule {
    uint32_t shortLengths;
    uint8_t step;
};

constexpr size_t longestShortLength = 16;
constexpr LengthRule noLength = {0, 0};
constexpr LengthRule anyLength = {0x1FFFE, 1};
constexpr LengthRule evenLength = {0x15554, 2};
constexpr LengthRule aboveOne = {0x1FFFC, 1};
constexpr LengthRule upToEight = {0x001FE, 0};

template <class... Length>
constexpr LengthRule oneOf(Length... length) {
    return {((1u << length) | ...), 0};
}

constexpr LengthRule lengthRule(KeyType type) {
    switch (type) {
        case KeyType::character:
        case KeyType::legacyString:
        case KeyType::largeObjectText:
        case KeyType::lengthPrefixedString:
        case KeyType::zeroTerminatedString:
        case KeyType::unsignedBinary:
        case KeyType::legacyBinary:
        case KeyType::decimal:
        case KeyType::money:
        case KeyType::numeric:
        case KeyType::numericAsciiOverpunch:
        case KeyType::numericSignLeadingBinary:
        case KeyType::numericSignTrailingBinary:
            return anyLength;
        case KeyType::numericSignLeadingSeparate:
        case KeyType::numericSignTrailingSeparate:
            return aboveOne;
        case KeyType::wideString:
        case KeyType::wideZeroTerminatedString:
            return evenLength;
        case KeyType::integer:
            return upToEight;
        case KeyType::autoincrement:
            return oneOf(2, 4, 8);
        case KeyType::floatingPoint:
        case KeyType::binaryFloat:
            return oneOf(4, 8);
        case KeyType::date:
        case KeyType::time:
            return oneOf(4);
        case KeyType::currency:
        case KeyType::timestamp:
        case KeyType::autoTimestamp:
        case KeyType::timestamp2:
            return oneOf(8);
        case KeyType::guid:
            return oneOf(16);
        case KeyType::logical:
            return oneOf(1, 2);
        case KeyType::bit:
        case KeyType::nullIndicator:
            return oneOf(1);
    }
    return noLength;
}

// The value's length is legal for the type.
void appendLegalValue(KeyType type, const Collation *collation, ByteView value, Bytes &out) {
    switch (type) {
        case KeyType::zeroTerminatedString:
            return appendZeroTerminated(collation, value, out);
        case KeyType::lengthPrefixedString:
            return appendLengthPrefixed(collation, value, out);
        case KeyType::wideString:
            return appendWide(value, out);
        case KeyType::wideZeroTerminatedString:
            return appendWideZeroTerminated(value, out);
        case KeyType::unsignedBinary:
        case KeyType::legacyBinary:
        case KeyType::logical:
        case KeyType::date:
        case KeyType::time:
        case KeyType::timestamp:
        case KeyType::autoTimestamp:
        case KeyType::timestamp2:
            return appendUnsigned(value, out);
        case KeyType::integer:
        case KeyType::autoincrement:
        case KeyType::currency:
            return appendSigned(value, out);
        case KeyType::floatingPoint:
            return appendFloatingPoint(value, out);
        case KeyType::binaryFloat:
            return appendBinaryFloat(value, out);
        case KeyType::bit:
        case KeyType::nullIndicator:
            return appendFlag(value, out);
        case KeyType::decimal:
        case KeyType::money:
            return appendDecimal(DecimalSign::packed, value, out);
        case KeyType::numeric:
            return appendDecimal(DecimalSign::overpunched, value, out);
        case KeyType::numericAsciiOverpunch:
            return appendDecimal(DecimalSign::asciiOverpunched, value, out);
        case KeyType::numericSignLeadingBinary:
            return appendDecimal(DecimalSign::bitLeading, value, out);
        case KeyType::numericSignTrailingBinary:
            return appendDecimal(DecimalSign::bitTrailing, value, out);
        case KeyType::numericSignLeadingSeparate:
            return appendDecimal(DecimalSign::separateLeading, value, out);
        case KeyType::numericSignTrailingSeparate:
            return appendDecimal(DecimalSign::separateTrailing, value, out);
        case KeyType::character:
        case KeyType::legacyString:
        case KeyType::largeObjectText:
        case KeyType::guid:
            break;
    }
    appendBytes(collation, value, out);
}

bool segmentIsNull(const KeySegment &segment, ByteView value) {
    return value.size() == segment.length &&
           value.find_first_not_of(static_cast<char>(segment.nullValue)) == ByteView::npos;
}

}  // namespace

bool typeIsKnown(KeyType type) {
    return lengthRule(type).shortLengths != 0;
}

bool segmentLengthIsLegal(KeyType type, size_t length) {
    const LengthRule rule = lengthRule(type);
    if (length <= longestShortLength)
        return (rule.shortLengths >> length & 1) != 0;
    return rule.step != 0 && length % rule.step == 0;
}

bool typeIsText(KeyType type) {
    switch (type) {
        case KeyType::character:
        case KeyType::lengthPrefixedString:
        case KeyType::zeroTerminatedString:
        case KeyType::largeObjectText:
        case KeyType::legacyString:
            return true;
        default:
            return false;
    }
}

void appendEncodedValue(KeyType type, const Collation *collation, ByteView value, Bytes &out) {
    if (segmentLengthIsLegal(type, value.size()))
        appendLegalValue(type, collation, value, out);
    else
        out.append(value);
}

void appendEncodedKey(const IndexDefinition &index, ByteView rawKey, Bytes &out) {
    for (const KeySegment &segment : index.segments) {
        const ByteView value = rawKey.substr(0, segment.length);
        const size_t start = out.size();
        appendEncodedValue(segment.type, segment.collation.get(), value, out);
        if (segment.descending)
            std::transform(out.begin() + static_cast<ptrdiff_t>(start), out.end(),
                           out.begin() + static_cast<ptrdiff_t>(start),
                           [](char byte) { return static_cast<char>(~byte); });
        rawKey.remove_prefix(value.size());
    }
}

void extractRawKey(const IndexDefinition &index, ByteView record, Bytes &out) {
    for (const KeySegment &segment : index.segments) {
        const size_t offset = std::min<size_t>(segment.offset, record.size());
        const ByteView value = record.substr(offset, segment.length);
        out.append(value);
        out.append(segment.length - value.size(), '\0');
    }
}

bool keyIsNull(const IndexDefinition &index, ByteView rawKey) {
    bool anyFlaggedAll = false;
    bool allNull = true;
    for (const KeySegment &segment : index.segments) {
        const ByteView value = rawKey.substr(0, segment.length);
        rawKey.remove_prefix(value.size());
        if (!segment.nullIfAny && !segment.nullIfAll)
            continue;
        const bool null = segmentIsNull(segment, value);
        if (segment.nullIfAny && null)
            return true;
        anyFlaggedAll = anyFlaggedAll || segment.nullIfAll;
        allNull = allNull && (null || !segment.nullIfAll);
    }
    return anyFlaggedAll && allNull;
}

}  // namespace vantrel::embedded
