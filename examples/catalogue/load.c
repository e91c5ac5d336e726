#include "load.h"

#include <stdio.h>

#include "interrupt.h"
#include "report.h"

enum { TRANSACTION_SIZE = 5000, PROGRESS_STEP = 500 };

static bool countEntry(void *context, const Entry *entry) {
    Contents *contents = context;
    PackageFields fields;
    contents->entries++;
    contents->bytes += entry->length;
    return parsePackage(&fields, entry);
}

bool checkLists(const Lists *lists, Contents *contents) {
    *contents = (Contents){0, 0};
    double start = now();
    if (!visitEntries(lists, countEntry, contents))
        return false;
    if (contents->entries == 0) {
        complain("%s: the package lists are empty", lists->paths[0]);
        return false;
    }
    printf("Read %zu package lists, %zu bytes of text\n", lists->count, contents->bytes);
    printTime(start, contents->entries, "entries");
    return true;
}

typedef struct {
    Store *store;
    size_t total, done, refused;
} Load;

static bool loadEntry(void *context, const Entry *entry) {
    Load *load = context;
    PackageFields fields;
    if (!parsePackage(&fields, entry))
        return false;
    if (load->done % TRANSACTION_SIZE == 0 && !beginTransaction(load->store))
        return false;
    VantrelStatus status = insertPackage(load->store, &fields, entry->text, entry->length);
    if (status == VANTREL_STATUS_DUPLICATE_KEY_VALUE)
        load->refused++;
    else if (status != VANTREL_STATUS_NO_ERROR)
        return complainOfStatus(load->store->path, status, "cannot insert %s into", fields.name);
    load->done++;
    if (load->done % PROGRESS_STEP == 0)
        showProgress(load->done, load->total);
    return load->done % TRANSACTION_SIZE != 0 || endTransaction(load->store);
}

bool loadLists(Store *store, const Lists *lists, const Contents *contents) {
    Load load = {.store = store, .total = contents->entries};
    double start = now();
    if (!visitEntries(lists, loadEntry, &load))
        return false;
    if (load.done % TRANSACTION_SIZE != 0 && !endTransaction(store))
        return false;
    showProgress(load.done, load.done);
    printf(
        "\nLoaded in transactions of %d; %zu entries are in two lists and were refused by the unique index\n",
        TRANSACTION_SIZE, load.refused);
    printTime(start, load.done - load.refused, "packages");

    start = now();
    if (!addIndexes(store))
        return false;
    printf("\nAdded the indexes on section, installed size and maintainer\n");
    printTime(start, INDEX_COUNT - 1, "indexes");
    return !wasInterrupted();
}
