#include <sys/stat.h>

#include <cstring>

#include "embedded/operation/login_text.h"
#include "embedded/operation/operations.h"
#include "embedded/operation/path.h"
#include "embedded/operation/reply.h"
#include "engine/bytes.h"
#include "vantrel.h"

namespace vantrel::embedded {

namespace {

constexpr int32_t firstDrive = 1;
constexpr int32_t lastDrive = 26;
constexpr int32_t keyNumberLogin = 0;
constexpr int32_t keyNumberLogout = 1;

// Drives are of no meaning here.
void refuseDrive(int32_t keyNumber) {
    if (keyNumber >= firstDrive && keyNumber <= lastDrive)
        throw StatusError{VANTREL_STATUS_DIRECTORY_ERROR};
}

bool isDirectory(const std::string &path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

}  // namespace

int32_t setDirectory(Session &session, Request &request) {
    refuseDrive(request.keyNumber);
    std::string name = textInKey(request);
    std::string path;
    try {
        path = resolvePath(session, name);
    } catch (const StatusError &) {
        return VANTREL_STATUS_DIRECTORY_ERROR;
    }
    if (!isDirectory(path))
        return VANTREL_STATUS_DIRECTORY_ERROR;
    session.directory = path;
    return VANTREL_STATUS_NO_ERROR;
}

int32_t getDirectory(Session &session, Request &request) {
    refuseDrive(request.keyNumber);
    std::string directory = session.directory.empty() ? resolvePath(session, ".") : session.directory;
    if (request.keyLength <= directory.size())
        return VANTREL_STATUS_KEY_BUFFER_TOO_SHORT;
    memcpy(request.key, directory.c_str(), directory.size() + 1);
    return VANTREL_STATUS_NO_ERROR;
}

int32_t login(Session &session, Request &request) {
    LoginText text = parseLoginText(textInKey(request));
    if (!text.host.empty())
        return VANTREL_STATUS_OSTRAND_CANT_FIND_ENGINE;
    switch (request.keyNumber) {
        case keyNumberLogin:
            if (session.login.isActive)
                return VANTREL_STATUS_LOGIN_ALREADY_LOGGED_IN;
            session.login = {true, text.user, text.database};
            session.lockUser.setName(text.user);
            return VANTREL_STATUS_NO_ERROR;
        case keyNumberLogout:
            if (!session.login.isActive)
                return VANTREL_STATUS_LOGIN_LOGOUT_FAILED;
            session.login = {};
            session.lockUser.setName({});
            return VANTREL_STATUS_NO_ERROR;
        default:
            return VANTREL_STATUS_INVALID_KEY_OPTION;
    }
}

// Two entries of number, revision and type: the client's part and this engine; the third, of a server, is
// zero.
int32_t version(Session &session, Request &request) {
    constexpr uint16_t versionNumber = 16;
    constexpr uint32_t entrySize = 5, entries = 3;
    if (request.positionBlock != nullptr)
        session.position(request.positionBlock);
    dataBytes(request, entries * entrySize);
    memset(request.data, 0, entries * entrySize);
    storeU16(request.data, versionNumber);
    request.data[4] = 'N';
    storeU16(request.data + entrySize, versionNumber);
    request.data[entrySize + 4] = 'B';
    request.delivered = entries * entrySize;
    return VANTREL_STATUS_NO_ERROR;
}

int32_t resetSession(Session &session, Request &) {
    session.reset();
    return VANTREL_STATUS_NO_ERROR;
}

}  // namespace vantrel::embedded
