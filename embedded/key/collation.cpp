#include "embedded/key/collation.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "embedded/status_error.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

using Table = std::array<uint8_t, 256>;

constexpr uint8_t tableMarker = 0xAC;
constexpr uint8_t nameMarker = 0xAE;
constexpr size_t shortNameSize = 8;
constexpr size_t nameSize = 16;

// Makes one case of the 26 letters sort as the other.
constexpr Table foldedTable(uint8_t foldedFirst, uint8_t targetFirst) {
    Table table{};
    for (size_t byte = 0; byte < table.size(); ++byte)
        table[byte] = static_cast<uint8_t>(byte);
    for (size_t letter = 0; letter < 26; ++letter)
        table[foldedFirst + letter] = static_cast<uint8_t>(targetFirst + letter);
    return table;
}

// The plain letter of each capital from 0xC0 of the Latin-1 page, and of the sharp s; the multiplication sign
// has none.
constexpr char plainLetters[] = "AAAAAAACEEEEIIIIDNOOOOO OUUUUYTS";

// Where code page 850 has the characters 0xC0 to 0xFF of the Latin-1 page.
constexpr uint8_t codePage850[64] = {
    0xB7, 0xB5, 0xB6, 0xC7, 0x8E, 0x8F, 0x92, 0x80, 0xD4, 0x90, 0xD2, 0xD3, 0xDE, 0xD6, 0xD7, 0xD8,
    0xD1, 0xA5, 0xE3, 0xE0, 0xE2, 0xE5, 0x99, 0x9E, 0x9D, 0xEB, 0xE9, 0xEA, 0x9A, 0xED, 0xE8, 0xE1,
    0x85, 0xA0, 0x83, 0xC6, 0x84, 0x86, 0x91, 0x87, 0x8A, 0x82, 0x88, 0x89, 0x8D, 0xA1, 0x8C, 0x8B,
    0xD0, 0xA4, 0x95, 0xA2, 0x93, 0xE4, 0x94, 0xF6, 0x9B, 0x97, 0xA3, 0x96, 0x81, 0xEC, 0xE7, 0x98};

// Hands out places in the order of sorting.
class TableBuilder {
  public:
    constexpr void place(uint8_t byte) { place(byte, byte); }

    constexpr void place(uint8_t capital, uint8_t small) {
        table[capital] = next;
        table[small] = next;
        placed[capital] = true;
        placed[small] = true;
        ++next;
    }

    constexpr Table finish() {
        for (size_t byte = 0; byte < table.size(); ++byte)
            if (!placed[byte])
                place(static_cast<uint8_t>(byte));
        return table;
    }

  private:
    Table table{};
    std::array<bool, 256> placed{};
    uint8_t next = 0;
};

// Both cases of a letter in one place, its accented forms in places of their own right behind, all other
// bytes in their order before the letters or behind them.
template <class FromLatin1>
constexpr Table letterTable(FromLatin1 fromLatin1) {
    TableBuilder builder;
    for (uint8_t byte = 0; byte < 'A'; ++byte)
        builder.place(byte);
    for (uint8_t letter = 'A'; letter <= 'Z'; ++letter) {
        builder.place(letter, static_cast<uint8_t>(letter + 0x20));
        for (uint8_t capital = 0xC0; capital < 0xDF; ++capital)
            if (static_cast<uint8_t>(plainLetters[capital - 0xC0]) == letter)
                builder.place(fromLatin1(capital), fromLatin1(static_cast<uint8_t>(capital + 0x20)));
        if (letter == 'S')
            builder.place(fromLatin1(0xDF));
        if (letter == 'Y')
            builder.place(fromLatin1(0xFF));
    }
    return builder.finish();
}

constexpr Table latin1Table = letterTable([](uint8_t byte) { return byte; });
constexpr Table codePage850Table = letterTable([](uint8_t byte) { return codePage850[byte - 0xC0]; });

const CollationList &builtInCollations() {
    static const CollationList list = {
        std::make_shared<const Collation>(Collation{"UPPER", foldedTable('a', 'A')}),
        std::make_shared<const Collation>(Collation{"LATIN1", latin1Table}),
        std::make_shared<const Collation>(Collation{"CP850", codePage850Table}),
    };
    return list;
}

CollationPointer findByName(const CollationList &list, ByteView name) {
    const auto found = std::find_if(list.begin(), list.end(), [name](const CollationPointer &collation) {
        return collation->name == name;
    });
    return found == list.end() ? nullptr : *found;
}

}  // namespace

const CollationPointer &caseInsensitiveCollation() {
    static const CollationPointer collation =
        std::make_shared<const Collation>(Collation{"", foldedTable('A', 'a')});
    return collation;
}

CollationPointer findBuiltInCollation(ByteView name) {
    return findByName(builtInCollations(), name);
}

CollationPointer findCollation(const CollationList &registered, ByteView name) {
    CollationPointer found = findByName(registered, name);
    return found == nullptr ? findBuiltInCollation(name) : found;
}

CollationPointer findCollation(const CollationList &registered, size_t number) {
    return number == 0 || number > registered.size() ? nullptr : registered[number - 1];
}

size_t numberOfCollation(const CollationList &registered, const Collation *collation) {
    const auto found = std::find_if(registered.begin(), registered.end(), [collation](const auto &candidate) {
        return candidate.get() == collation;
    });
    return found == registered.end() ? 0 : static_cast<size_t>(found - registered.begin()) + 1;
}

bool blockDefinesCollation(ByteView block) {
    return static_cast<uint8_t>(block.front()) == tableMarker;
}

ByteView nameInBlock(ByteView block) {
    const ByteView field = block.substr(1, blockDefinesCollation(block) ? shortNameSize : nameSize);
    return field.substr(0, field.find('\0'));
}

void checkCollationBlock(ByteView block) {
    const bool complete = block.size() == collationBlockSize;
    const bool known =
        complete && (blockDefinesCollation(block) || static_cast<uint8_t>(block.front()) == nameMarker);
    require(known && !nameInBlock(block).empty(),
            VANTREL_STATUS_INVALID_ALTERNATE_COLLATING_SEQUENCE_DEFINITION);
}

CollationPointer collationFromBlock(ByteView block) {
    Collation collation{Bytes(nameInBlock(block)), {}};
    memcpy(collation.table.data(), block.data() + 1 + shortNameSize, collation.table.size());
    return std::make_shared<const Collation>(std::move(collation));
}

Bytes blockFromCollation(const Collation &collation) {
    Bytes block(1, static_cast<char>(tableMarker));
    block.append(collation.name, 0, shortNameSize);
    block.resize(1 + shortNameSize);
    for (const uint8_t byte : collation.table)
        block.push_back(static_cast<char>(byte));
    return block;
}

}  // namespace vantrel::embedded
