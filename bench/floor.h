#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/* The system calls of one log line; the log's folder and both files must be there. */
void FloorLogLine(const char* line);

/* The fixed waits of a sale whose GP takes and answers within each first poll. */
void FloorSale(void);

#ifdef __cplusplus
}
#endif
