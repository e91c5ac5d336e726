#ifndef VANTREL_TESTS_EMBEDDED_KILL_WORKER_H
#define VANTREL_TESTS_EMBEDDED_KILL_WORKER_H

#include "embedded/kill/record_files.h"
#include "embedded/model/random_source.h"

namespace vantrel::test {

// Does random work on the files, and notes each call before it asks for it and after it was answered.
class Worker {
  public:
    Worker(const std::string &directory, uint64_t seed, Journal &journal);

    // Until the journal is full.
    void run();

  private:
    void step();
    void workInTransaction();
    void reopen();
    void change(CallKind kind);
    Call plan(CallKind kind);
    void planChunk(Call &call, uint32_t recordLength);
    int32_t ask(const Call &call);
    template <class Function>
    void perform(Call call, const Function &function);
    uint32_t randomLength();
    uint32_t randomNumber() { return random_.below(48); }
    uint32_t randomGroup() { return random_.below(6); }
    uint8_t randomFile() { return static_cast<uint8_t>(random_.below(killedFileCount)); }

    RecordFiles files_;
    RandomSource random_;
    Journal &journal_;
    bool insideTransaction_ = false;
};

}  // namespace vantrel::test

#endif
