#include "information/information_test.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

struct Request {
    uint8_t function;
    size_t area;
    uint32_t size;
};

// The requests behind the statistics, in their order.
constexpr Request requests[] = {
    {3, duplicateConflictArea, 10},
    {4, fileUsageArea, 20},
    {5, gatewayArea, 72},
    {6, lockOwnerArea, 104},
    {8, referentialIntegrityArea, 267},
    {7, securityArea, 65535},
    {1, segmentFilesArea, 65535},
    {2, systemDataArea, 8},
};
constexpr size_t requestCount = 8;

Bytes requestBytes(const Request &request) {
    Bytes bytes = {'E', 'x', 'S', 't', request.function, 0, 0, 0};
    if (request.function == 1)
        bytes.insert(bytes.end(), {0, 0, 0, 0, 32, 0, 0, 0, 1, 0, 0, 0});
    return bytes;
}

class GetInformationTest : public FileTest {
  protected:
    GetInformationTest() {
        VantrelFileInformationAllocate(&information);
        memset(information, 0xEE, sizeof *information);
        keepStatus(information, untouchedStatus);
    }
    ~GetInformationTest() override { VantrelFileInformationFree(information); }

    uint8_t *at(size_t offset) { return reinterpret_cast<uint8_t *>(information) + offset; }
    Bytes bytesAt(size_t offset, size_t length) { return Bytes(at(offset), at(offset) + length); }

    // What the area holds when its request is made: the rest stays from an earlier reply.
    static Bytes areaBytes(const Request &request) {
        Bytes bytes = requestBytes(request);
        bytes.resize(request.size, 0xEE);
        return bytes;
    }

    VantrelFileInformation *information = nullptr;
};

TEST_F(GetInformationTest, RefusesAMissingFileFirst) {
    EXPECT_EQ(VantrelFileGetInformation(nullptr, nullptr), 3);
    EXPECT_EQ(VantrelFileGetInformation(nullptr, information), 3);
    EXPECT_EQ(lastStatus(information), 7777);
    EXPECT_TRUE(engine.calls().empty());
}

TEST_F(GetInformationTest, RefusesAMissingRecord) {
    EXPECT_EQ(VantrelFileGetInformation(file, nullptr), 2007);
    EXPECT_EQ(fileStatus(), 2007);
    EXPECT_TRUE(engine.calls().empty());
}

TEST_F(GetInformationTest, RefusesAFileThatIsNotOpen) {
    makeFileUnusable();
    EXPECT_EQ(VantrelFileGetInformation(file, information), 2007);
    EXPECT_EQ(fileStatus(), 2007);
    EXPECT_EQ(lastStatus(information), 7777);
    EXPECT_EQ(bytesAt(0, lastStatusField), Bytes(lastStatusField, 0xEE));
    EXPECT_TRUE(engine.calls().empty());
}

TEST_F(GetInformationTest, AsksForTheStatisticsFirst) {
    file->positionBlock[5] = 0x55;
    EXPECT_EQ(VantrelFileGetInformation(file, information), 0);
    ASSERT_EQ(engine.calls().size(), 9u);
    const EngineCall &call = engine.calls()[0];
    EXPECT_EQ(call.operation, 15u);
    EXPECT_EQ(call.positionBlock, file);
    EXPECT_EQ((*call.positionBlockBytes)[5], 0x55);
    EXPECT_EQ(call.data, at(statisticsArea));
    EXPECT_EQ(call.dataLength, 65535u);
    EXPECT_EQ(call.dataBytes, Bytes(65535, 0xEE));
    EXPECT_EQ(call.key, at(statisticsKeyArea));
    EXPECT_EQ(call.keyLength, 1024);
    EXPECT_EQ(call.keyNumber, -1);
    EXPECT_EQ(call.clientIdentifier, client);
}

TEST_F(GetInformationTest, MakesEightFurtherRequestsInOrder) {
    EXPECT_EQ(VantrelFileGetInformation(file, information), 0);
    ASSERT_EQ(engine.calls().size(), 9u);
    for (size_t i = 0; i < requestCount; ++i) {
        SCOPED_TRACE(i);
        const EngineCall &call = engine.calls()[i + 1];
        EXPECT_EQ(call.operation, 65u);
        EXPECT_EQ(call.positionBlock, file);
        EXPECT_EQ(call.data, at(requests[i].area));
        EXPECT_EQ(call.dataLength, requests[i].size);
        EXPECT_EQ(call.dataBytes, areaBytes(requests[i]));
        EXPECT_EQ(call.key, nullptr);
        EXPECT_EQ(call.keyLength, 0);
        EXPECT_EQ(call.keyNumber, 0);
        EXPECT_EQ(call.clientIdentifier, client);
    }
    EXPECT_EQ(fileStatus(), 0);
    EXPECT_EQ(lastStatus(information), 7777);
    EXPECT_EQ(lastStatus(client), 7777);
    expectCachedKey(-7, 0);
}

