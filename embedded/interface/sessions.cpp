#include "embedded/interface/sessions.h"

#include <pthread.h>

#include <array>
#include <cstring>
#include <map>
#include <mutex>
#include <new>
#include <vector>

namespace vantrel::embedded {

namespace {

using IdentifierBlock = std::array<uint8_t, 16>;

struct Registry {
    std::mutex mutex;
    std::map<IdentifierBlock, std::shared_ptr<Session>> sessions;
};

// Never destroyed: calls may come from other exit handlers. A forked child begins with a new one.
Registry *registry;

void prepareFork() {
    registry->mutex.lock();
    vantrelCorePrepareFork();
}

void parentAfterFork() {
    vantrelCoreParentAfterFork();
    registry->mutex.unlock();
}

// The parent's sessions stay allocated, so that the child never ends what is not its own.
void childAfterFork() {
    vantrelCoreChildAfterFork();
    registry = new Registry;
}

Registry &currentRegistry() {
    static std::once_flag once;
    std::call_once(once, [] {
        registry = new Registry;
        pthread_atfork(prepareFork, parentAfterFork, childAfterFork);
    });
    return *registry;
}

}  // namespace

std::shared_ptr<Session> findSession(const void *clientIdentifier) {
    IdentifierBlock block{};
    if (clientIdentifier != nullptr)
        memcpy(block.data(), clientIdentifier, block.size());
    Registry &known = currentRegistry();
    std::lock_guard lock(known.mutex);
    std::shared_ptr<Session> &session = known.sessions[block];
    if (session == nullptr) {
        Session *opened = vantrelCoreOpenSession();
        if (opened == nullptr)
            throw std::bad_alloc();
        session.reset(opened, vantrelCoreCloseSession);
    }
    return session;
}

void resetAllSessions() {
    Registry &known = currentRegistry();
    std::vector<std::shared_ptr<Session>> sessions;
    {
        std::lock_guard lock(known.mutex);
        for (auto &[block, session] : known.sessions)
            sessions.push_back(session);
    }
    for (auto &session : sessions)
        vantrelCoreResetSession(session.get());
}

}  // namespace vantrel::embedded
