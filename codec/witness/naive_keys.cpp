// Sizes of updates, steps and orders of keys, by hand.
#include "codec/witness/naive.h"

namespace ribkit::witness {

namespace {

constexpr uint32_t failed = 0x4052000d;

uint32_t network_word(std::span<const uint8_t> msg, size_t offset) {
    if (offset > msg.size() || msg.size() - offset < 4) {
        throw past_the_end{};
    }
    return load_word(order::big, msg.data() + offset);
}

template <typename number_type> int32_t sign(number_type a, number_type b) {
    if (a < b) {
        return -1;
    }
    return a > b ? 1 : 0;
}

int32_t signed_order(uint32_t a, uint32_t b) { return sign(static_cast<int32_t>(a), static_cast<int32_t>(b)); }

} // namespace

uint32_t sizeof_fclrt_update(std::span<const uint8_t> msg) {
    uint32_t size = 16;
    for (uint32_t left = network_word(msg, 12); left > 0; --left) {
        uint32_t entries = network_word(msg, size + 28);
        size += 104;
        for (; entries > 0; --entries) {
            const uint32_t labels = network_word(msg, size) >> 16 & 0xff;
            size += (labels + 2) * 4;
        }
    }
    return size;
}

uint32_t sizeof_fcmrt_update(std::span<const uint8_t> msg) {
    uint32_t size = 16;
    for (uint32_t left = network_word(msg, 12); left > 0; --left) {
        size += 16 + 4 * network_word(msg, size + 12);
    }
    return size;
}

uint32_t sizeof_fcurt_update(std::span<const uint8_t> msg) {
    uint32_t size = 980;
    for (uint32_t left = network_word(msg, 16); left > 0; --left) {
        size += 32 + 8 * network_word(msg, size + 28);
    }
    return size;
}

std::vector<uint32_t> versions(std::span<const uint8_t> msg) {
    const uint32_t n = network_word(msg, 12);
    std::vector<uint32_t> found;
    for (uint32_t i = 0; i < n; ++i) {
        found.push_back(network_word(msg, 20 + 4 * i));
    }
    while (found.size() < 240) {
        found.push_back(0);
    }
    return found;
}

uint32_t rib_next(fcm_key &key) {
    if (key.fcid != 0xffffff) {
        key.fcid = (key.fcid + 1) & 0xffffff;
        return 0;
    }
    if (key.vsan == 4095) {
        return failed;
    }
    key.vsan += 1;
    key.fcid = 0x010000;
    return 0;
}

uint32_t fib_next(fcm_key &key) {
    if (key.vsan != 4095) {
        key.vsan += 1;
        return 0;
    }
    key.vsan = 0;
    if (key.fcid == 0xffffff) {
        return failed;
    }
    key.fcid = (key.fcid + 1) & 0xffffff;
    return 0;
}

uint32_t next_fcu(fcu_key &key) {
    if (key.mask == 0xff0000) {
        key.mask = 0xffff00;
        return 0;
    }
    if (key.mask == 0xffff00) {
        key.mask = 0xffffff;
        return 0;
    }
    key.mask = 0xff0000;
    if (key.fcid < 0xefffff) {
        key.fcid = (key.fcid + 1) & 0xffffff;
        return 0;
    }
    if (key.vsan == 4095) {
        return failed;
    }
    key.vsan += 1;
    key.fcid = 0x010000;
    return 0;
}

namespace {

/// The top of the address space, 0xefffff to 0xffffff.
uint32_t next_high_fcroute(fcu_key &key) {
    if (key.fcid == 0xffffff) {
        key.fcid = 0x010000;
        key.mask = 0xff0000;
        if (key.vsan == 4095) {
            return failed;
        }
        key.vsan += 1;
        return 0;
    }
    key.mask = 0xffffff;
    if (key.fcid >= 0xfffbff) {
        key.fcid = 0xffffff;
    } else if (key.fcid >= 0xfffb00) {
        key.fcid += 1;
    } else {
        key.fcid = 0xfffb00;
    }
    return 0;
}

} // namespace

uint32_t next_fcroute(fcu_key &key) {
    if (key.fcid >= 0xefffff) {
        return next_high_fcroute(key);
    }
    if (key.mask == 0xff0000) {
        key.mask = 0xffff00;
    } else if (key.mask == 0xffff00) {
        key.mask = 0xffffff;
    } else {
        key.mask = 0xff0000;
        key.fcid = (key.fcid + 1) & 0xffffff;
    }
    return 0;
}

int32_t rib_compare(const fcm_key &a, const fcm_key &b) {
    const int32_t by_vsan = signed_order(a.vsan, b.vsan);
    return by_vsan != 0 ? by_vsan : sign(a.fcid, b.fcid);
}

int32_t fib_compare(const fcm_key &a, const fcm_key &b) {
    const int32_t by_fcid = sign(a.fcid, b.fcid);
    return by_fcid != 0 ? by_fcid : signed_order(a.vsan, b.vsan);
}

int32_t compare(const fcu_key &a, const fcu_key &b) {
    const int32_t by_address = rib_compare({a.vsan, a.fcid}, {b.vsan, b.fcid});
    return by_address != 0 ? by_address : sign(a.mask, b.mask);
}

uint32_t oper_to_fib(uint32_t oper) {
    constexpr std::array<std::array<uint32_t, 2>, 10> known{
        {{1, 1}, {2, 2}, {4, 4}, {8, 32}, {16, 1}, {32, 2}, {64, 4}, {256, 1}, {4096, 1}, {16384, 1}}};
    for (const auto &[rib, fib] : known) {
        if (rib == oper) {
            return fib;
        }
    }
    return 0;
}

int32_t compare_rewrite_keys(const uint8_t *a, const uint8_t *b) {
    for (const size_t offset : {4, 12, 16, 20, 24, 28, 32}) {
        const uint32_t of_a = load_word(order::big, a + offset);
        const uint32_t of_b = load_word(order::big, b + offset);
        const int32_t order = offset == 12 ? signed_order(of_a, of_b) : sign(of_a, of_b);
        if (order != 0) {
            return order;
        }
    }
    return 0;
}

void next_query(uint8_t *cur, uint8_t *next, size_t cursor, size_t label) {
    const uint32_t position = load_word(order::big, cur + cursor);
    store_word(order::big, next + cursor, position);
    store_word(order::big, cur + cursor, position + 1);
    if (position == 0) {
        store_word(order::big, next + label, load_word(order::big, cur + label) + 4096);
    }
}

} // namespace ribkit::witness
