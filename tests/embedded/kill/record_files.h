#ifndef VANTREL_TESTS_EMBEDDED_KILL_RECORD_FILES_H
#define VANTREL_TESTS_EMBEDDED_KILL_RECORD_FILES_H

#include <string>
#include <vector>

#include "embedded/kill/expected_state.h"
#include "embedded/operation/engine_session.h"

namespace vantrel::test {

// The files as one session works on them. Functions that return a number return the status.
class RecordFiles {
  public:
    RecordFiles(const std::string &directory, uint8_t sessionNumber);

    // Makes the files anew; the second one encrypted where that is asked for.
    static bool create(const std::string &directory, bool isEncrypted);

    int32_t open(size_t file, int32_t mode = 0);
    // The encrypted file first, since it may hold what the other one still lacks.
    int32_t openAll(int32_t mode = 0);
    int32_t close(size_t file) { return session_.call(1, &blocks_[file]).status; }

    // Makes a record current; the bias asks for a lock.
    int32_t find(size_t file, uint32_t number, uint32_t lockBias = 0);
    std::string current(size_t file);

    int32_t insert(size_t file, const std::string &record);
    int32_t insertMany(size_t file, const std::vector<std::string> &records);
    int32_t update(size_t file, const std::string &record);
    int32_t erase(size_t file) { return session_.call(4, &blocks_[file]).status; }
    int32_t chunk(size_t file, uint32_t code, uint32_t offset, const std::string &bytes);
    int32_t eraseGroup(size_t file, uint32_t group);
    int32_t createIndex(size_t file, uint32_t number);
    int32_t dropIndex(size_t file, uint32_t number);
    int32_t percentage(size_t file, uint32_t index);

    int32_t begin(uint32_t code) { return session_.call(code, nullptr).status; }
    int32_t end() { return session_.call(20, nullptr).status; }
    int32_t abort() { return session_.call(21, nullptr).status; }

    // The numbers of all records in the order of an index, or in physical order for -1.
    std::vector<uint32_t> numbers(size_t file, int32_t index);
    std::string statistics(size_t file);

  private:
    std::string paths_[killedFileCount];
    uint8_t sessionNumber_;
    EngineSession session_;
    EngineSession::PositionBlock blocks_[killedFileCount]{};
};

}  // namespace vantrel::test

#endif
