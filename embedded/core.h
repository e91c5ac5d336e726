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
};

inline constexpr uint32_t positionBlockSize = 128;

}  // namespace vantrel::embedded

#pragma GCC visibility push(default)
extern "C" {

// Null when memory runs out.
vantrel::embedded::Session *vantrelCoreOpenSession();

// Never throws. Calls of one session are serialised.
int32_t vantrelCoreExecute(vantrel::embedded::Session *session, vantrel::embedded::Request *request);

// Ends all that the session holds and frees it; nobody may be using it.
void vantrelCoreCloseSession(vantrel::embedded::Session *session);

// Ends all that the session holds; it goes on empty.
void vantrelCoreResetSession(vantrel::embedded::Session *session);

// A process that forks calls these around the fork; in the child every session is lost afterwards.
void vantrelCorePrepareFork();
void vantrelCoreParentAfterFork();
void vantrelCoreChildAfterFork();
}
#pragma GCC visibility pop

#endif