TEST_F(GetInformationTest, KeepsEveryReply) {
    engine.reply({.dataLength = 0x00012345, .data = Bytes(65535, 1), .key = Bytes(1024, 2)});
    for (const Request &request : requests)
        engine.reply(
            {.dataLength = 4, .data = Bytes(request.size, static_cast<uint8_t>(16 + request.function))});
    EXPECT_EQ(VantrelFileGetInformation(file, information), 0);
    EXPECT_EQ(bytesAt(statisticsArea, 65535), Bytes(65535, 1));
    EXPECT_EQ(bytesAt(replyLengthField, 4), (Bytes{0x45, 0x23, 0x01, 0x00}));
    EXPECT_EQ(bytesAt(statisticsKeyArea, 1024), Bytes(1024, 2));
    for (const Request &request : requests) {
        SCOPED_TRACE(request.area);
        EXPECT_EQ(bytesAt(request.area, request.size),
                  Bytes(request.size, static_cast<uint8_t>(16 + request.function)));
    }
    EXPECT_EQ(lastStatus(information), 7777);
}

TEST_F(GetInformationTest, KeepsTheReplyLengthOfFailedStatistics) {
    engine.reply({.status = 91, .dataLength = 77});
    EXPECT_EQ(VantrelFileGetInformation(file, information), 91);
    EXPECT_EQ(fileStatus(), 91);
    EXPECT_EQ(bytesAt(replyLengthField, 4), (Bytes{77, 0, 0, 0}));
    EXPECT_EQ(engine.calls().size(), 1u);
    EXPECT_EQ(bytesAt(duplicateConflictArea, 131551), Bytes(131551, 0xEE));
    EXPECT_EQ(lastStatus(information), 7777);
}

TEST_F(GetInformationTest, EndsAtTheFirstFailureAndLeavesLaterReplies) {
    for (size_t failing = 0; failing < requestCount; ++failing) {
        SCOPED_TRACE(failing);
        engine.reset();
        memset(information, 0xEE, lastStatusField);
        keepStatus(file, untouchedStatus);
        for (size_t i = 0; i <= failing; ++i)
            engine.reply({});
        engine.reply({.status = -1000});
        EXPECT_EQ(VantrelFileGetInformation(file, information), -1000);
        EXPECT_EQ(fileStatus(), -1000);
        EXPECT_EQ(engine.calls().size(), failing + 2);
        for (size_t i = 0; i < requestCount; ++i) {
            const Request &request = requests[i];
            Bytes expected = i <= failing ? areaBytes(request) : Bytes(request.size, 0xEE);
            EXPECT_EQ(bytesAt(request.area, request.size), expected) << i;
        }
        EXPECT_EQ(lastStatus(information), 7777);
    }
}

TEST_F(GetInformationTest, EndsWhenTheFileIsClosedOnTheWay) {
    for (size_t requestsMade = 0; requestsMade < requestCount; ++requestsMade) {
        SCOPED_TRACE(requestsMade);
        engine.reset();
        memset(information, 0xEE, lastStatusField);
        storePointer(file->client, client);
        for (size_t i = 0; i < requestsMade; ++i)
            engine.reply({});
        engine.reply({.effect = [this](const EngineCall &) { makeFileUnusable(); }});
        EXPECT_EQ(VantrelFileGetInformation(file, information), 2007);
        EXPECT_EQ(fileStatus(), 2007);
        EXPECT_EQ(engine.calls().size(), requestsMade + 1);
        const Request &next = requests[requestsMade];
        EXPECT_EQ(bytesAt(next.area, next.size), areaBytes(next));
    }
}

TEST_F(GetInformationTest, ReadsTheClientBeforeEachRequest) {
    engine.reply({.effect = [this](const EngineCall &) { storePointer(file->client, otherClient); }});
    EXPECT_EQ(VantrelFileGetInformation(file, information), 0);
    ASSERT_EQ(engine.calls().size(), 9u);
    EXPECT_EQ(engine.calls()[0].clientIdentifier, client);
    for (size_t i = 1; i < 9; ++i)
        EXPECT_EQ(engine.calls()[i].clientIdentifier, otherClient);
}

TEST_F(GetInformationTest, FillsARecordAgain) {
    engine.reply({.dataLength = 100, .data = Bytes(65535, 1)});
    EXPECT_EQ(VantrelFileGetInformation(file, information), 0);
    engine.reply({.dataLength = 200, .data = {2}});
    EXPECT_EQ(VantrelFileGetInformation(file, information), 0);
    EXPECT_EQ(bytesAt(statisticsArea, 2), (Bytes{2, 1}));
    EXPECT_EQ(bytesAt(replyLengthField, 4), (Bytes{200, 0, 0, 0}));
    EXPECT_EQ(engine.calls().size(), 18u);
}

}  // namespace
