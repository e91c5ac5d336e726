#ifndef VANTREL_EMBEDDED_OPERATION_LOCK_OWNER_H
#define VANTREL_EMBEDDED_OPERATION_LOCK_OWNER_H

#include "embedded/key/definition.h"
#include "embedded/lock/lock_user.h"

namespace vantrel::embedded {

// Who held what a session was refused last, as the statistics tell it; zero where nothing was refused.
Bytes lockOwnerReply(const std::optional<Refusal> &refusal);

}  // namespace vantrel::embedded

#endif
