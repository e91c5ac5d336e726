#include "bulk/execution.h"

#include <algorithm>
#include <iterator>
#include <ostream>

#include "bulk/handles.h"
#include "support/failing_allocation.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

// What the entry points are called with; each takes of it what it needs.
struct Arguments {
    VantrelFile *file;
    VantrelComparison comparison = VANTREL_COMPARISON_EQUAL;
    VantrelIndex index = 4;
    void *key = nullptr;
    uint32_t keyLength = 0;
    VantrelBulkRetrieveAttributes *retrieveAttributes = nullptr;
    VantrelBulkRetrieveResult *retrieveResult = nullptr;
    VantrelBulkDeleteAttributes *deleteAttributes = nullptr;
    VantrelBulkDeleteResult *deleteResult = nullptr;
    VantrelLockMode lockMode = VANTREL_LOCK_MODE_NONE;
};

enum class Starts { atPosition, atEnd, atKey };

struct EntryPoint {
    const char *name;
    VantrelStatus (*call)(const Arguments &);
    Starts starts;
    bool retrieves;
    uint32_t operation;
    uint32_t physicalOperation;
    const char *signature;
};

void PrintTo(const EntryPoint &entryPoint, std::ostream *stream) {
    *stream << entryPoint.name;
}

const EntryPoint entryPoints[] = {
    {"RetrieveNext",
     [](const Arguments &a) {
         return VantrelFileBulkRetrieveNext(a.file, a.retrieveAttributes, a.retrieveResult, a.lockMode);
     },
     Starts::atPosition, true, 36, 38, "UC"},
    {"RetrievePrevious",
     [](const Arguments &a) {
         return VantrelFileBulkRetrievePrevious(a.file, a.retrieveAttributes, a.retrieveResult, a.lockMode);
     },
     Starts::atPosition, true, 37, 39, "UC"},
    {"RetrieveFirst",
     [](const Arguments &a) {
         return VantrelFileBulkRetrieveFirst(a.file, a.index, a.retrieveAttributes, a.retrieveResult,
                                             a.lockMode);
     },
     Starts::atEnd, true, 36, 38, "FI"},
    {"RetrieveLast",
     [](const Arguments &a) {
         return VantrelFileBulkRetrieveLast(a.file, a.index, a.retrieveAttributes, a.retrieveResult,
                                            a.lockMode);
     },
     Starts::atEnd, true, 37, 39, "LA"},
    {"RetrieveNextByComparison",
     [](const Arguments &a) {
         return VantrelFileBulkRetrieveNextByComparison(a.file, a.comparison, a.index, a.key, a.keyLength,
                                                        a.retrieveAttributes, a.retrieveResult, a.lockMode);
     },
     Starts::atKey, true, 36, 38, "EQ"},
    {"RetrievePreviousByComparison",
     [](const Arguments &a) {
         return VantrelFileBulkRetrievePreviousByComparison(a.file, a.comparison, a.index, a.key, a.keyLength,
                                                            a.retrieveAttributes, a.retrieveResult,
                                                            a.lockMode);
     },
     Starts::atKey, true, 37, 39, "EQ"},
    {"DeleteNext",
     [](const Arguments &a) { return VantrelFileBulkDeleteNext(a.file, a.deleteAttributes, a.deleteResult); },
     Starts::atPosition, false, 85, 87, "UC"},
    {"DeletePrevious",
     [](const Arguments &a) {
         return VantrelFileBulkDeletePrevious(a.file, a.deleteAttributes, a.deleteResult);
     },
     Starts::atPosition, false, 86, 88, "UC"},
    {"DeleteFirst",
     [](const Arguments &a) {
         return VantrelFileBulkDeleteFirst(a.file, a.index, a.deleteAttributes, a.deleteResult);
     },
     Starts::atEnd, false, 85, 87, "FI"},
    {"DeleteLast",
     [](const Arguments &a) {
         return VantrelFileBulkDeleteLast(a.file, a.index, a.deleteAttributes, a.deleteResult);
     },
     Starts::atEnd, false, 86, 88, "LA"},
    {"DeleteNextByComparison",
     [](const Arguments &a) {
         return VantrelFileBulkDeleteNextByComparison(a.file, a.comparison, a.index, a.key, a.keyLength,
                                                      a.deleteAttributes, a.deleteResult);
     },
     Starts::atKey, false, 85, 87, "EQ"},
    {"DeletePreviousByComparison",
     [](const Arguments &a) {
         return VantrelFileBulkDeletePreviousByComparison(a.file, a.comparison, a.index, a.key, a.keyLength,
                                                          a.deleteAttributes, a.deleteResult);
     },
     Starts::atKey, false, 86, 88, "EQ"},
};

