#include "engine/wide_text.h"

#include <clocale>
#include <string>

#include "support/client_test.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

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

TEST(WideText, ACharacterAcrossTheLimitDoesNotFit) {
    ASSERT_NE(setlocale(LC_CTYPE, "C.UTF-8"), nullptr);
    EXPECT_FALSE(NarrowText((std::wstring(4095, L'a') + L'\u00FC').c_str()).fits());
    EXPECT_FALSE(NarrowText((std::wstring(4094, L'a') + L'\u20AC').c_str()).fits());
    EXPECT_TRUE(NarrowText((std::wstring(4092, L'a') + L'\u20AC').c_str()).fits());
    setlocale(LC_CTYPE, "C");
}

TEST(WideText, AnUnconvertibleCharacterEndsTheText) {
    setlocale(LC_CTYPE, "C");
    NarrowText text(L"ab\u20ACcd");
    EXPECT_TRUE(text.fits());
    EXPECT_STREQ(text.get(), "ab");
}

class WideTextCall : public ClientTest {
  protected:
    VantrelStatus convert(VantrelClient *through, const wchar_t *wideText) {
        return withNarrowText(through, wideText, [this](const char *narrow) {
            texts.push_back(narrow);
            return VantrelStatus{84};
        });
    }

    std::vector<std::string> texts;
};

TEST_F(WideTextCall, HandsOnTheNarrowTextAndTheResultUnchanged) {
    EXPECT_EQ(convert(client, L"north"), 84);
    EXPECT_EQ(convert(nullptr, L""), 84);
    EXPECT_EQ(texts, (std::vector<std::string>{"north", ""}));
    EXPECT_EQ(lastStatus(client), untouchedStatus);
}

TEST_F(WideTextCall, KeepsAMissingTextInAClientThatIsThere) {
    EXPECT_EQ(convert(client, nullptr), 2007);
    EXPECT_EQ(lastStatus(client), 2007);
    EXPECT_EQ(convert(nullptr, nullptr), 2007);
    EXPECT_TRUE(texts.empty());
}

TEST_F(WideTextCall, KeepsATextTooLongInAClientThatIsThere) {
    EXPECT_EQ(convert(client, std::wstring(4096, L'a').c_str()), 2002);
    EXPECT_EQ(lastStatus(client), 2002);
    EXPECT_EQ(convert(nullptr, std::wstring(4096, L'a').c_str()), 2002);
    EXPECT_TRUE(texts.empty());
    EXPECT_EQ(convert(client, std::wstring(4095, L'a').c_str()), 84);
}

}  // namespace
