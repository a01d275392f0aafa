/* What the signals that end a session do: SIGINT, SIGTERM and SIGHUP wait
   for the command under way to end, SIGXFSZ removes the temporary file of a
   save under way before it ends the program. */
#include "Signals.h"

#include <cerrno>
#include <csignal>
#include <poll.h>
#include <unistd.h>

#include "QuelmarEngine/host/AtomicFile.h"

namespace quelmar {

namespace {

volatile std::sig_atomic_t pendingSignal = 0;

void note(const int signal) {
    /* An interrupt never hides a request to end */
    if(signal != SIGINT || !pendingSignal) pendingSignal = signal;
}

void cleanUpAndDie(const int signal) {
    QuelmarEngine::removePendingTemporaryFiles();
    /* The handler was reset to the default on entry; the signal, blocked
       until the handler returns, then ends the program */
    std::raise(signal);
}

void install(const int signal, void(*const handler)(int), const int flags) {
    struct sigaction action{};
    /* nohup and "trap ''" ask for the signal to be ignored */
    if(::sigaction(signal, nullptr, &action) != 0 || action.sa_handler == SIG_IGN) return;
    action = {};
    action.sa_handler = handler;
    action.sa_flags = flags;
    sigemptyset(&action.sa_mask);
    ::sigaction(signal, &action, nullptr);
}

sigset_t caughtSignals() {
    sigset_t set;
    sigemptyset(&set);
    for(const int signal: {SIGINT, SIGTERM, SIGHUP}) sigaddset(&set, signal);
    return set;
}

}

void catchSignals() {
    /* Restarted calls, so that a signal never fails a write or a read of
       a command under way; only the wait for input sees it */
    for(const int signal: {SIGINT, SIGTERM, SIGHUP}) install(signal, note, SA_RESTART);
    install(SIGXFSZ, cleanUpAndDie, SA_RESETHAND);
}

int takeSignal() {
    const int signal = pendingSignal;
    pendingSignal = 0;
    return signal;
}

bool isSignalPending() {
    return pendingSignal != 0;
}

bool waitForInput(const int fd) {
    const sigset_t caught = caughtSignals();
    sigset_t previous;
    ::sigprocmask(SIG_BLOCK, &caught, &previous);
    int ready = 0;
    while(!pendingSignal) {
        pollfd input{fd, POLLIN, 0};
        /* Unblocked only for the wait, so that a signal either came before
           the check above or ends the wait */
        ready = ::ppoll(&input, 1, nullptr, &previous);
        if(ready > 0 || (ready < 0 && errno != EINTR)) break;
    }
    /* A signal that came along with the input is handled only once it is
       unblocked again, and goes first */
    ::sigprocmask(SIG_SETMASK, &previous, nullptr);
    return !pendingSignal;
}

void dieOf(const int signal) {
    QuelmarEngine::removePendingTemporaryFiles();
    std::signal(signal, SIG_DFL);
    const sigset_t caught = caughtSignals();
    ::sigprocmask(SIG_UNBLOCK, &caught, nullptr);
    std::raise(signal);
    ::_exit(128 + signal);
}

const char* signalName(const int signal) {
    return signal == SIGINT ? "SIGINT" : signal == SIGTERM ? "SIGTERM" : signal == SIGHUP ? "SIGHUP" : "a signal";
}

}