class BulkExecutionTest : public FileTest, public testing::WithParamInterface<EntryPoint> {
  protected:
    BulkExecutionTest() {
        cacheKey(4, 2);
        arguments.file = file;
        arguments.retrieveAttributes = retrieveAttributes;
        arguments.retrieveResult = retrieveResult;
        arguments.deleteAttributes = deleteAttributes;
        arguments.deleteResult = deleteResult;
    }

    bool startsAtPosition() const { return GetParam().starts == Starts::atPosition; }
    VantrelStatus call() { return GetParam().call(arguments); }
    void useIndex(VantrelIndex index) {
        arguments.index = index;
        storeI32(file->cachedKeyNumber, index);
    }
    void loseAttributes() {
        arguments.retrieveAttributes = nullptr;
        arguments.deleteAttributes = nullptr;
    }
    void loseResult() {
        arguments.retrieveResult = nullptr;
        arguments.deleteResult = nullptr;
    }
    void addUnfinishedFilter() {
        Filter unfinished;
        VantrelBulkRetrieveAttributesAddFilter(retrieveAttributes, unfinished);
        VantrelBulkDeleteAttributesAddFilter(deleteAttributes, unfinished);
    }
    std::string signature() const {
        const uint8_t *bytes =
            GetParam().retrieves ? retrieveAttributes->signature : deleteAttributes->signature;
        return std::string(bytes, bytes + 2);
    }
    std::string sentSignature() const {
        const Bytes &data = engine.calls().back().dataBytes;
        return std::string(data.begin() + 2, data.begin() + 4);
    }
    void expectRefusal(VantrelStatus status, VantrelStatus keptStatus) {
        EXPECT_EQ(call(), status);
        EXPECT_EQ(fileStatus(), keptStatus);
        EXPECT_TRUE(engine.calls().empty());
    }

    Arguments arguments;
    RetrieveAttributes retrieveAttributes;
    RetrieveResult retrieveResult;
    DeleteAttributes deleteAttributes;
    DeleteResult deleteResult;
};

std::vector<EntryPoint> entryPointsThat(bool (*match)(const EntryPoint &)) {
    std::vector<EntryPoint> matching;
    std::copy_if(std::begin(entryPoints), std::end(entryPoints), std::back_inserter(matching), match);
    return matching;
}

std::string nameOf(const testing::TestParamInfo<EntryPoint> &test) {
    return test.param.name;
}

class BulkKeySearchTest : public BulkExecutionTest {};
class BulkLockingTest : public BulkExecutionTest {};

