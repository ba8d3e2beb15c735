// The converters of every layout for one instruction set, and the set that this processor runs best, chosen when the
// program loads.
#pragma once

#include "codec/isa_scalar.h"
#include "codec/messages/query.h"
#include "codec/messages/route.h"
#include "codec/odd.h"
#ifdef __aarch64__
#include "codec/isa_neon.h"
#endif

#include <type_traits>

namespace ribkit::codec {

struct kernel {
    uint32_t (*to_network)(const uint8_t *src, uint8_t *dst);
    uint32_t (*to_host)(const uint8_t *src, uint8_t *dst);
};

template <const layout &...L> struct layouts {
    static constexpr size_t count = sizeof...(L);

    template <const layout &Wanted> static consteval size_t index() {
        static_assert((std::is_same_v<conversion<L>, conversion<Wanted>> || ...), "the layout is not in all_layouts");
        size_t i = 0; // types are compared, because addresses are no constants where sanitizers watch them
        static_cast<void>(((std::is_same_v<conversion<L>, conversion<Wanted>> || (++i, false)) || ...));
        return i;
    }

    template <class Isa, std::endian Host = std::endian::native> static consteval std::array<kernel, count> kernels() {
        return {{{conversion<L>::template convert<direction::to_network, Host, Isa>,
                  conversion<L>::template convert<direction::to_host, Host, Isa>}...}};
    }
};

/// Every layout that is converted by itself.
using all_layouts =
    layouts<wire::fcurt_update, wire::fclrt_update, wire::fcmrt_update, wire::fcurt, wire::fclrt, wire::fclrt_intf,
            wire::fcmrt, wire::route_rsp, wire::fclrt_query, wire::fcurt_query, wire::fcmrt_query, wire::lbl_route,
            wire::ucast_route, wire::mcast_route, wire::topo, wire::sync_fcl, wire::sync_fcm, wire::sync_fcu,
            wire::sync_query, wire::sync_info, wire::verify, wire::reg_query, wire::dm_query, wire::sys_query,
            wire::db_query, wire::in_query, wire::test_info, wire::node_query, wire::test_query, wire::registration,
            wire::fclrt_info, wire::fcmrt_info, wire::fcurt_info, wire::db_info, wire::dm_info, wire::in_info,
            wire::reg_info, wire::sys_info, wire::verf_query, wire::verf_info, wire::fib_update, wire::fcu_path,
            wire::fcl_path, wire::fcm_path, wire::fib_rsp, wire::fib_sync, wire::verf_fcu, wire::verf_fcm,
            wire::verf_fcl, wire::fcu_rsp_path, wire::fcm_rsp_path, wire::fcl_rsp_path, wire::node, wire::port,
            wire::vsan, wire::vsan_update, wire::vsan_rewrite_update, wire::vsan_rewrite_path, wire::vsan_rewrite_rsp,
            wire::fcu_lb_query, wire::fcu_lb_rsp>;

using kernel_table = std::array<kernel, all_layouts::count>;

#ifdef RIBKIT_HAS_AVX2
extern const kernel_table scalar_kernels;
extern const kernel_table avx2_kernels;

/// The table in use; the scalar one until the program has been loaded, so that no call can come too early.
[[gnu::visibility("hidden")]] extern const kernel *active_kernels;
#else
#ifdef __aarch64__
using only_set = neon;
#else
using only_set = scalar;
#endif
inline constexpr kernel_table only_kernels = all_layouts::kernels<only_set>();
inline constexpr const kernel *active_kernels = only_kernels.data();
#endif

template <const layout &L> [[gnu::always_inline]] inline uint32_t to_network(const void *src, void *dst) {
    return active_kernels[all_layouts::index<L>()].to_network(static_cast<const uint8_t *>(src),
                                                              static_cast<uint8_t *>(dst));
}

template <const layout &L> [[gnu::always_inline]] inline uint32_t to_host(const void *src, void *dst) {
    return active_kernels[all_layouts::index<L>()].to_host(static_cast<const uint8_t *>(src),
                                                           static_cast<uint8_t *>(dst));
}

} // namespace ribkit::codec
