// A VSAN is known while it has entries.
#include "fib/space.h"

#include "rib_codes.h"

#include <new>

namespace ribkit::fib {

uint32_t vsan_shares::take(uint32_t vsan) {
    try {
        uint32_t &used = used_[vsan];
        if (most_ != 0 && used >= most_) {
            return RIB_VSAN_TCAM_FULL;
        }
        used++;
        return RIB_OK;
    } catch (const std::bad_alloc &) {
        return RIB_OUT_OF_MEMORY;
    }
}

void vsan_shares::give_back(uint32_t vsan) {
    const auto found = used_.find(vsan);
    if (--found->second == 0) {
        used_.erase(found);
    }
}

} // namespace ribkit::fib
