#ifndef VANTREL_CLIENT_REQUEST_H
#define VANTREL_CLIENT_REQUEST_H

#include "engine/call.h"

namespace vantrel {

// A request of a client; texts go to the engine with their terminators, null ones not at all.
struct ClientRequest {
    uint32_t operation;
    VantrelFile *file = nullptr;
    const char *dataText = nullptr;
    const char *keyText = nullptr;
    int32_t keyNumber = 0;
};

// Keeps the engine's status in the client and returns it; a missing client is refused.
VantrelStatus sendRequest(VantrelClient *client, const ClientRequest &request);

// Refuses a file that is not open and one that another client has opened. The status is not kept.
VantrelStatus checkOwner(const VantrelClient *client, const VantrelFile *file);

}  // namespace vantrel

#endif
