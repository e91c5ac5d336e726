#ifndef VANTREL_EMBEDDED_STORAGE_WAL_INDEX_H
#define VANTREL_EMBEDDED_STORAGE_WAL_INDEX_H

#include <sqlite3.h>

#include <array>
#include <cstdint>

namespace vantrel::embedded {

// The header of a write-ahead log's shared index, which every commit changes. Comparing it tells in
// nanoseconds whether anybody has committed, which the library's own means take microseconds to tell.
class WalIndex {
  public:
    // The header as it stands now; all zero where the log is not in use yet.
    using Header = std::array<uint64_t, 6>;
    Header read(sqlite3_file *mainFile);
    bool equals(const Header &header) const;

    // Whether nothing was committed to the log since it was emptied.
    bool logIsEmpty(sqlite3_file *mainFile);

    // How many pages were committed to the log that the database lacks.
    uint32_t pagesOnlyInLog(sqlite3_file *mainFile);

    // Whether it could be opened for reading only.
    static bool isReadOnly(sqlite3_file *mainFile);

    // Replaces the mapping by a private copy: what a forked child then does to it stays its own.
    static void makePrivate(sqlite3_file *mainFile);

  private:
    const uint64_t *shared_ = nullptr;
};

}  // namespace vantrel::embedded

#endif
