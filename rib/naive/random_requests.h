// Requests to the RIB at random: of all kinds, sensible and not, from few clients about few routes, so that they meet.
#pragma once

#include "rib/naive/naive_request.h"
#include "rib_codes.h"

#include <initializer_list>
#include <iterator>
#include <random>

namespace ribkit::rib {

class asker {
  public:
    static constexpr uint32_t clients[] = {12, 14, 16, 22, 39, 41, 66, 500};

    explicit asker(uint32_t seed) : random_(seed) {}

    uint32_t below(uint32_t bound) { return static_cast<uint32_t>(random_()) % bound; }
    bool once_in(uint32_t times) { return below(times) == 0; }
    template <class Some> auto one_of(const Some &some) {
        return std::data(some)[below(static_cast<uint32_t>(std::size(some)))];
    }

    naive_request request() {
        naive_request asked{below(3), one_of(clients), vsan(), oper(), {}, once_in(2), now_ += below(2), {}};
        if (is_about_states(asked.oper) && !once_in(8)) {
            asked.uuid = RIB_CLIENT_VSAN_MANAGER;
        }
        if (asked.oper == RIB_OPER_ADD_VERSION) {
            asked.versions.resize(once_in(50) ? 241 : below(4), below(3));
        }
        if (has_records(asked.oper) != once_in(60)) {
            for (uint32_t more = below(merges(asked.oper) ? 4 : 5); more > 0; more--) {
                asked.records.push_back(record(asked));
            }
        }
        return asked;
    }

  private:
    uint32_t vsan() {
        constexpr uint32_t rare[] = {0, 4096, 4095, UINT32_MAX};
        return once_in(100) ? one_of(rare) : 1 + below(6);
    }

    uint32_t oper() {
        constexpr uint32_t often[] = {RIB_OPER_UPDATE, RIB_OPER_UPDATE_RSP, RIB_OPER_UPDATE_CMI, RIB_OPER_RESTORE,
                                      RIB_OPER_MERGE,  RIB_OPER_MERGE_RSP,  RIB_OPER_REMOVE,     RIB_OPER_REMOVE_RSP};
        return once_in(3) ? 1U << below(18) : once_in(100) ? below(20) : one_of(often);
    }

    naive_record record(const naive_request &asked) {
        return asked.table == naive_label       ? label_record(asked)
               : asked.table == naive_multicast ? multicast_record(asked)
                                                : unicast_record(asked);
    }

    /// Most merges name routes to store, and nothing else.
    uint32_t action(const naive_request &asked, std::initializer_list<uint32_t> sensible) {
        if (once_in(200)) {
            return 1U << below(14);
        }
        const auto most = static_cast<uint32_t>(sensible.size());
        return std::data(sensible)[merges(asked.oper) && !once_in(20) ? 0 : below(most)];
    }

    words key(uint32_t vsan) {
        constexpr uint32_t masks[] = {0xff0000, 0xffff00, 0xffffff};
        const uint32_t mask = one_of(masks);
        return {vsan, ((1 + below(3)) << 16 | 0x0101) & mask, mask};
    }

    uint32_t interface() { return 0x01000000 + below(5); }

    naive_record unicast_record(const naive_request &asked) {
        naive_record one{
            action(asked, {RIB_ACTION_ADD, RIB_ACTION_ADD, RIB_ACTION_ADD, RIB_ACTION_DELETE, RIB_ACTION_CHANGE_FLAG,
                           RIB_ACTION_CHANGE_METRIC, RIB_ACTION_CHANGE_FLAG | RIB_ACTION_CHANGE_METRIC}),
            key(asked.vsan),
            below(3),
            below(16),
            words(8, below(2)),
            {},
            once_in(300)  ? 17
            : once_in(20) ? 16
                          : below(4)};
        for (uint32_t i = 0; i < one.interfaces; i++) {
            one.ways.insert(one.ways.end(), {interface(), 1 + below(239)});
        }
        return one;
    }

    naive_record multicast_record(const naive_request &asked) {
        naive_record one{
            action(asked, {RIB_ACTION_ADD, RIB_ACTION_ADD, RIB_ACTION_ADD, RIB_ACTION_DELETE, RIB_ACTION_DELETE_GROUP}),
            key(asked.vsan),
            0,
            0,
            {},
            {},
            once_in(40) ? 15 + below(40) : below(4)};
        if (once_in(5)) {
            one.key = {asked.vsan, 0, 0};
        }
        for (uint32_t i = 0; i < one.interfaces; i++) {
            one.ways.push_back(interface());
        }
        return one;
    }

    naive_record label_record(const naive_request &asked) {
        const words to = key(once_in(200) ? vsan() : asked.vsan);
        const uint32_t type = once_in(200) ? below(17) : 1U << below(3);
        const uint32_t labels = once_in(200) ? 3 : type == RIB_ROUTE_LABEL ? 1 + below(2) : below(3);
        naive_record one{};
        one.carried.resize(once_in(200) ? 17 : type == RIB_ROUTE_SRC_LABEL ? 1 + below(3) : below(2), interface());
        one.key = {to[0],
                   type,
                   type == RIB_ROUTE_SRC_LABEL ? one.carried[0] : 0,
                   type == RIB_ROUTE_FC_LABEL ? to[1] : 0,
                   type == RIB_ROUTE_FC_LABEL ? to[2] : 0,
                   labels,
                   labels > 0 ? (1 + below(2)) << 12 : 0,
                   labels > 1 ? 0x2100U : 0};
        one.action = label_action(asked, type, labels != 0);
        one.interfaces = once_in(300) ? 17 : once_in(20) ? 16 : below(3);
        for (uint32_t i = 0; i < one.interfaces; i++) {
            const uint32_t pushed = below(4);
            one.ways.insert(one.ways.end(), {pushed << 16, interface()});
            one.ways.resize(one.ways.size() + pushed, below(2) << 12);
        }
        return one;
    }

    uint32_t label_action(const naive_request &asked, uint32_t type, bool labels) {
        const uint32_t add = once_in(2)                               ? RIB_ACTION_ADD
                             : type == RIB_ROUTE_FC_LABEL && !labels  ? RIB_ACTION_ADD_UCAST_LABEL
                             : type == RIB_ROUTE_FC_LABEL             ? RIB_ACTION_ADD_FC_LABEL
                             : type == RIB_ROUTE_SRC_LABEL && !labels ? RIB_ACTION_ADD_LABEL_TUNNEL
                                                                      : RIB_ACTION_ADD_LABEL;
        return action(asked, {add, add, add, add << 1});
    }

    std::mt19937 random_;
    uint32_t now_ = 0;
};

} // namespace ribkit::rib
