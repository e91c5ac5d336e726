#include <climits>

#include "definition/definition_test.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

class IndexCreateTest : public FileTest {
  protected:
    IndexCreateTest() {
        addIntegerSegment(attributes, 0);
        addIntegerSegment(attributes, 4);
    }

    // Expects the status both returned and stored, and no request.
    void expectRefusal(VantrelStatus status, VantrelStatus expected) {
        EXPECT_EQ(status, expected);
        EXPECT_EQ(fileStatus(), expected);
        EXPECT_EQ(lastStatus(client), untouchedStatus);
        EXPECT_TRUE(engine.calls().empty());
        keepStatus(file, untouchedStatus);
    }

    void expectCreateCall(const EngineCall &call, const Bytes &data, int32_t keyNumber) const {
        EXPECT_EQ(call.operation, 31u);
        EXPECT_EQ(call.positionBlock, file);
        EXPECT_NE(call.data, nullptr);
        EXPECT_EQ(call.dataLength, data.size());
        EXPECT_EQ(call.dataBytes, data);
        EXPECT_EQ(call.key, nullptr);
        EXPECT_EQ(call.keyLength, 0);
        EXPECT_EQ(call.keyNumber, keyNumber);
        EXPECT_EQ(call.clientIdentifier, client);
    }

    IndexAttributesPointer owner = newIndexAttributes();
    VantrelIndexAttributes *attributes = owner.get();
};

TEST_F(IndexCreateTest, SendsTheSegmentsAndCountsThemTwice) {
    engine.reply({.status = 0, .dataLength = 5});
    EXPECT_EQ(VantrelFileIndexCreate(file, attributes), 0);
    expectCreateCall(engine.onlyCall(),
                     joined({integerSegment(1, 0x0112), integerSegment(5, 0x0102), Bytes(48)}), 0);
    EXPECT_EQ(fileStatus(), 0);
    EXPECT_EQ(lastStatus(client), untouchedStatus);
    EXPECT_EQ(lastStatus(attributes), 0);
}

TEST_F(IndexCreateTest, TheACSBlockFollowsTheSegments) {
    ASSERT_EQ(VantrelIndexAttributesSetACSName(attributes, "UPPER"), 0);
    EXPECT_EQ(VantrelFileIndexCreate(file, attributes), 0);
    expectCreateCall(engine.onlyCall(),
                     joined({integerSegment(1, 0x0D32), integerSegment(5, 0x0D22), upperBlock(), Bytes(48)}),
                     0);
}

TEST_F(IndexCreateTest, WithoutSegmentsOnlyTheBlockIsSent) {
    IndexAttributesPointer empty = newIndexAttributes();
    engine.reply({.status = 29});
    EXPECT_EQ(VantrelFileIndexCreate(file, empty.get()), 29);
    expectCreateCall(engine.onlyCall(), {}, 0);
    engine.reset();
    ASSERT_EQ(VantrelIndexAttributesSetACSName(empty.get(), "UPPER"), 0);
    EXPECT_EQ(VantrelFileIndexCreate(file, empty.get()), 0);
    expectCreateCall(engine.onlyCall(), upperBlock(), 0);
}

TEST_F(IndexCreateTest, TheLargestDefinitionIsSentWhole) {
    IndexAttributesPointer large = newIndexAttributes();
    Bytes expected;
    for (int i = 0; i < 420; ++i) {
        addIntegerSegment(large.get(), 0);
        expected = joined({expected, integerSegment(1, i == 419 ? 0x0D22 : 0x0D32)});
    }
    ASSERT_EQ(VantrelIndexAttributesSetACSName(large.get(), "UPPER"), 0);
    EXPECT_EQ(VantrelFileIndexCreate(file, large.get()), 0);
    EXPECT_EQ(engine.onlyCall().dataLength, 20425u);
    expectCreateCall(engine.onlyCall(), joined({expected, upperBlock(), Bytes(10080)}), 0);
}

