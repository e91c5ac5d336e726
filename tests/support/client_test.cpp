#include "support/client_test.h"

namespace vantrel::test {

ClientTest::ClientTest() {
    engine.reset();
    EXPECT_EQ(VantrelClientAllocate(&client, 0x0102, 0x0304), 0);
    EXPECT_EQ(VantrelClientAllocate(&otherClient, 0x0506, 0x0708), 0);
    keepStatus(client, untouchedStatus);
    keepStatus(otherClient, untouchedStatus);
}

ClientTest::~ClientTest() {
    EXPECT_EQ(engine.unusedReplies(), 0u);
    for (VantrelFile *file : files_)
        free(file);
    VantrelClientFree(otherClient);
    VantrelClientFree(client);
}

// Made here rather than by opening, so that tests of every family need the file record alone.
VantrelFile *ClientTest::openFile(VantrelClient *through) {
    auto *file = static_cast<VantrelFile *>(calloc(1, sizeof(VantrelFile)));
    storePointer(file->client, through);
    storeI32(file->cachedKeyNumber, noCachedKey);
    files_.push_back(file);
    return file;
}

FileTest::FileTest() : file(openFile()) {
    keepStatus(file, untouchedStatus);
}

void FileTest::makeFileUnusable() {
    storePointer(file->client, nullptr);
}

void FileTest::expectCachedKey(int32_t number, uint32_t length) const {
    EXPECT_EQ(loadI32(file->cachedKeyNumber), number);
    EXPECT_EQ(loadU32(file->cachedKeyLength), length);
}

void FileTest::cacheKey(int32_t number, uint32_t length) {
    storeI32(file->cachedKeyNumber, number);
    storeU32(file->cachedKeyLength, length);
}

}  // namespace vantrel::test
