#ifndef VANTREL_TESTS_EMBEDDED_FILE_SIZE_LIMIT_H
#define VANTREL_TESTS_EMBEDDED_FILE_SIZE_LIMIT_H

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>

namespace vantrel::test {

// Fails every write beyond a size, while it lives.
class FileSizeLimit {
  public:
    explicit FileSizeLimit(rlim_t size) {
        signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &before_);
        rlimit limit{size, before_.rlim_max};
        EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    }
    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &before_); }
    FileSizeLimit(const FileSizeLimit &) = delete;
    FileSizeLimit &operator=(const FileSizeLimit &) = delete;

  private:
    rlimit before_;
};

}  // namespace vantrel::test

#endif
