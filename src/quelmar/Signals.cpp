/* What the signals that end the program do first: remove the temporary file
   of a save under way. */
#include "Signals.h"

#include <csignal>

#include "QuelmarEngine/host/AtomicFile.h"

namespace quelmar {

namespace {

void cleanUpAndDie(const int signal) {
    QuelmarEngine::removePendingTemporaryFiles();
    /* The handler was reset to the default on entry; the signal, blocked
       until the handler returns, then ends the program */
    std::raise(signal);
}

}

void cleanUpOnSignals() {
    for(const int signal: {SIGINT, SIGTERM, SIGHUP, SIGXFSZ}) {
        struct sigaction action{};
        /* nohup and "trap ''" ask for the signal to be ignored */
        if(::sigaction(signal, nullptr, &action) != 0 || action.sa_handler == SIG_IGN) continue;
        action = {};
        action.sa_handler = cleanUpAndDie;
        action.sa_flags = SA_RESETHAND;
        sigemptyset(&action.sa_mask);
        ::sigaction(signal, &action, nullptr);
    }
}

}
