#include "client/version.h"

#include <map>

#include "support/client_test.h"
#include "support/failing_allocation.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

class VersionTest : public FileTest {
  protected:
    VersionTest() {
        EXPECT_EQ(VantrelVersionAllocate(&version), 0);
        keepStatus(version, untouchedStatus);
    }
    ~VersionTest() override { EXPECT_EQ(VantrelVersionFree(version), 0); }

    VantrelStatus versionStatus() const { return VantrelVersionGetLastStatusCode(version); }

    void expectVersionCall(const EngineCall &call, const VantrelVersion *data,
                           const VantrelFile *through) const {
        EXPECT_EQ(call.operation, 26u);
        EXPECT_EQ(call.positionBlock, through);
        EXPECT_EQ(call.data, data);
        EXPECT_EQ(call.dataLength, 19u);
        EXPECT_EQ(call.key, nullptr);
        EXPECT_EQ(call.keyLength, 0);
        EXPECT_EQ(call.keyNumber, 0);
        EXPECT_EQ(call.clientIdentifier, client);
    }

    VantrelVersion *version = nullptr;
};

struct NumberGetter {
    int32_t (*get)(VantrelVersion *);
    int32_t expected;
};

constexpr NumberGetter numberGetters[] = {
    {VantrelVersionGetClientVersionNumber, 3335},   {VantrelVersionGetClientRevisionNumber, 0x0403},
    {VantrelVersionGetLocalVersionNumber, 0x1211},  {VantrelVersionGetLocalRevisionNumber, 65535},
    {VantrelVersionGetRemoteVersionNumber, 0x2221}, {VantrelVersionGetRemoteRevisionNumber, 0x2423},
};

using TypeGetter = VantrelVersionType (*)(VantrelVersion *);
constexpr TypeGetter typeGetters[] = {VantrelVersionGetClientVersionType, VantrelVersionGetLocalVersionType,
                                      VantrelVersionGetRemoteVersionType};

const Bytes engineVersions = {0x07, 0x0D, 0x03, 0x04, 'N',  0x11, 0x12, 0xFF,
                              0xFF, 'B',  0x21, 0x22, 0x23, 0x24, 'T'};

TEST_F(VersionTest, OffersTheWholeRecordToTheEngine) {
    engine.reply({.status = 20, .dataLength = 15, .data = engineVersions});
    EXPECT_EQ(VantrelClientGetVersion(client, version, nullptr), 20);
    EXPECT_EQ(lastStatus(client), 20);
    EXPECT_EQ(versionStatus(), untouchedStatus);
    expectVersionCall(engine.onlyCall(), version, nullptr);
}

TEST_F(VersionTest, AsksThroughAFileOfTheClient) {
    EXPECT_EQ(VantrelClientGetVersion(client, version, file), 0);
    EXPECT_EQ(lastStatus(client), 0);
    EXPECT_EQ(fileStatus(), untouchedStatus);
    expectVersionCall(engine.onlyCall(), version, file);
}

TEST_F(VersionTest, LeavesAMissingRecordToTheEngine) {
    for (VantrelFile *through : {static_cast<VantrelFile *>(nullptr), file}) {
        engine.reset();
        engine.reply({.status = 22, .dataLength = 0});
        EXPECT_EQ(VantrelClientGetVersion(client, nullptr, through), 22);
        EXPECT_EQ(lastStatus(client), 22);
        EXPECT_EQ(fileStatus(), untouchedStatus);
        expectVersionCall(engine.onlyCall(), nullptr, through);
    }
}

TEST_F(VersionTest, RefusesFilesOfOthers) {
    EXPECT_EQ(VantrelClientGetVersion(otherClient, version, file), 2002);
    EXPECT_EQ(lastStatus(otherClient), 2002);
    makeFileUnusable();
    EXPECT_EQ(VantrelClientGetVersion(client, version, file), 2007);
    EXPECT_EQ(lastStatus(client), 2007);
    EXPECT_EQ(fileStatus(), untouchedStatus);
    EXPECT_TRUE(engine.calls().empty());
}

TEST_F(VersionTest, RefusesAMissingClientFirst) {
    EXPECT_EQ(VantrelClientGetVersion(nullptr, version, file), 2007);
    EXPECT_EQ(VantrelClientGetVersion(nullptr, version, nullptr), 2007);
    EXPECT_EQ(versionStatus(), untouchedStatus);
    EXPECT_TRUE(engine.calls().empty());
}

