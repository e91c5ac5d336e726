#include "client/expected_call.h"

namespace {

using namespace vantrel;
using namespace vantrel::test;

struct PlainFunction {
    const char *name;
    VantrelStatus (*call)(VantrelClient *);
    uint32_t operation;
};

const PlainFunction plainFunctions[] = {
    {"Reset", VantrelClientReset, 28},
    {"Stop", VantrelClientStop, 25},
    {"TransactionEnd", VantrelClientTransactionEnd, 20},
    {"TransactionAbort", VantrelClientTransactionAbort, 21},
};

class PlainRequest : public ClientTest, public testing::WithParamInterface<PlainFunction> {};

INSTANTIATE_TEST_SUITE_P(AllFunctions, PlainRequest, testing::ValuesIn(plainFunctions),
                         [](const auto &instance) { return instance.param.name; });

TEST_P(PlainRequest, SendsNothingButTheOperation) {
    EXPECT_EQ(GetParam().call(client), 0);
    EXPECT_EQ(lastStatus(client), 0);
    EXPECT_EQ(lastStatus(otherClient), untouchedStatus);
    expectCall(engine.onlyCall(), client, {.operation = GetParam().operation});
}

TEST_P(PlainRequest, KeepsTheEnginesStatus) {
    engine.reply({.status = 39});
    EXPECT_EQ(GetParam().call(client), 39);
    EXPECT_EQ(lastStatus(client), 39);
}

TEST_P(PlainRequest, RefusesAMissingClientWithoutRequest) {
    EXPECT_EQ(GetParam().call(nullptr), 2007);
    EXPECT_TRUE(engine.calls().empty());
}

}  // namespace
