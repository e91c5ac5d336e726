#ifndef VANTREL_FUZZ_ENGINE_FILES_H
#define VANTREL_FUZZ_ENGINE_FILES_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace vantrel::fuzz {

// Ends the process where the engine does what it must not.
void require(bool condition, const char *what);

// One client identifier block.
struct Client {
    std::array<uint8_t, 16> block;
    explicit Client(uint8_t number) : block{number} {}

    using PositionBlock = std::array<uint8_t, 128>;
    // Returns the status; the data is replaced by what the engine returned of it.
    int32_t call(uint32_t operation, PositionBlock *position, std::string *data, std::string key,
                 int32_t keyNumber);
};

// The directory that every input's files lie in, which is the current one too: in memory where there is one.
const std::string &workDirectory();
void removeWorkDirectory();

// Puts two of the files made beforehand in place, as "file" and "other", and removes all others.
inline constexpr size_t fileKindCount = 3;
void prepareFiles();
void placeFiles(size_t kind);

// Whether what is stored of a file belongs together: records, indexes and counts.
void checkFile(const char *name);

}  // namespace vantrel::fuzz

#endif
