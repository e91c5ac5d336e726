#ifndef VANTREL_TESTS_EMBEDDED_FAULT_CONTENTS_H
#define VANTREL_TESTS_EMBEDDED_FAULT_CONTENTS_H

#include <string>
#include <vector>

namespace vantrel::test {

// The files of a directory that are no side files of others, sorted.
std::vector<std::string> filesIn(const std::string &directory);
// All names in a directory, with commas between them.
std::string namesIn(const std::string &directory);

// All that can be read of the files of a directory, each opened in a mode: definitions, counts, records in
// every order. Two texts are equal where the files hold the same.
std::string contentsOf(const std::string &directory, int32_t mode);

// Opens each file for itself alone and deletes its first record. Empty where that works, else what did not.
std::string changeEach(const std::string &directory);

}  // namespace vantrel::test

#endif
