#include "interrupt.h"

#include <signal.h>
#include <stddef.h>

static volatile sig_atomic_t interrupted;

static void note(int signal) {
    (void)signal;
    interrupted = 1;
}

void noteInterrupts(void) {
    /* Without SA_RESTART a read that waits ends too. */
    struct sigaction action = {.sa_handler = note};
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, NULL);
    sigaction(SIGTERM, &action, NULL);
    sigaction(SIGHUP, &action, NULL);
    action.sa_handler = SIG_IGN;
    sigaction(SIGPIPE, &action, NULL);
    sigaction(SIGXFSZ, &action, NULL);
}

bool wasInterrupted(void) {
    return interrupted != 0;
}
