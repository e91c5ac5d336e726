#ifndef VANTREL_EMBEDDED_SYSTEM_ERROR_H
#define VANTREL_EMBEDDED_SYSTEM_ERROR_H

#include <cerrno>

#include "embedded/status_error.h"
#include "vantrel.h"

namespace vantrel::embedded {

// The status of a failed system call on a file.
inline int32_t statusOfErrno(int error) {
    switch (error) {
        case ENOENT:
        case ENOTDIR:
            return VANTREL_STATUS_FILE_NOT_FOUND;
        case EACCES:
        case EPERM:
        case EROFS:
            return VANTREL_STATUS_PERMISSION_ERROR;
        case ENAMETOOLONG:
        case ELOOP:
            return VANTREL_STATUS_FILE_NAME_BAD;
        case ENOSPC:
        case EDQUOT:
        case EFBIG:
            return VANTREL_STATUS_DISK_FULL;
        case ENOMEM:
            return VANTREL_STATUS_NO_OPERATING_SYSTEM_MEMORY_AVAILABLE;
        case ENOLCK:
            return VANTREL_STATUS_NO_SYSTEM_LOCKS_AVAILABLE;
        case EMFILE:
        case ENFILE:
            return VANTREL_STATUS_NO_HANDLES_AVAILABLE;
        default:
            return VANTREL_STATUS_INPUT_OUTPUT_ERROR;
    }
}

[[noreturn]] inline void throwSystemError(int error) {
    throw StatusError{statusOfErrno(error)};
}

}  // namespace vantrel::embedded

#endif
