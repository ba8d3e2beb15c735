/** @file
 * Numbers to text. A converter writes into the caller's buffer, keeps no state and never fails.
 */
#ifndef RIB_TEXT_H
#define RIB_TEXT_H

#include <stdint.h>
#include <time.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Writes the time within the minute, "SSS:mmm:uuu" (seconds, milliseconds, microseconds). 12 bytes. @return 11 */
int rib_time_str(char *str);

/** Writes the local wall-clock time, "HH:MM:SS". 9 bytes. Uses the C library's shared calendar. @return 8 */
int rib_time_stamp_str(char *str);

/** Writes the calendar text of *t without its newline. 26 bytes. Uses the C library's shared calendar. */
void rib_time_to_str(const time_t *t, char *str);

/** Writes the interface's name, "null intf" for 0, or "%08xh??" for an index of no known kind. */
void rib_if_index_to_str(uint32_t if_index, char *str);

/**
 * Cuts or blank-pads str in place to exactly len characters, at most 40. str holds len + 1 bytes (at most 41). A len
 * below 0 is not guarded against: the terminator is written before the buffer.
 */
void rib_str_len_set(char *str, int len);

#ifdef __cplusplus
}
#endif

#endif
