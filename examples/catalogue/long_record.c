#include <stdio.h>
#include <string.h>

#include "interrupt.h"
#include "questions.h"
#include "reading.h"
#include "report.h"

enum { LONG = 1 << 20, MIDDLE = LONG / 2, PIECE = 1000 };

/* The length of the current record, found by reading it in chunks; -1 after a complaint. */
static int64_t readLength(Store *store, VantrelFile *file) {
    static char chunk[65536];
    int64_t length = 0;
    int32_t got = 0;
    do {
        got = VantrelFileRecordRetrieveChunk(file, length == 0 ? 0 : -1, sizeof chunk, chunk, sizeof chunk,
                                             VANTREL_LOCK_MODE_NONE);
        VantrelStatus status = VantrelFileGetLastStatusCode(file);
        if (status != VANTREL_STATUS_NO_ERROR) {
            complainOfStatus(store->path, status, "cannot read a chunk of");
            return -1;
        }
        length += got;
    } while (got == (int32_t)sizeof chunk);
    return length;
}

static bool showLength(Store *store, VantrelFile *file, const char *when) {
    int64_t length = readLength(store, file);
    if (length >= 0)
        printf("  %-24s %lld bytes\n", when, (long long)length);
    return length >= 0;
}

static bool check(Store *store, VantrelStatus status) {
    return status == VANTREL_STATUS_NO_ERROR ||
           complainOfStatus(store->path, status, "cannot change a chunk in");
}

/* Appends the texts of all packages of a section, again and again, until the record is long. One handle
 * keeps the long record current while the other reads. */
static bool appendTexts(Store *store, VantrelFile *file, const char *section) {
    for (int64_t length = 0; length < LONG;) {
        bool found = readSection(store, section);
        if (!found)
            return readingWorks();
        for (; found && strcmp(lastRecord.fields.section, section) == 0 && length < LONG;
             found = readNext(store)) {
            int32_t textLength = lastLength - (int32_t)sizeof lastRecord.fields;
            if (!check(store, VantrelFileRecordAppendChunk(file, lastRecord.text, textLength)))
                return false;
            length += textLength;
        }
        if (!readingWorks() || wasInterrupted())
            return false;
    }
    return true;
}

static bool showMiddle(Store *store, VantrelFile *file, const char *when) {
    char piece[41] = "";
    if (VantrelFileRecordRetrieveChunk(file, MIDDLE, sizeof piece - 1, piece, sizeof piece - 1,
                                       VANTREL_LOCK_MODE_NONE) < 0)
        return complainOfStatus(store->path, VantrelFileGetLastStatusCode(file), "cannot read a chunk of");
    for (char *byte = piece; *byte != 0; byte++)
        if (*byte < ' ')
            *byte = ' ';
    printf("  %-24s %s\n", when, piece);
    return true;
}

static bool changeChunks(Store *store, VantrelFile *file) {
    static const char text[] = "[ a chunk overwritten in the middle ]";
    static char piece[PIECE];
    memset(piece, '.', sizeof piece);
    return showMiddle(store, file, "in its middle") &&
           check(store, VantrelFileRecordUpdateChunk(file, MIDDLE, text, sizeof text - 1)) &&
           showMiddle(store, file, "overwritten") &&
           check(store, VantrelFileRecordInsertChunk(file, MIDDLE, piece, PIECE)) &&
           showLength(store, file, "after an insert") &&
           check(store, VantrelFileRecordDeleteChunk(file, MIDDLE, 2 * PIECE)) &&
           showLength(store, file, "after a delete") &&
           check(store, VantrelFileRecordTruncate(file, sizeof(PackageFields))) &&
           showLength(store, file, "after a truncation");
}

static bool makeLongRecord(Store *store, VantrelFile *file, const char *section) {
    PackageFields fields = {.name = "long-demonstration", .version = "1"};
    double start = now();
    printf("\nA record takes the texts of section %s in chunks, and is changed in its middle\n", section);
    if (!check(store, VantrelFileRecordCreate(file, &fields, sizeof fields)))
        return false;
    bool works = appendTexts(store, file, section) && showLength(store, file, "after the appends");
    if (works && readLength(store, file) > LONG)
        works = changeChunks(store, file);
    if (!check(store, VantrelFileRecordDelete(file)) || !works)
        return false;
    printTime(start, 1, "records");
    return true;
}

bool showLongRecord(Store *store) {
    VantrelFile *file;
    VantrelStatus status = VantrelClientFileOpen(store->client, &file, store->path, NULL,
                                                 VANTREL_OPEN_MODE_NORMAL, VANTREL_OPEN_VARIANT_DEFAULT);
    if (status != VANTREL_STATUS_NO_ERROR)
        return complainOfStatus(store->path, status, "cannot open");
    bool works = makeLongRecord(store, file, "editors");
    VantrelClientFileClose(store->client, file);
    return works && !wasInterrupted();
}
