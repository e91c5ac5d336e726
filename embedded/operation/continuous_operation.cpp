#include "embedded/operation/continuous_operation.h"

#include <unistd.h>

#include <chrono>
#include <thread>
#include <vector>

#include "embedded/operation/operations.h"
#include "embedded/operation/path.h"
#include "embedded/operation/reply.h"
#include "embedded/operation/structure.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

constexpr int32_t keyNumberBegin = 0;
constexpr int32_t keyNumberEnd = 1;

using Paths = std::vector<std::string>;

// The files of a text of names with commas between them.
Paths pathsOf(const Session &session, const std::string &names) {
    Paths paths;
    size_t start = 0;
    for (size_t comma = 0; comma != std::string::npos; start = comma + 1) {
        comma = names.find(',', start);
        size_t length = comma == std::string::npos ? comma : comma - start;
        paths.push_back(resolvePath(session, names.substr(start, length)));
    }
    return paths;
}

// Longer than any change outside a transaction takes.
constexpr auto longestWait = std::chrono::seconds(2);

void holdWriters(Session::ContinuousOperations &operations) {
    auto deadline = std::chrono::steady_clock::now() + longestWait;
    for (auto &[path, operation] : operations) {
        while (!operation->tryHoldWriters()) {
            if (std::chrono::steady_clock::now() >= deadline) {
                operation->noteRefusal();
                throw StatusError{VANTREL_STATUS_FILE_IN_USE};
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
}

// All of the files or none, and all at one moment, so that what a transaction did to several is in all of
// them.
int32_t begin(Session &session, const Paths &paths) {
    Session::ContinuousOperations begun;
    for (const std::string &path : paths) {
        requireFile(path);
        requireAccess(path, R_OK | W_OK);
        if (session.continuousOperations.count(path) != 0 || begun.count(path) != 0)
            return VANTREL_STATUS_OPERATION_NOT_ALLOWED;
        // A snapshot of this session itself would keep the log from being emptied.
        if (OpenFile *file = session.findFile(path))
            file->storage().releaseSnapshot();
        begun.emplace(path, std::make_unique<ContinuousOperation>(path, session.lockUser));
    }
    holdWriters(begun);
    for (auto &[path, operation] : begun)
        operation->begin();
    for (auto &[path, operation] : begun)
        operation->letWritersGoOn();
    session.continuousOperations.merge(begun);
    return VANTREL_STATUS_NO_ERROR;
}

int32_t end(Session &session, const Paths &paths) {
    for (const std::string &path : paths) {
        if (session.continuousOperations.count(path) == 0)
            return VANTREL_STATUS_OPERATION_NOT_ALLOWED;
    }
    for (const std::string &path : paths) {
        auto ended = session.continuousOperations.find(path);
        if (ended == session.continuousOperations.end())
            continue;
        if (OpenFile *file = session.findFile(path))
            file->storage().releaseSnapshot();
        ended->second->end();
    }
    // Where one could not be ended, all may be ended again.
    for (const std::string &path : paths)
        session.continuousOperations.erase(path);
    return VANTREL_STATUS_NO_ERROR;
}

}  // namespace

ContinuousOperation::ContinuousOperation(const std::string &path, LockUser &user)
    : path_(path), lockFile_(path, LockFile::Sharing::shared, user) {
    if (!lockFile_.tryMarkContinuousOperation())
        throw StatusError{VANTREL_STATUS_OPERATION_NOT_ALLOWED};
}

int32_t changeContinuousOperation(Session &session, Request &request) {
    refuseInsideTransaction(session);
    switch (request.keyNumber) {
        case keyNumberBegin:
            return begin(session, pathsOf(session, textInData(request)));
        case keyNumberEnd:
            return end(session, pathsOf(session, textInData(request)));
        default:
            return VANTREL_STATUS_INVALID_KEY_OPTION;
    }
}

}  // namespace vantrel::embedded
