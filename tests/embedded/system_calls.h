#ifndef VANTREL_TESTS_EMBEDDED_SYSTEM_CALLS_H
#define VANTREL_TESTS_EMBEDDED_SYSTEM_CALLS_H

#include <functional>
#include <string>
#include <string_view>

namespace vantrel::test {

// A call that changes a file, makes it durable, or changes a name; the path of a descriptor is that of its
// file. Of the calls that open, only those that may make a file; of those that map, all of files.
struct SystemCall {
    std::string name;
    std::string path;
    int descriptor;          // -1 where it takes none
    int64_t offset;          // of a write, or the new length of a file
    std::string_view bytes;  // written
    std::string from;        // the old name of a renamed file
};

enum class Fate {
    happens,
    fails,            // with an input/output error
    fillsDisk,        // fails for want of room
    isShort,          // writes the first half only, and says so
    isShortAndFails,  // writes the first half only, and gives an input/output error
    tears,            // writes the first half only, and kills the process
    kills,            // the process, before the call
};

// Asked before each call that the thread which made this makes below a directory, in SQLite and the engine;
// or that the process's other threads make.
class SystemCallWatch {
  public:
    using Decision = std::function<Fate(const SystemCall &)>;
    enum class Threads { mine, others };

    SystemCallWatch(std::string directory, Decision decide, Threads threads = Threads::mine);
    ~SystemCallWatch();
    SystemCallWatch(const SystemCallWatch &) = delete;
    SystemCallWatch &operator=(const SystemCallWatch &) = delete;

    Fate fateOf(const SystemCall &call);

  private:
    std::string directory_;
    Decision decide_;
    Threads threads_;
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

// Whether this thread is in the middle of asking a watch.
bool isDecidingAboutCall();

// Of everything that has a name in a process's table of descriptors.
std::string pathOf(int descriptor);

}  // namespace vantrel::test

#endif