INSTANTIATE_TEST_SUITE_P(All, BulkExecutionTest, testing::ValuesIn(entryPoints), nameOf);
INSTANTIATE_TEST_SUITE_P(ByKey, BulkKeySearchTest,
                         testing::ValuesIn(entryPointsThat([](const EntryPoint &entryPoint) {
                             return entryPoint.starts == Starts::atKey;
                         })),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(Retrieves, BulkLockingTest,
                         testing::ValuesIn(entryPointsThat([](const EntryPoint &entryPoint) {
                             return entryPoint.retrieves;
                         })),
                         nameOf);

TEST_P(BulkExecutionTest, SendsTheRequestInTheResultAlongTheIndex) {
    engine.reply({.status = 60});
    EXPECT_EQ(call(), 60);
    EXPECT_EQ(fileStatus(), 60);
    EXPECT_EQ(lastStatus(client), untouchedStatus);
    const EngineCall &sent = engine.onlyCall();
    EXPECT_EQ(sent.operation, GetParam().operation);
    EXPECT_EQ(sent.positionBlock, file);
    EXPECT_EQ(sent.data, GetParam().retrieves ? retrieveResult->area : deleteResult->area);
    EXPECT_EQ(sent.dataLength, 258042u);
    EXPECT_EQ(sentSignature(), GetParam().signature);
    EXPECT_EQ(sent.key, file->keyBuffer);
    EXPECT_EQ(sent.keyLength, 2);
    EXPECT_EQ(sent.keyNumber, 4);
    EXPECT_EQ(sent.clientIdentifier, client);
}

TEST_P(BulkExecutionTest, StepsInThePhysicalOrderWithoutIndex) {
    useIndex(VANTREL_INDEX_NONE);
    EXPECT_EQ(call(), 0);
    EXPECT_EQ(engine.onlyCall().operation, GetParam().physicalOperation);
    EXPECT_EQ(engine.onlyCall().keyNumber, -1);
    EXPECT_EQ(engine.onlyCall().keyLength, 0);
}

TEST_P(BulkExecutionTest, AnyOtherIndexIsPassedOn) {
    for (VantrelIndex index : {0, 125, 200, -2}) {
        useIndex(index);
        EXPECT_EQ(call(), 0);
        EXPECT_EQ(engine.calls().back().operation, GetParam().operation);
        EXPECT_EQ(engine.calls().back().keyNumber, index);
    }
}

TEST_P(BulkExecutionTest, ChoosesItsIndexForTheCallsThatFollow) {
    storeI32(file->cachedKeyNumber, 9);
    EXPECT_EQ(call(), 0);
    EXPECT_EQ(loadI32(file->cachedKeyNumber), startsAtPosition() ? 9 : 4);
}

TEST_P(BulkExecutionTest, LockModesAreAddedToRetrievesOnly) {
    for (int32_t mode : {0, 1, 2, 3, 4}) {
        arguments.lockMode = mode;
        uint32_t bias = GetParam().retrieves ? 100 * static_cast<uint32_t>(mode) : 0;
        EXPECT_EQ(call(), 0);
        EXPECT_EQ(engine.calls().back().operation, GetParam().operation + bias);
    }
}

TEST_P(BulkExecutionTest, ReplyIsReadInTheResult) {
    engine.reply({.status = 9, .dataLength = 2, .data = {1, 0, 0, 0, 7, 0, 0, 0, 0, 0, 0, 0}});
    EXPECT_EQ(call(), 9);
    EXPECT_EQ(GetParam().retrieves ? VantrelBulkRetrieveResultGetRecordCursorPosition(retrieveResult, 1)
                                   : VantrelBulkDeleteResultGetRecordCursorPosition(deleteResult, 1),
              7);
}

TEST_P(BulkExecutionTest, SignatureIsLeftToSkipTheCurrentRecordByStarts) {
    EXPECT_EQ(call(), 0);
    EXPECT_EQ(signature(), startsAtPosition() ? "UC" : "EG");
    EXPECT_EQ(call(), 0);
    EXPECT_EQ(sentSignature(), GetParam().signature);
}

TEST_P(BulkExecutionTest, SignatureIsLeftToSkipTheCurrentRecordEvenByRefusedStarts) {
    addUnfinishedFilter();
    expectRefusal(2002, 2002);
    EXPECT_EQ(signature(), startsAtPosition() ? "UC" : "EG");
}

TEST_P(BulkExecutionTest, GoingOnSendsTheSignatureAsSet) {
    VantrelBulkRetrieveAttributesSetSkipCurrentRecord(retrieveAttributes, 1);
    VantrelBulkDeleteAttributesSetSkipCurrentRecord(deleteAttributes, 1);
    EXPECT_EQ(call(), 0);
    EXPECT_EQ(sentSignature(), startsAtPosition() ? "EG" : GetParam().signature);
}

TEST_P(BulkExecutionTest, MissingFileComesFirst) {
    arguments = {.file = nullptr, .comparison = 4, .lockMode = 9};
    expectRefusal(3, untouchedStatus);
    EXPECT_EQ(signature(), "UC");
}

TEST_P(BulkExecutionTest, MissingAttributesAreKeptWhereTheSearchGoesOn) {
    loseAttributes();
    arguments.comparison = 4;
    arguments.lockMode = 9;
    expectRefusal(2007, startsAtPosition() ? 2007 : untouchedStatus);
}

TEST_P(BulkExecutionTest, MissingResultComesBeforeTheLockMode) {
    loseResult();
    arguments.lockMode = 9;
    expectRefusal(2007, 2007);
}

TEST_P(BulkKeySearchTest, OtherComparisonsAreRefused) {
    loseResult();
    for (VantrelComparison comparison : {0, 4, 7, 8, 9, -1}) {
        arguments.comparison = comparison;
        expectRefusal(2002, untouchedStatus);
        EXPECT_EQ(signature(), "UC");
    }
}

TEST_P(BulkKeySearchTest, ComparisonsHaveSignatures) {
    for (auto [comparison, letters] : {std::pair{1, "EQ"}, {2, "GT"}, {3, "LT"}, {5, "GE"}, {6, "LE"}}) {
        arguments.comparison = comparison;
        EXPECT_EQ(call(), 0);
        EXPECT_EQ(sentSignature(), letters);
        EXPECT_EQ(signature(), "EG");
    }
}

TEST_P(BulkKeySearchTest, KeyGoesToTheEngineAndComesBack) {
    uint8_t key[] = {1, 2, 3, 0xEE};
    arguments.key = key;
    arguments.keyLength = 3;
    engine.reply({.key = {7, 8, 9, 10}});
    EXPECT_EQ(call(), 0);
    EXPECT_EQ(engine.onlyCall().keyBytes, (Bytes{1, 2, 3}));
    EXPECT_EQ(Bytes(key, key + 4), (Bytes{7, 8, 9, 0xEE}));
    expectCachedKey(4, 3);
}

TEST_P(BulkLockingTest, LockModesAreAddedInThePhysicalOrderToo) {
    useIndex(VANTREL_INDEX_NONE);
    for (auto [mode, bias] : {std::pair{0, 0u}, {1, 100u}, {2, 200u}, {3, 300u}, {4, 400u}}) {
        arguments.lockMode = mode;
        EXPECT_EQ(call(), 0);
        EXPECT_EQ(engine.calls().back().operation, GetParam().physicalOperation + bias);
    }
}

TEST_P(BulkLockingTest, UnknownLockModesAreRefused) {
    addUnfinishedFilter();
    for (VantrelLockMode mode : {5, -1}) {
        arguments.lockMode = mode;
        retrieveResult->area[0] = 0x77;
        keepStatus(file, untouchedStatus);
        expectRefusal(2002, 2002);
        EXPECT_EQ(retrieveResult->area[2], 0);
    }
}

TEST_P(BulkExecutionTest, FiltersAreCheckedBeforeTheClient) {
    addUnfinishedFilter();
    makeFileUnusable();
    expectRefusal(2002, 2002);
}

TEST_P(BulkExecutionTest, FileWithoutClientIsRefused) {
    makeFileUnusable();
    expectRefusal(2007, 2007);
}

TEST_P(BulkExecutionTest, NeedsNoMemory) {
    FailingAllocation failing;
    EXPECT_EQ(call(), 0);
}

class BulkInternalTest : public FileTest {};

TEST_F(BulkInternalTest, MissingFilesAreRefused) {
    RetrieveAttributes retrieveAttributes;
    RetrieveResult retrieveResult;
    DeleteAttributes deleteAttributes;
    DeleteResult deleteResult;
    EXPECT_EQ(fileBulkRetrieve(36, nullptr, 0, nullptr, 0, retrieveAttributes, retrieveResult, 9), 3);
    EXPECT_EQ(fileBulkDelete(85, nullptr, 0, nullptr, 0, deleteAttributes, deleteResult), 3);
    EXPECT_TRUE(engine.calls().empty());
}

TEST_F(BulkInternalTest, StatusOfTheLockModeIsKept) {
    RetrieveAttributes attributes;
    RetrieveResult result;
    Filter unfinished;
    VantrelBulkRetrieveAttributesAddFilter(attributes, unfinished);
    EXPECT_EQ(fileBulkRetrieve(36, file, 0, nullptr, 0, attributes, result, 1), 2002);
    EXPECT_EQ(fileStatus(), 0);
}

TEST_F(BulkInternalTest, FreshFileGoesOnWithoutIndex) {
    RetrieveAttributes attributes;
    RetrieveResult result;
    EXPECT_EQ(VantrelFileBulkRetrieveNext(file, attributes, result, VANTREL_LOCK_MODE_NONE), 0);
    EXPECT_EQ(engine.onlyCall().operation, 36u);
    EXPECT_EQ(engine.onlyCall().keyNumber, -1);
    EXPECT_EQ(engine.onlyCall().keyLength, 0);
    expectCachedKey(-7, 0);
}

}  // namespace
