#include "embedded/cipher/page_cipher.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

#include "embedded/cipher/file_key.h"

namespace {

using namespace vantrel::embedded;

using Unit = std::vector<uint8_t>;

Unit encrypted(PageCipher &cipher, UnitKind kind, uint64_t number, const Unit &plain) {
    Unit unit(plain.size());
    EXPECT_TRUE(cipher.encrypt(kind, number, plain, unit.data()));
    return unit;
}

TEST(PageCipher, UnitsOfAllLengthsComeBack) {
    PageCipher cipher = FileKey::random().pageCipher();
    for (size_t length : {16u, 24u, 32u, 8192u}) {
        Unit plain(length, 0x5A), unit = encrypted(cipher, UnitKind::page, 7, plain);
        EXPECT_NE(unit, plain);
        EXPECT_TRUE(cipher.decrypt(UnitKind::page, 7, unit));
        EXPECT_EQ(unit, plain);
    }
}

TEST(PageCipher, EqualBytesLookDifferentInEveryPlace) {
    PageCipher cipher = FileKey::random().pageCipher();
    std::set<Unit> seen;
    for (UnitKind kind : {UnitKind::page, UnitKind::logHeader, UnitKind::frameHeader, UnitKind::framePage}) {
        for (uint64_t number : {uint64_t{0}, uint64_t{1}, uint64_t{256}, uint64_t{1} << 32, ~uint64_t{0}}) {
            Unit unit = encrypted(cipher, kind, number, Unit(32));
            EXPECT_TRUE(seen.insert({unit.begin(), unit.begin() + 16}).second);
            EXPECT_TRUE(seen.insert({unit.begin() + 16, unit.end()}).second);
        }
    }
}

TEST(PageCipher, KeysDiffer) {
    PageCipher one = FileKey::random().pageCipher(), other = FileKey::random().pageCipher();
    EXPECT_NE(encrypted(one, UnitKind::page, 0, Unit(16)), encrypted(other, UnitKind::page, 0, Unit(16)));
}

}  // namespace
