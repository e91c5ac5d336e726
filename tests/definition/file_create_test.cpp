#include <climits>
#include <clocale>
#include <string>

#include "definition/definition_test.h"
#include "information/file_information.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

const std::pair<std::pair<VantrelCreateMode, VantrelLocationMode>, int32_t> keyNumbersOfModes[] = {
    {{0, 0}, 0}, {{0, 1}, 6}, {{0, 2}, 99}, {{1, 0}, -1}, {{1, 1}, 7}, {{1, 2}, 100}};

const std::pair<VantrelCreateMode, VantrelLocationMode> unknownModes[] = {
    {2, 0}, {-1, 0}, {INT_MAX, 0}, {INT_MIN, 1}, {0, 3}, {1, -1}, {0, INT_MAX}, {1, INT_MIN}, {2, 3}};

// The file "a.vnt" with records of 12 bytes.
class FileCreateTest : public ClientTest {
  protected:
    FileCreateTest() { VantrelFileAttributesSetFixedRecordLength(attributes, 12); }

    VantrelStatus create(VantrelIndexAttributes *index, VantrelCreateMode createMode = 0,
                         VantrelLocationMode locationMode = 0) {
        return VantrelClientFileCreate(client, attributes, index, "a.vnt", createMode, locationMode);
    }

    // Expects the status both returned and stored, and no request.
    void expectRefusal(VantrelStatus status, VantrelStatus expected) {
        EXPECT_EQ(status, expected);
        EXPECT_EQ(lastStatus(client), expected);
        EXPECT_TRUE(engine.calls().empty());
        keepStatus(client, untouchedStatus);
    }

    // The whole request, for the file name "a.vnt".
    void expectRequest(const void *data, const Bytes &bytes, int32_t keyNumber) {
        const EngineCall &call = engine.onlyCall();
        EXPECT_EQ(call.operation, 14u);
        EXPECT_EQ(call.positionBlock, nullptr);
        EXPECT_EQ(call.data, data);
        EXPECT_EQ(call.dataLength, bytes.size());
        EXPECT_EQ(call.dataBytes, bytes);
        EXPECT_EQ(call.keyLength, 6);
        EXPECT_EQ(call.keyBytes, (Bytes{'a', '.', 'v', 'n', 't', 0}));
        EXPECT_EQ(call.keyNumber, keyNumber);
        EXPECT_EQ(call.clientIdentifier, client);
    }

