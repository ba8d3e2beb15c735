// Interface indices and their names. One table says how a kind is numbered and named; printing and parsing both read
// it, and parsing is printing inverted: a name counts only when its index prints as that name.
#include "ribkit_platform.h"

#include <array>
#include <cstdio>
#include <cstring>

namespace {

struct interface_kind {
    uint32_t type;
    const char *format;   // of port alone, or of slot and port
    bool in_slot;         // a slot numbered from 1 in bits 23 to 16; else these are 0
    uint32_t first, last; // port
};

constexpr std::array kinds{
    interface_kind{RIBKIT_IF_FC, "fc%u/%u", true, 1, 0xffff},
    interface_kind{RIBKIT_IF_PORT_CHANNEL, "port-channel %u", false, 1, 0xffff},
    interface_kind{RIBKIT_IF_VSAN, "vsan%u", false, 0, 4095},
    interface_kind{RIBKIT_IF_MGMT, "mgmt%u", false, 0, 0xffff},
    interface_kind{RIBKIT_IF_SUP_FC, "sup-fc%u", false, 0, 0xffff},
    interface_kind{RIBKIT_IF_LOOPBACK, "loopback%u", false, 0, 0xffff},
    interface_kind{RIBKIT_IF_FC_TUNNEL, "fc-tunnel%u", false, 0, 0xffff},
};

constexpr uint8_t no_type = 0xff;
constexpr size_t longest_name = 32;

uint32_t slot_of(uint32_t if_index) { return if_index >> 16 & 0xff; }
uint32_t port_of(uint32_t if_index) { return if_index & 0xffff; }

const interface_kind *kind_of(uint32_t if_index) {
    for (const interface_kind &kind : kinds) {
        const uint32_t port = port_of(if_index);
        if (kind.type == if_index >> 24 && kind.in_slot == (slot_of(if_index) != 0) && port >= kind.first &&
            port <= kind.last) {
            return &kind;
        }
    }
    return nullptr;
}

int print_name(char *str, size_t size, uint32_t if_index) {
    const interface_kind *kind = kind_of(if_index);
    if (kind == nullptr) {
        return std::snprintf(str, size, "%08xh??", if_index);
    }
    return kind->in_slot ? std::snprintf(str, size, kind->format, slot_of(if_index), port_of(if_index))
                         : std::snprintf(str, size, kind->format, port_of(if_index));
}

// The index that a name of this kind would have; 0 where the name does not even begin like one.
uint32_t scan(const char *name, const interface_kind &kind) {
    unsigned slot = 0;
    unsigned port = 0;
    const int wanted = kind.in_slot ? 2 : 1;
    const int found =
        kind.in_slot ? std::sscanf(name, kind.format, &slot, &port) : std::sscanf(name, kind.format, &port);
    return found != wanted ? 0 : kind.type << 24 | (slot & 0xff) << 16 | (port & 0xffff);
}

} // namespace

int if_index_get_type(uint32_t if_index, uint8_t *type) {
    const interface_kind *kind = kind_of(if_index);
    *type = kind == nullptr ? no_type : static_cast<uint8_t>(kind->type);
    return kind == nullptr ? -1 : 0;
}

int sprintf_if_index(char *str, uint32_t if_index) { return print_name(str, longest_name, if_index); }

int if_index_parse(const char *name, uint32_t *if_index) {
    for (const interface_kind &kind : kinds) {
        const uint32_t index = scan(name, kind);
        char printed[longest_name];
        print_name(printed, sizeof printed, index);
        if (kind_of(index) == &kind && std::strcmp(printed, name) == 0) {
            *if_index = index;
            return 0;
        }
    }
    return -1;
}
