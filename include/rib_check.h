/** @file
 * The checks that stand in front of the converters, which trust their counts. A check walks a message in network form (or
 * a saved image) once and answers whether everything else may be let loose on it: what a check accepts, the converter,
 * the size function, the field readers, the trace and the display of that message handle without touching a byte outside.
 */
#ifndef RIB_CHECK_H
#define RIB_CHECK_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Which rule a refused message breaks. */
enum rib_check_rule {
    RIB_CHECK_COUNT, /**< a field says more than is allowed: found and allowed are its value and the most it may be */
    RIB_CHECK_SHORT, /**< the bytes end before a field does: found and allowed are the field's end and the bytes' */
    RIB_CHECK_EXCESS /**< bytes remain: found and allowed are the bytes there are and those of the message */
};

/** Which field breaks which rule. A check fills it when it refuses, and leaves it alone when it accepts. */
struct rib_check_report {
    const char *message; /**< what was checked ("rib_fcurt"); static text */
    const char *field;   /**< the field that does not hold ("n_hop"); static text */
    uint32_t offset;     /**< where the field stands: bytes from the start of the message */
    uint32_t found;
    uint32_t allowed;
    enum rib_check_rule rule;
};

/**
 * Writes the report as one line without a newline: "rib_fcurt: n_hop at offset 28 is 9, at most 4 allowed".
 * @param str receives at most size bytes, the terminator included; untouched when size is 0
 * @return the length of the whole line, also when it was cut
 */
int rib_check_report_str(const struct rib_check_report *report, char *str, uint32_t size);

#ifdef __cplusplus
}
#endif

#endif
