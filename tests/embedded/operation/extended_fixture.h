#ifndef VANTREL_TESTS_EMBEDDED_OPERATION_EXTENDED_FIXTURE_H
#define VANTREL_TESTS_EMBEDDED_OPERATION_EXTENDED_FIXTURE_H

#include "embedded/expression/extended_request.h"
#include "embedded/operation/engine_session.h"

namespace vantrel::test {

// Records of a letter, a digit and two letters more. Index 0 is on the letter, unique; index 1 on the digit.
// The physical order is c a f b e d, the order of index 1 c a f (1), b e (2), d (3).
class ExtendedFixture : public testing::Test {
  protected:
    ExtendedFixture() {
        std::string request = createRequest(4, 0,
                                            {{{0, 1, extendedType, unsignedType}},
                                             {{1, 1, extendedType | duplicates | modifiable, unsignedType}}});
        EXPECT_EQ(session.create(path, request), 0);
        EXPECT_EQ(session.open(&block, path), 0);
        for (const char *record : {"c1yy", "a1xx", "f1xx", "b2xy", "e2zz", "d3xx"})
            EXPECT_EQ(session.call(2, &block, record, "", -1).status, 0);
        EXPECT_EQ(session.call(1, &block).status, 0);
        EXPECT_EQ(session.open(&block, path), 0);
    }

    // The request with an extractor of the letter, unless it has one.
    static RequestFields request(const std::string &signature, std::vector<TermFields> terms = {}) {
        RequestFields fields;
        fields.signature = signature;
        fields.terms = std::move(terms);
        fields.entries = {{1, 0}};
        return fields;
    }
    static TermFields onLetter(uint8_t comparison, char value, uint8_t connector = 0) {
        return {unsignedType, 1, 0, comparison, std::string(1, value), connector, ""};
    }
    static TermFields onDigit(uint8_t comparison, char value, uint8_t connector = 0) {
        return {unsignedType, 1, 1, comparison, std::string(1, value), connector, ""};
    }

    // The letters delivered and the status.
    std::string run(uint32_t operation, const RequestFields &fields, int32_t index = 0,
                    const std::string &key = "") {
        return run(session, block, operation, fields, index, key);
    }
    static std::string run(EngineSession &through, EngineSession::PositionBlock &at, uint32_t operation,
                           const RequestFields &fields, int32_t index = 0, const std::string &key = "") {
        Reply reply = through.call(operation, &at, fields.bytes(), key, index, 4096);
        return lettersIn(reply.data) + ' ' + std::to_string(reply.status);
    }

    // The first byte of each record in the reply of a read.
    static std::string lettersIn(const std::string &reply) {
        std::string letters;
        if (reply.empty())
            return letters;
        size_t at = 2;
        for (uint64_t count = number(reply, 0, 2); count > 0; --count) {
            auto length = static_cast<size_t>(number(reply, at, 2));
            letters += reply.substr(at + 10, length);
            at += 10 + length;
        }
        EXPECT_EQ(at, reply.size());
        return letters;
    }

    // The letter of the current record, or the status of asking for it.
    std::string current() {
        Reply reply = session.call(22, &block, "", "", 0, 8);
        if (reply.status != 0)
            return std::to_string(reply.status);
        return std::string(1, "?cafbed"[number(reply.data, 0, 8)]);
    }
    std::string read(uint32_t operation, const std::string &key = "?", int32_t index = 0) {
        Reply reply = session.call(operation, &block, "", key, index, 4);
        return reply.status == 0 ? reply.data.substr(0, 1) : std::to_string(reply.status);
    }
    // All letters left, in the order of index 0.
    std::string letters() {
        std::string left;
        for (std::string letter = read(12); letter.size() == 1 && letter >= "a"; letter = read(6))
            left += letter;
        return left;
    }

    TemporaryDirectory directory;
    std::string path = directory / "file";
    EngineSession session{1};
    EngineSession::PositionBlock block{};
};

}  // namespace vantrel::test

#endif
