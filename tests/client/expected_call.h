#ifndef VANTREL_TESTS_CLIENT_EXPECTED_CALL_H
#define VANTREL_TESTS_CLIENT_EXPECTED_CALL_H

#include <optional>
#include <string>

#include "support/client_test.h"

namespace vantrel::test {

// A request of a client as the engine has to see it; texts are given without their terminators.
struct ExpectedCall {
    uint32_t operation;
    std::optional<std::string> data = {};
    std::optional<std::string> key = {};
    int32_t keyNumber = 0;
    const VantrelFile *file = nullptr;
};

inline Bytes terminated(const std::optional<std::string> &text) {
    if (!text)
        return {};
    Bytes bytes = bytesOf(*text);
    bytes.push_back(0);
    return bytes;
}

inline void expectCall(const EngineCall &call, const VantrelClient *client, const ExpectedCall &expected) {
    EXPECT_EQ(call.operation, expected.operation);
    EXPECT_EQ(call.positionBlock, expected.file);
    EXPECT_EQ(call.data != nullptr, expected.data.has_value());
    EXPECT_EQ(call.dataBytes, terminated(expected.data));
    EXPECT_EQ(call.dataLength, expected.data ? expected.data->size() + 1 : 0);
    EXPECT_EQ(call.key != nullptr, expected.key.has_value());
    EXPECT_EQ(call.keyBytes, terminated(expected.key));
    EXPECT_EQ(static_cast<size_t>(call.keyLength), expected.key ? expected.key->size() + 1 : 0);
    EXPECT_EQ(call.keyNumber, expected.keyNumber);
    EXPECT_EQ(call.clientIdentifier, client);
}

}  // namespace vantrel::test

#endif
