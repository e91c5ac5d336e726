#include "client/expected_call.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

class FileCloseTest : public FileTest {};

TEST_F(FileCloseTest, SendsTheFileAlone) {
    VantrelFile *opened = nullptr;
    ASSERT_EQ(VantrelClientFileOpen(client, &opened, "a", nullptr, 0, 0), 0);
    const void *address = opened;
    engine.reset();
    keepStatus(client, untouchedStatus);
    EXPECT_EQ(VantrelClientFileClose(client, opened), 0);
    EXPECT_EQ(lastStatus(client), 0);
    expectCall(engine.onlyCall(), client,
               {.operation = 1, .file = static_cast<const VantrelFile *>(address)});
}

TEST_F(FileCloseTest, AFailedCloseKeepsTheFileAndItsStatus) {
    engine.reply({.status = 17});
    EXPECT_EQ(VantrelClientFileClose(client, file), 17);
    EXPECT_EQ(lastStatus(client), 17);
    EXPECT_EQ(fileStatus(), untouchedStatus);
    EXPECT_EQ(owningClient(file), client);
    expectCachedKey(-7, 0);
}

TEST_F(FileCloseTest, RefusesAMissingFile) {
    EXPECT_EQ(VantrelClientFileClose(client, nullptr), 3);
    EXPECT_EQ(lastStatus(client), 3);
    EXPECT_EQ(VantrelClientFileClose(nullptr, nullptr), 3);
    EXPECT_TRUE(engine.calls().empty());
}

TEST_F(FileCloseTest, RefusesAFileWithoutClient) {
    makeFileUnusable();
    EXPECT_EQ(VantrelClientFileClose(client, file), 2007);
    EXPECT_EQ(lastStatus(client), 2007);
    EXPECT_EQ(VantrelClientFileClose(nullptr, file), 2007);
    EXPECT_EQ(fileStatus(), untouchedStatus);
    EXPECT_TRUE(engine.calls().empty());
}

TEST_F(FileCloseTest, RefusesTheFileOfAnotherClient) {
    EXPECT_EQ(VantrelClientFileClose(otherClient, file), 2002);
    EXPECT_EQ(lastStatus(otherClient), 2002);
    EXPECT_EQ(VantrelClientFileClose(nullptr, file), 2002);
    EXPECT_EQ(lastStatus(client), untouchedStatus);
    EXPECT_EQ(fileStatus(), untouchedStatus);
    EXPECT_EQ(owningClient(file), client);
    EXPECT_TRUE(engine.calls().empty());
}

}  // namespace
