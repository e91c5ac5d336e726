#include <algorithm>

#include "embedded/expression/filter.h"
#include "embedded/key/encoding.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

// Bits of a term's comparison flags.
constexpr uint8_t comparisonBits = 0x07;
constexpr uint8_t hasBlock = 0x08;
constexpr uint8_t defaultCollation = 0x20;
constexpr uint8_t comparesWithField = 0x40;
constexpr uint8_t ignoresCase = 0x80;

constexpr uint8_t tableBlock = 0xAC;
constexpr uint8_t codePageBlock = 0xAB;
constexpr uint8_t nameBlock = 0xAE;
constexpr size_t tableNameSize = 8;
constexpr size_t nameSize = 16;

constexpr uint8_t like = 1, notLike = 2, regularExpression = 3;

struct CodePage {
    ByteView name;
    TextForm form;
};
constexpr CodePage codePages[] = {
    {"ASCII", TextForm::singleByte},
    {"LATIN1", TextForm::singleByte},
    {"CP850", TextForm::singleByte},
    {"UTF-8", TextForm::utf8},
};

// A term as it is read, before its parts are brought together.
struct RawTerm {
    KeyType type;
    Field field;
    uint8_t flags;
    Connector connector;
    ByteView constant;
    Field other;
    uint8_t patternKind = 0;
    Bytes pattern;
    CollationPointer collation;
    bool hasCollationBlock = false;
    TextForm form = TextForm::singleByte;

    Comparison comparison() const { return static_cast<Comparison>(flags & comparisonBits); }
};

bool typeIsWide(KeyType type) {
    return type == KeyType::wideString || type == KeyType::wideZeroTerminatedString;
}

// The bytes up to the terminator, which the length counts.
Bytes readPattern(RequestReader &reader) {
    ByteView text = reader.bytes(reader.u16());
    reader.refuseUnless(!text.empty() && text.back() == '\0');
    return Bytes(text.substr(0, text.find('\0')));
}

// The other field has the length of the first one; beside a system field, the offsets of system fields name
// those.
Field readOtherField(RequestReader &reader, const Field &field) {
    uint16_t offset = reader.u16();
    Field::Source source =
        field.source == Field::Source::bytes ? Field::Source::bytes : systemSourceOf(offset);
    return Field{source, offset, field.length};
}

void readComparand(RequestReader &reader, RawTerm *term) {
    reader.refuseUnless((term->flags & comparisonBits) != 0);
    if (term->comparison() == Comparison::pattern) {
        term->patternKind = reader.u8();
        reader.refuseUnless(term->patternKind >= like && term->patternKind <= regularExpression);
        term->pattern = readPattern(reader);
    } else if ((term->flags & comparesWithField) != 0) {
        term->other = readOtherField(reader, term->field);
    } else {
        term->constant = reader.bytes(term->field.length);
    }
}

ByteView readName(RequestReader &reader, size_t size) {
    ByteView name = reader.bytes(size);
    return name.substr(0, name.find('\0'));
}

void readCodePage(RequestReader &reader, RawTerm *term) {
    ByteView name = readName(reader, nameSize);
    const auto *page = std::find_if(std::begin(codePages), std::end(codePages),
                                    [name](const CodePage &known) { return known.name == name; });
    reader.refuseUnless(page != std::end(codePages));
    term->form = page->form;
}

void readBlock(RequestReader &reader, const CollationList &registered, RawTerm *term) {
    uint8_t marker = reader.u8();
    if (marker == codePageBlock)
        return readCodePage(reader, term);
    reader.refuseUnless(marker == tableBlock || marker == nameBlock);
    term->hasCollationBlock = true;
    term->collation =
        findCollation(registered, readName(reader, marker == tableBlock ? tableNameSize : nameSize));
    require(term->collation != nullptr, VANTREL_STATUS_ALTERNATE_COLLATING_SEQUENCE_NOT_FOUND);
}

void readCollation(RequestReader &reader, const CollationList &registered, RawTerm *term) {
    if ((term->flags & hasBlock) != 0)
        readBlock(reader, registered, term);
    bool folds = (term->flags & ignoresCase) != 0;
    bool isDefault = (term->flags & defaultCollation) != 0;
    reader.refuseUnless(term->hasCollationBlock + folds + isDefault <= 1);
    if (folds)
        term->collation = caseInsensitiveCollation();
    if (!typeIsText(term->type))
        term->collation = nullptr;
}

void checkPattern(const RequestReader &reader, const RawTerm &term) {
    bool isWide = typeIsWide(term.type);
    bool isText = typeIsText(term.type) || (isWide && term.patternKind != regularExpression);
    reader.refuseUnless(isText && segmentLengthIsLegal(term.type, term.field.length));
    reader.refuseUnless(term.patternKind != regularExpression || !term.hasCollationBlock);
}

RawTerm readTerm(RequestReader &reader, const CollationList &registered) {
    RawTerm term{};
    term.type = KeyType{reader.u8()};
    uint16_t length = reader.u16();
    std::optional<Field> field = fieldFrom(length, reader.u16());
    reader.refuseUnless(typeIsKnown(term.type) && field.has_value());
    term.field = *field;
    if (field->source != Field::Source::bytes)
        term.type = KeyType::timestamp;
    term.flags = reader.u8();
    uint8_t connector = reader.u8();
    reader.refuseUnless(connector <= static_cast<uint8_t>(Connector::disjunction));
    term.connector = Connector{connector};
    readComparand(reader, &term);
    readCollation(reader, registered, &term);
    if (term.comparison() == Comparison::pattern)
        checkPattern(reader, term);
    return term;
}

decltype(Term::comparand) comparandOf(const RawTerm &term, const ValueOrder &order) {
    if (term.patternKind == regularExpression)
        return RegularExpression(term.pattern, (term.flags & ignoresCase) != 0);
    if (term.patternKind != 0) {
        TextForm form = typeIsWide(term.type) ? TextForm::utf16 : term.form;
        return TextPattern{LikePattern(term.pattern, form, term.collation), term.patternKind == notLike};
    }
    if ((term.flags & comparesWithField) != 0)
        return term.other;
    Constant constant{Bytes(term.constant), {}};
    order.prepare(term.constant, &constant.prepared);
    return constant;
}

}  // namespace

Term decodeTerm(RequestReader &reader, const CollationList &registered) {
    RawTerm raw = readTerm(reader, registered);
    ValueOrder order(raw.type, raw.collation, raw.field.length);
    auto comparand = comparandOf(raw, order);
    return Term{raw.field,     raw.type, raw.collation,       raw.comparison(),
                raw.connector, order,    std::move(comparand)};
}

}  // namespace vantrel::embedded
