#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "embedded/key/encoding.h"
#include "random_source.h"
#include "request_builder.h"

namespace {

using namespace vantrel::embedded;

const Bytes collatedFile = fileBytes({.indexCount = 3}) + segmentBytes({.flags = 0x0D30}) +
                           segmentBytes({.flags = 0x0D20}) +
                           segmentBytes({.flags = 0x0520, .collationNumber = 1}) +
                           segmentBytes({.flags = 0x0D20}) + tableBlock("MINE") + nameBlock("UPPER");

// The request in memory of exactly its size, so that a read outside is found.
template <class Parse>
void parseExactly(const Bytes &request, Parse parse) {
    const std::unique_ptr<char[]> memory(new char[request.size()]);
    std::copy(request.begin(), request.end(), memory.get());
    const ByteView view(memory.get(), request.size());
    const int32_t status = statusOf([&] { parse(view); });
    for (const int32_t known : {0, 6, 22, 24, 26, 27, 28, 29, 45, 48, 49, 136})
        if (status == known)
            return;
    ADD_FAILURE() << "status " << status;
}

// A file that can be made can be told and made again.
void createAndTell(ByteView request) {
    const FileDefinition file = parseCreateRequest(request);
    const Bytes reply = statisticsReply(file, 0, 0, {});
    EXPECT_LE(reply.size(), 65535u);
    expectEqual(parseCreateRequest(reply), file);
}

void useIndex(const IndexDefinition &index, ByteView record) {
    Bytes rawKey;
    extractRawKey(index, record, rawKey);
    EXPECT_EQ(rawKey.size(), index.keyLength);
    keyIsNull(index, rawKey);
    Bytes key;
    appendEncodedKey(index, rawKey, key);
    EXPECT_GE(key.size(), 1u);
}

TEST(HostileRequest, CutAnywhereIsRefusedOrUnderstood) {
    const Bytes reply = statisticsReply(parseCreateRequest(collatedFile), 0, 0, {});
    for (const Bytes &request : {collatedFile, reply})
        for (size_t length = 0; length < request.size(); ++length) {
            parseExactly(request.substr(0, length), createAndTell);
            EXPECT_NE(createStatus(request.substr(0, length)), 0) << length;
        }
}

TEST(HostileRequest, CutIndexRequestsAreRefused) {
    const FileDefinition file = parseCreateRequest(fileBytes({}));
    const Bytes request =
        segmentBytes({.flags = 0x0D30}) + segmentBytes({.flags = 0x0D20}) + tableBlock("MINE");
    for (size_t length = 0; length < request.size(); ++length) {
        parseExactly(request.substr(0, length), [&](ByteView view) { parseIndexRequest(view, file); });
        EXPECT_NE(indexStatus(request.substr(0, length), file), 0) << length;
    }
}

TEST(HostileRequest, WithRandomBytesIsRefusedOrUnderstood) {
    RandomSource random;
    const Bytes reply = statisticsReply(parseCreateRequest(collatedFile), 0, 0, {});
    size_t understood = 0;
    for (int round = 0; round < 20000; ++round) {
        Bytes request = round % 2 == 0 ? collatedFile : reply;
        for (size_t changes = 1 + random.below(4); changes > 0; --changes)
            request[random.below(round % 4 < 2 ? 128 : request.size())] =
                static_cast<char>(random.below(256));
        parseExactly(request, [&](ByteView view) {
            createAndTell(view);
            ++understood;
            for (const IndexDefinition &index : parseCreateRequest(view).indexes)
                useIndex(index, "a short record");
        });
    }
    EXPECT_GT(understood, 0u);
}

TEST(HostileRequest, OfRandomBytesAloneIsRefusedOrUnderstood) {
    RandomSource random;
    const FileDefinition file = parseCreateRequest(fileBytes({.recordLength = 65535}));
    for (int round = 0; round < 20000; ++round) {
        const Bytes request = random.bytes(random.below(700));
        parseExactly(request, createAndTell);
        parseExactly(request, [&](ByteView view) { parseIndexRequest(view, file); });
    }
}

TEST(HostileRequest, WithManyCollationsIsRefused) {
    Bytes request = statisticsReply(parseCreateRequest(fileBytes({})), 0, 0, {});
    request[30] = '\xF8';
    for (int number = 0; number < 248; ++number)
        request += tableBlock("C" + std::to_string(number));
    EXPECT_EQ(createStatus(request), 26);
    request[30] = '\xF7';
    EXPECT_EQ(createStatus(request), 0);
}

TEST(HostileRequest, ValuesOfEveryTypeAndLengthAreEncoded) {
    RandomSource random;
    for (unsigned code = 0; code <= 0x102; ++code)
        for (size_t length = 0; length <= 20; ++length) {
            const Bytes value = random.bytes(length);
            const std::unique_ptr<char[]> memory(new char[length]);
            std::copy(value.begin(), value.end(), memory.get());
            Bytes out;
            appendEncodedValue(static_cast<KeyType>(code), nullptr, ByteView(memory.get(), length), out);
            EXPECT_EQ(out.empty(), length == 0) << code << " " << length;
        }
}

}  // namespace
