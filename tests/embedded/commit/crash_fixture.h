#ifndef VANTREL_TESTS_EMBEDDED_COMMIT_CRASH_FIXTURE_H
#define VANTREL_TESTS_EMBEDDED_COMMIT_CRASH_FIXTURE_H

#include <filesystem>

#include "embedded/commit/child_process.h"
#include "embedded/commit/three_files.h"
#include "embedded/system_calls.h"

namespace vantrel::test {

inline void copyFiles(const std::string &from, const std::string &to) {
    for (const auto &entry : std::filesystem::directory_iterator(to))
        std::filesystem::remove_all(entry.path());
    std::filesystem::copy(from, to);
}

// Three files, and processes that die in the end of a transaction over them.
class CrashTest : public testing::Test {
  protected:
    CrashTest() {
        ChildProcess::run([this]() -> std::string {
            ThreeFiles::create(directory);
            return {};
        });
        copyFiles(directory.path(), untouched.path());
    }

    void startAnew() { copyFiles(untouched.path(), directory.path()); }

    // Ends a transaction, while the calls that it makes for that are decided about. The status of the end.
    ChildProcess::Work anEnd(const SystemCallWatch::Decision &decide, int32_t openMode = 0) {
        return [this, decide, openMode]() -> std::string {
            ThreeFiles files(directory, 1);
            EXPECT_EQ(files.open({0, 1, 2}, openMode), 0);
            EXPECT_EQ(files.begin(), 0);
            files.change();
            SystemCallWatch watch(directory.path(), decide);
            return std::to_string(files.end());
        };
    }
    ChildProcess::Work anEnd(size_t step, Fate fate) {
        return anEnd([=, count = StepCount()](const SystemCall &call) mutable {
            return count.stepOf(call) == step ? fate : Fate::happens;
        });
    }
    // "killed", or the status of the end.
    std::string endElsewhere(const SystemCallWatch::Decision &decide, int32_t openMode = 0) {
        return ChildProcess::run(anEnd(decide, openMode));
    }
    std::string endElsewhere(size_t step, Fate fate) { return ChildProcess::run(anEnd(step, fate)); }
    // Dies at the first call of a name on a file.
    void dieAt(const std::string &name, const std::string &file, int32_t openMode = 0) {
        auto decide = [&](const SystemCall &call) {
            return call.name == name && call.path == directory / file ? Fate::kills : Fate::happens;
        };
        EXPECT_EQ(endElsewhere(decide, openMode), "killed");
    }

    TemporaryDirectory directory, untouched;
};

}  // namespace vantrel::test

#endif
