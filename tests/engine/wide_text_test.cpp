#include "engine/wide_text.h"

#include <gtest/gtest.h>

#include <clocale>
#include <string>

namespace {

using namespace vantrel;

TEST(WideText, ConvertsInTheCurrentLocale) {
    ASSERT_NE(setlocale(LC_CTYPE, "C.UTF-8"), nullptr);
    NarrowText text(L"gr\u00FC\u00DFe");
    EXPECT_TRUE(text.fits());
    EXPECT_STREQ(text.get(),
                 "gr\xC3\xBC\xC3\x9F"
                 "e");
    setlocale(LC_CTYPE, "C");
}

TEST(WideText, FitsUpTo4095Bytes) {
    NarrowText fits(std::wstring(4095, L'a').c_str());
    EXPECT_TRUE(fits.fits());
    EXPECT_EQ(std::string(fits.get()), std::string(4095, 'a'));
    EXPECT_FALSE(NarrowText(std::wstring(4096, L'a').c_str()).fits());
    EXPECT_FALSE(NarrowText(std::wstring(9000, L'a').c_str()).fits());
}

TEST(WideText, CountsBytesNotCharacters) {
    ASSERT_NE(setlocale(LC_CTYPE, "C.UTF-8"), nullptr);
    EXPECT_TRUE(NarrowText((std::wstring(2047, L'\u00FC') + L"a").c_str()).fits());
    EXPECT_FALSE(NarrowText(std::wstring(2048, L'\u00FC').c_str()).fits());
    setlocale(LC_CTYPE, "C");
}

TEST(WideText, AnUnconvertibleCharacterEndsTheText) {
    setlocale(LC_CTYPE, "C");
    NarrowText text(L"ab\u20ACcd");
    EXPECT_TRUE(text.fits());
    EXPECT_STREQ(text.get(), "ab");
}

}  // namespace