TEST_F(IndexCreateTest, TheEngineMayAnswerWith65536Bytes) {
    engine.reply({.data = Bytes(65536)});
    EXPECT_EQ(VantrelFileIndexCreate(file, attributes), 0);
    EXPECT_EQ(fileStatus(), 0);
}

TEST_F(IndexCreateTest, AnIndexNumberIsTheKeyNumber) {
    ASSERT_EQ(VantrelIndexAttributesSetIndex(attributes, 3), 0);
    EXPECT_EQ(VantrelFileIndexCreate(file, attributes), 0);
    EXPECT_EQ(engine.onlyCall().keyNumber, 0x83);
}

TEST_F(IndexCreateTest, KeepsTheStatusOfTheEngine) {
    for (VantrelStatus status : {5, 41, -5}) {
        engine.reply({.status = status});
        EXPECT_EQ(VantrelFileIndexCreate(file, attributes), status);
        EXPECT_EQ(fileStatus(), status);
    }
}

TEST_F(IndexCreateTest, TheSettingsStayInTheStoredSegments) {
    EXPECT_EQ(VantrelFileIndexCreate(file, attributes), 0);
    EXPECT_EQ(bytesIn(attributes->segments[0]), integerSegment(1, 0x0112));
    EXPECT_EQ(bytesIn(attributes->segments[1]), integerSegment(5, 0x0102));
}

TEST_F(IndexCreateTest, MissingFileAndAttributes) {
    EXPECT_EQ(VantrelFileIndexCreate(nullptr, nullptr), 3);
    expectRefusal(VantrelFileIndexCreate(file, nullptr), 2007);
    makeFileUnusable();
    expectRefusal(VantrelFileIndexCreate(file, attributes), 2007);
    EXPECT_EQ(bytesIn(attributes->segments[0]), integerSegment(1, 0x0110));
}

// Put into the record directly, since the functions that fill it refuse such definitions.
TEST_F(IndexCreateTest, ARefusedDefinitionIsNotSent) {
    storeU32(attributes->acsNumber, 256);
    expectRefusal(VantrelFileIndexCreate(file, attributes), 2002);
    storeU32(attributes->segmentCount, 2731);
    expectRefusal(VantrelFileIndexCreate(file, attributes), 22);
    storeU32(attributes->segmentCount, 421);
    expectRefusal(VantrelFileIndexCreate(file, attributes), 22);
    storeI32(attributes->segmentCount, -1);
    expectRefusal(VantrelFileIndexCreate(file, attributes), 22);
}

TEST_F(IndexCreateTest, AnUnknownNameIsTriedAsANumber) {
    ASSERT_EQ(VantrelIndexAttributesSetACSName(attributes, "UPPER"), 0);
    ASSERT_EQ(VantrelIndexAttributesSetIndex(attributes, 3), 0);
    engine.reply({.status = 136});
    engine.reply({.status = 48});
    EXPECT_EQ(VantrelFileIndexCreate(file, attributes), 48);
    EXPECT_EQ(fileStatus(), 48);
    ASSERT_EQ(engine.calls().size(), 2u);
    expectCreateCall(engine.calls()[0],
                     joined({integerSegment(1, 0x0D32), integerSegment(5, 0x0D22), upperBlock(), Bytes(48)}),
                     0x83);
    expectCreateCall(engine.calls()[1],
                     joined({integerSegment(1, 0x0532), integerSegment(5, 0x0522), upperBlock(), Bytes(48)}),
                     0x83);
    EXPECT_EQ(loadI32(attributes->acsMode), 1);
    EXPECT_EQ(bytesIn(attributes->segments[0]), integerSegment(1, 0x0532));
}

TEST_F(IndexCreateTest, TheSecondTryIsTheLast) {
    ASSERT_EQ(VantrelIndexAttributesSetACSUserDefined(attributes, "MINE", Bytes(256).data(), 256), 0);
    engine.reply({.status = 136});
    engine.reply({.status = 136});
    EXPECT_EQ(VantrelFileIndexCreate(file, attributes), 136);
    EXPECT_EQ(fileStatus(), 136);
    EXPECT_EQ(engine.calls().size(), 2u);
    EXPECT_EQ(loadI32(attributes->acsMode), 1);
}

