#ifndef CATALOGUE_LISTS_H
#define CATALOGUE_LISTS_H

#include <stdbool.h>
#include <stddef.h>

/* The package lists that apt keeps, in the order of their names. */
typedef struct {
    char **paths;
    size_t count;
} Lists;

/* One entry of a list: the lines of text that describe one package. */
typedef struct {
    const char *path;
    size_t number; /* in its list, from 1 */
    size_t line;   /* where it begins, from 1 */
    const char *text;
    size_t length;
} Entry;

/* Finds the lists in a directory. Complains and returns false when there are none. */
bool findLists(Lists *lists, const char *directory);
void freeLists(Lists *lists);

/* Hands every entry of every list to the visitor, whatever a list is compressed with, until the visitor
 * returns false. Returns whether all were visited; complains of what it cannot read. */
typedef bool EntryVisitor(void *context, const Entry *entry);
bool visitEntries(const Lists *lists, EntryVisitor *visit, void *context);

#endif
