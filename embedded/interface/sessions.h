#ifndef VANTREL_EMBEDDED_INTERFACE_SESSIONS_H
#define VANTREL_EMBEDDED_INTERFACE_SESSIONS_H

#include <memory>

#include "embedded/core.h"

namespace vantrel::embedded {

// The session of a client identifier block of 16 bytes, which comes into being here. The handle keeps it
// alive while a call uses it.
std::shared_ptr<Session> findSession(const void *clientIdentifier);

// Frees a session that holds nothing, unless another call is using it.
void forgetIfUnused(const std::shared_ptr<Session> &session, const void *clientIdentifier);

// Ends all that the sessions of this process hold. The status of the first thing that could not be ended as
// it should.
int32_t resetAllSessions();

}  // namespace vantrel::embedded

#endif
