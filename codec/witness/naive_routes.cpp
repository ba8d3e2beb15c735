// Updates, route records, table queries and synchronisation, field by field in the order in which they are converted.
#include "codec/witness/naive.h"

namespace ribkit::witness {

uint32_t route_update(transfer m) {
    m.word(0);  // uuid
    m.word(4);  // vsan
    m.word(8);  // oper
    m.word(12); // n_route
    return 0;
}

uint32_t fcurt_update(transfer m) {
    const number n_version = m.count(12);
    m.word(0);  // uuid
    m.word(4);  // vsan
    m.word(8);  // oper
    m.word(12); // n_version
    m.word(16); // n_route
    size_t i = 0;
    for (; n_version() > i; ++i) {
        m.word(20 + 4 * i);
    }
    for (; i < 240; ++i) {
        m.zero(20 + 4 * i, 4);
    }
    return 0;
}

uint32_t fcurt(transfer m) {
    const number n_hop = m.count(28);
    m.bytes(0, 4);
    m.word(4); // mask
    m.bytes(8, 8);
    m.word(16); // action
    m.word(20); // metric
    m.word(24); // flag
    m.word(28); // n_hop
    for (size_t i = 0; n_hop() > i; ++i) {
        m.word(32 + 8 * i); // interface
        m.word(36 + 8 * i); // domain
    }
    return 32 + 8 * n_hop();
}

uint32_t table_rsp(transfer m) {
    m.words(0, 5);
    return 0;
}

uint32_t fclrt_intf(transfer m) {
    const number n = m.second_byte(0);
    m.word(4); // interface
    m.word(0); // control
    for (size_t i = 0; n() > i; ++i) {
        m.word(8 + 4 * i);
    }
    return (n() + 2) * 4;
}

namespace {

/// Label words, at most two of them zeroed.
void two_labels(transfer &m, size_t offset, const number &n_match) {
    size_t i = 0;
    for (; n_match() > i; ++i) {
        m.word(offset + 4 * i);
    }
    for (; i < 2; ++i) {
        m.zero(offset + 4 * i, 4);
    }
}

uint32_t interface_entries(transfer &m, uint32_t end, const number &n_intf) {
    for (size_t i = 0; n_intf() > i; ++i) {
        end += fclrt_intf(m.at(end));
    }
    return end;
}

} // namespace

uint32_t fclrt(transfer m) {
    const number n_match = m.count(20);
    const number n_src = m.count(24);
    const number n_intf = m.count(28);
    m.word(0); // type
    m.word(4); // vsan
    m.bytes(8, 4);
    m.word(12); // mask
    m.word(16); // action
    m.word(20); // n_match
    m.word(24); // n_src
    m.word(28); // n_intf
    two_labels(m, 32, n_match);
    size_t i = 0;
    for (; n_src() > i; ++i) {
        m.word(40 + 4 * i);
    }
    for (; i < 16; ++i) {
        m.zero(40 + 4 * i, 4);
    }
    return interface_entries(m, 104, n_intf);
}

uint32_t fcmrt(transfer m) {
    const number n_intf = m.count(12);
    m.bytes(0, 4);
    m.word(4);  // mask
    m.word(8);  // action
    m.word(12); // n_intf
    for (size_t i = 0; n_intf() > i; ++i) {
        m.word(16 + 4 * i);
    }
    return 16 + 4 * n_intf();
}

uint32_t fclrt_query(transfer m) {
    const number n_match = m.count(24);
    m.word(0);
    m.word(4);
    m.word(8);
    m.word(12);
    m.word(16);
    m.word(20);
    m.word(24); // n_match
    m.word(36);
    two_labels(m, 28, n_match);
    return 0;
}

uint32_t fcurt_query(transfer m) {
    m.words(0, 6);
    return 0;
}

uint32_t fcmrt_query(transfer m) {
    m.words(0, 6);
    return 0;
}

uint32_t lbl_route(transfer m) {
    const number n_match = m.count(24);
    const number n_intf = m.count(28);
    m.words(0, 8);
    two_labels(m, 32, n_match);
    return interface_entries(m, 40, n_intf);
}

namespace {

/// A hop: control word, interface, room for three labels, which reaches into the next hop.
void ucast_hop(transfer m) {
    const number n_label = m.second_byte(0);
    m.word(0);
    m.word(4);
    size_t i = 0;
    for (; n_label() > i; ++i) {
        m.bytes(8 + 4 * i, 4);
    }
    for (; i < 3; ++i) {
        m.zero(8 + 4 * i, 4);
    }
}

} // namespace

uint32_t ucast_route(transfer m) {
    const number n_hop = m.count(32);
    m.word(0); // uuid
    m.word(4); // vsan
    m.bytes(8, 4);
    m.bytes(16, 8);
    m.word(12); // mask
    m.word(24); // cost
    m.word(28); // flag
    m.word(32); // n_hop
    for (size_t i = 0; n_hop() > i; ++i) {
        ucast_hop(m.at(36 + 8 * i));
    }
    return 0;
}

uint32_t mcast_route(transfer m) {
    const number n_intf = m.count(16);
    m.word(0); // uuid
    m.word(4); // vsan
    m.bytes(8, 4);
    m.word(12); // mask
    m.word(16); // n_intf
    for (size_t i = 0; n_intf() > i; ++i) {
        m.word(20 + 4 * i);
    }
    return 0;
}

uint32_t topo(transfer m) {
    const number n = m.count(8);
    m.words(0, 3);
    for (size_t i = 0; n() > i; ++i) {
        m.word(12 + 4 * i);
    }
    return 0;
}

uint32_t sync_fcl(transfer m) {
    m.words(0, 13);
    return 0;
}

uint32_t sync_fcm(transfer m) {
    m.words(0, 7);
    return 0;
}

uint32_t sync_fcu(transfer m) {
    m.words(0, 8);
    return 0;
}

uint32_t sync_query(transfer m) {
    m.words(0, 3);
    return 0;
}

uint32_t sync_info(transfer m) {
    m.words(0, 2);
    return 0;
}

} // namespace ribkit::witness
