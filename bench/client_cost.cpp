// Measures what the client library adds to a call of the engine: its functions in front of an engine that
// does nothing, less the bare calls.
//
// Usage: client_cost                       nanoseconds of every family, the best of several rounds
//        client_cost FAMILY REPETITIONS    runs one family for an instruction counter and prints how many
//                                          engine calls a repetition makes
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "null_engine.h"
#include "vantrel.h"

namespace vantrel::bench {

namespace {

constexpr uint64_t repetitionsOfRound = 200000;
constexpr int rounds = 40;
constexpr int filterCount = 4;
constexpr int fieldCount = 8;
constexpr int32_t keyLength = 16;
constexpr int32_t recordLength = 100;
constexpr int32_t chunkLength = 1024;

void require(VantrelStatus status) {
    if (status == VANTREL_STATUS_NO_ERROR)
        return;
    fprintf(stderr, "client_cost: status %d\n", status);
    exit(1);
}

struct Subject {
    VantrelClient *client;
    VantrelFile *file;
    VantrelBulkRetrieveAttributes *attributes;
    VantrelBulkRetrieveResult *result;
    VantrelFileInformation *information;
    char key[keyLength] = "a key";
    char record[chunkLength] = "a record";
    uint32_t offered = recordLength;
};

void addFilters(VantrelBulkRetrieveAttributes *attributes) {
    VantrelFilter *filter;
    require(VantrelFilterAllocate(&filter));
    for (int number = 1; number <= filterCount; ++number) {
        require(VantrelFilterSetField(filter, 8, 4, VANTREL_DATA_TYPE_UNSIGNED_BINARY));
        require(VantrelFilterSetComparison(filter, VANTREL_COMPARISON_GREATER));
        require(VantrelFilterSetComparisonConstant(filter, "\1\0\0\0", 4));
        require(VantrelFilterSetConnector(
            filter, number == filterCount ? VANTREL_CONNECTOR_LAST : VANTREL_CONNECTOR_AND));
        require(VantrelBulkRetrieveAttributesAddFilter(attributes, filter));
    }
    require(VantrelFilterFree(filter));
}

// Lives as long as the program.
Subject makeSubject() {
    Subject subject;
    require(VantrelClientAllocate(&subject.client, 1, 1));
    require(VantrelClientFileOpen(subject.client, &subject.file, "file", nullptr, VANTREL_OPEN_MODE_NORMAL,
                                  VANTREL_OPEN_VARIANT_DEFAULT));
    require(VantrelBulkRetrieveResultAllocate(&subject.result));
    require(VantrelFileInformationAllocate(&subject.information));
    require(VantrelBulkRetrieveAttributesAllocate(&subject.attributes));
    addFilters(subject.attributes);
    for (uint32_t field = 0; field < fieldCount; ++field)
        require(VantrelBulkRetrieveAttributesAddField(subject.attributes, 8 * field, 8));
    // The moves follow the index that was used last.
    VantrelFileRecordRetrieveFirst(subject.file, 0, subject.key, keyLength, subject.record, recordLength,
                                   VANTREL_LOCK_MODE_NONE);
    require(VantrelFileGetLastStatusCode(subject.file));
    return subject;
}

template <auto call>
void repeat(Subject &subject, uint64_t repetitions) {
    for (uint64_t i = 0; i < repetitions; ++i)
        call(subject);
}

struct Family {
    const char *name;
    int engineCalls;
    void (*repeat)(Subject &subject, uint64_t repetitions);
};

constexpr Family families[] = {
    {"bare", 1,
     repeat<[](Subject &s) { VNTLEXID(5, s.file, s.record, &s.offered, s.key, keyLength, 0, s.client); }>},
    {"retrieve-next", 1, repeat<[](Subject &s) {
         VantrelFileRecordRetrieveNext(s.file, s.key, keyLength, s.record, recordLength,
                                       VANTREL_LOCK_MODE_NONE);
     }>},
    {"retrieve-by-key", 1, repeat<[](Subject &s) {
         VantrelFileRecordRetrieve(s.file, VANTREL_COMPARISON_EQUAL, 0, s.key, keyLength, s.record,
                                   recordLength, VANTREL_LOCK_MODE_NONE);
     }>},
    {"create", 1, repeat<[](Subject &s) { VantrelFileRecordCreate(s.file, s.record, recordLength); }>},
    {"bulk-retrieve", 1, repeat<[](Subject &s) {
         VantrelFileBulkRetrieveNext(s.file, s.attributes, s.result, VANTREL_LOCK_MODE_NONE);
     }>},
    {"update-chunk", 1,
     repeat<[](Subject &s) { VantrelFileRecordUpdateChunk(s.file, 0, s.record, chunkLength); }>},
    {"retrieve-chunk", 2, repeat<[](Subject &s) {
         VantrelFileRecordRetrieveChunk(s.file, 0, chunkLength, s.record, chunkLength,
                                        VANTREL_LOCK_MODE_NONE);
     }>},
    {"information-getter", 0,
     repeat<[](Subject &s) { VantrelFileInformationGetRecordCount(s.information); }>},
};

const Family *findFamily(const char *name) {
    for (const Family &family : families) {
        if (strcmp(family.name, name) == 0)
            return &family;
    }
    return nullptr;
}

double nanosecondsOfRound(const Family &family, Subject &subject) {
    auto start = std::chrono::steady_clock::now();
    family.repeat(subject, repetitionsOfRound);
    std::chrono::duration<double, std::nano> duration = std::chrono::steady_clock::now() - start;
    return duration.count() / double{repetitionsOfRound};
}

// The families take turns, so that a disturbance of the machine does not hit one of them alone.
void printNanoseconds(Subject &subject) {
    constexpr size_t familyCount = sizeof families / sizeof families[0];
    double best[familyCount];
    for (double &nanoseconds : best)
        nanoseconds = std::numeric_limits<double>::max();
    for (int round = 0; round < rounds; ++round) {
        for (size_t i = 0; i < familyCount; ++i)
            best[i] = std::min(best[i], nanosecondsOfRound(families[i], subject));
    }
    printf("%-20s %14s %10s\n", "family", "engine calls", "added ns");
    printf("%-20s %14d %10.1f (the call itself)\n", families[0].name, families[0].engineCalls, best[0]);
    for (size_t i = 1; i < familyCount; ++i)
        printf("%-20s %14d %10.1f\n", families[i].name, families[i].engineCalls,
               best[i] - families[i].engineCalls * best[0]);
}

int runOneFamily(const char *name, const char *repetitions, Subject &subject) {
    const Family *family = findFamily(name);
    char *end;
    uint64_t count = strtoull(repetitions, &end, 10);
    if (family == nullptr || *end != '\0' || count == 0) {
        fprintf(stderr, "client_cost: no family %s, or no count %s\n", name, repetitions);
        return 2;
    }
    family->repeat(subject, count);
    printf("%d\n", family->engineCalls);
    return 0;
}

}  // namespace

}  // namespace vantrel::bench

int main(int argc, char **argv) {
    using namespace vantrel::bench;
    if (argc != 1 && argc != 3) {
        fprintf(stderr, "usage: client_cost [FAMILY REPETITIONS]\n");
        return 2;
    }
    static Subject subject = makeSubject();
    if (argc == 3)
        return runOneFamily(argv[1], argv[2], subject);
    printNanoseconds(subject);
    return 0;
}
