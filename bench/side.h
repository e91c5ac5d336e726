#ifndef VANTREL_BENCH_SIDE_H
#define VANTREL_BENCH_SIDE_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

extern "C" {
#include "catalogue/package.h"
}

namespace vantrel::bench {

struct Package {
    PackageFields fields;
    std::string text;
};
using Packages = std::vector<Package>;

// What a piece of work delivered: two sides that did the same work agree.
struct Delivery {
    size_t records = 0;
    uint64_t bytes = 0;

    void add(size_t length) {
        records++;
        bytes += length;
    }
    bool operator==(const Delivery &) const = default;
};

// One way to keep the packages. Failures end the program.
class Side {
  public:
    virtual ~Side() = default;

    // Inserts the packages in transactions of the given size, leaving out those whose name and version are
    // there already, then adds the indexes on section, installed size and maintainer.
    virtual Delivery load(const Packages &packages, size_t transactionSize) = 0;
    // Reads records by name and version.
    virtual Delivery readByName(const std::vector<const PackageFields *> &names) = 0;
    // Reads all records in the order of name and version.
    virtual Delivery walkByName() = 0;
    // Reads all records in physical order.
    virtual Delivery walkPhysically() = 0;
};

std::unique_ptr<Side> makeLibrarySide(const std::string &path);
std::unique_ptr<Side> makeSqlSide(const std::string &path);

// Says why there is nothing to measure, and ends the program.
[[noreturn]] void giveUp(const std::string &reason);

}  // namespace vantrel::bench

#endif
