// What decides is a hash of the frame's header.
#include "model/flows.h"

namespace ribkit::model {

/// Fowler, Noll and Vo's hash, of 32 bits, of a number's bytes.
static uint32_t hashed(uint32_t hash, uint32_t number) {
    for (int shift = 24; shift >= 0; shift -= 8) {
        hash = (hash ^ (number >> shift & 0xff)) * 16777619U;
    }
    return hash;
}

uint32_t chosen_way(const flow &flow, flow_balance balance, uint32_t ways) {
    const uint32_t ports = hashed(hashed(2166136261U, flow.source), flow.destination);
    return (balance == flow_balance::exchange ? hashed(ports, flow.exchange) : ports) % ways;
}

} // namespace ribkit::model
