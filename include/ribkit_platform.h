/** @file
 * What libribkit-platform offers a Linux host beyond the switch's own services (qip.h, yelk.h, if_index.h): opening a
 * handle on a transport, listening, the debug history as a ring, interface names.
 */
#ifndef RIBKIT_PLATFORM_H
#define RIBKIT_PLATFORM_H

#include "if_index.h"
#include "qip.h"
#include "yelk.h"
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Opens a service handle.
 * @param url the transport: "local:" joins the one bus of this process, "local:NAME" the bus of that name
 * @param handle filled with the new handle, which the caller closes with qip_close
 * @return 0; else non-zero with errno (EINVAL: malformed, EPROTONOSUPPORT: no such transport)
 */
int qip_open(const char *url, uint32_t *handle);

/** Closes a handle: its queues are dropped, every wait on it ends with ECANCELED. @return 0; else non-zero with errno
 */
int qip_close(uint32_t handle);

/**
 * Receives here what is sent to an address; a handle may listen at several. Messages are taken with qip_recv and null
 * options (or options whose word 0 is 0 and whose word 2 limits the wait in seconds).
 * @param bound messages that may wait here: beyond it a non-blocking send fails with EAGAIN and any other send waits
 * @return 0; else non-zero with errno (EADDRINUSE: taken)
 */
int qip_listen(uint32_t handle, const struct qip_addr *addr, uint32_t bound);

/** @return the opcode of a received message; 0 for an answer */
uint32_t qip_opcode_get(const struct qip_ref *ref);

/** @return references handed out by this process's transports and not yet dropped */
uint32_t qip_refs_held(void);

/** Parses an interface name ("fc1/1", "port-channel 3"). @return 0; non-zero where it names no interface */
int if_index_parse(const char *name, uint32_t *if_index);

#ifdef __cplusplus
}
#endif

#endif
