#include "embedded/expression/like_pattern.h"

#include "embedded/status_error.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

constexpr uint32_t firstWideCharacter = 0x10000;
constexpr uint32_t pastUnicode = 0x110000;

uint8_t byteAt(ByteView text, size_t at) {
    return static_cast<uint8_t>(text[at]);
}

uint32_t collated(const uint8_t *table, uint8_t byte) {
    return table == nullptr ? byte : table[byte];
}

// Each of the following takes one character from a text that has not ended.

struct SingleBytes {
    const uint8_t *table;

    uint32_t next(ByteView text, size_t *at) const { return collated(table, byteAt(text, (*at)++)); }
};

// A byte that belongs to no character is one by itself, unlike any other.
struct Utf8Characters {
    const uint8_t *table;

    uint32_t next(ByteView text, size_t *at) const {
        uint8_t lead = byteAt(text, (*at)++);
        if (lead < 0x80)
            return collated(table, lead);
        size_t more = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
        uint32_t character = lead & (0x3F >> more);
        bool isWhole = lead >= 0xC2 && lead <= 0xF4 && text.size() - *at >= more;
        for (size_t byte = 0; isWhole && byte < more; ++byte) {
            uint8_t trail = byteAt(text, *at + byte);
            isWhole = (trail & 0xC0) == 0x80;
            character = character << 6 | (trail & 0x3F);
        }
        if (!isWhole)
            return pastUnicode + lead;
        *at += more;
        return character;
    }
};

// Code units: a surrogate is a character like any other. The length is even.
struct Utf16Units {
    uint32_t next(ByteView text, size_t *at) const {
        uint32_t unit = byteAt(text, *at) | static_cast<uint32_t>(byteAt(text, *at + 1)) << 8;
        *at += 2;
        return unit;
    }
};

}  // namespace

LikePattern::LikePattern(ByteView pattern, TextForm form, CollationPointer collation)
    : form_(form), collation_(std::move(collation)) {
    if (form == TextForm::singleByte)
        addTokens(pattern, SingleBytes{nullptr});
    else
        addTokens(pattern, Utf8Characters{nullptr});
}

template <class Characters>
void LikePattern::addTokens(ByteView pattern, const Characters &characters) {
    for (size_t at = 0; at < pattern.size();) {
        uint32_t character = characters.next(pattern, &at);
        if (character == '%') {
            tokens_.push_back({Token::Kind::anyText, 0});
        } else if (character == '_') {
            tokens_.push_back({Token::Kind::anyCharacter, 0});
        } else if (character == '\\') {
            require(at < pattern.size(), VANTREL_STATUS_INVALID_GET_EXPRESSION);
            addLiteral(characters.next(pattern, &at));
        } else {
            addLiteral(character);
        }
    }
}

void LikePattern::addLiteral(uint32_t character) {
    bool isPair = form_ == TextForm::utf16 && character >= firstWideCharacter && character < pastUnicode;
    if (isPair) {
        uint32_t rest = character - firstWideCharacter;
        tokens_.push_back({Token::Kind::literal, 0xD800 + (rest >> 10)});
        tokens_.push_back({Token::Kind::literal, 0xDC00 + (rest & 0x3FF)});
        return;
    }
    bool isCollated = form_ == TextForm::singleByte || character < 0x80;
    tokens_.push_back(
        {Token::Kind::literal, isCollated ? collated(table(), static_cast<uint8_t>(character)) : character});
}

bool LikePattern::matches(ByteView text) const {
    switch (form_) {
        case TextForm::singleByte:
            return matchesAs(SingleBytes{table()}, text);
        case TextForm::utf8:
            return matchesAs(Utf8Characters{table()}, text);
        default:
            return matchesAs(Utf16Units{}, text);
    }
}

// Any text is first taken as short as possible; where the rest does not match, the last one grows.
template <class Characters>
bool LikePattern::matchesAs(const Characters &characters, ByteView text) const {
    size_t at = 0, token = 0;
    size_t tokenBehindText = 0, restOfText = 0;
    for (;;) {
        if (token < tokens_.size() && tokens_[token].kind == Token::Kind::anyText) {
            tokenBehindText = ++token;
            restOfText = at;
            if (token == tokens_.size())
                return true;
            continue;
        }
        if (at == text.size())
            return token == tokens_.size();
        uint32_t character = characters.next(text, &at);
        if (token < tokens_.size() &&
            (tokens_[token].kind == Token::Kind::anyCharacter || tokens_[token].character == character)) {
            ++token;
            continue;
        }
        if (tokenBehindText == 0)
            return false;
        characters.next(text, &restOfText);
        at = restOfText;
        token = tokenBehindText;
    }
}

}  // namespace vantrel::embedded
