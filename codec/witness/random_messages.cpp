// A shape knows where a message's counts are and what they may be; everything else is noise.
#include "codec/witness/random_messages.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace ribkit::witness {

namespace {

class draft {
  public:
    draft(order form, size_t room, std::mt19937 &random) : form_(form), random_(&random), bytes_(room) {
        for (uint8_t &byte : bytes_) {
            byte = static_cast<uint8_t>((*random_)());
        }
    }

    uint32_t below(uint32_t limit) { return static_cast<uint32_t>((*random_)()) % limit; }
    uint32_t any() { return static_cast<uint32_t>((*random_)()); }

    void word(size_t at, uint32_t value) { store_word(form_, bytes_.data() + at, value); }
    [[nodiscard]] uint32_t word(size_t at) const { return load_word(form_, bytes_.data() + at); }
    void second_byte(size_t at, uint32_t value) { word(at, (word(at) & 0xff00ffff) | value << 16); }
    void byte(size_t at, uint32_t value) { bytes_.at(at) = static_cast<uint8_t>(value); }

    /// A count for a list with room for `bound` entries: at its edges, a little or a good deal above, or inside.
    uint32_t bounded(uint32_t bound) {
        const std::array<uint32_t, 7> choices{
            0, 1, bound - 1, bound, bound + 1, bound + 2 + below(bound + 4), below(bound + 1)};
        return choices.at(below(choices.size()));
    }

    /// A count for a list without a bound.
    uint32_t open(uint32_t most) {
        const std::array<uint32_t, 5> choices{0, 1, 2, below(6), below(most + 1)};
        return std::min(choices.at(below(choices.size())), most);
    }

    /// The count of labels or hops in a control word; seldom a large one.
    uint32_t few() { return below(16) == 0 ? below(256) : below(8) == 0 ? 4 + below(14) : below(5); }

    uint32_t count(size_t at, uint32_t value) {
        word(at, value);
        return value;
    }

    std::vector<uint8_t> take() { return std::move(bytes_); }

