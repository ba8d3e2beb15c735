/** @file
 * The platform's debug-history facility and debug print, as the core library uses them; provided by the platform.
 */
#ifndef YELK_H
#define YELK_H

#include "qip.h"
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define YELK_QIP_RECEIVED UINT32_C(3)
#define YELK_QIP_SENT UINT32_C(4)

/** Records a history event for a message. @param kind YELK_QIP_SENT or YELK_QIP_RECEIVED @param ref may be null */
void yelk_hist_qip_event(uint32_t kind, const struct qip_ref *ref, uint32_t, uint32_t);

/** @return 0 when events of this id and subtype are to be recorded */
int yelk_hist_event_subtype_check(uint32_t event_id, uint32_t subtype);

/** Records an event of length bytes; the record's first word is its subtype in host order, text may follow. */
void yelk_hist_event(uint32_t event_id, uint32_t length, const void *record);

/** @return non-zero when debug output of this level is enabled */
int yelk_chk_int(uint32_t level, uint32_t, uint32_t, uint32_t);

/** The module's name, passed back to yapout. */
extern const char yelk_dbg_modname[];

/** Prints a debug line. */
int yapout(uint32_t, const char *modname, uint32_t, const char *format, ...);

#ifdef __cplusplus
}
#endif

#endif
