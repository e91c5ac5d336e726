#ifndef CATALOGUE_PACKAGE_H
#define CATALOGUE_PACKAGE_H

#include <assert.h>
#include <stdbool.h>
#include <stdint.h>

#include "lists.h"

/* The fixed part of a record: texts end with a zero byte, numbers are little-endian. The entry's whole text
 * follows it as the variable part. */
typedef struct {
    char name[100];
    char version[64];
    char section[40];
    char maintainer[128];
    uint8_t installedSize[4]; /* in KiB */
    uint8_t packedSize[4];    /* in bytes */
} PackageFields;

static_assert(sizeof(PackageFields) == 340, "the fields lie without gaps");

enum {
    LONGEST_RECORD = 65535, /* that is inserted or read at once */
    LONGEST_FIRST_TEXT = LONGEST_RECORD - sizeof(PackageFields)
};

/* A record of at most the longest length. */
typedef struct {
    PackageFields fields;
    char text[LONGEST_FIRST_TEXT];
} PackageRecord;

static_assert(sizeof(PackageRecord) == LONGEST_RECORD, "the text follows the fields");

/* The key of the index on name and version. */
typedef struct {
    char name[sizeof(((PackageFields *)NULL)->name)];
    char version[sizeof(((PackageFields *)NULL)->version)];
} NameKey;

NameKey nameKey(const char *name, const char *version);

/* Takes the fields out of an entry's text. Complains of a damaged entry and returns false. */
bool parsePackage(PackageFields *fields, const Entry *entry);

void storeNumber(uint8_t *bytes, uint32_t number);
uint32_t loadNumber(const uint8_t *bytes);

/* Fills a field of the given size with a text that fits it and zero bytes behind. */
void storeText(char *field, size_t size, const char *text);

#endif
