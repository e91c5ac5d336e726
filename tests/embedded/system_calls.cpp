#include "embedded/system_calls.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/types.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdarg>

namespace vantrel::test {

namespace {

thread_local SystemCallWatch *watchOfThread = nullptr;
std::atomic<SystemCallWatch *> watchOfOthers{nullptr};

// The first thread of a process is known by its number.
SystemCallWatch *watch() {
    if (watchOfThread != nullptr)
        return watchOfThread;
    SystemCallWatch *found = watchOfOthers;
    return found != nullptr && gettid() != getpid() ? found : nullptr;
}

template <class Function>
Function *next(const char *name) {
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

[[noreturn]] void die() {
    raise(SIGKILL);
    _exit(255);
}

thread_local bool isDeciding = false;

// Asks about a call that is described without allocating, so that nothing of that can fail in the engine.
struct CallView {
    const char *name;
    const char *path = nullptr;
    int descriptor = -1;
    int64_t offset = 0;
    std::string_view bytes = {};
    const char *from = "";
};

Fate fateOf(const CallView &call) {
    SystemCallWatch *asked = watch();
    if (asked == nullptr || isDeciding)
        return Fate::happens;
    isDeciding = true;
    Fate fate = asked->fateOf({.name = call.name,
                               .path = call.path != nullptr ? call.path : pathOf(call.descriptor),
                               .descriptor = call.descriptor,
                               .offset = call.offset,
                               .bytes = call.bytes,
                               .from = call.from});
    isDeciding = false;
    return fate;
}

// Whether the call is not to happen; errno says why.
bool isPrevented(const CallView &call) {
    switch (fateOf(call)) {
        case Fate::happens:
        case Fate::isShort:
            return false;
        case Fate::fails:
        case Fate::isShortAndFails:
            errno = EIO;
            return true;
        case Fate::fillsDisk:
            errno = ENOSPC;
            return true;
        case Fate::tears:
        case Fate::kills:
            break;
    }
    die();
}

template <class Write>
ssize_t write(const CallView &call, size_t length, Write write) {
    switch (fateOf(call)) {
        case Fate::happens:
            return write(length);
        case Fate::isShort:
            return write((length + 1) / 2);
        case Fate::isShortAndFails:
            write(length / 2);
            break;
        case Fate::fails:
            break;
        case Fate::fillsDisk:
            errno = ENOSPC;
            return -1;
        case Fate::tears:
            write(length / 2);
            die();
        case Fate::kills:
            die();
    }
    errno = EIO;
    return -1;
}

CallView callOn(const char *name, int descriptor, int64_t offset = 0, std::string_view bytes = {}) {
    return {.name = name, .descriptor = descriptor, .offset = offset, .bytes = bytes};
}

std::string_view viewOf(const void *bytes, size_t length) {
    return {static_cast<const char *>(bytes), length};
}

}  // namespace

std::string pathOf(int descriptor) {
    char path[PATH_MAX];
    ssize_t length = readlink(("/proc/self/fd/" + std::to_string(descriptor)).c_str(), path, sizeof path);
    return std::string(path, length < 0 ? 0 : static_cast<size_t>(length));
}

SystemCallWatch::SystemCallWatch(std::string directory, Decision decide, Threads threads)
    : directory_(std::move(directory)), decide_(std::move(decide)), threads_(threads) {
    if (threads_ == Threads::mine)
        watchOfThread = this;
    else
        watchOfOthers = this;
}

SystemCallWatch::~SystemCallWatch() {
    if (threads_ == Threads::mine)
        watchOfThread = nullptr;
    else
        watchOfOthers = nullptr;
}

bool isDecidingAboutCall() {
    return isDeciding;
}

Fate SystemCallWatch::fateOf(const SystemCall &call) {
    if (!call.path.starts_with(directory_))
        return Fate::happens;
    return decide_(call);
}

size_t StepCount::stepOf(const SystemCall &call) {
    std::string current = call.name + ' ' + call.path;
    inRow_ = current == last_ ? inRow_ + 1 : 1;
    last_ = current;
    return inRow_ <= 2 ? ++steps_ : 0;
}

}  // namespace vantrel::test

using vantrel::test::callOn;
using vantrel::test::isPrevented;
using vantrel::test::next;
using vantrel::test::viewOf;

// Visible to the libraries, whatever else of this program is.
#pragma GCC visibility push(default)
extern "C" {

// The power stays on: a sync is only asked about, or a few thousand of them would take minutes.
int fsync(int descriptor) {
    return isPrevented(callOn("fsync", descriptor)) ? -1 : 0;
}

int fdatasync(int descriptor) {
    return fsync(descriptor);
}

int unlink(const char *path) noexcept {
    return isPrevented({.name = "unlink", .path = path}) ? -1 : next<int(const char *)>("unlink")(path);
}

int rename(const char *from, const char *to) noexcept {
    return isPrevented({.name = "rename", .path = to, .from = from})
               ? -1
               : next<int(const char *, const char *)>("rename")(from, to);
}

int ftruncate64(int descriptor, off64_t length) noexcept {
    return isPrevented(callOn("ftruncate", descriptor, length))
               ? -1
               : next<int(int, off64_t)>("ftruncate64")(descriptor, length);
}

int open64(const char *path, int flags, ...) {
    mode_t mode = 0;
    if ((flags & O_CREAT) != 0) {
        va_list arguments;
        va_start(arguments, flags);
        mode = va_arg(arguments, mode_t);
        va_end(arguments);
        if (isPrevented({.name = "open", .path = path}))
            return -1;
    }
    return next<int(const char *, int, ...)>("open64")(path, flags, mode);
}

void *mmap64(void *address, size_t length, int protection, int flags, int descriptor,
             off64_t offset) noexcept {
    if (descriptor >= 0 && isPrevented(callOn("mmap", descriptor, offset)))
        return MAP_FAILED;
    return next<void *(void *, size_t, int, int, int, off64_t)>("mmap64")(address, length, protection, flags,
                                                                          descriptor, offset);
}

ssize_t write(int descriptor, const void *bytes, size_t length) {
    off64_t offset = lseek64(descriptor, 0, SEEK_CUR);
    return vantrel::test::write(
        callOn("write", descriptor, offset, viewOf(bytes, length)), length, [&](size_t count) {
            return next<ssize_t(int, const void *, size_t)>("write")(descriptor, bytes, count);
        });
}

ssize_t pwrite64(int descriptor, const void *bytes, size_t length, off64_t offset) {
    return vantrel::test::write(callOn("write", descriptor, offset, viewOf(bytes, length)), length,
                                [&](size_t count) {
                                    return next<ssize_t(int, const void *, size_t, off64_t)>("pwrite64")(
                                        descriptor, bytes, count, offset);
                                });
}

// How bytes are copied from file to file.
ssize_t sendfile(int to, int from, off_t *offset, size_t length) noexcept {
    return vantrel::test::write(callOn("write", to, lseek64(to, 0, SEEK_CUR)), length, [&](size_t count) {
        return next<ssize_t(int, int, off_t *, size_t)>("sendfile")(to, from, offset, count);
    });
}
}
#pragma GCC visibility pop
