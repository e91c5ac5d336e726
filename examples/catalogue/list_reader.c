#include "list_reader.h"

#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include "interrupt.h"
#include "report.h"

extern char **environ;

static char helperPath[] = "/usr/lib/apt/apt-helper";

/* Starts the helper with its output on a descriptor; returns 0 or an error number. */
static int startHelper(pid_t *helper, const char *path, int output) {
    char command[] = "cat-file";
    char *arguments[] = {helperPath, command, (char *)path, NULL};
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    sigset_t defaults;
    sigemptyset(&defaults);
    sigaddset(&defaults, SIGPIPE);
    sigaddset(&defaults, SIGXFSZ);
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setsigdefault(&attributes, &defaults);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
    int error = posix_spawn(helper, helperPath, &actions, &attributes, arguments, environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return error;
}

bool openList(ListReader *reader, const char *path) {
    int ends[2];
    if (pipe(ends) != 0) {
        complain("%s: %s", path, strerror(errno));
        return false;
    }
    fcntl(ends[0], F_SETFD, FD_CLOEXEC);
    fcntl(ends[1], F_SETFD, FD_CLOEXEC);
    int error = startHelper(&reader->helper, path, ends[1]);
    close(ends[1]);
    if (error != 0) {
        complain("%s: %s: %s", path, helperPath, strerror(error));
        close(ends[0]);
        return false;
    }
    reader->path = path;
    reader->lines = fdopen(ends[0], "r");
    if (reader->lines != NULL)
        return true;
    complain("%s: no memory", path);
    close(ends[0]);
    kill(reader->helper, SIGTERM);
    waitpid(reader->helper, NULL, 0);
    return false;
}

bool closeList(ListReader *reader, bool wasReadWhole) {
    int status = 0;
    fclose(reader->lines);
    if (!wasReadWhole)
        kill(reader->helper, SIGTERM);
    while (waitpid(reader->helper, &status, 0) < 0 && errno == EINTR)
        continue;
    if (!wasReadWhole || wasInterrupted())
        return false;
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0)
        return true;
    complain("%s: %s could not unpack it", reader->path, helperPath);
    return false;
}
