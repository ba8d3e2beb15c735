// Information, registration and verification, and the rows of the management tables, field by field.
#include "codec/witness/naive.h"

namespace ribkit::witness {

uint32_t verify(transfer m) {
    m.words(0, 3);
    return 0;
}

uint32_t reg_query(transfer m) {
    if (m.sending()) {
        m.words(0, 3);
    }
    return 0;
}

uint32_t state_query(transfer m) {
    m.words(0, 4);
    return 0;
}

uint32_t test_info(transfer m) {
    m.words(0, 2);
    return 0;
}

uint32_t node_query(transfer m) {
    m.word(0);
    m.bytes(4, 2);
    m.zero(6, 2);
    return 0;
}

uint32_t test_query(transfer m) {
    m.word(0);
    m.word(4);
    m.bytes(8, 40);
    return 0;
}

uint32_t registration(transfer m) {
    m.word(0);
    m.word(4);
    m.bytes(8, 80);
    return 0;
}

uint32_t fclrt_info(transfer m) {
    const number n = m.count(0);
    m.word(0);
    size_t entry = 4;
    for (size_t i = 0; n() > i; ++i) {
        entry += lbl_route(m.at(entry));
    }
    return 0;
}

uint32_t fcmrt_info(transfer m) {
    const number n = m.count(0);
    m.word(0);
    for (size_t i = 0; n() > i; ++i) {
        mcast_route(m.at(4 + 20 * i));
    }
    return 0;
}

uint32_t fcurt_info(transfer m) {
    const number n = m.count(0);
    m.word(0);
    for (size_t i = 0; n() > i; ++i) {
        ucast_route(m.at(8 + 36 * i));
    }
    return 0;
}

uint32_t db_info(transfer m) {
    const number n = m.count(0);
    m.word(0);
    for (size_t i = 0; n() > i; ++i) {
        m.words(8 + 20 * i, 5);
    }
    return 0;
}

uint32_t dm_info(transfer m) {
    if (!m.sending()) {
        m.put_word(0, m.arrived_bytes(0));
        return 0;
    }
    const number n = m.count(0);
    m.word(0);
    for (size_t i = 0; n() > i; ++i) {
        m.bytes(4 + 68 * i, 68);
    }
    for (size_t i = 0; n() > i; ++i) {
        m.word(4 + 68 * i);
    }
    return 0;
}

uint32_t in_info(transfer m) {
    const number kind = m.count(4);
    m.word(0);
    m.word(4);
    if (kind() == 1) {
        m.bytes(8, 24);
    } else if (kind() == 2) {
        m.bytes(8, 192);
    }
    return m.sending() ? kind() : 0;
}

namespace {

/// The source's name, cut at 7 characters, in an area of 80 bytes that is zero behind it.
void name(transfer &m, size_t offset) {
    std::array<uint8_t, 7> text{};
    size_t length = 0;
    while (length < 7 && m.source_byte(offset + length) != 0) {
        text.at(length) = m.source_byte(offset + length);
        ++length;
    }
    m.zero(offset, 80);
    for (size_t i = 0; i < length; ++i) {
        m.put_byte(offset + i, text.at(i));
    }
}

} // namespace

uint32_t reg_info(transfer m) {
    const number n = m.count(0);
    m.word(0);
    for (size_t i = 0; n() > i; ++i) {
        transfer entry = m.at(4 + 88 * i);
        entry.word(0);
        entry.word(4);
        name(entry, 8);
    }
    return 0;
}

uint32_t sys_info(transfer m) {
    const number n = m.count(0);
    m.word(0);
    for (size_t i = 0; n() > i; ++i) {
        transfer module = m.at(4 + 1560 * i);
        node(module);
        module.bytes(16, 4);
        for (size_t p = 0; p < 64; ++p) {
            port(module.at(24 + 24 * p));
        }
    }
    return 0;
}

namespace {

/// Converts the verification key that the type asks for. @return the distance to the next key of that type
uint32_t verification_key(transfer key, uint32_t type) {
    if ((type & 0x1111) != 0) {
        verf_fcl(key);
        return 32;
    }
    if ((type & 0x2222) != 0) {
        verf_fcm(key);
        return 12;
    }
    verf_fcu(key);
    return 16;
}

} // namespace

uint32_t verf_query(transfer m) {
    const number type = m.count(12);
    m.word(0);
    m.word(4);
    m.word(8);
    m.word(12);
    m.word(48);
    verification_key(m.at(16), type());
    return 0;
}

uint32_t verf_info(transfer m) {
    const number n = m.count(0);
    const number type = m.count(4);
    m.word(0);
    m.word(4);
    m.word(8);
    m.word(12);
    size_t key = 16;
    for (size_t i = 0; n() > i; ++i) {
        key += verification_key(m.at(key), type());
    }
    return 0;
}

uint32_t route_entry(transfer m) {
    m.words(0, 10);
    return 0;
}

uint32_t flow_stat_entry(transfer m) {
    m.word(0);
    m.word(12);
    for (size_t offset = 20; offset <= 64; offset += 4) {
        m.word(offset);
    }
    return 0;
}

} // namespace ribkit::witness
