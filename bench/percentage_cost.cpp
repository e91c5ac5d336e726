// Measures percentages on a file of many records with two indexes: what the first request costs, what the
// others cost, and what the counts behind them add to an insert.
//
// Usage: percentage_cost [RECORDS]
#include <stdlib.h>

#include <cstddef>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <functional>
#include <random>
#include <string>

#include "vantrel.h"

namespace {

constexpr uint32_t transactionSize = 10000;
constexpr uint32_t requestCount = 20000;
constexpr VantrelIndex byNumber = 0, byGroup = 1;
constexpr uint32_t groupCount = 1000;

struct Record {
    uint64_t number;
    uint32_t group;
    char text[138];
};

void require(bool isTrue, const char *what) {
    if (isTrue)
        return;
    fprintf(stderr, "%s failed\n", what);
    exit(1);
}

// Of processor time.
double secondsOf(const std::function<void()> &work) {
    clock_t start = clock();
    work();
    return static_cast<double>(clock() - start) / CLOCKS_PER_SEC;
}

VantrelIndexAttributes *makeIndex(VantrelIndex number, uint32_t offset, uint32_t length) {
    VantrelKeySegment *segment = nullptr;
    VantrelIndexAttributes *index = nullptr;
    require(VantrelKeySegmentAllocate(&segment) == 0 && VantrelIndexAttributesAllocate(&index) == 0,
            "memory");
    VantrelKeySegmentSetField(segment, static_cast<int32_t>(offset), static_cast<int32_t>(length),
                              VANTREL_DATA_TYPE_UNSIGNED_BINARY);
    VantrelIndexAttributesAddKeySegment(index, segment);
    VantrelKeySegmentFree(segment);
    VantrelIndexAttributesSetIndex(index, number);
    VantrelIndexAttributesSetDuplicateMode(index, VANTREL_DUPLICATE_MODE_ALLOWED_NONREPEATING);
    return index;
}

class Measurement {
  public:
    explicit Measurement(const std::string &path) { open(path); }
    ~Measurement() {
        VantrelClientFileClose(client_, file_);
        VantrelClientFree(client_);
    }

    void run(uint32_t count) {
        constexpr VantrelIndex orders[] = {VANTREL_INDEX_NONE, byNumber, byGroup};
        constexpr const char *names[] = {"physical order", "index, unique keys", "index, duplicates"};
        uint32_t part = count / 10;
        insert(count - part);
        report("insert, nothing counted", "in transactions", part, [&] { insert(part); });
        report("insert, nothing counted", "alone", requestCount, [&] { insertAlone(requestCount); });
        for (size_t order = 0; order < std::size(orders); ++order) {
            report("first request", names[order], 1, [&] { read(orders[order], 1); });
            report("record at a percentage", names[order], requestCount,
                   [&] { read(orders[order], requestCount); });
            report("the same, then its percentage", names[order], requestCount,
                   [&] { readAndTell(orders[order], requestCount); });
        }
        report("insert, three orders counted", "in transactions", part, [&] { insert(part); });
        report("insert, three orders counted", "alone", requestCount, [&] { insertAlone(requestCount); });
    }

  private:
    void open(const std::string &path);
    void insert(uint32_t count);
    void insertAlone(uint32_t count);
    void insertRecord();
    void read(VantrelIndex index, uint32_t count);
    void readAndTell(VantrelIndex index, uint32_t count);
    static void report(const char *what, const char *order, uint32_t count,
                       const std::function<void()> &work) {
        printf("%-30s %-20s %12.1f us\n", what, order, secondsOf(work) * 1e6 / count);
        fflush(stdout);
    }

    VantrelClient *client_ = nullptr;
    VantrelFile *file_ = nullptr;
    std::mt19937_64 random_{1};
};

void Measurement::open(const std::string &path) {
    VantrelFileAttributes *attributes = nullptr;
    require(VantrelClientAllocate(&client_, 1, 1) == 0, "client");
    require(VantrelFileAttributesAllocate(&attributes) == 0, "memory");
    VantrelFileAttributesSetFixedRecordLength(attributes, sizeof(Record));
    VantrelIndexAttributes *number = makeIndex(byNumber, offsetof(Record, number), sizeof(uint64_t));
    VantrelIndexAttributes *group = makeIndex(byGroup, offsetof(Record, group), sizeof(uint32_t));
    require(VantrelClientFileCreate(client_, attributes, number, path.c_str(),
                                    VANTREL_CREATE_MODE_NO_OVERWRITE, VANTREL_LOCATION_MODE_DEFAULT) == 0,
            "create");
    require(VantrelClientFileOpen(client_, &file_, path.c_str(), nullptr, VANTREL_OPEN_MODE_NORMAL,
                                  VANTREL_OPEN_VARIANT_DEFAULT) == 0,
            "open");
    require(VantrelFileIndexCreate(file_, group) == 0, "create index");
    VantrelIndexAttributesFree(number);
    VantrelIndexAttributesFree(group);
    VantrelFileAttributesFree(attributes);
}

void Measurement::insert(uint32_t count) {
    for (uint32_t inserted = 0; inserted < count; ++inserted) {
        if (inserted % transactionSize == 0)
            require(VantrelClientTransactionBegin(client_, VANTREL_TRANSACTION_MODE_CONCURRENT,
                                                  VANTREL_LOCK_MODE_NONE) == 0,
                    "begin");
        insertRecord();
        if (inserted % transactionSize == transactionSize - 1 || inserted + 1 == count)
            require(VantrelClientTransactionEnd(client_) == 0, "end");
    }
}

void Measurement::insertAlone(uint32_t count) {
    while (count-- > 0)
        insertRecord();
}

void Measurement::insertRecord() {
    Record record{random_(), static_cast<uint32_t>(random_() % groupCount), "text"};
    require(VantrelFileRecordCreate(file_, &record, sizeof record) == 0, "insert");
}

void Measurement::read(VantrelIndex index, uint32_t count) {
    Record record;
    for (uint32_t request = 0; request < count; ++request)
        require(VantrelFileRecordRetrieveByPercentage(file_, index, static_cast<uint32_t>(random_() % 10001),
                                                      nullptr, 0, &record, sizeof record,
                                                      VANTREL_LOCK_MODE_NONE) > 0,
                "read");
}

void Measurement::readAndTell(VantrelIndex index, uint32_t count) {
    for (uint32_t request = 0; request < count; ++request) {
        read(index, 1);
        VantrelCursorPosition position = VantrelFileGetCursorPosition(file_);
        require(VantrelFileGetPercentage(file_, index, nullptr, 0, position) >= 0, "tell");
    }
}

}  // namespace

int main(int argc, char **argv) {
    uint32_t count = argc > 1 ? static_cast<uint32_t>(strtoul(argv[1], nullptr, 10)) : 1'000'000;
    std::string pattern = (std::filesystem::temp_directory_path() / "vantrel-XXXXXX").string();
    require(count >= 10 && mkdtemp(pattern.data()) != nullptr, "directory");
    Measurement(pattern + "/percentages").run(count);
    std::filesystem::remove_all(pattern);
    return 0;
}
