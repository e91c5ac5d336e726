#include "embedded/commit/system_calls.h"

#include <dlfcn.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>

namespace vantrel::test {

namespace {

thread_local SystemCallWatch *watch = nullptr;

template <class Function>
Function *next(const char *name) {
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

[[noreturn]] void die() {
    raise(SIGKILL);
    _exit(255);
}

// What the call returns, where it does not happen.
bool isPrevented(const char *name, const char *path, int descriptor) {
    if (watch == nullptr)
        return false;
    Fate fate = watch->fateOf(name, path, descriptor);
    if (fate == Fate::kills || fate == Fate::tears)
        die();
    errno = EIO;
    return fate == Fate::fails;
}

template <class Write>
ssize_t write(const char *name, int descriptor, size_t length, Write write) {
    if (watch == nullptr)
        return write(length);
    switch (watch->fateOf(name, nullptr, descriptor)) {
        case Fate::happens:
            return write(length);
        case Fate::tears:
            write(length / 2);
            die();
        case Fate::kills:
            die();
        case Fate::fails:
            break;
    }
    errno = EIO;
    return -1;
}

}  // namespace

std::string pathOf(int descriptor) {
    char path[PATH_MAX];
    ssize_t length = readlink(("/proc/self/fd/" + std::to_string(descriptor)).c_str(), path, sizeof path);
    return std::string(path, length < 0 ? 0 : static_cast<size_t>(length));
}

SystemCallWatch::SystemCallWatch(std::string directory, Decision decide)
    : directory_(std::move(directory)), decide_(std::move(decide)) {
    watch = this;
}

SystemCallWatch::~SystemCallWatch() {
    watch = nullptr;
}

Fate SystemCallWatch::fateOf(const char *name, const char *path, int descriptor) {
    std::string found = path != nullptr ? path : pathOf(descriptor);
    if (found.compare(0, directory_.size(), directory_) != 0)
        return Fate::happens;
    return decide_({name, found, descriptor});
}

size_t StepCount::stepOf(const SystemCall &call) {
    std::string current = call.name + ' ' + call.path;
    inRow_ = current == last_ ? inRow_ + 1 : 1;
    last_ = current;
    return inRow_ <= 2 ? ++steps_ : 0;
}

}  // namespace vantrel::test

using vantrel::test::isPrevented;
using vantrel::test::next;

// Visible to the libraries, whatever else of this program is.
#pragma GCC visibility push(default)
extern "C" {

// The power stays on: a sync is only asked about, or a few thousand of them would take minutes.
int fsync(int descriptor) {
    return isPrevented("fsync", nullptr, descriptor) ? -1 : 0;
}

int fdatasync(int descriptor) {
    return fsync(descriptor);
}

int unlink(const char *path) noexcept {
    return isPrevented("unlink", path, -1) ? -1 : next<int(const char *)>("unlink")(path);
}

int rename(const char *from, const char *to) noexcept {
    return isPrevented("rename", to, -1) ? -1 : next<int(const char *, const char *)>("rename")(from, to);
}

int ftruncate64(int descriptor, off64_t length) noexcept {
    return isPrevented("ftruncate", nullptr, descriptor)
               ? -1
               : next<int(int, off64_t)>("ftruncate64")(descriptor, length);
}

ssize_t write(int descriptor, const void *bytes, size_t length) {
    return vantrel::test::write("write", descriptor, length, [&](size_t count) {
        return next<ssize_t(int, const void *, size_t)>("write")(descriptor, bytes, count);
    });
}

ssize_t pwrite64(int descriptor, const void *bytes, size_t length, off64_t offset) {
    return vantrel::test::write("write", descriptor, length, [&](size_t count) {
        return next<ssize_t(int, const void *, size_t, off64_t)>("pwrite64")(descriptor, bytes, count,
                                                                             offset);
    });
}
}
#pragma GCC visibility pop
