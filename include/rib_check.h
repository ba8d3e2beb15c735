/** @file
 * What a check says about bytes that must not be opened. The checks themselves stand beside what they check.
 */
#ifndef RIB_CHECK_H
#define RIB_CHECK_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Which field breaks which rule. A check fills it when it refuses, and leaves it alone when it accepts. */
struct rib_check_report {
    const char *message; /**< what was checked ("bud image"); static text */
    const char *field;   /**< the field that does not hold ("free count"); static text */
    uint32_t offset;     /**< where the field stands: bytes from the start of the message */
    uint32_t found;      /**< what the field says, or needs */
    uint32_t allowed;    /**< the most that it may be */
};

/**
 * Writes the report as one line without a newline: "bud image: free count at offset 12 is 9, at most 4 allowed".
 * @param str receives at most size bytes, the terminator included; untouched when size is 0
 * @return the length of the whole line, also when it was cut
 */
int rib_check_report_str(const struct rib_check_report *report, char *str, uint32_t size);

#ifdef __cplusplus
}
#endif

#endif
