#ifndef VANTREL_EMBEDDED_OPERATION_PATH_H
#define VANTREL_EMBEDDED_OPERATION_PATH_H

#include <string>

#include "embedded/operation/session.h"

namespace vantrel::embedded {

// The path a name stands for: relative names are resolved against the session's directory, and symbolic
// links are followed, so that one file has one path. An empty or too long name is thrown as status 11, a
// missing directory as 12.
std::string resolvePath(const Session &session, const std::string &name);

bool pathExists(const std::string &path);

// Whatever is missing, or no file, is thrown as its status; and what the process has no right to, as 94.
void requireFile(const std::string &path);
void requireAccess(const std::string &path, int rights);

}  // namespace vantrel::embedded

#endif
