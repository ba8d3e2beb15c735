/** @file
 * Data that the library initialises for its users and never reads itself.
 */
#ifndef RIB_TUNABLES_H
#define RIB_TUNABLES_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Options of the line cards in dynamic multicast: 1, 1, 0. */
extern uint32_t rib_dyn_mcast_lc_opt[3];

/** Node of the line cards in dynamic multicast: 0xff000401. */
extern uint32_t rib_dyn_mcast_lc_node;

#ifdef __cplusplus
}
#endif

#endif
