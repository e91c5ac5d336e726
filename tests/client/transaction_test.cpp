#include <climits>

#include "client/expected_call.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

class TransactionTest : public ClientTest {};

TEST_F(TransactionTest, SelectsTheOperationByModeAndAddsTheLockBias) {
    constexpr uint32_t operations[3][5] = {
        {19, 119, 219, 319, 419}, {1019, 1119, 1219, 1319, 1419}, {1519, 1619, 1719, 1819, 1919}};
    for (int32_t transactionMode = 0; transactionMode < 3; ++transactionMode) {
        for (int32_t lockMode = 0; lockMode < 5; ++lockMode) {
            engine.reset();
            EXPECT_EQ(VantrelClientTransactionBegin(client, transactionMode, lockMode), 0);
            expectCall(engine.onlyCall(), client, {.operation = operations[transactionMode][lockMode]});
        }
    }
}

TEST_F(TransactionTest, KeepsTheEnginesStatus) {
    engine.reply({.status = 37});
    EXPECT_EQ(VantrelClientTransactionBegin(client, 1, 2), 37);
    EXPECT_EQ(lastStatus(client), 37);
}

TEST_F(TransactionTest, ClearsTheStatusBeforeTheRequest) {
    VantrelStatus statusDuringTheRequest = untouchedStatus;
    engine.reply(
        {.status = 37, .effect = [&](const EngineCall &) { statusDuringTheRequest = lastStatus(client); }});
    VantrelClientTransactionBegin(client, 0, 0);
    EXPECT_EQ(statusDuringTheRequest, 0);
}

TEST_F(TransactionTest, RefusesModesThatDoNotExist) {
    for (int32_t transactionMode : {INT_MIN, -1, 3, INT_MAX}) {
        keepStatus(client, untouchedStatus);
        EXPECT_EQ(VantrelClientTransactionBegin(client, transactionMode, 0), 2002);
        EXPECT_EQ(lastStatus(client), 2002);
    }
    for (int32_t lockMode : {INT_MIN, -1, 5, INT_MAX}) {
        keepStatus(client, untouchedStatus);
        EXPECT_EQ(VantrelClientTransactionBegin(client, 2, lockMode), 2002);
        EXPECT_EQ(lastStatus(client), 2002);
    }
    EXPECT_TRUE(engine.calls().empty());
}

TEST_F(TransactionTest, ChecksTheClientFirst) {
    EXPECT_EQ(VantrelClientTransactionBegin(nullptr, 3, 5), 2007);
    EXPECT_TRUE(engine.calls().empty());
}

}  // namespace
