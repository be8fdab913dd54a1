/* The exported interface of the engine, C only. Functions come in families; each returns a 32-bit status:
   0 for success, otherwise the number of the failure's message, unless its comment says otherwise. */
#ifndef ORVANE_H
#define ORVANE_H

#include <stdint.h>

#if defined(__GNUC__)
#define ORV_API __attribute__((visibility("default")))
#else
#define ORV_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef int32_t ORV_Int32;

/* Receives each logged line: severity 0 inform, 1 warn, 2 error, 3 fatal, 4 statistics, 5 progress. The text
   belongs to the engine and is valid during the call only. */
typedef void (*ORV_LogCallback)(ORV_Int32 severity, const char* text);
/* Receives the message of the failure that ended a run. Same lifetime. */
typedef void (*ORV_ErrorCallback)(const char* text);

/* ---- Translation ---- */

/* Runs one command line as the program would: a mapping file with its pairs, PARAMETER_FILE, COMMAND_FILE,
   VERSION, HOME or REDIRECT_STDOUT. argv[0] is the program's name. showBanner other than 0 writes banner,
   usage and verdict to the console. Either callback may be null. Not re-entrant.
   Returns 0 when the run ended without failure, -1 otherwise. */
ORV_API ORV_Int32 ORV_Translate(ORV_Int32 argc, const char* const* argv, ORV_Int32 showBanner,
                                ORV_LogCallback logCallback, ORV_ErrorCallback errorCallback);

#ifdef __cplusplus
}
#endif

#endif
