// The peer that everybody writes: field by field, with ntohl, compiled at -O2 for a plain processor.
#pragma once

#include <cstdint>

namespace ribkit::bench::loop {

/// Converts one unicast route record; returns its size.
uint32_t hton_fcurt(const void *src, void *dst);
uint32_t ntoh_fcurt(const void *src, void *dst);

/// Converts one label route record with its interface entries; returns its size.
uint32_t hton_fclrt(const void *src, void *dst);
uint32_t ntoh_fclrt(const void *src, void *dst);

void hton_fcu_path(const void *src, void *dst);
void ntoh_fcu_path(const void *src, void *dst);

void hton_rsp(const void *src, void *dst);

/// Bytes of a unicast update in network form.
uint32_t sizeof_fcurt_update(const void *msg);

} // namespace ribkit::bench::loop
