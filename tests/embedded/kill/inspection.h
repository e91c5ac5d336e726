#ifndef VANTREL_TESTS_EMBEDDED_KILL_INSPECTION_H
#define VANTREL_TESTS_EMBEDDED_KILL_INSPECTION_H

#include <string>
#include <vector>

#include "embedded/kill/record_files.h"

namespace vantrel::test {

// Looks at the files after a process that worked on them was killed.
class Inspection {
  public:
    explicit Inspection(const std::string &directory);

    // Before the other process dies, so that it does not leave the files alone.
    bool openEarly();

    // Which of the states that may be there is there, and nothing else; -1 where something is wrong, which is
    // said.
    int find(const std::vector<ExpectedState> &states);

  private:
    bool verify();
    void takeNewViews();
    std::string difference(size_t file, const ExpectedFile &expected);
    std::string differenceInCounts(size_t file, const ExpectedFile &expected);
    bool anybodyMayLockAndChange(size_t file, const ExpectedFile &expected);

    RecordFiles files_, others_;
    bool isOpen_ = false;
};

}  // namespace vantrel::test

#endif
