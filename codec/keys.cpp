// Route keys: stepping a query or a key to its successor, the order of keys, and what a RIB operation is to a FIB.
#include "codec/fc_address.h"
#include "codec/messages/info.h"
#include "codec/messages/query.h"
#include "codec/view.h"
#include "rib_codec.h"

using namespace ribkit;
using namespace ribkit::codec;

namespace {

uint32_t next_address(uint32_t fcid) { return (fcid + 1) & broadcast_address; }

/// Moves on to the next VSAN's first address, unless there is none.
uint32_t next_vsan(uint32_t *vsan, uint32_t *fcid) {
    if (*vsan == RIB_LAST_VSAN) {
        return RIB_FAILED;
    }
    ++*vsan;
    *fcid = first_domain_address;
    return RIB_OK;
}

/// Widens the mask by a step. @return false behind the last, with the mask at the first again
bool next_mask(uint32_t *mask) {
    if (*mask == RIB_MASK_DOMAIN || *mask == RIB_MASK_AREA) {
        *mask = *mask == RIB_MASK_DOMAIN ? RIB_MASK_AREA : RIB_MASK_PORT;
        return true;
    }
    *mask = RIB_MASK_DOMAIN;
    return false;
}

using label_view = writable_view<wire::label>;

/// The batch that follows: the first continues at the label behind the last one seen.
template <field_called Cursor, const layout &Query>
uint32_t next_query(writable_view<Query> cur, writable_view<Query> next, label_view seen, label_view first) {
    const uint32_t cursor = cur.template get<Cursor>();
    next.template set<Cursor>(cursor);
    cur.template set<Cursor>(cursor + 1);
    if (cursor == 0) {
        first.set<"label">(seen.get<"label">()).set<"label", "label">(seen.get<"label", "label">() + 1);
    }
    return RIB_OK;
}

template <class Number> int32_t order_of(Number a, Number b) { return static_cast<int32_t>(a > b) - (a < b); }

/// VSANs are compared as signed numbers, addresses and masks as unsigned ones.
int32_t order_of_vsans(uint32_t a, uint32_t b) { return order_of(static_cast<int32_t>(a), static_cast<int32_t>(b)); }

int32_t first_difference(std::initializer_list<int32_t> orders) {
    for (const int32_t order : orders) {
        if (order != 0) {
            return order;
        }
    }
    return 0;
}

} // namespace

uint32_t rib_next_fclrt_query(void *cur, void *next) {
    const writable_view<wire::fclrt_query> from(cur);
    const writable_view<wire::fclrt_query> to(next);
    return next_query<"cursor">(from, to, from.list<"match">()[0], to.list<"match">()[0]);
}

uint32_t rib_next_verf_query(void *cur, void *next) {
    const auto key_of = [](void *query) {
        return writable_view<wire::verf_fcl_query>(writable_view<wire::verf_query>(query).area<"key">().data());
    };
    const auto label_of = [](writable_view<wire::verf_fcl_query> key) {
        return label_view(key.area<"label_0">().data());
    };
    return next_query<"cursor">(key_of(cur), key_of(next), label_of(key_of(cur)), label_of(key_of(next)));
}

uint32_t rib_next_fcm_tuple(uint32_t *vsan, uint32_t *fcid) {
    if (*fcid == broadcast_address) {
        return next_vsan(vsan, fcid);
    }
    *fcid = next_address(*fcid);
    return RIB_OK;
}

uint32_t fib_next_fcm_tuple(uint32_t *fcid, uint32_t *vsan) {
    if (*vsan != RIB_LAST_VSAN) {
        ++*vsan;
        return RIB_OK;
    }
    *vsan = 0; // also where there is no next address
    if (*fcid == broadcast_address) {
        return RIB_FAILED;
    }
    *fcid = next_address(*fcid);
    return RIB_OK;
}

uint32_t rib_next_fcu_tuple(uint32_t *vsan, uint32_t *fcid, uint32_t *mask) {
    if (next_mask(mask)) {
        return RIB_OK;
    }
    if (*fcid >= last_domain_address) {
        return next_vsan(vsan, fcid);
    }
    *fcid = next_address(*fcid);
    return RIB_OK;
}

uint32_t rib_next_fcroute_tuple(uint32_t *vsan, uint32_t *fcid, uint32_t *mask) {
    if (*fcid == broadcast_address) {
        *fcid = first_domain_address; // reset even where there is no next VSAN
        *mask = RIB_MASK_DOMAIN;
        return next_vsan(vsan, fcid);
    }
    if (*fcid >= last_domain_address) {
        *mask = RIB_MASK_PORT;
        if (*fcid >= last_controller_address) {
            *fcid = broadcast_address;
        } else {
            *fcid = *fcid >= first_controller_address ? *fcid + 1 : first_controller_address;
        }
    } else if (!next_mask(mask)) {
        *fcid = next_address(*fcid);
    }
    return RIB_OK;
}

int32_t rib_cmp_fcm_tuple(uint32_t vsan_a, uint32_t fcid_a, uint32_t vsan_b, uint32_t fcid_b) {
    return first_difference({order_of_vsans(vsan_a, vsan_b), order_of(fcid_a, fcid_b)});
}

int32_t fib_cmp_fcm_tuple(uint32_t fcid_a, uint32_t vsan_a, uint32_t fcid_b, uint32_t vsan_b) {
    return first_difference({order_of(fcid_a, fcid_b), order_of_vsans(vsan_a, vsan_b)});
}

int32_t rib_cmp_fcu_tuple(uint32_t vsan_a, uint32_t fcid_a, uint32_t mask_a, uint32_t vsan_b, uint32_t fcid_b,
                          uint32_t mask_b) {
    return first_difference({order_of_vsans(vsan_a, vsan_b), order_of(fcid_a, fcid_b), order_of(mask_a, mask_b)});
}

uint32_t rib_oper_to_fib(uint32_t oper) {
    switch (oper) {
    case RIB_OPER_UPDATE:
    case RIB_OPER_UPDATE_RSP:
    case RIB_OPER_UPDATE_CMI:
    case RIB_OPER_RESTORE:
    case RIB_OPER_RESUME:
        return FIB_OPER_UPDATE;
    case RIB_OPER_REMOVE:
    case RIB_OPER_REMOVE_RSP:
        return FIB_OPER_REMOVE;
    case RIB_OPER_REMOVE_ALL:
    case RIB_OPER_REMOVE_ALL_RSP:
        return FIB_OPER_REMOVE_ALL;
    case RIB_OPER_MERGE:
        return FIB_OPER_MERGE;
    default:
        return 0; // a merge with response has none
    }
}

int32_t rib_vsan_rewrite_key_compare(const void *a, const void *b) {
    const view<wire::vsan_rewrite_path> left(a);
    const view<wire::vsan_rewrite_path> right(b);
    return first_difference({order_of(left.get<"word_4">(), right.get<"word_4">()),
                             order_of_vsans(left.get<"word_12">(), right.get<"word_12">()),
                             order_of(left.get<"bytes_16">(), right.get<"bytes_16">()),
                             order_of(left.get<"word_20">(), right.get<"word_20">()),
                             order_of(left.get<"bytes_24">(), right.get<"bytes_24">()),
                             order_of(left.get<"word_28">(), right.get<"word_28">()),
                             order_of(left.get<"word_32">(), right.get<"word_32">())});
}
