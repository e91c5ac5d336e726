#ifndef VANTREL_EMBEDDED_OPERATION_POSITION_H
#define VANTREL_EMBEDDED_OPERATION_POSITION_H

#include <array>
#include <cstdint>
#include <map>
#include <optional>

#include "embedded/core.h"
#include "embedded/key/definition.h"

namespace vantrel::embedded {

class OpenFile;

using PositionBlock = std::array<uint8_t, positionBlockSize>;

// A place in an index: at an entry, or between two where a search found nothing.
struct LogicalPlace {
    uint8_t index;
    Bytes key;  // encoded
    int64_t address;
};

enum class LockKind : uint8_t { none, single, multiple };

// One open handle on a file.
struct Position {
    OpenFile *file = nullptr;
    bool isReadOnly = false;
    bool isWithoutOwner = false;  // opened for reading since the owner's name was not given
    bool isExclusive = false;
    bool isAccelerated = false;
    int64_t handleMark = 0;

    // What the caller's block must hold, and where it must lie.
    PositionBlock block{};
    const void *blockAddress = nullptr;

    std::optional<LogicalPlace> logical;

    // The place in physical order: that of the current record, or where it was before its deletion.
    std::optional<int64_t> physical;
    // The version in which the current record was read; none where there is no current record.
    std::optional<uint64_t> version;
    // The version that was current until another position of the session deleted the record in a transaction.
    std::optional<uint64_t> versionBeforeDeletion;

    // Where the last chunk operation ended, and in which record.
    int64_t chunkAddress = 0;
    uint64_t chunkEnd = 0;

    LockKind lockKind = LockKind::none;
    // The records locked through this position, and whether that was inside the transaction.
    std::map<int64_t, bool> locks;

    // The record and index that last refused a duplicate.
    int64_t conflictAddress = 0;
    uint16_t conflictIndex = 0;

    bool isOn(int64_t address) const { return version && physical == address; }

    void setCurrent(int64_t address, uint64_t recordVersion) {
        physical = address;
        version = recordVersion;
        versionBeforeDeletion.reset();
    }
    void clearCurrent() {
        version.reset();
        versionBeforeDeletion.reset();
    }
    void setLogical(uint8_t index, ByteView key, int64_t address);
    // The same in two steps, of which the second cannot fail.
    void keepKey(ByteView key);
    void setLogicalByKeptKey(uint8_t index, int64_t address) noexcept;

  private:
    Bytes keptKey_;
};

}  // namespace vantrel::embedded

#endif
