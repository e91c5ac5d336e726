#ifndef VANTREL_TESTS_EMBEDDED_MODEL_PARTICIPANT_H
#define VANTREL_TESTS_EMBEDDED_MODEL_PARTICIPANT_H

#include <sys/types.h>

#include <string>

namespace vantrel::test {

// Creates a file of records that hold a number, by which they are found, and a value.
void createNumberFile(const std::string &path);
void deleteNumberFile(const std::string &path);

// A process of its own with one session, one open file and one current record, which does what it is told:
//   open, close, begin MODE, end, abort, insert NUMBER VALUE, update NUMBER VALUE, delete, unlock
//                        answer with the status
//   read NUMBER LOCK     answers with the value read, or "status N"
//   next LOCK            the same for the record behind the one read last
//   contents             answers with all records, "number:value" each
//   count N              N transactions, each of which gives the records 1 and 2 the next value
//   watch N              reads 1 and then 2 N times; "torn" where the second was ever behind the first
//   fork                 a child uses what it inherited, then a handle of its own, and answers for it
class Participant {
  public:
    explicit Participant(const std::string &path);
    ~Participant();
    Participant(const Participant &) = delete;
    Participant &operator=(const Participant &) = delete;

    std::string ask(const std::string &command);
    void tell(const std::string &command);
    // The answer to what it was told; "no answer" when none comes.
    std::string answer();
    // Whether nothing comes for as long as a request that does not wait would take many times.
    bool isWaiting();
    // Ends the process as a crash would.
    void kill();

  private:
    bool answersWithin(int milliseconds);

    pid_t process_ = -1;
    int commands_ = -1;
    int answers_ = -1;
};

}  // namespace vantrel::test

#endif
