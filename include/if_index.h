/** @file
 * The platform's interface-index service: what an interface index is, and its name; provided by the platform.
 */
#ifndef IF_INDEX_H
#define IF_INDEX_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Stores the one-byte type code of an interface index; codes up to 80 are known kinds.
 * @return 0; non-zero where the index has no type, with *type above 80
 */
int if_index_get_type(uint32_t if_index, uint8_t *type);

/** Writes the interface's printable name; the text may end in a newline. @return the printed count */
int sprintf_if_index(char *str, uint32_t if_index);

#ifdef __cplusplus
}
#endif

#endif
