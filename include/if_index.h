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

/**
 * Writes the interface's printable name, at most 127 characters with the newline that it may end in: the rows of
 * displays and traces have no more room for it. @return the printed count
 */
int sprintf_if_index(char *str, uint32_t if_index);

#ifdef __cplusplus
}
#endif

#endif
