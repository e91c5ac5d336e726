#include <stdio.h>

#include "interrupt.h"
#include "questions.h"
#include "reading.h"
#include "report.h"

enum { WHOLE = 10000 }; /* hundredths of a percent */

/* The packages at the quarters of the order by size, found without passing those between. */
static bool showQuarters(Store *store) {
    Table table = {.count = 0};
    double start = now();
    for (uint32_t place = 0; place <= WHOLE; place += WHOLE / 4) {
        if (!readAtPlace(store, BY_INSTALLED_SIZE, place))
            return readingWorks();
        addRow(&table);
    }
    double seconds = now() - start;
    printf("\nThe packages at the quarters of the order by installed size\n");
    printTable(&table);
    printSeconds(seconds, table.count, "reads");
    return true;
}

/* How far into the order of names a package stands, and what stands there. */
static bool showPlaceOf(Store *store, const char *name) {
    double start = now();
    if (!readFromName(store, name))
        return readingWorks();
    PackageFields fields = lastRecord.fields;
    NameKey key = nameKey(fields.name, fields.version);
    VantrelCursorPosition position = VantrelFileGetCursorPosition(store->file);
    int32_t place = VantrelFileGetPercentage(store->file, BY_NAME, &key, sizeof key, position);
    int32_t millionths =
        place < 0 ? -1 : VantrelFileGetNumerator(store->file, BY_NAME, &key, sizeof key, position, 1000000);
    if (millionths < 0)
        return complainOfFile(store, "cannot tell a place in");
    if (!readAtPlace(store, BY_NAME, (uint32_t)place))
        return readingWorks();
    double seconds = now() - start;
    printf("\nThe place of %s in the order of names\n", fields.name);
    printf("  %d.%02d percent, or %d in a million; at that percentage stands %s\n", place / 100, place % 100,
           millionths, lastRecord.fields.name);
    printSeconds(seconds, 2, "places");
    return true;
}

bool askForPlaces(Store *store) {
    return showQuarters(store) && showPlaceOf(store, "bash") && !wasInterrupted();
}