    static Bytes specification(uint8_t indexCount) {
        return {12,         0, 0, 0x10, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                indexCount, 0, 0, 0,    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    }

    FileAttributesPointer owner = newFileAttributes();
    VantrelFileAttributes *attributes = owner.get();
};

TEST_F(FileCreateTest, SendsTheSpecification) {
    engine.reply({.status = 0, .dataLength = 5});
    EXPECT_EQ(create(nullptr), 0);
    expectRequest(attributes, specification(0), 0);
    EXPECT_EQ(lastStatus(client), 0);
}

TEST_F(FileCreateTest, FreshAttributesDescribeAnEmptyRecord) {
    FileAttributesPointer fresh = newFileAttributes();
    EXPECT_EQ(VantrelClientFileCreate(client, fresh.get(), nullptr, "a.vnt", 0, 0), 0);
    Bytes expected(32);
    expected[3] = 0x10;
    expectRequest(fresh.get(), expected, 0);
}

TEST_F(FileCreateTest, KeepsTheStatusOfTheEngine) {
    for (VantrelStatus status : {59, 3014, -5}) {
        engine.reply({.status = status});
        EXPECT_EQ(create(nullptr), status);
        EXPECT_EQ(lastStatus(client), status);
    }
}

TEST_F(FileCreateTest, ValidModesClearTheLastStatusBeforeTheRequest) {
    VantrelStatus during = untouchedStatus;
    engine.reply({.status = 18, .effect = [&](const EngineCall &) { during = lastStatus(client); }});
    EXPECT_EQ(create(nullptr), 18);
    EXPECT_EQ(during, 0);
}

TEST_F(FileCreateTest, ModesChooseTheKeyNumber) {
    for (auto [modes, keyNumber] : keyNumbersOfModes) {
        engine.reset();
        EXPECT_EQ(create(nullptr, modes.first, modes.second), 0);
        expectRequest(attributes, specification(0), keyNumber);
    }
}

TEST_F(FileCreateTest, OtherModesAreRefused) {
    for (auto [createMode, locationMode] : unknownModes)
        expectRefusal(create(nullptr, createMode, locationMode), 2002);
}

TEST_F(FileCreateTest, ChecksClientThenPointersThenModes) {
    EXPECT_EQ(VantrelClientFileCreate(nullptr, nullptr, nullptr, nullptr, 2, 3), 2007);
    EXPECT_TRUE(engine.calls().empty());
    expectRefusal(VantrelClientFileCreate(client, attributes, nullptr, nullptr, 2, 3), 2007);
    expectRefusal(VantrelClientFileCreate(client, nullptr, nullptr, "a.vnt", 2, 3), 2007);
}

TEST_F(FileCreateTest, RefusalsLeaveTheDescriptors) {
    IndexAttributesPointer index = newIndexAttributes();
    addIntegerSegment(index.get(), 0);
    Bytes fileBefore = bytesIn(*attributes), indexBefore = bytesIn(*index);
    expectRefusal(create(index.get(), 2, 0), 2002);
    expectRefusal(VantrelClientFileCreate(client, attributes, index.get(), nullptr, 0, 0), 2007);
    expectRefusal(VantrelClientFileCreate(client, nullptr, index.get(), "a.vnt", 0, 0), 2007);
    EXPECT_EQ(bytesIn(*attributes), fileBefore);
    EXPECT_EQ(bytesIn(*index), indexBefore);
}

class FileCreateWithIndexTest : public FileCreateTest {
  protected:
    FileCreateWithIndexTest() {
        addIntegerSegment(index, 0);
        addIntegerSegment(index, 4);
    }

