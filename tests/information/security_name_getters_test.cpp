#include <climits>
#include <cstring>

#include "information/information_test.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

constexpr size_t firstName = securityArea + 22;
constexpr size_t securityEnd = securityArea + 65535;

constexpr struct {
    const char *name;
    TextGetter get;
    size_t lengthField;
    size_t offset;
    const char *text;
} nameCases[] = {
    {"database of the handle", VantrelFileInformationGetSecurityHandleDatabaseName, securityArea + 12,
     firstName, "stock"},
    {"table of the handle", VantrelFileInformationGetSecurityHandleTableName, securityArea + 14,
     firstName + 5, "sprockets"},
    {"user of the handle", VantrelFileInformationGetSecurityHandleUserName, securityArea + 16, firstName + 14,
     "ada"},
    {"current database", VantrelFileInformationGetSecurityCurrentDatabaseName, securityArea + 18,
     firstName + 17, "orders"},
    {"current user", VantrelFileInformationGetSecurityCurrentUserName, securityArea + 20, firstName + 23,
     "grace"},
};

class SecurityNameGettersTest : public InformationTest {
  protected:
    SecurityNameGettersTest() {
        fill(0xFF);
        for (const auto &name : nameCases) {
            put(name.offset, std::string(name.text));
            setLength(name.lengthField, static_cast<uint16_t>(strlen(name.text)));
        }
    }

    void setLength(size_t lengthField, uint16_t length) { storeU16(at(lengthField), length); }
};

TEST_F(SecurityNameGettersTest, MissingPointers) {
    for (const auto &name : nameCases) {
        SCOPED_TRACE(name.name);
        GuardedText buffer(20);
        resetStatus();
        EXPECT_EQ(name.get(nullptr, buffer.get(), 20), 2007);
        EXPECT_EQ(name.get(nullptr, nullptr, -1), 2007);
        EXPECT_EQ(status(), 7777);
        buffer.expectUntouched();
        EXPECT_EQ(name.get(information, nullptr, -1), 2007);
        EXPECT_EQ(status(), 2007);
    }
}

TEST_F(SecurityNameGettersTest, TerminatesTheBufferRatherThanTheName) {
    for (const auto &name : nameCases) {
        SCOPED_TRACE(name.name);
        std::string text = name.text;
        GuardedText buffer(text.size() + 4);
        resetStatus();
        EXPECT_EQ(name.get(information, buffer.get(), static_cast<int32_t>(text.size()) + 4), 0);
        EXPECT_EQ(status(), 0);
        buffer.expectContents(text + std::string(3, GuardedText::guard) + '\0');
    }
}

TEST_F(SecurityNameGettersTest, ABufferOneByteLargerThanTheNameHoldsAllOfIt) {
    for (const auto &name : nameCases) {
        SCOPED_TRACE(name.name);
        std::string text = name.text;
        GuardedText buffer(text.size() + 1);
        EXPECT_EQ(name.get(information, buffer.get(), static_cast<int32_t>(text.size()) + 1), 0);
        buffer.expectContents(text + '\0');
    }
}

TEST_F(SecurityNameGettersTest, ABufferAsLargeAsTheNameLosesItsLastByte) {
    for (const auto &name : nameCases) {
        SCOPED_TRACE(name.name);
        std::string text = name.text;
        GuardedText buffer(text.size());
        EXPECT_EQ(name.get(information, buffer.get(), static_cast<int32_t>(text.size())), 0);
        text.back() = '\0';
        buffer.expectContents(text);
    }
}

TEST_F(SecurityNameGettersTest, RefusesSmallerBuffers) {
    for (const auto &name : nameCases) {
        SCOPED_TRACE(name.name);
        GuardedText buffer(20);
        int32_t length = static_cast<int32_t>(strlen(name.text));
        for (int32_t size : {length - 1, 0, -1, INT_MIN}) {
            resetStatus();
            EXPECT_EQ(name.get(information, buffer.get(), size), 2002);
            EXPECT_EQ(status(), 2002);
        }
        buffer.expectUntouched();
    }
}

TEST_F(SecurityNameGettersTest, ANameWithATerminatorIsPaddedToItsLength) {
    for (const auto &name : nameCases) {
        SCOPED_TRACE(name.name);
        std::string text = name.text;
        *at(name.offset + 1) = 0;
        GuardedText buffer(text.size() + 2);
        EXPECT_EQ(name.get(information, buffer.get(), static_cast<int32_t>(text.size()) + 2), 0);
        buffer.expectContents(text[0] + std::string(text.size() - 1, '\0') + GuardedText::guard + '\0');
    }
}

TEST_F(SecurityNameGettersTest, AnEmptyNameFitsAnEmptyBuffer) {
    for (const auto &name : nameCases) {
        SCOPED_TRACE(name.name);
        setLength(name.lengthField, 0);
        GuardedText buffer(1);
        resetStatus();
        EXPECT_EQ(name.get(information, buffer.get(), 0), 0);
        EXPECT_EQ(status(), 0);
        buffer.expectUntouched();
        EXPECT_EQ(name.get(information, buffer.get(), -1), 2002);
        buffer.expectUntouched();
        EXPECT_EQ(name.get(information, buffer.get(), 1), 0);
        buffer.expectContents(std::string(1, '\0'));
    }
}

TEST_F(SecurityNameGettersTest, NamesMayReachTheEndOfTheReply) {
    setLength(nameCases[0].lengthField, 65535 - 22 - 3);
    setLength(nameCases[1].lengthField, 3);
    for (size_t i = 2; i < 5; ++i)
        setLength(nameCases[i].lengthField, 0);
    put(securityEnd - 3, std::string("end"));
    GuardedText table(4), user(1);
    EXPECT_EQ(nameCases[1].get(information, table.get(), 4), 0);
    table.expectContents(std::string("end\0", 4));
    EXPECT_EQ(nameCases[4].get(information, user.get(), 1), 0);
    user.expectContents(std::string(1, '\0'));

    GuardedText database(65510);
    EXPECT_EQ(nameCases[0].get(information, database.get(), 65510), 0);
    EXPECT_EQ(database.contents().substr(0, 5), "stock");
}

TEST_F(SecurityNameGettersTest, RefusesNamesBeyondTheEndOfTheReply) {
    setLength(nameCases[0].lengthField, 65535 - 22 - 3);
    setLength(nameCases[1].lengthField, 4);
    GuardedText buffer(70000);
    for (size_t i = 1; i < 5; ++i) {
        SCOPED_TRACE(nameCases[i].name);
        resetStatus();
        EXPECT_EQ(nameCases[i].get(information, buffer.get(), 70000), 2002);
        EXPECT_EQ(status(), 2002);
    }
    fill(0xFF);
    for (const auto &name : nameCases) {
        SCOPED_TRACE(name.name);
        EXPECT_EQ(name.get(information, buffer.get(), 70000), 2002);
    }
    buffer.expectUntouched();
}

}  // namespace
