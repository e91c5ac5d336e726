#ifndef VANTREL_TESTS_EMBEDDED_COMMIT_CHILD_PROCESS_H
#define VANTREL_TESTS_EMBEDDED_COMMIT_CHILD_PROCESS_H

#include <functional>
#include <string>

namespace vantrel::test {

// Runs work in a process of its own, which begins with it at once or when the result is asked for. A failed
// expectation in it is one of the test.
class ChildProcess {
  public:
    using Work = std::function<std::string()>;

    enum class Start { atOnce, forResult };

    explicit ChildProcess(const Work &work, Start start = Start::atOnce);
    ~ChildProcess();
    ChildProcess(const ChildProcess &) = delete;
    ChildProcess &operator=(const ChildProcess &) = delete;

    void kill();
    // What the work returned, or "killed".
    std::string result();

    static std::string run(const Work &work) { return ChildProcess(work).result(); }

  private:
    int process_ = -1;
    int output_ = -1;
    int start_ = -1;
    bool isWaiting_ = false;
};

}  // namespace vantrel::test

#endif
