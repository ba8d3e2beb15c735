// They are few: a map does.
#include "fib/rewrites.h"

#include "rib_codes.h"

#include <new>

namespace ribkit::fib {

static bool is_vsan(uint32_t id) { return id != 0 && id <= RIB_LAST_VSAN; }

uint32_t rewrites::put(const rewrite &one) {
    if (!is_vsan(one.key.vsan) || !is_vsan(one.what.vsan)) {
        return RIB_BAD_PARAMETERS;
    }
    if (entries_.size() >= most_ && !entries_.contains(one.key)) {
        return RIB_HW_FULL;
    }
    try {
        entries_[one.key] = one.what;
        return RIB_OK;
    } catch (const std::bad_alloc &) {
        return RIB_OUT_OF_MEMORY;
    }
}

uint32_t rewrites::remove_all(uint32_t vsan) {
    return static_cast<uint32_t>(
        std::erase_if(entries_, [vsan](const auto &one) { return vsan == 0 || one.first.vsan == vsan; }));
}

} // namespace ribkit::fib
