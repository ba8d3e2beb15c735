// How long a whole update is, its records included.
#include "codec/size.h"

#include "codec/messages/route.h"
#include "rib_codec.h"

using namespace ribkit;
using namespace ribkit::codec;

template <const layout &Update> static uint32_t size_of(const void *message) {
    return static_cast<uint32_t>(wire_size<Update>(static_cast<const uint8_t *>(message)));
}

uint32_t rib_sizeof_fclrt_update(const void *msg) { return size_of<wire::fclrt_update>(msg); }
uint32_t rib_sizeof_fcmrt_update(const void *msg) { return size_of<wire::fcmrt_update>(msg); }
uint32_t rib_sizeof_fcurt_update(const void *msg) { return size_of<wire::fcurt_update>(msg); }
