#ifndef VANTREL_TESTS_EMBEDDED_COMMIT_SYSTEM_CALLS_H
#define VANTREL_TESTS_EMBEDDED_COMMIT_SYSTEM_CALLS_H

#include <functional>
#include <string>

namespace vantrel::test {

// A call that changes a file, makes it durable, or changes a name; the path of a descriptor is that of its
// file.
struct SystemCall {
    std::string name;
    std::string path;
    int descriptor;  // -1 where it takes none
};

enum class Fate {
    happens,
    fails,  // with an input/output error
    tears,  // writes the first half only, and kills the process
    kills,  // the process, before the call
};

// Asked before each call that the thread which made this makes below a directory, in SQLite and the engine.
class SystemCallWatch {
  public:
    using Decision = std::function<Fate(const SystemCall &)>;

    SystemCallWatch(std::string directory, Decision decide);
    ~SystemCallWatch();
    SystemCallWatch(const SystemCallWatch &) = delete;
    SystemCallWatch &operator=(const SystemCallWatch &) = delete;

    Fate fateOf(const char *name, const char *path, int descriptor);

  private:
    std::string directory_;
    Decision decide_;
};

// Numbers the calls, from 1, of which the consequences can differ: of calls of one kind on one file in a row,
// the first two.
class StepCount {
  public:
    // 0 for a call that is like the one before it.
    size_t stepOf(const SystemCall &call);
    size_t steps() const { return steps_; }

  private:
    std::string last_;
    int inRow_ = 0;
    size_t steps_ = 0;
};

// Of everything that has a name in a process's table of descriptors.
std::string pathOf(int descriptor);

}  // namespace vantrel::test

#endif
