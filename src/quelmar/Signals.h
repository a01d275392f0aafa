/* What the signals that end the program do first: remove the temporary file
   of a save under way. */
#ifndef quelmar_Signals_h
#define quelmar_Signals_h

namespace quelmar {

/**
@brief Makes SIGINT, SIGTERM, SIGHUP and SIGXFSZ clean up before they end the program

The handler removes the temporary file of a write under way and then lets the
signal end the program as it would have. A signal that was ignored when the
program started stays ignored.
*/
void cleanUpOnSignals();

}

#endif
