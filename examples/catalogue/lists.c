#include "lists.h"

#include <dirent.h>
#include <errno.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/types.h>

#include "interrupt.h"
#include "list_reader.h"
#include "report.h"

/* No entry is as long as this; what is longer is no list. */
enum { LONGEST_ENTRY = 16 * 1024 * 1024 };

static bool endsWith(const char *text, const char *end) {
    size_t length = strlen(text), endLength = strlen(end);
    return length >= endLength && strcmp(text + length - endLength, end) == 0;
}

static int isList(const struct dirent *file) {
    static const char *const ends[] = {"_Packages",     "_Packages.gz",   "_Packages.xz", "_Packages.bz2",
                                       "_Packages.lz4", "_Packages.lzma", "_Packages.zst"};
    for (size_t i = 0; i < sizeof ends / sizeof *ends; i++)
        if (endsWith(file->d_name, ends[i]))
            return 1;
    return 0;
}

static char *joinPath(const char *directory, const char *name) {
    size_t size = strlen(directory) + strlen(name) + 2;
    char *path = malloc(size);
    if (path != NULL)
        snprintf(path, size, "%s/%s", directory, name);
    return path;
}

static bool takeNames(Lists *lists, const char *directory, struct dirent **files, size_t count) {
    lists->paths = calloc(count + 1, sizeof *lists->paths);
    bool complete = lists->paths != NULL;
    for (size_t i = 0; i < count; i++) {
        if (complete) {
            lists->paths[i] = joinPath(directory, files[i]->d_name);
            complete = lists->paths[i] != NULL;
            lists->count += complete;
        }
        free(files[i]);
    }
    free(files);
    if (!complete)
        complain("no memory");
    return complete;
}

bool findLists(Lists *lists, const char *directory) {
    *lists = (Lists){NULL, 0};
    char *absolute = realpath(directory, NULL);
    struct dirent **files = NULL;
    int count = absolute == NULL ? -1 : scandir(absolute, &files, isList, alphasort);
    if (count < 0)
        complain("%s: %s", directory, strerror(errno));
    else if (takeNames(lists, absolute, files, (size_t)count) && count == 0)
        complain("%s: no package lists there; \"apt-get update\" fetches them", directory);
    free(absolute);
    return lists->count > 0 && lists->count == (size_t)count;
}

void freeLists(Lists *lists) {
    for (size_t i = 0; i < lists->count; i++)
        free(lists->paths[i]);
    free(lists->paths);
    *lists = (Lists){NULL, 0};
}

/* The entry that is being put together from lines. */
typedef struct {
    Entry entry;
    char *text;
    size_t room;
} Builder;

static bool addLine(Builder *builder, const char *line, size_t length) {
    Entry *entry = &builder->entry;
    size_t needed = entry->length + length;
    if (needed > LONGEST_ENTRY) {
        complain("%s: entry %zu (line %zu) does not end", entry->path, entry->number, entry->line);
        return false;
    }
    if (needed > builder->room) {
        char *text = realloc(builder->text, needed * 2);
        if (text == NULL) {
            complain("%s: no memory for entry %zu", entry->path, entry->number);
            return false;
        }
        builder->text = text;
        builder->room = needed * 2;
    }
    memcpy(builder->text + entry->length, line, length);
    entry->length = needed;
    return true;
}

/* Ends the entry, if there is one, and makes ready for the one that begins on the given line. */
static bool finishEntry(Builder *builder, size_t nextLine, EntryVisitor *visit, void *context) {
    Entry *entry = &builder->entry;
    bool goesOn = true;
    if (entry->length > 0) {
        entry->text = builder->text;
        goesOn = visit(context, entry);
        entry->number++;
    }
    entry->length = 0;
    entry->line = nextLine;
    return goesOn;
}

static bool visitLines(FILE *lines, const char *path, EntryVisitor *visit, void *context) {
    Builder builder = {.entry = {.path = path, .number = 1, .line = 1}};
    char *line = NULL;
    size_t room = 0;
    ssize_t length;
    bool goesOn = true;
    for (size_t number = 1; goesOn && (length = getline(&line, &room, lines)) > 0; number++) {
        if (length == 1 && line[0] == '\n')
            goesOn = finishEntry(&builder, number + 1, visit, context);
        else
            goesOn = addLine(&builder, line, (size_t)length);
        goesOn = goesOn && !wasInterrupted();
    }
    if (goesOn && ferror(lines)) {
        if (!wasInterrupted())
            complain("%s: %s", path, strerror(errno));
        goesOn = false;
    }
    goesOn = goesOn && finishEntry(&builder, 0, visit, context);
    free(line);
    free(builder.text);
    return goesOn;
}

bool visitEntries(const Lists *lists, EntryVisitor *visit, void *context) {
    for (size_t i = 0; i < lists->count; i++) {
        ListReader reader;
        if (!openList(&reader, lists->paths[i]))
            return false;
        bool visited = visitLines(reader.lines, lists->paths[i], visit, context);
        if (!closeList(&reader, visited))
            return false;
    }
    return true;
}
