#include <pthread.h>
#include <unistd.h>

#include "support/client_test.h"
#include "support/failing_allocation.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

TEST(ClientAllocate, RefusesAMissingOutPointerFirst) {
    EXPECT_EQ(VantrelClientAllocate(nullptr, 65536, 0), 2007);
}

TEST(ClientAllocate, TakesIdentifiersUpTo65535) {
    VantrelClient *client = nullptr;
    ASSERT_EQ(VantrelClientAllocate(&client, 65535, 65535), 0);
    const uint8_t expected[20] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0};
    EXPECT_EQ(memcmp(client, expected, sizeof expected), 0);
    EXPECT_EQ(VantrelClientFree(client), 0);
}

TEST(ClientAllocate, RefusesLargerIdentifiersAndLeavesTheOutPointer) {
    VantrelClient sentinel;
    for (auto [serviceAgent, id] : {std::pair{65536u, 1u}, {1u, 65536u}, {0xFFFFFFFFu, 0xFFFFFFFFu}}) {
        VantrelClient *client = &sentinel;
        EXPECT_EQ(VantrelClientAllocate(&client, serviceAgent, id), 2002);
        EXPECT_EQ(client, &sentinel);
    }
}

TEST(ClientAllocate, ChecksIdentifiersBeforeAllocating) {
    FailingAllocation failing;
    VantrelClient *client;
    EXPECT_EQ(VantrelClientAllocate(&client, 65536, 1), 2002);
}

TEST(ClientAllocate, ZeroStandsForProcessAndThread) {
    VantrelClient *client = nullptr;
    ASSERT_EQ(VantrelClientAllocate(&client, 0, 0), 0);
    EXPECT_EQ(VantrelClientGetServiceAgentIdentifier(client), getpid() & 0xFFFF);
    EXPECT_EQ(VantrelClientGetClientIdentifier(client), static_cast<int32_t>(pthread_self() & 0xFFFF));
    VantrelClientFree(client);
}

TEST(ClientAllocate, MemoryRunsOut) {
    VantrelClient sentinel, *client = &sentinel;
    FailingAllocation failing;
    EXPECT_EQ(VantrelClientAllocate(&client, 1, 1), 101);
    EXPECT_EQ(client, nullptr);
}

TEST(ClientFree, TakesNull) {
    EXPECT_EQ(VantrelClientFree(nullptr), 0);
}

class ClientStatusTest : public ClientTest {};

TEST_F(ClientStatusTest, IdentifiersClearTheLastStatus) {
    keepStatus(client, 5);
    EXPECT_EQ(VantrelClientGetServiceAgentIdentifier(client), 0x0102);
    EXPECT_EQ(VantrelClientGetLastStatusCode(client), 0);
    keepStatus(client, 5);
    EXPECT_EQ(VantrelClientGetClientIdentifier(client), 0x0304);
    EXPECT_EQ(VantrelClientGetLastStatusCode(client), 0);
}

TEST_F(ClientStatusTest, LastStatusStays) {
    keepStatus(client, -123456789);
    EXPECT_EQ(VantrelClientGetLastStatusCode(client), -123456789);
    EXPECT_EQ(VantrelClientGetLastStatusCode(client), -123456789);
}

TEST_F(ClientStatusTest, MissingHandles) {
    EXPECT_EQ(VantrelClientGetLastStatusCode(nullptr), 2007);
    EXPECT_EQ(VantrelClientGetServiceAgentIdentifier(nullptr), 2007);
    EXPECT_EQ(VantrelClientGetClientIdentifier(nullptr), 2007);
    EXPECT_EQ(VantrelFileGetLastStatusCode(nullptr), 3);
}

TEST_F(ClientStatusTest, FileStatusStays) {
    VantrelFile *file = openFile();
    EXPECT_EQ(VantrelFileGetLastStatusCode(file), 0);
    keepStatus(file, 84);
    EXPECT_EQ(VantrelFileGetLastStatusCode(file), 84);
    EXPECT_EQ(VantrelFileGetLastStatusCode(file), 84);
}

TEST_F(ClientStatusTest, FreeMakesNoRequest) {
    VantrelClient *third = nullptr;
    ASSERT_EQ(VantrelClientAllocate(&third, 1, 1), 0);
    VantrelClientFree(third);
    EXPECT_TRUE(engine.calls().empty());
}

}  // namespace
