#include "support/recording_engine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace vantrel::test {

namespace {

Bytes copyOf(const void *bytes, size_t length) {
    if (bytes == nullptr)
        return {};
    auto *first = static_cast<const uint8_t *>(bytes);
    return Bytes(first, first + length);
}

void write(void *target, const Bytes &bytes) {
    if (!bytes.empty())
        memcpy(target, bytes.data(), bytes.size());
}

}  // namespace

Bytes bytesOf(const std::string &text) {
    return Bytes(text.begin(), text.end());
}

RecordingEngine &RecordingEngine::get() {
    static RecordingEngine engine;
    return engine;
}

void RecordingEngine::reset() {
    calls_.clear();
    replies_.clear();
    used_ = 0;
}

void RecordingEngine::reply(EngineReply reply) {
    replies_.push_back(std::move(reply));
}

const EngineCall &RecordingEngine::onlyCall() const {
    static const EngineCall none{};
    EXPECT_EQ(calls_.size(), 1u);
    return calls_.size() == 1 ? calls_.front() : none;
}

int32_t RecordingEngine::handle(uint32_t operation, void *positionBlock, void *data, uint32_t *dataLength,
                                void *key, int32_t keyLength, int32_t keyNumber, void *clientIdentifier) {
    EXPECT_NE(dataLength, nullptr);
    EngineCall call;
    call.operation = operation;
    call.positionBlock = positionBlock;
    if (positionBlock != nullptr)
        call.positionBlockBytes = copyOf(positionBlock, 128);
    call.data = data;
    call.dataLength = *dataLength;
    call.dataBytes = copyOf(data, *dataLength);
    call.key = key;
    call.keyLength = keyLength;
    call.keyBytes = copyOf(key, static_cast<size_t>(std::max(keyLength, 0)));
    call.keyNumber = keyNumber;
    call.clientIdentifier = clientIdentifier;
    call.clientIdentifierBytes = copyOf(clientIdentifier, 16);
    calls_.push_back(call);

    if (used_ == replies_.size())
        return 0;
    const EngineReply &reply = replies_[used_++];
    write(data, reply.data);
    write(key, reply.key);
    write(positionBlock, reply.positionBlock);
    if (reply.dataLength)
        *dataLength = *reply.dataLength;
    if (reply.effect)
        reply.effect(call);
    return reply.status;
}

}  // namespace vantrel::test

extern "C" int32_t VNTLEXID(uint32_t operation, void *positionBlock, void *data, uint32_t *dataLength,
                            void *key, int32_t keyLength, int32_t keyNumber, void *clientIdentifier) {
    return vantrel::test::RecordingEngine::get().handle(operation, positionBlock, data, dataLength, key,
                                                        keyLength, keyNumber, clientIdentifier);
}
