#ifndef VANTREL_TESTS_EMBEDDED_DISK_IMAGE_H
#define VANTREL_TESTS_EMBEDDED_DISK_IMAGE_H

#include <sys/types.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "embedded/system_calls.h"

namespace vantrel::test {

// What a disk holds of a directory: of each file the bytes of its last sync, the names of the directory's
// last sync, and as much of what was written since as chance will have it.
class DiskImage {
  public:
    explicit DiskImage(std::string directory);

    // Before the call happens.
    void note(const SystemCall &call);
    // Seed 0 leaves all out that was not synced.
    void writeTo(const std::string &target, uint32_t seed) const;

  private:
    // Of bytes, or of the length of the file.
    struct Change {
        size_t offset;
        std::string bytes;
        bool truncates;
    };
    using Names = std::map<std::string, ino_t>;

    Names namesNow() const;

    std::string directory_;
    Names names_;
    std::map<ino_t, std::string> synced_;
    std::map<ino_t, std::vector<Change>> pending_;
};

}  // namespace vantrel::test

#endif
