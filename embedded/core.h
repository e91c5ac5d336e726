#ifndef VANTREL_EMBEDDED_CORE_H
#define VANTREL_EMBEDDED_CORE_H

#include <cstdint>

// What the interface library needs of the core: the only functions that the core exports.

namespace vantrel::embedded {

class Session;

enum class LockBias : uint8_t { none, singleWait, singleNoWait, multipleWait, multipleNoWait };

// One engine call whose envelope has been checked.
struct Request {
    uint16_t operation;  // without lock bias, key-only reads under the code of the whole read
    LockBias lock;
    bool keyOnly;
    void *positionBlock;  // null or 128 bytes
    uint8_t *data;        // null or `offered` bytes
    uint32_t offered;
    uint32_t delivered;  // bytes of data returned
    uint8_t *key;        // null or `keyLength` bytes
    uint32_t keyLength;
    int32_t keyNumber;
    bool leavesNothing;  // returned: the session is as good as a new one
};

inline constexpr uint32_t positionBlockSize = 128;

}  // namespace vantrel::embedded

#pragma GCC visibility push(default)
extern "C" {

// For a client identifier of 16 bytes; null when memory runs out.
vantrel::embedded::Session *vantrelCoreOpenSession(const uint8_t *identifier);

// Never throws. Calls of one session are serialised.
int32_t vantrelCoreExecute(vantrel::embedded::Session *session, vantrel::embedded::Request *request);

// Ends all that the session holds and frees it; nobody may be using it.
void vantrelCoreCloseSession(vantrel::embedded::Session *session);

// Whether the session is as good as a new one, so that nothing is lost by closing it.
bool vantrelCoreSessionHoldsNothing(vantrel::embedded::Session *session);

// Ends all that the session holds; it goes on empty. A call that is under way in it is waited for, or else
// left alone with all that the session holds. The status of the first thing that could not be ended as it
// should.
int32_t vantrelCoreResetSession(vantrel::embedded::Session *session, bool waits);

// A process that forks calls these around the fork; in the child every session is lost afterwards.
void vantrelCorePrepareFork();
void vantrelCoreParentAfterFork();
void vantrelCoreChildAfterFork();
}
#pragma GCC visibility pop

#endif
