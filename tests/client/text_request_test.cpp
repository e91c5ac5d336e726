#include <clocale>

#include "client/expected_call.h"

// The functions of a client that take one text are alike but for what they ask of the engine.

namespace {

using namespace vantrel;
using namespace vantrel::test;

enum class Place { data, key };

struct TextFunction {
    const char *name;
    VantrelStatus (*narrow)(VantrelClient *, const char *);
    VantrelStatus (*wide)(VantrelClient *, const wchar_t *);
    uint32_t operation;
    Place place;
    int32_t keyNumber;
};

const TextFunction textFunctions[] = {
    {"SetCurrentDirectory", VantrelClientSetCurrentDirectory, VantrelClientSetCurrentDirectoryW, 17,
     Place::key, 0},
    {"Login", VantrelClientLogin, VantrelClientLoginW, 78, Place::key, 0},
    {"Logout", VantrelClientLogout, VantrelClientLogoutW, 78, Place::key, 1},
    {"ContinuousOperationBegin", VantrelClientContinuousOperationBegin,
     VantrelClientContinuousOperationBeginW, 42, Place::data, 0},
    {"ContinuousOperationEnd", VantrelClientContinuousOperationEnd, VantrelClientContinuousOperationEndW, 42,
     Place::data, 1},
    {"FileDelete", VantrelClientFileDelete, VantrelClientFileDeleteW, 14, Place::key, -128},
};

class TextRequest : public ClientTest, public testing::WithParamInterface<TextFunction> {
  protected:
    ~TextRequest() override { setlocale(LC_CTYPE, "C"); }

    const TextFunction &function() const { return GetParam(); }

    void expectRequest(const std::string &text) {
        ExpectedCall expected{.operation = function().operation, .keyNumber = function().keyNumber};
        (function().place == Place::key ? expected.key : expected.data) = text;
        expectCall(engine.onlyCall(), client, expected);
    }
};

INSTANTIATE_TEST_SUITE_P(AllFunctions, TextRequest, testing::ValuesIn(textFunctions),
                         [](const auto &instance) { return instance.param.name; });

TEST_P(TextRequest, SendsTheTextAndKeepsTheStatus) {
    engine.reply({.status = 35});
    EXPECT_EQ(function().narrow(client, "parts/north.vnt"), 35);
    EXPECT_EQ(lastStatus(client), 35);
    expectRequest("parts/north.vnt");
}

TEST_P(TextRequest, SuccessClearsTheStatus) {
    EXPECT_EQ(function().narrow(client, "a"), 0);
    EXPECT_EQ(lastStatus(client), 0);
}

TEST_P(TextRequest, CountsTheTerminatorOfAnEmptyText) {
    EXPECT_EQ(function().narrow(client, ""), 0);
    expectRequest("");
}

TEST_P(TextRequest, SendsTextsOfAnyLength) {
    std::string text(70000, 'x');
    EXPECT_EQ(function().narrow(client, text.c_str()), 0);
    expectRequest(text);
}

TEST_P(TextRequest, TheEngineMayRewriteTheLength) {
    engine.reply({.dataLength = 4000});
    EXPECT_EQ(function().narrow(client, "a"), 0);
    expectRequest("a");
}

TEST_P(TextRequest, RefusesAMissingClientWithoutRequest) {
    EXPECT_EQ(function().narrow(nullptr, "a"), 2007);
    EXPECT_EQ(function().narrow(nullptr, nullptr), 2007);
    EXPECT_EQ(function().wide(nullptr, L"a"), 2007);
    EXPECT_EQ(function().wide(nullptr, nullptr), 2007);
    EXPECT_TRUE(engine.calls().empty());
}

TEST_P(TextRequest, KeepsThatTheTextIsMissing) {
    EXPECT_EQ(function().narrow(client, nullptr), 2007);
    EXPECT_EQ(lastStatus(client), 2007);
    keepStatus(client, untouchedStatus);
    EXPECT_EQ(function().wide(client, nullptr), 2007);
    EXPECT_EQ(lastStatus(client), 2007);
    EXPECT_TRUE(engine.calls().empty());
}

TEST_P(TextRequest, ConvertsWideTextInTheCurrentLocale) {
    ASSERT_NE(setlocale(LC_CTYPE, "C.UTF-8"), nullptr);
    engine.reply({.status = 12});
    EXPECT_EQ(function().wide(client, L"m\u00FCll"), 12);
    EXPECT_EQ(lastStatus(client), 12);
    expectRequest("m\xC3\xBCll");
}

TEST_P(TextRequest, TakesWideTextOf4095Bytes) {
    EXPECT_EQ(function().wide(client, std::wstring(4095, L'x').c_str()), 0);
    expectRequest(std::string(4095, 'x'));
}

TEST_P(TextRequest, RefusesWideTextOf4096Bytes) {
    EXPECT_EQ(function().wide(client, std::wstring(4096, L'x').c_str()), 2002);
    EXPECT_EQ(lastStatus(client), 2002);
    EXPECT_EQ(function().wide(nullptr, std::wstring(4096, L'x').c_str()), 2002);
    EXPECT_TRUE(engine.calls().empty());
}

}  // namespace
