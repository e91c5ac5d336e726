#ifndef VANTREL_TESTS_EMBEDDED_SOAK_ACCOUNTS_H
#define VANTREL_TESTS_EMBEDDED_SOAK_ACCOUNTS_H

#include <vantrel.h>

#include <cstdint>
#include <string>

namespace vantrel::test {

inline constexpr uint32_t accountsPerFile = 64;
inline constexpr int64_t initialBalance = 1000;

struct Account {
    uint32_t number = 0;
    int64_t balance = 0;
    uint32_t changes = 0;
};

// Makes a file of accounts numbered from 0, each with the initial balance.
VantrelStatus createAccounts(const std::string &path);

// A file of accounts as one client has it open.
class Accounts {
  public:
    Accounts(VantrelClient *client, const std::string &path, VantrelOpenMode mode = VANTREL_OPEN_MODE_NORMAL);
    ~Accounts();
    Accounts(const Accounts &) = delete;
    Accounts &operator=(const Accounts &) = delete;

    // The status of the opening.
    VantrelStatus status() const { return status_; }

    VantrelStatus read(uint32_t number, VantrelLockMode lock, Account *account);
    VantrelStatus readNext(Account *account);
    // Replaces the account read last.
    VantrelStatus write(const Account &account);
    VantrelStatus insert(const Account &account);
    VantrelStatus erase();
    void unlock();
    // The sum of all balances, in one request and so in one state of the file.
    VantrelStatus total(int64_t *sum);

  private:
    VantrelClient *client_;
    VantrelFile *file_ = nullptr;
    VantrelStatus status_;
};

}  // namespace vantrel::test

#endif
