#ifndef VANTREL_EMBEDDED_EXPRESSION_LIKE_PATTERN_H
#define VANTREL_EMBEDDED_EXPRESSION_LIKE_PATTERN_H

#include <cstdint>
#include <vector>

#include "embedded/key/collation.h"

namespace vantrel::embedded {

// How bytes make characters.
enum class TextForm : uint8_t { singleByte, utf8, utf16 };

// A pattern in which % stands for any text, _ for any one character, and a backslash takes the meaning from
// the character behind it.
class LikePattern {
  public:
    // A pattern for UTF-16 text is itself UTF-8. One that ends within an escape is thrown as status 62.
    LikePattern(ByteView pattern, TextForm form, CollationPointer collation);

    bool matches(ByteView text) const;

  private:
    struct Token {
        enum class Kind : uint8_t { literal, anyCharacter, anyText };
        Kind kind;
        uint32_t character;
    };

    template <class Characters>
    void addTokens(ByteView pattern, const Characters &characters);
    void addLiteral(uint32_t character);
    template <class Characters>
    bool matchesAs(const Characters &characters, ByteView text) const;
    const uint8_t *table() const { return collation_ == nullptr ? nullptr : collation_->table.data(); }

    TextForm form_;
    CollationPointer collation_;
    std::vector<Token> tokens_;
};

}  // namespace vantrel::embedded

#endif
