/* What the signals that end a session do: SIGINT, SIGTERM and SIGHUP wait
   for the command under way to end, SIGXFSZ removes the temporary file of a
   save under way before it ends the program. */
#ifndef quelmar_Signals_h
#define quelmar_Signals_h

namespace quelmar {

/**
@brief Catches SIGINT, SIGTERM and SIGHUP, and makes SIGXFSZ clean up

The first three are only noted, for takeSignal() to hand out between
commands, so that none of them ever stops a command halfway. SIGXFSZ removes
the temporary file of a write under way and then ends the program as it
would have. A signal that was ignored when the program started stays
ignored.
*/
void catchSignals();

/** The signal noted since the last call, or 0; SIGTERM and SIGHUP win over SIGINT */
int takeSignal();

/** Whether a signal is noted, without taking it */
bool isSignalPending();

/**
@brief Waits until @p fd has input or a signal is noted

Returns false when a signal is noted, before or while waiting, without
taking it. No signal can slip in between the check and the wait.
*/
bool waitForInput(int fd);

/** Ends the program by @p signal, as if it had not been caught */
[[noreturn]] void dieOf(int signal);

/** "SIGINT", "SIGTERM" or "SIGHUP" */
const char* signalName(int signal);

}

#endif
