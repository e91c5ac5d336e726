#ifndef VANTREL_FUZZ_FILE_TRIAL_H
#define VANTREL_FUZZ_FILE_TRIAL_H

#include <cstdint>
#include <set>
#include <string>

namespace vantrel::fuzz {

// What the engine answers for a file, whatever is in it.
struct Trial {
    int32_t opened = 0;
    int32_t verified = 0;        // the status of opening with verification, before anything is changed
    std::set<int32_t> statuses;  // all that were given
};

// Opens a file and verifies it, reads whatever can be read in all ways, and then changes what it can.
Trial tryFile(const std::string &path, int32_t mode, const std::string &owner);

}  // namespace vantrel::fuzz

#endif
