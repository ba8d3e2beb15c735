// The messages between RIB and FIB, field by field.
#include "codec/witness/naive.h"

namespace ribkit::witness {

uint32_t fib_update(transfer m) {
    m.words(0, 4);
    return 0;
}

namespace {

void path_slot(transfer m) {
    const number n_hop = m.second_byte(0);
    m.word(0);
    m.word(4);
    size_t i = 0;
    for (; n_hop() > i; ++i) {
        m.word(8 + 4 * i);
    }
    for (; i < 3; ++i) {
        m.zero(8 + 4 * i, 4);
    }
}

void path_slots(transfer m, const number &n_path) {
    size_t i = 0;
    for (; n_path() > i; ++i) {
        path_slot(m.at(20 * i));
    }
    for (; i < 16; ++i) {
        m.zero(20 * i, 20);
    }
}

bool top_of_the_address_space(uint32_t fcid) { return (fcid & 0x00fffff0) == 0x00fffff0 && fcid != 0x00ffffff; }

uint32_t kind_sent(uint32_t fcid, uint8_t special) {
    if (special == 0xf0) {
        return 8;
    }
    if (top_of_the_address_space(fcid)) {
        return 6;
    }
    return (fcid & 0xffff) == 0xffff ? 7 : 4;
}

uint32_t kind_received(uint32_t fcid, uint32_t mask, uint8_t special) {
    if (top_of_the_address_space(fcid)) {
        return 0x08000000;
    }
    if (special == 0xf0) {
        return 0x01000000;
    }
    return mask == 0x00ffff00 || mask == 0x00ffffff ? 0x02000000 : 0x04000000;
}

} // namespace

uint32_t fcu_path(transfer m) {
    const number n_path = m.count(24);
    if (!m.sending()) {
        m.word(0);
    }
    m.bytes(4, 4);
    m.word(8); // mask
    m.bytes(12, 4);
    m.word(16);
    m.word(20);
    m.word(24); // n_path
    path_slots(m.at(28), n_path);
    if (m.sending()) {
        m.put_word(0, kind_sent(m.arrived_bytes(4), m.arrived_byte(13)));
    } else if ((m.arrived_word(0) & 0xff) != 0) {
        m.put_word(0, kind_received(m.arrived_bytes(4), m.arrived_word(8), m.arrived_byte(13)));
    }
    return 0;
}

uint32_t fcl_path(transfer m) {
    const number n_label = m.count(24);
    const number n_path = m.count(28);
    m.words(0, 4);
    m.bytes(16, 4);
    m.word(20);
    m.word(24); // n_label
    m.word(28); // n_path
    size_t i = 0;
    for (; n_label() > i; ++i) {
        m.word(32 + 4 * i);
    }
    for (; i < 2; ++i) {
        m.zero(32 + 4 * i, 4);
    }
    path_slots(m.at(40), n_path);
    return 0;
}

uint32_t fcm_path(transfer m) {
    const number n_member = m.count(16);
    m.bytes(0, 4);
    m.word(4);
    m.word(8);
    m.word(12);
    m.word(16); // n_member
    for (size_t i = 0; n_member() > i; ++i) {
        m.word(20 + 4 * i);
    }
    return 0;
}

uint32_t fib_rsp(transfer m) {
    m.words(0, 5);
    return 0;
}

uint32_t sync(transfer m) {
    m.bytes(0, 1);
    m.bytes(1, 1);
    m.word(4);
    m.word(8);
    m.word(12);
    return 0;
}

uint32_t verf_fcu(transfer m) {
    m.word(0);  // status
    m.word(4);  // vsan
    m.word(8);  // FC ID
    m.word(12); // mask
    return 0;
}

uint32_t verf_fcm(transfer m) {
    m.word(0); // status
    m.word(4); // vsan
    m.word(8); // FC ID
    return 0;
}

uint32_t verf_fcl(transfer m) {
    m.word(0); // status
    m.word(4); // vsan
    m.word(8);
    m.word(12);
    m.word(16);
    m.word(20); // number of labels
    m.word(24);
    m.word(28);
    return 0;
}

namespace {

uint32_t report(transfer m, uint32_t (*entry)(transfer), size_t size) {
    const number n = m.count(16);
    m.words(0, 5);
    for (size_t i = 0; n() > i; ++i) {
        entry(m.at(20 + size * i));
    }
    return 0;
}

} // namespace

uint32_t fcu_rsp_path(transfer m) { return report(m, verf_fcu, 16); }
uint32_t fcm_rsp_path(transfer m) { return report(m, verf_fcm, 12); }
uint32_t fcl_rsp_path(transfer m) { return report(m, verf_fcl, 32); }

uint32_t node(transfer m) {
    m.bytes(0, 3);
    m.zero(3, 1);
    m.half(4);
    m.half(6);
    m.word(8);
    m.word(12);
    return 0;
}

uint32_t port(transfer m) {
    m.bytes(0, 5);
    m.put_byte(5, m.source_byte(5) & 0x80);
    m.half(6);
    m.word(8);
    m.word(12);
    m.word(16);
    m.word(20);
    return 0;
}

uint32_t vsan(transfer m) {
    m.word(0);
    m.word(4);
    return 0;
}

uint32_t vsan_update(transfer m) {
    const number n = m.count(4);
    m.word(0);
    m.word(4);
    for (size_t i = 0; n() > i; ++i) {
        vsan(m.at(8 + 8 * i));
    }
    return 0;
}

uint32_t vsan_rewrite_update(transfer m) {
    m.words(0, 4);
    return 0;
}

uint32_t vsan_rewrite_path(transfer m) {
    m.words(0, 4);
    m.bytes(16, 4);
    m.word(20);
    m.bytes(24, 4);
    m.word(28);
    m.word(32);
    m.word(36);
    m.word(40);
    return 0;
}

uint32_t vsan_rewrite_rsp(transfer m) {
    m.words(0, 5);
    return 0;
}

uint32_t fcu_lb_query(transfer m) {
    m.word(0);
    m.bytes(4, 8);
    m.word(12);
    m.word(16);
    return 0;
}

uint32_t fcu_lb_rsp(transfer m) {
    m.words(0, 2);
    return 0;
}

} // namespace ribkit::witness
