#ifndef VANTREL_EMBEDDED_OPERATION_WRITE_GATE_H
#define VANTREL_EMBEDDED_OPERATION_WRITE_GATE_H

#include "embedded/lock/lock_file.h"
#include "embedded/storage/storage.h"

namespace vantrel::embedded {

// Locks the write side of a file on its side file too, where it is seen whose it is and waits for it can be
// ended. Without permission to lock there, the storage alone keeps writers apart.
class FileWriteGate final : public WriteGate {
  public:
    // Record locks that end with a write transaction go before others can write, who would be refused the
    // records otherwise.
    FileWriteGate(LockFile &file, std::function<void()> releaseRecords)
        : file_(file), releaseRecords_(std::move(releaseRecords)) {}

    // After the longest wait, or at once without waiting, status 85 is thrown; 78 where the wait could never
    // end.
    void enter(Waiting waiting, const std::function<bool()> &begin) override;
    void committed() noexcept override;
    void leave() noexcept override;

  private:
    bool tryEnter(const std::function<bool()> &begin);
    [[noreturn]] void refuse();

    LockFile &file_;
    std::function<void()> releaseRecords_;
};

}  // namespace vantrel::embedded

#endif
