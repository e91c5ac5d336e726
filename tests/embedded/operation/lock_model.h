#ifndef VANTREL_TESTS_EMBEDDED_OPERATION_LOCK_MODEL_H
#define VANTREL_TESTS_EMBEDDED_OPERATION_LOCK_MODEL_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vantrel::test {

// One step of a script, on one of two files:
//   r s      reads the record a or b
//   1 2 3    the same and c, with a single lock and without waiting; w x with waiting
//   m n      reads a or b with one of multiple locks, without waiting; v y with waiting
//   u d i    updates or deletes the current record, or inserts c
//   K        unlocks all
//   B C X    begins a transaction: one that never waits, a concurrent one, an exclusive one
//   E A      ends or aborts it
struct LockStep {
    char action;
    size_t file = 0;
};

// A letter each; a prime behind it means the second file.
inline std::vector<LockStep> lockScript(const std::string &text) {
    std::vector<LockStep> steps;
    for (char letter : text) {
        if (letter == '\'')
            steps.back().file = 1;
        else
            steps.push_back({letter});
    }
    return steps;
}

// Who may do what, of two sessions on two files with the records a and b.
class LockModel {
  public:
    struct Outcome {
        int32_t status;
        int content = 0;  // of the record that a read finds
    };

    LockModel();

    // Nothing where the step would wait for the other session. What it has taken until then it keeps. The
    // content is that of a record which the step makes or changes.
    std::optional<Outcome> apply(int session, LockStep step, int content);

  private:
    enum class Transaction { none, exclusive, concurrent, neverWaits };
    enum class Kind { none, single, multiple };

    struct Stored {
        int address, version, content;
    };
    using Records = std::map<char, Stored>;
    struct File {
        Records committed, changed;
        std::optional<int> writer = {};
    };
    struct Current {
        char letter;
        int address, version;
    };
    struct Place {
        std::optional<Current> current = {};
        Kind kind = Kind::none;
        std::map<int, bool> locks = {};  // by address: whether the transaction's
        // Of the records that the transaction changed; none for those that it inserted.
        std::map<int, std::optional<int>> versionsBefore = {};
    };
    struct Session {
        Transaction transaction = Transaction::none;
        Place places[2] = {};
    };

    Session &me() { return sessions_[me_]; }
    Place &place() { return me().places[file_]; }
    File &file() { return files_[file_]; }
    bool isInside() { return me().transaction != Transaction::none; }
    bool mayWait() { return me().transaction != Transaction::neverWaits; }
    Records &view() { return file().writer == me_ ? file().changed : file().committed; }
    bool otherHolds(int address);
    bool takesWriteSide();

    std::optional<Outcome> waitOr(int32_t status, bool waits);
    std::optional<Outcome> read(char letter, Kind kind, bool waits);
    std::optional<Outcome> change(bool erases, int content);
    std::optional<Outcome> insert(int content);
    Outcome begin(Transaction transaction);
    Outcome finish(bool keeps);
    void lock(int address, Kind kind);
    void releaseLocks(bool all);
    void takeBack();

    File files_[2];
    Session sessions_[2];
    int me_ = 0;
    size_t file_ = 0;
    int lastVersion_ = 2, lastAddress_ = 2;
};

}  // namespace vantrel::test

#endif
