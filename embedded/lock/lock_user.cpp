#include "embedded/lock/lock_user.h"

#include <unistd.h>

#include <chrono>

namespace vantrel::embedded {

uint64_t millisecondsNow() {
    using namespace std::chrono;
    return static_cast<uint64_t>(duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count());
}

LockUser::LockUser(const ClientIdentifier &identifier) {
    description_.identifier = identifier;
    description_.process = static_cast<uint32_t>(getpid());
}

void LockUser::beginTransaction(bool neverWaits) {
    description_.transactionStart = millisecondsNow();
    description_.transactionNeverWaits = neverWaits;
    ++revision_;
}

void LockUser::endTransaction() {
    description_.transactionStart = 0;
    description_.transactionNeverWaits = false;
    ++revision_;
}

void LockUser::setName(const std::string &name) {
    description_.name.fill('\0');
    name.copy(description_.name.data(), description_.name.size() - 1);
    ++revision_;
}

}  // namespace vantrel::embedded
