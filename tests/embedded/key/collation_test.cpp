#include "embedded/key/collation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

#include "request_builder.h"

namespace {

using namespace vantrel::embedded;
using namespace std::string_literals;

uint8_t placeOf(const CollationPointer &collation, char byte) {
    return collation->table[static_cast<uint8_t>(byte)];
}

// Each byte sorts before the next one of the list.
void expectAscending(const CollationPointer &collation, ByteView bytes) {
    for (size_t at = 1; at < bytes.size(); ++at)
        EXPECT_LT(placeOf(collation, bytes[at - 1]), placeOf(collation, bytes[at])) << at;
}

void expectSame(const CollationPointer &collation, ByteView left, ByteView right) {
    for (size_t at = 0; at < left.size(); ++at)
        EXPECT_EQ(placeOf(collation, left[at]), placeOf(collation, right[at])) << at;
}

size_t placesOf(const CollationPointer &collation) {
    return std::set<uint8_t>(collation->table.begin(), collation->table.end()).size();
}

TEST(Collation, WithoutCaseSortsCapitalsAsSmallLetters) {
    const CollationPointer &collation = caseInsensitiveCollation();
    EXPECT_EQ(placeOf(collation, 'A'), 'a');
    EXPECT_EQ(placeOf(collation, 'Z'), 'z');
    for (const char byte : "a z@[`{\x80\xC0\xFF"s)
        EXPECT_EQ(placeOf(collation, byte), static_cast<uint8_t>(byte));
    EXPECT_EQ(placesOf(collation), 230u);
}

TEST(Collation, UpperSortsSmallLettersAsCapitals) {
    const CollationPointer collation = findBuiltInCollation("UPPER");
    EXPECT_EQ(placeOf(collation, 'a'), 'A');
    EXPECT_EQ(placeOf(collation, 'z'), 'Z');
    for (const char byte : "A Z@[`{\x80\xC0\xFF"s)
        EXPECT_EQ(placeOf(collation, byte), static_cast<uint8_t>(byte));
    EXPECT_EQ(placesOf(collation), 230u);
}

TEST(Collation, Latin1PutsAccentedLettersBehindTheirPlainOnes) {
    const CollationPointer collation = findBuiltInCollation("LATIN1");
    expectSame(collation, "AZ\xC0\xC6\xC7\xD0\xD1\xD6\xD8\xDE", "az\xE0\xE6\xE7\xF0\xF1\xF6\xF8\xFE");
    expectAscending(collation,
                    "\0 09@A\xC0\xC4\xC5\xC6"
                    "BC\xC7"
                    "D\xD0"
                    "E\xC8\xCB"
                    "FI\xCC\xCFJN\xD1O\xD2\xD6\xD8PS\xDFT\xDEU"
                    "\xD9\xDCVY\xDD\xFFZ[`{\x7F\x80\xA0\xBF\xD7\xF7"s);
    EXPECT_EQ(placesOf(collation), 200u);
}

TEST(Collation, CodePage850SortsItsLettersAsLatin1) {
    const CollationPointer collation = findBuiltInCollation("CP850");
    expectSame(collation, "AZ\xB7\x92\x80\xA5\x99\x9D\x9A", "az\x85\x91\x87\xA4\x94\x9B\x81");
    expectAscending(collation,
                    "\0 09@A\xB7\x8E\x8F\x92"
                    "BC\x80"
                    "D\xD1"
                    "E\xD4\x90"
                    "FN\xA5O\x99\x9DPS\xE1T\xE8U\xEB\x9AVY\xED\x98Z[`{"
                    "\x7F\x9C\x9E\xAA\xF6\xFF"s);
    EXPECT_EQ(placesOf(collation), 200u);
}

TEST(Collation, IsFoundByName) {
    EXPECT_EQ(findBuiltInCollation("UPPER")->name, "UPPER");
    for (const char *name : {"", "upper", "UPPE", "UPPERS", "LATIN", "CP437"})
        EXPECT_EQ(findBuiltInCollation(name), nullptr) << name;
}

TEST(Collation, OfTheFileComesBeforeABuiltInOneOfItsName) {
    const CollationList registered = {collationFromBlock(tableBlock("MINE")),
                                      collationFromBlock(tableBlock("UPPER"))};
    EXPECT_EQ(findCollation(registered, "MINE"), registered[0]);
    EXPECT_EQ(findCollation(registered, "UPPER"), registered[1]);
    EXPECT_EQ(findCollation(registered, "LATIN1"), findBuiltInCollation("LATIN1"));
    EXPECT_EQ(findCollation(registered, "OTHER"), nullptr);
}

TEST(Collation, IsFoundByNumberFromOne) {
    const CollationList registered = {collationFromBlock(tableBlock("A")),
                                      collationFromBlock(tableBlock("B"))};
    EXPECT_EQ(findCollation(registered, size_t{0}), nullptr);
    EXPECT_EQ(findCollation(registered, 1), registered[0]);
    EXPECT_EQ(findCollation(registered, 2), registered[1]);
    EXPECT_EQ(findCollation(registered, 3), nullptr);
    EXPECT_EQ(numberOfCollation(registered, registered[1].get()), 2u);
    EXPECT_EQ(numberOfCollation(registered, caseInsensitiveCollation().get()), 0u);
    EXPECT_EQ(numberOfCollation(registered, nullptr), 0u);
}

TEST(Collation, ComesFromItsBlockAndGoesBack) {
    for (const char *name : {"A", "SEVEN77", "EIGHT888"}) {
        const Bytes block = tableBlock(name, 254);
        const CollationPointer collation = collationFromBlock(block);
        EXPECT_EQ(collation->name, name);
        EXPECT_EQ(placeOf(collation, '\0'), 254);
        EXPECT_EQ(placeOf(collation, '\xFE'), 0);
        EXPECT_EQ(placeOf(collation, '\xFF'), 255);
        EXPECT_EQ(blockFromCollation(*collation), block);
    }
}

TEST(Collation, NamesReachTheEndOfTheirField) {
    EXPECT_EQ(nameInBlock(nameBlock("SIXTEEN890123456")), "SIXTEEN890123456");
    EXPECT_EQ(nameInBlock(nameBlock("SHORT")), "SHORT");
    EXPECT_EQ(nameInBlock(tableBlock("EIGHT888")), "EIGHT888");
}

int32_t blockStatus(ByteView block) {
    return statusOf([block] { checkCollationBlock(block); });
}

TEST(Collation, RefusesMalformedBlocks) {
    EXPECT_EQ(blockStatus(tableBlock("A")), 0);
    EXPECT_EQ(blockStatus(nameBlock("A")), 0);
    EXPECT_EQ(blockStatus(tableBlock("")), 48);
    EXPECT_EQ(blockStatus(nameBlock("")), 48);
    EXPECT_EQ(blockStatus(""), 48);
    EXPECT_EQ(blockStatus(nameBlock("A").substr(0, 264)), 48);
    EXPECT_EQ(blockStatus(nameBlock("A") + "x"), 48);
    for (const char marker : {'\0', '\xAB', '\xAD', '\xAF'})
        EXPECT_EQ(blockStatus(marker + nameBlock("A").substr(1)), 48);
}

}  // namespace
