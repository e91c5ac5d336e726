#include "worker.h"

#include <unistd.h>

#include <cstdio>

namespace vantrel::test {

namespace {

// Of two processes that wait for each other, neither is told: the waits end after half a minute. So few wait.
constexpr uint32_t oneInWaits = 200;

// What somebody else's work may bring about.
bool isConflict(VantrelStatus status) {
    return status == VANTREL_STATUS_CONFLICT || status == VANTREL_STATUS_RECORD_IN_USE ||
           status == VANTREL_STATUS_FILE_IN_USE;
}

}  // namespace

Worker::Worker(const std::string (&paths)[fileCount], uint64_t seed, Work &work)
    : random_(seed), work_(work), ownNumber_(accountsPerFile + static_cast<uint32_t>(getpid())) {
    VantrelClientAllocate(&client_, 0, 0);
    for (size_t file = 0; file < fileCount; ++file) {
        files_[file] = new Accounts(client_, paths[file]);
        if (files_[file]->status() != VANTREL_STATUS_NO_ERROR)
            complain("open", files_[file]->status());
    }
}

Worker::~Worker() {
    for (Accounts *file : files_)
        delete file;
    VantrelClientReset(client_);
    VantrelClientFree(client_);
}

void Worker::run() {
    while (!work_.isOver && work_.failures == 0)
        step();
}

void Worker::step() {
    uint32_t choice = random(100);
    if (choice < 60)
        transfer();
    else if (choice < 75)
        checkTotal();
    else if (choice < 90)
        updateAlone();
    else if (choice < 97)
        scan();
    else
        insertAndErase();
}

VantrelLockMode Worker::anyLock() {
    bool waits = random(oneInWaits) == 0;
    switch (random(3)) {
        case 0:
            return VANTREL_LOCK_MODE_NONE;
        case 1:
            return waits ? VANTREL_LOCK_MODE_SINGLE_WAIT : VANTREL_LOCK_MODE_SINGLE_NO_WAIT;
        default:
            return waits ? VANTREL_LOCK_MODE_MULTIPLE_WAIT : VANTREL_LOCK_MODE_MULTIPLE_NO_WAIT;
    }
}

void Worker::complain(const char *what, int64_t value) {
    fprintf(stderr, "process %d: %s: %lld\n", static_cast<int>(getpid()), what,
            static_cast<long long>(value));
    ++work_.failures;
}

void Worker::count(const char *what, VantrelStatus status, std::atomic<uint64_t> &done) {
    if (status == VANTREL_STATUS_NO_ERROR)
        ++done;
    else if (status == VANTREL_STATUS_DEAD_LOCK)
        ++work_.deadlocks;
    else if (isConflict(status))
        ++work_.conflicts;
    else
        complain(what, status);
}

void Worker::transfer() {
    VantrelStatus status =
        VantrelClientTransactionBegin(client_, static_cast<VantrelTransactionMode>(random(3)), anyLock());
    if (status != VANTREL_STATUS_NO_ERROR)
        return complain("begin", status);
    status = move(anyLock());
    bool isAbandoned = status != VANTREL_STATUS_NO_ERROR || random(10) == 0;
    VantrelStatus ended =
        isAbandoned ? VantrelClientTransactionAbort(client_) : VantrelClientTransactionEnd(client_);
    if (ended != VANTREL_STATUS_NO_ERROR)
        complain(isAbandoned ? "abort" : "end", ended);
    count("transfer", status, isAbandoned ? work_.abandoned : work_.transfers);
}

VantrelStatus Worker::move(VantrelLockMode lock) {
    // Always in the order of the files, so that no two transactions wait for each other's.
    uint32_t first = random(fileCount), second = first + random(fileCount - first);
    Accounts &from = *files_[first], &to = *files_[second];
    uint32_t source = random(accountsPerFile), target = random(accountsPerFile);
    int64_t amount = static_cast<int64_t>(random(200)) - 100;
    Account account;
    VantrelStatus status = from.read(source, lock, &account);
    if (status != VANTREL_STATUS_NO_ERROR)
        return status;
    account.balance -= amount;
    status = from.write(account);
    if (status != VANTREL_STATUS_NO_ERROR)
        return status;
    status = to.read(target, lock, &account);
    if (status != VANTREL_STATUS_NO_ERROR)
        return status;
    account.balance += amount;
    return to.write(account);
}

VantrelStatus Worker::sumUp(int64_t *sum) {
    *sum = 0;
    for (Accounts *file : files_) {
        int64_t total;
        VantrelStatus status = file->total(&total);
        if (status != VANTREL_STATUS_NO_ERROR)
            return status;
        *sum += total;
    }
    return VANTREL_STATUS_NO_ERROR;
}

// An exclusive transaction holds both files, so that no other one's end lies between the two sums.
void Worker::checkTotal() {
    int64_t sum;
    VantrelStatus begun =
        VantrelClientTransactionBegin(client_, VANTREL_TRANSACTION_MODE_EXCLUSIVE, VANTREL_LOCK_MODE_NONE);
    if (begun != VANTREL_STATUS_NO_ERROR)
        return complain("begin", begun);
    VantrelStatus status = sumUp(&sum);
    VantrelStatus ended = VantrelClientTransactionEnd(client_);
    if (ended != VANTREL_STATUS_NO_ERROR)
        complain("end", ended);
    if (status == VANTREL_STATUS_NO_ERROR && sum != grandTotal)
        complain("the total is", sum);
    count("check", status, work_.checks);
}

void Worker::updateAlone() {
    Accounts &file = anyFile();
    Account account;
    VantrelStatus status = file.read(random(accountsPerFile), anyLock(), &account);
    if (status == VANTREL_STATUS_NO_ERROR) {
        ++account.changes;
        status = file.write(account);
    }
    count("update", status, work_.updates);
    // The next read may take the other kind of lock.
    file.unlock();
}

void Worker::scan() {
    Accounts &file = anyFile();
    Account account;
    uint32_t seen = 1;
    VantrelStatus status = file.read(0, VANTREL_LOCK_MODE_NONE, &account);
    for (uint32_t before = 0; status == VANTREL_STATUS_NO_ERROR; before = account.number) {
        status = file.readNext(&account);
        if (status != VANTREL_STATUS_NO_ERROR)
            break;
        if (account.number <= before)
            complain("out of order", account.number);
        seen += account.number < accountsPerFile;
    }
    if (seen != accountsPerFile)
        complain("accounts seen", seen);
    count("scan", status == VANTREL_STATUS_END_OF_FILE ? VANTREL_STATUS_NO_ERROR : status, work_.scans);
}

void Worker::insertAndErase() {
    Accounts &file = anyFile();
    VantrelStatus status = file.insert({ownNumber_, 0, 0});
    // The process that had the number before was killed before it could erase its account.
    if (status == VANTREL_STATUS_DUPLICATE_KEY_VALUE) {
        Account account;
        status = file.read(ownNumber_, VANTREL_LOCK_MODE_NONE, &account);
    }
    if (status == VANTREL_STATUS_NO_ERROR)
        status = file.erase();
    count("insertion", status, work_.insertions);
}

}  // namespace vantrel::test
