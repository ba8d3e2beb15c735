// The client names as cases of a switch, each of which copies its text.
#include "diag/switch_peer.h"

#include <cstdio>
#include <cstring>

namespace ribkit::diag {

uintptr_t client_by_switch(uint32_t uuid, char *str) {
    switch (uuid) {
    case 10:
        return reinterpret_cast<uintptr_t>(std::strcpy(str, "rib"));
    case 12:
        return reinterpret_cast<uintptr_t>(std::strcpy(str, "fspf"));
    case 13:
        return reinterpret_cast<uintptr_t>(std::strcpy(str, "fcmpls"));
    case 14:
        return reinterpret_cast<uintptr_t>(std::strcpy(str, "mcast"));
    case 16:
        return reinterpret_cast<uintptr_t>(std::strcpy(str, "Port Manager"));
    case 17:
        return reinterpret_cast<uintptr_t>(std::strcpy(str, "flogi"));
    case 19:
        return reinterpret_cast<uintptr_t>(std::strcpy(str, "rscn"));
    case 21:
        return reinterpret_cast<uintptr_t>(std::strcpy(str, "tlport"));
    case 22:
        return reinterpret_cast<uintptr_t>(std::strcpy(str, "fcdomain"));
    case 25:
        return reinterpret_cast<uintptr_t>(std::strcpy(str, "Line card Manager"));
    case 26:
        return reinterpret_cast<uintptr_t>(std::strcpy(str, "snmpd"));
    case 28:
        return reinterpret_cast<uintptr_t>(std::strcpy(str, "Port Channel Manager"));
    case 36:
        return reinterpret_cast<uintptr_t>(std::strcpy(str, "fcs"));
    case 39:
        return reinterpret_cast<uintptr_t>(std::strcpy(str, "rib-config"));
    case 41:
        return reinterpret_cast<uintptr_t>(std::strcpy(str, "VSAN manager"));
    case 62:
        return reinterpret_cast<uintptr_t>(std::strcpy(str, "LC Process Manager"));
    case 64:
        return reinterpret_cast<uintptr_t>(std::strcpy(str, "rib-test"));
    case 67:
        return reinterpret_cast<uintptr_t>(std::strcpy(str, "span"));
    case 119:
        return reinterpret_cast<uintptr_t>(std::strcpy(str, "fc-tunnel"));
    case 159:
        return reinterpret_cast<uintptr_t>(std::strcpy(str, "rlir"));
    case 180:
        return reinterpret_cast<uintptr_t>(std::strcpy(str, "ozel"));
    case 428:
        return reinterpret_cast<uintptr_t>(std::strcpy(str, "brin"));
    default:
        return static_cast<uintptr_t>(std::sprintf(str, "client %u??", uuid));
    }
}

} // namespace ribkit::diag
