// The conversions of the management rows. Their types stay incomplete here: only bytes matter.
#include "codec/witness/exported.h"

extern "C" {
void fcRouteEntry_hton(const struct fcRouteEntry *src, struct fcRouteEntry *dst);
void fcRouteEntry_ntoh(const struct fcRouteEntry *src, struct fcRouteEntry *dst);
void fcRouteFlowStatEntry_hton(struct fcRouteFlowStatEntry *dst, const struct fcRouteFlowStatEntry *src);
void fcRouteFlowStatEntry_ntoh(const struct fcRouteFlowStatEntry *src, struct fcRouteFlowStatEntry *dst);
}

namespace ribkit::witness {

namespace {

using route = struct fcRouteEntry;
using flow = struct fcRouteFlowStatEntry;

template <typename row, void (*convert)(const row *, row *)> uint32_t call(const void *src, void *dst) {
    convert(static_cast<const row *>(src), static_cast<row *>(dst));
    return 0;
}

uint32_t flow_sent(const void *src, void *dst) {
    fcRouteFlowStatEntry_hton(static_cast<flow *>(dst), static_cast<const flow *>(src));
    return 0;
}

constexpr exported_pair all_rows[] = {
    {"fcRouteEntry", call<route, fcRouteEntry_hton>, call<route, fcRouteEntry_ntoh>},
    {"fcRouteFlowStatEntry", flow_sent, call<flow, fcRouteFlowStatEntry_ntoh>},
};

} // namespace

std::span<const exported_pair> exported_rows() { return all_rows; }

} // namespace ribkit::witness
