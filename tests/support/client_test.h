#ifndef VANTREL_TESTS_SUPPORT_CLIENT_TEST_H
#define VANTREL_TESTS_SUPPORT_CLIENT_TEST_H

#include <gtest/gtest.h>

#include "engine/records.h"
#include "engine/status.h"
#include "support/recording_engine.h"

namespace vantrel::test {

// A client with the identifiers 0x0102 and 0x0304, and an engine without a script.
class ClientTest : public testing::Test {
  protected:
    ClientTest();
    ~ClientTest() override;

    // Opens a file through the client and forgets the call.
    VantrelFile *openFile(VantrelClient *through);
    VantrelFile *openFile() { return openFile(client); }

    RecordingEngine &engine = RecordingEngine::get();
    VantrelClient *client = nullptr;
    VantrelClient *otherClient = nullptr;

  private:
    std::vector<VantrelFile *> files_;
};

// A client and an open file, whose last status is 7777 so that a test sees who stores one.
class FileTest : public ClientTest {
  protected:
    FileTest();

    // Takes the owning client away, as from a file that was never opened.
    void makeFileUnusable();
    VantrelStatus fileStatus() const { return lastStatus(file); }
    void expectCachedKey(int32_t number, uint32_t length) const;
    void cacheKey(int32_t number, uint32_t length);

    VantrelFile *file;
};

inline constexpr VantrelStatus untouchedStatus = 7777;

}  // namespace vantrel::test

#endif
