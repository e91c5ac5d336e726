#include "embedded/interface/sessions.h"

#include <pthread.h>

#include <array>
#include <cstring>
#include <map>
#include <mutex>
#include <new>

#include "vantrel.h"

namespace vantrel::embedded {

namespace {

using IdentifierBlock = std::array<uint8_t, 16>;

struct Registry {
    std::mutex mutex;
    std::map<IdentifierBlock, std::shared_ptr<Session>> sessions;
};

// Never destroyed: calls may come from other exit handlers. A forked child begins with a new one.
Registry *registry;

IdentifierBlock blockOf(const void *clientIdentifier) {
    IdentifierBlock block{};
    if (clientIdentifier != nullptr)
        memcpy(block.data(), clientIdentifier, block.size());
    return block;
}

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
        if (pthread_atfork(prepareFork, parentAfterFork, childAfterFork) == 0)
            return;
        delete registry;
        registry = nullptr;
        throw std::bad_alloc();
    });
    return *registry;
}

}  // namespace

std::shared_ptr<Session> findSession(const void *clientIdentifier) {
    IdentifierBlock block = blockOf(clientIdentifier);
    Registry &known = currentRegistry();
    std::lock_guard lock(known.mutex);
    auto found = known.sessions.find(block);
    if (found != known.sessions.end())
        return found->second;
    Session *opened = vantrelCoreOpenSession(block.data());
    if (opened == nullptr)
        throw std::bad_alloc();
    std::shared_ptr<Session> session(opened, vantrelCoreCloseSession);
    known.sessions.emplace(block, session);
    return session;
}

// Whoever uses a session has a handle of it, taken under the mutex.
void forgetIfUnused(const std::shared_ptr<Session> &session, const void *clientIdentifier) {
    constexpr long mineAndTheRegistrys = 2;
    Registry &known = currentRegistry();
    std::lock_guard lock(known.mutex);
    auto found = known.sessions.find(blockOf(clientIdentifier));
    if (found != known.sessions.end() && found->second == session &&
        session.use_count() == mineAndTheRegistrys && vantrelCoreSessionHoldsNothing(session.get()))
        known.sessions.erase(found);
}

// Sessions that wait for what others hold are left for the second turn, when those hold nothing any more.
int32_t resetAllSessions() {
    Registry &known = currentRegistry();
    std::map<IdentifierBlock, std::shared_ptr<Session>> sessions;
    {
        std::lock_guard lock(known.mutex);
        sessions = known.sessions;
    }
    int32_t failure = VANTREL_STATUS_NO_ERROR;
    for (bool waits : {false, true}) {
        for (auto &[block, session] : sessions) {
            int32_t status = vantrelCoreResetSession(session.get(), waits);
            failure = failure != VANTREL_STATUS_NO_ERROR ? failure : status;
        }
    }
    for (auto &[block, session] : sessions)
        forgetIfUnused(session, block.data());
    return failure;
}

}  // namespace vantrel::embedded
