/** @file
 * Rows of the SNMP Fibre Channel route table: checking, repairing, defaults, conversion.
 */
#ifndef RIB_SNMP_H
#define RIB_SNMP_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** A row of the route table. Ten words, big-endian when it travels. */
struct fcRouteEntry {
    uint32_t vsan;        /**< 1 to 4095 */
    uint32_t if_index;    /**< outgoing interface */
    uint32_t protocol;    /**< text by rib_fcroute_proto_to_str */
    uint32_t destination; /**< FC ID, 24 bits */
    uint32_t mask;        /**< of the FC ID: 0xff0000, 0xffff00 or 0xffffff */
    uint32_t domain;      /**< of the next hop, 1 to 239 */
    uint32_t cost;
    uint32_t route_type; /**< text by rib_fcroute_type_to_str */
    uint32_t permanence; /**< text by rib_fcroute_perm_to_str */
    uint32_t word9;      /**< carried unchanged */
};

/** A row of flow statistics. Seventeen words, big-endian when it travels; words 1, 2 and 4 do not travel. */
struct fcRouteFlowStatEntry {
    uint32_t word[17];
};

/** Operations of fcRouteEntry_is_valid. */
#define FC_ROUTE_CHECK UINT32_C(1)        /**< VSAN, destination and mask belong to a possible row */
#define FC_ROUTE_REPAIR UINT32_C(2)       /**< VSAN 0, destination and mask are replaced by the nearest that fit */
#define FC_ROUTE_CHECK_STATIC UINT32_C(3) /**< a static route that a manager creates: protocol and domain too */

/**
 * Checks or repairs a row in host order.
 * @param operation FC_ROUTE_CHECK, FC_ROUTE_REPAIR (the row is changed in place, the result is always 1),
 *                  FC_ROUTE_CHECK_STATIC; any other value is 1 without a check
 * @return 1 where the row is valid, else 0
 */
uint32_t fcRouteEntry_is_valid(uint32_t operation, struct fcRouteEntry *entry);

/**
 * Classifies the destination of a row in host order.
 * @param route_class filled with 256 (0x010000 to 0xefffff), 16 (0xfffb00 to 0xfffbff, 0xffffff) or 0 (any other)
 */
void fcRouteEntry_route_type_get(const struct fcRouteEntry *entry, uint32_t *route_class);

/** Fills domain (1), cost (10), route type (direct) and permanence (perm); the other six words stay as they are. */
void fcRouteEntry_set_defaults(struct fcRouteEntry *entry);

/** Converts a row to network order; src and dst may be the same. */
void fcRouteEntry_hton(const struct fcRouteEntry *src, struct fcRouteEntry *dst);

/** Converts a row to host order; src and dst may be the same. */
void fcRouteEntry_ntoh(const struct fcRouteEntry *src, struct fcRouteEntry *dst);

/**
 * Converts statistics to network order; words 1, 2 and 4 of the destination keep what they held. The destination is the
 * first argument, here and nowhere else.
 */
void fcRouteFlowStatEntry_hton(struct fcRouteFlowStatEntry *dst, const struct fcRouteFlowStatEntry *src);

/** Converts statistics to host order; words 1, 2 and 4 of the destination keep what they held. */
void fcRouteFlowStatEntry_ntoh(const struct fcRouteFlowStatEntry *src, struct fcRouteFlowStatEntry *dst);

/** @return the SNMP route protocol of the routes that a client owns; 1 (other) for every client without one */
uint32_t fcRouteProto_from_uuid(uint32_t uuid);

#ifdef __cplusplus
}
#endif

#endif
