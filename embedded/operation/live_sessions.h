#ifndef VANTREL_EMBEDDED_OPERATION_LIVE_SESSIONS_H
#define VANTREL_EMBEDDED_OPERATION_LIVE_SESSIONS_H

#include "embedded/operation/session.h"

// The sessions of this process, for what is done to all of them: housekeeping, and a fork.

namespace vantrel::embedded {

// False when memory runs out.
bool addLiveSession(Session *session);
void removeLiveSession(Session *session);

// One background thread syncs logs and lets idle snapshots go. It exists while files are open: it starts
// with the first and ends by itself after the last.
void startHousekeeping();

// Does what the background thread could not do while the session was busy.
void housekeepIfDue(Session &session);

// In a forked child: lets go of what the parent had open, before the first call.
void abandonInheritedSessions();

}  // namespace vantrel::embedded

#endif
