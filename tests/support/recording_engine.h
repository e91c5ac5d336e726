#ifndef VANTREL_TESTS_SUPPORT_RECORDING_ENGINE_H
#define VANTREL_TESTS_SUPPORT_RECORDING_ENGINE_H

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "vantrel.h"

namespace vantrel::test {

using Bytes = std::vector<uint8_t>;

// The bytes of a text, without its terminator.
Bytes bytesOf(const std::string &text);

// One call as the engine saw it. Addresses are kept beside copies of what they pointed to during the call.
struct EngineCall {
    uint32_t operation;
    const void *positionBlock;
    std::optional<Bytes> positionBlockBytes;
    void *data;
    uint32_t dataLength;
    Bytes dataBytes;
    void *key;
    int32_t keyLength;
    Bytes keyBytes;
    int32_t keyNumber;
    const void *clientIdentifier;
    Bytes clientIdentifierBytes;
};

// What the engine answers to one call: bytes left out stay as the caller gave them.
struct EngineReply {
    int32_t status = 0;
    std::optional<uint32_t> dataLength = {};
    Bytes data = {};
    Bytes key = {};
    Bytes positionBlock = {};
    // Runs last, for answers that depend on the call.
    std::function<void(const EngineCall &)> effect = {};
};

// Stands in for the engine: keeps every call and answers with the replies scripted, in their order. A call
// beyond the script gets status 0 and no bytes.
class RecordingEngine {
  public:
    static RecordingEngine &get();

    void reset();
    void reply(EngineReply reply);
    const std::vector<EngineCall> &calls() const { return calls_; }
    // The only call made; fails the test where there was none or more than one.
    const EngineCall &onlyCall() const;
    size_t unusedReplies() const { return replies_.size() - used_; }

    int32_t handle(uint32_t operation, void *positionBlock, void *data, uint32_t *dataLength, void *key,
                   int32_t keyLength, int32_t keyNumber, void *clientIdentifier);

  private:
    std::vector<EngineCall> calls_;
    std::vector<EngineReply> replies_;
    size_t used_ = 0;
};

}  // namespace vantrel::test

#endif