TEST(VersionAllocate, GivesAnEmptyRecord) {
    VantrelVersion *version = nullptr;
    ASSERT_EQ(VantrelVersionAllocate(&version), 0);
    for (const NumberGetter &getter : numberGetters)
        EXPECT_EQ(getter.get(version), 0);
    for (TypeGetter getType : typeGetters)
        EXPECT_EQ(getType(version), 0);
    EXPECT_EQ(VantrelVersionGetLastStatusCode(version), 0);
    EXPECT_EQ(VantrelVersionFree(version), 0);
}

TEST(VersionAllocate, RefusesAMissingOutPointer) {
    EXPECT_EQ(VantrelVersionAllocate(nullptr), 2007);
}

TEST(VersionAllocate, MemoryRunsOut) {
    VantrelVersion sentinel, *version = &sentinel;
    FailingAllocation failing;
    EXPECT_EQ(VantrelVersionAllocate(&version), 101);
    EXPECT_EQ(version, nullptr);
}

TEST(VersionFree, TakesNull) {
    EXPECT_EQ(VantrelVersionFree(nullptr), 0);
}

TEST_F(VersionTest, GivesTheNumbersAndClearsTheStatus) {
    engine.reply({.data = engineVersions});
    ASSERT_EQ(VantrelClientGetVersion(client, version, nullptr), 0);
    for (const NumberGetter &getter : numberGetters) {
        keepStatus(version, untouchedStatus);
        EXPECT_EQ(getter.get(version), getter.expected);
        EXPECT_EQ(versionStatus(), 0);
    }
}

TEST_F(VersionTest, GivesTheTypesAndClearsTheStatus) {
    engine.reply({.data = engineVersions});
    ASSERT_EQ(VantrelClientGetVersion(client, version, nullptr), 0);
    EXPECT_EQ(versionStatus(), untouchedStatus);
    EXPECT_EQ(VantrelVersionGetClientVersionType(version), 4);
    EXPECT_EQ(versionStatus(), 0);
    EXPECT_EQ(VantrelVersionGetLocalVersionType(version), 1);
    EXPECT_EQ(VantrelVersionGetRemoteVersionType(version), 5);
}

TEST_F(VersionTest, KnowsTheTypesOfTheseCharactersOnly) {
    const std::map<uint8_t, VantrelVersionType> types = {{'\0', 0}, {'B', 1}, {'9', 2}, {'D', 3},
                                                         {'N', 4},  {'T', 5}, {'U', 6}, {'C', 7}};
    for (size_t entry = 0; entry < 3; ++entry) {
        for (int character = 0; character < 256; ++character) {
            Bytes bytes(15, 0);
            bytes[entry * 5 + 4] = static_cast<uint8_t>(character);
            memcpy(version, bytes.data(), bytes.size());
            keepStatus(version, untouchedStatus);
            auto known = types.find(static_cast<uint8_t>(character));
            EXPECT_EQ(typeGetters[entry](version), known == types.end() ? -7 : known->second) << character;
            EXPECT_EQ(versionStatus(), known == types.end() ? 2002 : 0) << character;
        }
    }
}

TEST_F(VersionTest, ANumberClearsTheStatusOfAnUnknownType) {
    engine.reply({.data = {0, 0, 0, 0, 'A'}});
    ASSERT_EQ(VantrelClientGetVersion(client, version, nullptr), 0);
    EXPECT_EQ(VantrelVersionGetClientVersionType(version), -7);
    EXPECT_EQ(versionStatus(), 2002);
    EXPECT_EQ(VantrelVersionGetClientVersionNumber(version), 0);
    EXPECT_EQ(versionStatus(), 0);
}

TEST_F(VersionTest, LastStatusStays) {
    EXPECT_EQ(versionStatus(), untouchedStatus);
    EXPECT_EQ(versionStatus(), untouchedStatus);
    const auto *bytes = reinterpret_cast<const uint8_t *>(version);
    EXPECT_EQ(Bytes(bytes + 15, bytes + 19), (Bytes{0x61, 0x1E, 0, 0}));
}

TEST_F(VersionTest, MissingRecords) {
    for (const NumberGetter &getter : numberGetters)
        EXPECT_EQ(getter.get(nullptr), -1);
    for (TypeGetter getType : typeGetters)
        EXPECT_EQ(getType(nullptr), -7);
    EXPECT_EQ(VantrelVersionGetLastStatusCode(nullptr), 2007);
}

}  // namespace
