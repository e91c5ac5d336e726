#ifndef VANTREL_TESTS_EMBEDDED_KILL_EXPECTED_STATE_H
#define VANTREL_TESTS_EMBEDDED_KILL_EXPECTED_STATE_H

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "embedded/kill/journal.h"

namespace vantrel::test {

inline constexpr size_t killedFileCount = 2;

// Records begin with their number, by which index 0 finds them, their group, on which index 1 is, and four
// bytes that other indexes are on.
inline constexpr uint32_t groupOffset = 4, tagOffset = 8, fixedLength = 12;
// The status of a bulk deletion that went through all records, or through all that could match.
inline constexpr int32_t endOfFile = 9, endOfRange = 64;

std::string recordBytes(uint32_t number, uint32_t group, uint32_t length, uint32_t seed);
std::string randomBytes(uint32_t length, uint32_t seed);
uint32_t fieldOf(const std::string &record, uint32_t offset);
// Never 0.
uint64_t valueOf(const std::string &record);

// A file as it must be, without regard to how the engine keeps it.
struct ExpectedFile {
    using Record = std::shared_ptr<const std::string>;

    std::map<uint64_t, Record> records;  // in the order of insertion
    uint64_t inserted = 0;
    std::set<uint32_t> extraIndexes;

    bool operator==(const ExpectedFile &other) const;
    std::map<uint64_t, Record>::iterator find(uint32_t number);
    bool insert(const std::string &record);
};

// What all files hold after the calls that a process made.
class ExpectedState {
  public:
    using Files = std::vector<ExpectedFile>;

    const Files &committed() const { return committed_; }
    bool operator==(const ExpectedState &other) const { return committed_ == other.committed_; }

    // False where files in this state would have been read, or would have answered, differently.
    bool follow(const Call &call);
    // A call of which nobody knows whether it happened; false where the files were read differently before.
    bool followUnanswered(const Call &call);
    void die();

  private:
    bool readsAs(const Call &call);
    // The status that the engine must give.
    int32_t perform(const Call &call);
    int32_t performOnRecord(ExpectedFile &file, const Call &call);
    int32_t performOnIndex(ExpectedFile &file, const Call &call);

    Files committed_ = Files(killedFileCount);
    Files current_ = committed_;
    bool insideTransaction_ = false;
};

// The states that may be there after a process was killed: with its last call and without.
std::vector<ExpectedState> statesAfterDeath(const std::vector<ExpectedState> &before, const Journal &journal);

}  // namespace vantrel::test

#endif