    IndexAttributesPointer indexOwner = newIndexAttributes();
    VantrelIndexAttributes *index = indexOwner.get();
};

TEST_F(FileCreateWithIndexTest, SegmentsFollowTheSpecificationAndCountTwice) {
    EXPECT_EQ(create(index, VANTREL_CREATE_MODE_NO_OVERWRITE), 0);
    expectRequest(attributes,
                  joined({specification(1), integerSegment(1, 0x0112), integerSegment(5, 0x0102), Bytes(48)}),
                  -1);
}

TEST_F(FileCreateWithIndexTest, TheACSBlockFollowsTheSegments) {
    ASSERT_EQ(VantrelIndexAttributesSetACSName(index, "UPPER"), 0);
    EXPECT_EQ(create(index), 0);
    EXPECT_EQ(engine.onlyCall().dataLength, 393u);
    expectRequest(attributes,
                  joined({specification(1), integerSegment(1, 0x0D32), integerSegment(5, 0x0D22),
                          upperBlock(), Bytes(48)}),
                  0);
}

TEST_F(FileCreateWithIndexTest, TheLargestDefinitionFits) {
    IndexAttributesPointer large = newIndexAttributes();
    for (int i = 0; i < 420; ++i)
        addIntegerSegment(large.get(), 0);
    ASSERT_EQ(VantrelIndexAttributesSetACSName(large.get(), "UPPER"), 0);
    EXPECT_EQ(create(large.get()), 0);
    EXPECT_EQ(engine.onlyCall().dataLength, 20457u);
}

TEST_F(FileCreateWithIndexTest, AnIndexWithoutSegmentsIsSentAllTheSame) {
    IndexAttributesPointer empty = newIndexAttributes();
    EXPECT_EQ(create(empty.get()), 0);
    expectRequest(attributes, specification(1), 0);
}

TEST_F(FileCreateWithIndexTest, AnIndexNumberReplacesTheModes) {
    ASSERT_EQ(VantrelIndexAttributesSetIndex(index, 3), 0);
    for (auto [modes, keyNumber] : keyNumbersOfModes) {
        engine.reset();
        EXPECT_EQ(create(index, modes.first, modes.second), 0);
        EXPECT_EQ(engine.onlyCall().keyNumber, 0x83);
    }
    engine.reset();
    expectRefusal(create(index, 2, 0), 2002);
}

TEST_F(FileCreateWithIndexTest, TheDefinitionStaysInTheAttributes) {
    EXPECT_EQ(create(index), 0);
    engine.reset();
    EXPECT_EQ(create(nullptr), 0);
    expectRequest(attributes, specification(1), 0);
    EXPECT_EQ(bytesIn(attributes->indexDefinition)[0], 1);
    EXPECT_EQ(bytesIn(index->segments[0]), integerSegment(1, 0x0112));
}

// Put into the records directly, since the functions that fill them refuse such definitions.
TEST_F(FileCreateWithIndexTest, ARefusedDefinitionIsNotSent) {
    storeU32(index->duplicateMode, 3);
    expectRefusal(create(index), 2002);
    storeU32(index->segmentCount, 2729);
    expectRefusal(create(index), 22);
    EXPECT_EQ(bytesIn(attributes->specification), specification(0));
}

class FileCreateWideTest : public FileCreateWithIndexTest {
  protected:
    VantrelStatus createWide(const std::wstring &name) {
        return VantrelClientFileCreateW(client, attributes, nullptr, name.c_str(), 0, 0);
    }
};

TEST_F(FileCreateWideTest, PassesEverythingOn) {
    ASSERT_EQ(VantrelIndexAttributesSetDuplicateMode(index, VANTREL_DUPLICATE_MODE_ALLOWED_NONREPEATING), 0);
    engine.reply({.status = 59});
    EXPECT_EQ(VantrelClientFileCreateW(client, attributes, index, L"a.vnt", 1, 2), 59);
    expectRequest(attributes,
                  joined({specification(1), integerSegment(1, 0x0113), integerSegment(5, 0x0103), Bytes(48)}),
                  100);
    EXPECT_EQ(lastStatus(client), 59);
}

TEST_F(FileCreateWideTest, ConvertsTheName) {
    ASSERT_NE(setlocale(LC_CTYPE, "C.UTF-8"), nullptr);
    EXPECT_EQ(createWide(L"\u00FC"), 0);
    EXPECT_EQ(engine.onlyCall().keyBytes, (Bytes{0xC3, 0xBC, 0}));
    setlocale(LC_CTYPE, "C");
}

TEST_F(FileCreateWideTest, TakesNamesOfUpTo4095Bytes) {
    EXPECT_EQ(createWide(std::wstring(4095, L'a')), 0);
    EXPECT_EQ(engine.onlyCall().keyLength, 4096);
    engine.reset();
    expectRefusal(createWide(std::wstring(4096, L'a')), 2002);
}

TEST_F(FileCreateWideTest, MissingNamesAndDescriptors) {
    expectRefusal(VantrelClientFileCreateW(client, attributes, nullptr, nullptr, 2, 3), 2007);
    expectRefusal(VantrelClientFileCreateW(client, nullptr, nullptr, L"a.vnt", 2, 3), 2007);
    expectRefusal(VantrelClientFileCreateW(client, attributes, nullptr, L"a.vnt", 2, 3), 2002);
    EXPECT_EQ(VantrelClientFileCreateW(nullptr, attributes, nullptr, nullptr, 0, 0), 2007);
    EXPECT_EQ(VantrelClientFileCreateW(nullptr, attributes, nullptr, L"a.vnt", 0, 0), 2007);
    EXPECT_TRUE(engine.calls().empty());
}

// A statistics reply of 100 bytes.
class FileCreateUsingInformationTest : public FileCreateTest {
  protected:
    FileCreateUsingInformationTest() {
        storeU32(information->replyLength, 100);
        for (uint8_t i = 0; i < 100; ++i)
            information->statistics[i] = reply[i] = static_cast<uint8_t>(i + 1);
    }

