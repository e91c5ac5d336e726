#ifndef VANTREL_TESTS_EMBEDDED_FAULT_PAUSED_PROCESS_H
#define VANTREL_TESTS_EMBEDDED_FAULT_PAUSED_PROCESS_H

#include <sys/types.h>

#include <functional>
#include <string>

namespace vantrel::test {

// A process that works and reports, and then stays as it is, until this is destroyed. One that takes many
// times as long as usual is ended.
class PausedProcess {
  public:
    // What the process tells while it works.
    class Teller {
      public:
        Teller(int output, int input) : output_(output), input_(input) {}
        // That one more call was acknowledged.
        void acknowledge() { tell('.'); }
        // That what failed has happened all the same.
        void tellThatItHappened();
        // Has the parent copy the files.
        void askForCopy();

      private:
        friend PausedProcess;
        void tell(char mark);
        int output_;
        int input_;
    };
    using Work = std::function<std::string(Teller &)>;

    // The parent copies when the process asks it to.
    PausedProcess(const Work &work, const std::function<void()> &copy);
    ~PausedProcess();
    PausedProcess(const PausedProcess &) = delete;
    PausedProcess &operator=(const PausedProcess &) = delete;

    size_t acknowledged() const { return acknowledged_; }
    bool hasHappened() const { return hasHappened_; }
    // What the work returned, or "signal" and the number of the one that it died of.
    const std::string &report() const { return report_; }

  private:
    void listen(int input, int output, const std::function<void()> &copy);

    pid_t process_ = -1;
    size_t acknowledged_ = 0;
    bool hasHappened_ = false;
    std::string report_;
};

}  // namespace vantrel::test

#endif
