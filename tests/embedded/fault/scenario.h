#ifndef VANTREL_TESTS_EMBEDDED_FAULT_SCENARIO_H
#define VANTREL_TESTS_EMBEDDED_FAULT_SCENARIO_H

#include <array>
#include <functional>
#include <string>
#include <vector>

#include "embedded/operation/engine_session.h"

namespace vantrel::test {

inline const std::string ownerName = "harbour";

// What a scenario works with: two sessions, each with two positions, on the files of a directory.
class World {
  public:
    explicit World(std::string directory) : directory_(std::move(directory)) {}

    std::string path(const std::string &name) const { return directory_ + '/' + name; }
    EngineSession &session(size_t number = 0) { return sessions_.at(number); }
    EngineSession::PositionBlock *block(size_t number = 0) { return &blocks_.at(number); }

    // As the first session, on the first position.
    Reply call(uint32_t operation, const std::string &data = {}, const std::string &key = {},
               int32_t keyNumber = 0, uint32_t offered = EngineSession::sameAsData) {
        return session().call(operation, block(), data, key, keyNumber, offered);
    }
    int32_t open(const std::string &name, int32_t mode = 0, size_t position = 0, size_t by = 0) {
        return session(by).call(0, block(position), ownerName, path(name) + '\0', mode).status;
    }
    int32_t insert(const std::string &record, size_t position = 0) {
        return session().call(2, block(position), record, "", -1).status;
    }
    // A read of a record that may be longer than what is asked for.
    int32_t find(const std::string &key, int32_t index = 0, uint32_t bias = 0, size_t position = 0) {
        int32_t status = session().call(5 + bias, block(position), "", key, index, 4).status;
        return status == 22 ? 0 : status;
    }
    // A change or a read of one chunk of the current record.
    int32_t changeChunk(uint32_t code, uint32_t offset, const std::string &bytes);
    int32_t truncate(uint32_t offset);

  private:
    std::string directory_;
    std::array<EngineSession, 2> sessions_{{EngineSession(1), EngineSession(2)}};
    std::array<EngineSession::PositionBlock, 4> blocks_{};
};

// One call of the engine that is to succeed.
struct Step {
    std::function<int32_t(World &)> run;
    int32_t expected = 0;
    // What it does may have happened whole although it failed: it changes names or replaces a file.
    bool mayHaveHappened = false;
    // Even where only memory ran out: a replaced file has to be opened again.
    bool mayHaveHappenedWithoutMemory = false;
    // It survives power loss once it has returned.
    bool isDurable = false;
};

// Something that is done with files, while something fails.
struct Scenario {
    const char *name;
    std::function<void(World &)> prepare;  // the files, in a process that closes them
    std::function<void(World &)> begin;    // in the process that then does the work
    std::vector<Step> work;
    // All of the work is one transaction: after a failure it begins anew.
    bool isTransaction = false;
    // What is left for the engine's own thread, in which it then fails.
    bool isInBackground = false;
    // Power loss may damage the file until all of the work is done.
    bool isUnsafeUntilEnd = false;
    // The process that prepares dies instead of closing.
    bool prepareDies = false;
};

inline void PrintTo(const Scenario &scenario, std::ostream *stream) {
    *stream << scenario.name;
}

const std::vector<Scenario> &scenarios();
// By families.
std::vector<Scenario> fileScenarios();
std::vector<Scenario> sessionScenarios();
std::vector<Scenario> logScenarios();
std::vector<Scenario> structureScenarios();
std::vector<Scenario> recordScenarios();
std::vector<Scenario> readScenarios();
std::vector<Scenario> transactionScenarios();

inline const auto nothing = [](World &) {};
// What most scenarios begin with: a file "file" of some records, and its first position.
void prepareFile(World &world);
void prepareVariableFile(World &world);
void openIt(World &world);
// The same, and the record "ab" is current.
void openAndFind(World &world);

// A file of records of a key of two bytes, unique, and a modifiable value of one, both indexed.
void makeFile(World &world, const std::string &name, uint16_t flags = 0);
// Its records, from a number on: "aa", "ab" and so forth, with values of 0 to 3, and a rest.
std::string recordOf(uint32_t number, const std::string &rest = {});
void fill(World &world, uint32_t count, const std::string &rest = {}, size_t position = 0);

}  // namespace vantrel::test

#endif
