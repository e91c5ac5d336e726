#ifndef VANTREL_TESTS_EMBEDDED_OPERATION_ENCRYPTION_FIXTURE_H
#define VANTREL_TESTS_EMBEDDED_OPERATION_ENCRYPTION_FIXTURE_H

#include "embedded/operation/owner_fixture.h"

namespace vantrel::test {

inline const std::string recordText = "bytes of a record to look for", keyText = "key to look for.";

class EncryptionTest : public testing::Test {
  protected:
    // Records of a key of 16 bytes, a modifiable one of 2, and any number of bytes behind.
    int32_t createPlain(const std::string &at) {
        return session.create(
            at, createRequest(18, variableLength, {{{0, 16}}, {{16, 2, modifiable | duplicates}}}));
    }
    void create(int32_t mode = deniedEncrypted) {
        ASSERT_EQ(createPlain(path), 0);
        ASSERT_EQ(session.open(&block, path), 0);
        ASSERT_EQ(setOwner(session, &block, mode, "harbour"), 0);
    }
    static std::string record(uint32_t number, const std::string &rest = recordText) {
        std::string key = keyText.substr(0, 10) + std::to_string(100000 + number);
        return key + "mm" + rest;
    }
    int32_t insert(const std::string &record) { return session.call(2, &block, record, "", -1).status; }
    void close() { ASSERT_EQ(session.call(1, &block).status, 0); }
    std::vector<std::string> records() { return recordsOf(session, &block, 2000); }

    TemporaryDirectory directory;
    std::string path = directory / "file";
    EngineSession session{1};
    EngineSession::PositionBlock block{};
};

}  // namespace vantrel::test

#endif
