// Exported data: initialised here, read and changed by others only.
#include "rib_tunables.h"

uint32_t rib_dyn_mcast_lc_opt[3] = {1, 1, 0};
uint32_t rib_dyn_mcast_lc_node = 0xff000401;