TEST_F(IndexCreateTest, TheSecondTryCanSucceed) {
    ASSERT_EQ(VantrelIndexAttributesSetACSName(attributes, "UPPER"), 0);
    engine.reply({.status = 136});
    engine.reply({.status = 0});
    EXPECT_EQ(VantrelFileIndexCreate(file, attributes), 0);
    EXPECT_EQ(fileStatus(), 0);
    EXPECT_EQ(loadI32(attributes->acsMode), 1);
}

TEST_F(IndexCreateTest, TheSecondTryChecksTheFileAgain) {
    ASSERT_EQ(VantrelIndexAttributesSetACSName(attributes, "UPPER"), 0);
    engine.reply({.status = 136, .effect = [this](const EngineCall &) { makeFileUnusable(); }});
    EXPECT_EQ(VantrelFileIndexCreate(file, attributes), 2007);
    EXPECT_EQ(fileStatus(), 2007);
    EXPECT_EQ(engine.calls().size(), 1u);
    EXPECT_EQ(loadI32(attributes->acsMode), 1);
}

TEST_F(IndexCreateTest, OnlyNamesAreTriedAgain) {
    ASSERT_EQ(VantrelIndexAttributesSetACSNumber(attributes, 9), 0);
    engine.reply({.status = 136});
    EXPECT_EQ(VantrelFileIndexCreate(file, attributes), 136);
    for (VantrelACSMode mode : {0, 3, 4}) {
        ASSERT_EQ(VantrelIndexAttributesSetACSMode(attributes, mode), 0);
        engine.reply({.status = 136});
        EXPECT_EQ(VantrelFileIndexCreate(file, attributes), 136);
        EXPECT_EQ(loadI32(attributes->acsMode), mode);
    }
    EXPECT_EQ(engine.calls().size(), 4u);
}

TEST_F(IndexCreateTest, OtherStatusesAreNotTriedAgain) {
    ASSERT_EQ(VantrelIndexAttributesSetACSName(attributes, "UPPER"), 0);
    engine.reply({.status = 135});
    EXPECT_EQ(VantrelFileIndexCreate(file, attributes), 135);
    EXPECT_EQ(engine.calls().size(), 1u);
}

class IndexDropTest : public IndexCreateTest {};

TEST_F(IndexDropTest, NamesTheIndex) {
    for (VantrelIndex index : {-1, 0, 118, 124, 125}) {
        engine.reset();
        engine.reply({.status = 6});
        EXPECT_EQ(VantrelFileIndexDrop(file, index), 6);
        const EngineCall &call = engine.onlyCall();
        EXPECT_EQ(call.operation, 32u);
        EXPECT_EQ(call.positionBlock, file);
        EXPECT_EQ(call.data, nullptr);
        EXPECT_EQ(call.dataLength, 0u);
        EXPECT_EQ(call.key, nullptr);
        EXPECT_EQ(call.keyLength, 0);
        EXPECT_EQ(call.keyNumber, index);
        EXPECT_EQ(call.clientIdentifier, client);
        EXPECT_EQ(fileStatus(), 6);
        EXPECT_EQ(lastStatus(client), untouchedStatus);
    }
}

TEST_F(IndexDropTest, SuccessIsStored) {
    EXPECT_EQ(VantrelFileIndexDrop(file, 0), 0);
    EXPECT_EQ(fileStatus(), 0);
}

TEST_F(IndexDropTest, OtherIndexesAreRefused) {
    for (VantrelIndex index : {-2, 119, 123, 126, INT_MAX, INT_MIN})
        expectRefusal(VantrelFileIndexDrop(file, index), 2002);
}

TEST_F(IndexDropTest, ChecksTheFileFirst) {
    EXPECT_EQ(VantrelFileIndexDrop(nullptr, 119), 3);
    makeFileUnusable();
    expectRefusal(VantrelFileIndexDrop(file, 119), 2007);
}

}  // namespace
