// Does the same work through the library and by SQL written by hand, on the package lists of this machine,
// and prints what an operation costs on each side.
//
// Usage: catalogue_sql [LISTS-DIRECTORY]
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <random>

#include "side.h"

extern "C" {
#include "catalogue/lists.h"
}

namespace vantrel::bench {

namespace {

constexpr size_t transactionSize = 5000;
constexpr size_t readCount = 100000;
constexpr int rounds = 5;

std::string directory;

bool addPackage(void *packages, const Entry *entry) {
    Package package;
    if (!parsePackage(&package.fields, entry))
        return false;
    package.text.assign(entry->text, entry->length);
    static_cast<Packages *>(packages)->push_back(std::move(package));
    return true;
}

Packages readPackages(const char *listDirectory) {
    Packages packages;
    Lists lists;
    if (!findLists(&lists, listDirectory) || !visitEntries(&lists, addPackage, &packages))
        giveUp("no packages to work on");
    freeLists(&lists);
    return packages;
}

std::vector<const PackageFields *> chooseNames(const Packages &packages) {
    std::mt19937 random(1);
    std::uniform_int_distribution<size_t> number(0, packages.size() - 1);
    std::vector<const PackageFields *> names;
    for (size_t i = 0; i < readCount; i++)
        names.push_back(&packages[number(random)].fields);
    return names;
}

// Microseconds that an operation took.
struct Cost {
    Delivery delivery;
    double perOperation;
};

Cost measure(const std::function<Delivery()> &work, size_t operations) {
    auto start = std::chrono::steady_clock::now();
    Delivery delivery = work();
    std::chrono::duration<double, std::micro> time = std::chrono::steady_clock::now() - start;
    return {delivery, time.count() / static_cast<double>(operations == 0 ? delivery.records : operations)};
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

using Work = std::function<Delivery(Side &)>;

// Both sides take turns. `operations` is 0 where each record delivered is one.
void compare(const char *name, Side &library, Side &sql, const Work &work, int times, size_t operations = 0) {
    std::vector<double> libraryCosts, sqlCosts;
    for (int i = 0; i < times; i++) {
        Cost ours = measure([&] { return work(library); }, operations);
        Cost theirs = measure([&] { return work(sql); }, operations);
        if (!(ours.delivery == theirs.delivery))
            giveUp(std::string(name) + ": the two sides delivered different records");
        libraryCosts.push_back(ours.perOperation);
        sqlCosts.push_back(theirs.perOperation);
    }
    double ours = median(libraryCosts), theirs = median(sqlCosts);
    printf("%-34s %12.2f %12.2f %8.2f\n", name, ours, theirs, ours / theirs);
    fflush(stdout);
}

void compareAll(const Packages &packages) {
    std::vector<const PackageFields *> names = chooseNames(packages);
    std::unique_ptr<Side> library = makeLibrarySide(directory + "/library");
    std::unique_ptr<Side> sql = makeSqlSide(directory + "/sql");
    printf("%zu packages, transactions of %zu, %zu reads by name, medians of %d rounds\n\n", packages.size(),
           transactionSize, readCount, rounds);
    printf("%-34s %12s %12s %8s\n", "us per operation", "library", "SQL", "ratio");
    compare(
        "load, with four indexes (1 round)", *library, *sql,
        [&](Side &side) { return side.load(packages, transactionSize); }, 1, packages.size());
    compare(
        "read by name and version", *library, *sql, [&](Side &side) { return side.readByName(names); },
        rounds);
    compare(
        "next by name and version", *library, *sql, [](Side &side) { return side.walkByName(); }, rounds);
    compare(
        "next in physical order", *library, *sql, [](Side &side) { return side.walkPhysically(); }, rounds);
}

}  // namespace

void giveUp(const std::string &reason) {
    fprintf(stderr, "catalogue_sql: %s\n", reason.c_str());
    if (!directory.empty())
        fprintf(stderr, "catalogue_sql: files are left in %s\n", directory.c_str());
    exit(EXIT_FAILURE);
}

}  // namespace vantrel::bench

int main(int count, char **arguments) {
    using namespace vantrel::bench;
    Packages packages = readPackages(count > 1 ? arguments[1] : "/var/lib/apt/lists");
    char name[] = "/tmp/catalogue-sql-XXXXXX";
    if (mkdtemp(name) == nullptr)
        giveUp("no temporary directory");
    directory = name;
    compareAll(packages);
    rmdir(name);
    return EXIT_SUCCESS;
}