  private:
    order form_;
    std::mt19937 *random_;
    std::vector<uint8_t> bytes_;
};

struct shape {
    std::string_view name;
    size_t room;
    void (*place)(draft &);
};

/// Interface entries one behind the other. @return where they end
size_t interface_entries(draft &d, size_t at, uint32_t n) {
    for (uint32_t i = 0; i < n; ++i) {
        const uint32_t labels = d.few();
        d.second_byte(at, labels);
        at += 8 + 4 * size_t{labels};
    }
    return at;
}

void fcurt_update(draft &d) { d.count(12, d.bounded(240)); }
void fcurt(draft &d) { d.count(28, d.open(60)); }
void fclrt_intf(draft &d) { d.second_byte(0, d.few()); }
void fcmrt(draft &d) { d.count(12, d.open(60)); }
void fclrt_query(draft &d) { d.count(24, d.bounded(2)); }
void mcast_route(draft &d) { d.count(16, d.open(60)); }
void topo(draft &d) { d.count(8, d.open(60)); }

void fclrt(draft &d) {
    interface_entries(d, 104, d.count(28, d.open(6)));
    d.count(20, d.bounded(2));
    d.count(24, d.bounded(16));
}

size_t lbl_route_at(draft &d, size_t at) {
    const size_t end = interface_entries(d, at + 40, d.count(at + 28, d.open(4)));
    d.count(at + 24, d.bounded(2));
    return end;
}

void lbl_route(draft &d) { lbl_route_at(d, 0); }

void ucast_hops(draft &d, size_t at, uint32_t hops) {
    for (uint32_t i = 0; i < hops; ++i) {
        d.second_byte(at + 36 + 8 * size_t{i}, d.few());
    }
    d.word(at + 32, hops);
}

void ucast_route(draft &d) { ucast_hops(d, 0, d.open(20)); }

void fclrt_info(draft &d) {
    const uint32_t n = d.count(0, d.open(4));
    size_t at = 4;
    for (uint32_t i = 0; i < n; ++i) {
        at = lbl_route_at(d, at);
    }
}

/// The list of one entry may lie where the next entry is; the next entry's count is placed after it.
void fcmrt_info(draft &d) {
    const uint32_t n = d.count(0, d.open(5));
    const bool overlap = d.below(2) != 0;
    for (uint32_t i = 0; i < n; ++i) {
        d.word(4 + 20 * size_t{i} + 16, overlap ? d.open(20) : d.below(2));
    }
}

void fcurt_info(draft &d) {
    const uint32_t n = d.count(0, d.open(5));
    const bool overlap = d.below(2) != 0;
    for (uint32_t i = 0; i < n; ++i) {
        ucast_hops(d, 8 + 36 * size_t{i}, overlap ? d.open(12) : d.below(2));
    }
}

void db_info(draft &d) { d.count(0, d.open(20)); }
void dm_info(draft &d) { d.count(0, d.open(12)); }
void sys_info(draft &d) { d.count(0, d.open(3)); }

void in_info(draft &d) {
    constexpr std::array<uint32_t, 6> kinds{0, 1, 2, 3, 0x10001, 0x02000000};
    d.word(4, d.below(4) == 0 ? d.any() : kinds.at(d.below(kinds.size())));
}

void reg_info(draft &d) {
    const uint32_t n = d.count(0, d.open(10));
    for (uint32_t i = 0; i < n; ++i) {
        const size_t name = 12 + 88 * size_t{i};
        for (size_t k = 0; k < 80; ++k) {
            d.byte(name + k, d.below(8) == 0 ? 0 : 1 + d.below(255));
        }
        d.byte(name + d.below(80), 0);
    }
}

uint32_t verification_type(draft &d) {
    const uint32_t low = d.below(4) == 0 ? d.any() & 0xffff : d.below(8) == 0 ? 0 : 1U << d.below(16);
    return (d.any() & 0xffff0000) | low;
}

void verf_query(draft &d) { d.word(12, verification_type(d)); }

void verf_info(draft &d) {
    d.count(0, d.open(20));
    d.word(4, verification_type(d));
}

void path_slots(draft &d, size_t at, uint32_t n) {
    for (uint32_t i = 0; i < n; ++i) {
        d.second_byte(at + 20 * size_t{i}, d.few());
    }
}

void fcu_path(draft &d) {
    constexpr std::array<uint32_t, 10> addresses{0x00fffffc, 0x00ffffff, 0x000a0bff, 0x000affff, 0x01ffffff,
                                                 0x00fffff0, 0x00ffffef, 0xffffffff, 0x00efffff, 0x00010203};
    constexpr std::array<uint32_t, 5> masks{0x00ffff00, 0x00ffffff, 0x00ff0000, 0x01ffff00, 0};
    path_slots(d, 28, d.count(24, d.bounded(16)));
    const uint32_t address = addresses.at(d.below(addresses.size()));
    for (size_t i = 0; i < 4; ++i) {
        d.byte(4 + i, address >> (24 - 8 * i) & 0xff);
    }
    d.word(8, masks.at(d.below(masks.size())));
    if (d.below(3) == 0) {
        d.byte(13, 0xf0);
    }
    if (d.below(3) == 0) {
        d.word(0, d.any() & 0xffffff00);
    }
}

void fcl_path(draft &d) {
    path_slots(d, 40, d.count(28, d.bounded(16)));
    d.count(24, d.bounded(2));
}

void fcm_path(draft &d) { d.count(16, d.open(60)); }
void report(draft &d) { d.count(16, d.open(20)); }
void vsan_update(draft &d) { d.count(4, d.open(60)); }

constexpr size_t plain_room = 128;

constexpr shape shapes[] = {
    {"rib_fcurt_update", 3072, fcurt_update},
    {"rib_fcurt", 1024, fcurt},
    {"rib_fclrt", 7168, fclrt},
    {"rib_fclrt_intf", 1536, fclrt_intf},
    {"rib_fcmrt", 512, fcmrt},
    {"rib_fclrt_query", 128, fclrt_query},
    {"rib_lbl_route", 5120, lbl_route},
    {"rib_ucast_route", 2048, ucast_route},
    {"rib_mcast_route", 512, mcast_route},
    {"rib_topo", 512, topo},
    {"rib_fclrt_info", 18432, fclrt_info},
    {"rib_fcmrt_info", 1024, fcmrt_info},
    {"rib_fcurt_info", 2048, fcurt_info},
    {"rib_db_info", 512, db_info},
    {"rib_dm_info", 1024, dm_info},
    {"rib_in_info", 256, in_info},
    {"rib_reg_info", 1024, reg_info},
    {"rib_sys_info", 5120, sys_info},
    {"rib_verf_query", 128, verf_query},
    {"rib_verf_info", 1024, verf_info},
    {"fib_fcu_path", 2048, fcu_path},
    {"fib_fcl_path", 2048, fcl_path},
    {"fib_fcm_path", 512, fcm_path},
    {"fib_fcu_rsp_path", 1024, report},
    {"fib_fcm_rsp_path", 1024, report},
    {"fib_fcl_rsp_path", 1024, report},
    {"fib_vsan_update", 1024, vsan_update},
};

} // namespace

std::vector<uint8_t> random_message(std::string_view name, order form, std::mt19937 &random) {
    const auto *found = std::find_if(std::begin(shapes), std::end(shapes),
                                     [name](const shape &candidate) { return candidate.name == name; });
    draft message(form, found == std::end(shapes) ? plain_room : found->room, random);
    if (found != std::end(shapes)) {
        found->place(message);
    }
    return message.take();
}

} // namespace ribkit::witness
