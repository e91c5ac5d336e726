/* Loads the catalogue of packages that apt keeps on every Debian machine into a keyed file, asks the file
 * questions and changes it. */
#include <errno.h>
#include <getopt.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "interrupt.h"
#include "lists.h"
#include "load.h"
#include "questions.h"
#include "report.h"
#include "store.h"

enum { EXIT_USAGE = 2, EXIT_INTERRUPTED = 130 };

typedef struct {
    const char *lists;
    const char *file; /* null for one in a temporary directory */
    bool isKept;
} Options;

static const char usage[] =
    "Usage: catalogue [OPTION]...\n"
    "Load the package lists of this machine into a keyed file, then ask the file questions and change it.\n"
    "\n"
    "  --lists DIR   the directory with the lists (default /var/lib/apt/lists)\n"
    "  --file PATH   make this file and keep it (default: one in a temporary directory, deleted in the end)\n"
    "  --keep        keep the file in the temporary directory too\n"
    "  --help        print this text\n";

/* Returns -1 to go on, else the exit status. */
static int parseOptions(Options *options, int count, char **arguments) {
    static const struct option known[] = {{"lists", required_argument, NULL, 'l'},
                                          {"file", required_argument, NULL, 'f'},
                                          {"keep", no_argument, NULL, 'k'},
                                          {"help", no_argument, NULL, 'h'},
                                          {NULL, 0, NULL, 0}};
    *options = (Options){.lists = "/var/lib/apt/lists"};
    int option;
    while ((option = getopt_long(count, arguments, "", known, NULL)) != -1) {
        switch (option) {
            case 'l':
                options->lists = optarg;
                break;
            case 'f':
                options->file = optarg;
                options->isKept = true;
                break;
            case 'k':
                options->isKept = true;
                break;
            case 'h':
                fputs(usage, stdout);
                return EXIT_SUCCESS;
            default:
                fputs(usage, stderr);
                return EXIT_USAGE;
        }
    }
    if (optind == count)
        return -1;
    fprintf(stderr, "catalogue: unexpected argument %s\n%s", arguments[optind], usage);
    return EXIT_USAGE;
}

/* Makes a directory for the file and returns the file's path in it, to be freed. */
static char *makeTemporaryPath(void) {
    static const char directory[] = "/catalogue-XXXXXX", file[] = "/catalogue.vnt";
    const char *parent = getenv("TMPDIR");
    if (parent == NULL || parent[0] == 0)
        parent = "/tmp";
    size_t size = strlen(parent) + sizeof directory + sizeof file;
    char *path = malloc(size);
    if (path == NULL) {
        complain("no memory");
        return NULL;
    }
    snprintf(path, size, "%s%s", parent, directory);
    if (mkdtemp(path) == NULL) {
        complain("%s: %s", path, strerror(errno));
        free(path);
        return NULL;
    }
    strcat(path, file);
    return path;
}

static void removeDirectoryOf(char *path) {
    *strrchr(path, '/') = 0;
    if (rmdir(path) != 0)
        complain("%s: %s", path, strerror(errno));
}

static bool outputWorks(void) {
    if (fflush(stdout) == 0 && !ferror(stdout))
        return true;
    complain("cannot write the answers: %s", strerror(errno));
    return false;
}

static bool work(Store *store, const Lists *lists, const Contents *contents, const char *path) {
    return createStore(store, path) && loadLists(store, lists, contents) && outputWorks() &&
           askQuestions(store) && outputWorks() && askForPlaces(store) && outputWorks() &&
           showChanges(store) && outputWorks() && showBulk(store) && outputWorks() && showLongRecord(store) &&
           outputWorks() && showStatistics(store) && outputWorks();
}

static bool demonstrate(const Options *options, const Lists *lists) {
    Contents contents;
    Store store;
    if (!checkLists(lists, &contents))
        return false;
    char *temporary = options->file == NULL ? makeTemporaryPath() : NULL;
    const char *path = options->file == NULL ? temporary : options->file;
    if (path == NULL)
        return false;
    bool worked = work(&store, lists, &contents, path);
    bool isKept = worked && options->isKept;
    endStore(&store, isKept);
    if (isKept)
        printf("\nThe file is kept: %s\n", path);
    else if (temporary != NULL)
        removeDirectoryOf(temporary);
    free(temporary);
    return worked;
}

int main(int count, char **arguments) {
    Options options;
    int status = parseOptions(&options, count, arguments);
    if (status >= 0)
        return status;
    noteInterrupts();
    Lists lists;
    bool worked = findLists(&lists, options.lists) && demonstrate(&options, &lists);
    freeLists(&lists);
    if (wasInterrupted()) {
        complain("interrupted");
        return EXIT_INTERRUPTED;
    }
    return worked ? EXIT_SUCCESS : EXIT_FAILURE;
}
