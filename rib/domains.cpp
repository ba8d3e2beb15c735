// The routes of a VSAN are walked; a domain is the first byte of an FC ID.
#include "rib/domains.h"

#include "rib_mem.h"

namespace ribkit::rib {

namespace {

constexpr uint32_t last_byte = sizeof(model::domain_reach::bitmap) - 1;

bool is_of_one_domain(const model::destination &to) {
    return (to.mask & RIB_MASK_DOMAIN) == RIB_MASK_DOMAIN && to.fcid >> 16 <= RIB_LAST_DOMAIN;
}

} // namespace

model::domain_reach domains_of(const table<unicast> &routes, uint32_t vsan) {
    model::domain_reach reach{vsan};
    const auto &all = routes.all();
    for (auto at = all.lower_bound(unicast::first_of(vsan)); at != all.end() && at->first.vsan == vsan; ++at) {
        const auto &[key, active] = *at;
        if (!is_of_one_domain(key.to)) {
            continue;
        }
        const uint32_t domain = key.to.fcid >> 16;
        bmap_set(reach.present.data(), last_byte, domain);
        if ((active->what.flag & RIB_FLAG_DIRECT) != 0) {
            bmap_set(reach.direct.data(), last_byte, domain);
        }
    }
    return reach;
}

} // namespace ribkit::rib