    VantrelStatus createAlike(VantrelCreateMode createMode, VantrelLocationMode locationMode) {
        return VantrelClientFileCreateUsingFileInformation(client, information, "a.vnt", createMode,
                                                           locationMode);
    }

    std::unique_ptr<VantrelFileInformation> informationOwner = std::make_unique<VantrelFileInformation>();
    VantrelFileInformation *information = informationOwner.get();
    Bytes reply = Bytes(100);
};

TEST_F(FileCreateUsingInformationTest, SendsTheStatisticsAgain) {
    for (auto [modes, keyNumber] : keyNumbersOfModes) {
        engine.reset();
        engine.reply({.status = 0, .dataLength = 5});
        EXPECT_EQ(createAlike(modes.first, modes.second), 0);
        expectRequest(information, reply, keyNumber);
        EXPECT_EQ(lastStatus(client), 0);
    }
    EXPECT_EQ(loadU32(information->replyLength), 100u);
}

TEST_F(FileCreateUsingInformationTest, SendsAReplyOfFullLength) {
    storeU32(information->replyLength, 65535);
    EXPECT_EQ(createAlike(0, 0), 0);
    EXPECT_EQ(engine.onlyCall().dataLength, 65535u);
}

TEST_F(FileCreateUsingInformationTest, RefusesALengthBeyondTheReply) {
    storeU32(information->replyLength, 65536);
    expectRefusal(createAlike(0, 0), 22);
    expectRefusal(createAlike(2, 0), 2002);
}

TEST_F(FileCreateUsingInformationTest, KeepsTheStatusOfTheEngine) {
    engine.reply({.status = 59});
    EXPECT_EQ(createAlike(1, 0), 59);
    EXPECT_EQ(lastStatus(client), 59);
    EXPECT_EQ(lastStatus(information), 0);
}

TEST_F(FileCreateUsingInformationTest, OtherModesAreRefused) {
    for (auto [createMode, locationMode] : unknownModes)
        expectRefusal(createAlike(createMode, locationMode), 2002);
}

TEST_F(FileCreateUsingInformationTest, ChecksClientThenPointersThenModes) {
    auto *createUsing = VantrelClientFileCreateUsingFileInformation;
    EXPECT_EQ(createUsing(nullptr, nullptr, nullptr, 2, 3), 2007);
    EXPECT_TRUE(engine.calls().empty());
    expectRefusal(createUsing(client, information, nullptr, 2, 3), 2007);
    expectRefusal(createUsing(client, nullptr, "a.vnt", 2, 3), 2007);
}

TEST_F(FileCreateUsingInformationTest, WideNamesAreConverted) {
    auto *createUsing = VantrelClientFileCreateUsingFileInformationW;
    engine.reply({.status = 59});
    EXPECT_EQ(createUsing(client, information, L"a.vnt", 1, 1), 59);
    expectRequest(information, reply, 7);
    EXPECT_EQ(lastStatus(client), 59);
    engine.reset();
    expectRefusal(createUsing(client, information, std::wstring(4096, L'a').c_str(), 0, 0), 2002);
    expectRefusal(createUsing(client, information, nullptr, 2, 3), 2007);
    expectRefusal(createUsing(client, nullptr, L"a.vnt", 2, 3), 2007);
    EXPECT_EQ(createUsing(nullptr, information, nullptr, 0, 0), 2007);
    EXPECT_EQ(createUsing(nullptr, information, L"a.vnt", 0, 0), 2007);
    EXPECT_TRUE(engine.calls().empty());
}

}  // namespace
