#ifndef VANTREL_TESTS_EMBEDDED_MODEL_LIBRARY_H
#define VANTREL_TESTS_EMBEDDED_MODEL_LIBRARY_H

#include <string>

#include "model.h"

namespace vantrel::test {

// What a step brought in reality.
struct Observed {
    VantrelStatus status = 0;
    // The whole buffers as the request left them, with the guard bytes behind them.
    Bytes record = {};
    Bytes key = {};
    int64_t value = 0;
    Address insertedAddress = 0;
    int64_t recordCount = 0;
    std::vector<IndexStatistics> indexes = {};
};

inline constexpr uint8_t guardByte = 0xA5;
inline constexpr size_t guardLength = 8;

// Of a file that does not exist yet: in memory where the system offers that, since every close syncs.
std::string newFilePath();

VantrelStatus createFile(VantrelClient *client, const std::string &path, const FileDefinition &file);
VantrelStatus createIndex(VantrelFile *file, VantrelIndex number, const IndexDefinition &index);

// The sessions and file handles of a sequence in the real library, on one file of its own.
class Library {
  public:
    Library(const std::string &path, const FileDefinition &file);
    ~Library();
    Library(const Library &) = delete;
    Library &operator=(const Library &) = delete;

    Observed apply(const Step &step, Address address);

  private:
    Observed read(const Step &step, Address address);
    VantrelStatus readKeyAlone(const Step &step, uint8_t *key, int32_t keyLength);
    int32_t readRecord(const Step &step, Address address, uint8_t *key, uint8_t *record, int32_t size);
    Observed insert(const Step &step);
    Observed information(VantrelFile *file);
    VantrelStatus control(const Step &step);
    VantrelStatus close(uint32_t handle);

    VantrelClient *client(const Step &step) { return clients_[step.session()]; }
    VantrelFile *file(const Step &step) { return files_[step.handle]; }

    std::string path_;
    VantrelClient *clients_[sessionCount] = {};
    VantrelFile *files_[handleCount] = {};
};

}  // namespace vantrel::test

#endif
