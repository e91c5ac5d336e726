#ifndef CATALOGUE_LIST_READER_H
#define CATALOGUE_LIST_READER_H

#include <stdbool.h>
#include <stdio.h>
#include <sys/types.h>

/* A list that apt's helper program unpacks while it is read. */
typedef struct {
    const char *path;
    FILE *lines;
    pid_t helper;
} ListReader;

/* Both complain when they return false. */
bool openList(ListReader *reader, const char *path);

/* Ends the reading; one that has not read everything ends the helper. Returns whether the whole list was
 * read and the helper could unpack it. */
bool closeList(ListReader *reader, bool wasReadWhole);

#endif
