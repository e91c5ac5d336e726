#ifndef VANTREL_EMBEDDED_STATUS_ERROR_H
#define VANTREL_EMBEDDED_STATUS_ERROR_H

#include <cstdint>

namespace vantrel::embedded {

// Thrown where a request cannot be served; the entry point returns the status.
struct StatusError {
    int32_t status;
};

inline void require(bool condition, int32_t status) {
    if (!condition)
        throw StatusError{status};
}

}  // namespace vantrel::embedded

#endif
