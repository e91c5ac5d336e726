#ifndef VANTREL_EMBEDDED_LOCK_LOCK_USER_H
#define VANTREL_EMBEDDED_LOCK_LOCK_USER_H

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace vantrel::embedded {

// How something is held: by a change that is not committed, by a lock that was asked for, or by opening.
enum class HoldKind : uint8_t {
    change,
    singleWait,
    singleNoWait,
    multipleWait,
    multipleNoWait,
    sharedOpening,
    exclusiveOpening
};

using ClientIdentifier = std::array<uint8_t, 16>;

// What a session says of itself to those that it keeps waiting.
struct HolderDescription {
    ClientIdentifier identifier{};
    uint32_t process = 0;
    uint64_t transactionStart = 0;  // milliseconds since 1970, 0 outside a transaction
    bool transactionNeverWaits = false;
    std::array<char, 64> name{};

    bool operator==(const HolderDescription &) const = default;
};

// Who held what a session was refused. Without a description the holder is unknown.
struct Refusal {
    HoldKind kind;
    bool isRecord;
    bool isSameProcess;
    uint64_t time;  // milliseconds since 1970
    std::optional<HolderDescription> holder;
};

uint64_t millisecondsNow();

// A session towards the other users of its files.
class LockUser {
  public:
    explicit LockUser(const ClientIdentifier &identifier);
    LockUser(const LockUser &) = delete;
    LockUser &operator=(const LockUser &) = delete;

    const HolderDescription &description() const { return description_; }
    // Counts changes of the description.
    uint32_t revision() const { return revision_; }

    void beginTransaction(bool neverWaits);
    void endTransaction();
    bool isInTransaction() const { return description_.transactionStart != 0; }
    void setName(const std::string &name);

    // The last one, for the statistics.
    std::optional<Refusal> refusal;

  private:
    HolderDescription description_;
    uint32_t revision_ = 1;
};

}  // namespace vantrel::embedded

#endif
