// What the RIB and a module's FIB tell each other, as values. Ways out of the switch are words as label routes have
// them: a control word, an interface, the labels to push.
#pragma once

#include "model/label.h"
#include "model/multicast.h"
#include "model/routes.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace ribkit::model {

/// A path pushes at most so many labels.
inline constexpr uint32_t most_path_labels = 3;
/// An entry of a module has at most so many paths; of a route with more ways it has the first.
inline constexpr uint32_t most_paths = 16;

/// What a module's FIB is doing, as fib_state_to_str has it.
enum class fib_state : uint8_t { offline, ready, loading, verifying, active, isolated, exited, upgrading };

/// An update of a module's table without its paths.
struct fib_head {
    uint32_t oper;     ///< FIB_OPER_...
    uint32_t vsan;     ///< 0 is every VSAN, where there are no paths
    uint32_t sequence; ///< of the RIB's messages to this module

    bool operator==(const fib_head &) const = default;
};

/// How a module answers an update.
struct fib_answer {
    uint32_t result = 0; ///< that of the first path without effect
    uint32_t oper = 0;
    uint32_t vsan = 0;
    uint32_t accepted = 0; ///< paths that took effect; of an operation without paths, entries
    uint32_t sequence = 0; ///< of the update

    bool operator==(const fib_answer &) const = default;
};

/// A key whose entry is not what it should be.
template <class Key> struct fib_fault {
    uint32_t status; ///< FIB_VERF_...
    Key key;

    bool operator==(const fib_fault &) const = default;
};

/// How many bytes of a unicast route's carried bytes a module is given: R_CTL, its mask, the rewrite byte, one more.
inline constexpr size_t fib_carried = 4;

/// What a unicast entry says. Its ways' control words name the next domain.
struct fib_unicast {
    uint32_t kind = 0; ///< as fib_route_type_to_str has it; the module's own finding
    std::array<uint8_t, fib_carried> carried{};
    uint32_t metric = 0;
    uint32_t flag = 0; ///< RIB_FLAG_...
    std::span<const uint32_t> ways{};
};

/// What a multicast entry says.
using fib_multicast = multicast_values;

/// What a label entry says.
struct fib_label {
    std::span<const uint32_t> ways{};
};

/// Where the domain stands in the control word of a unicast path, and where the bits that are the path's own do.
constexpr uint32_t ctrl_of_domain(uint32_t domain) { return (domain & 0xff) << 5; }
constexpr uint32_t domain_of_ctrl(uint32_t ctrl) { return ctrl >> 5 & 0xff; }

/// A port of a module.
struct module_port {
    uint8_t type = 0;
    uint8_t slot = 0;
    uint8_t port = 0;
    uint8_t channel = 0;
    uint8_t status = 0; ///< as rib_pm_state_to_str has it
    bool in_bundle = false;
    uint16_t index = 0; ///< of a destination
    uint32_t if_index = 0;
    uint32_t mode = 0; ///< as rib_pm_mode_to_str has it
    uint32_t vsan = 0;
    uint32_t in_order = 0; ///< as fib_iod_mode_to_str has it

    bool operator==(const module_port &) const = default;
};

/// What a module tells of itself.
struct module_node {
    uint32_t number = 1; ///< from 1
    uint8_t type = 0;    ///< as rib_mod_type_to_str has it
    uint8_t sup_state = 0;
    uint16_t node = 0;    ///< the low half of the node of the bus at which it listens
    uint32_t address = 0; ///< its service access point there
    fib_state state = fib_state::offline;
    // Of its FIB.
    uint32_t instance = 0; ///< another one after each start
    uint32_t sequence = 0; ///< of the last message of the RIB that it has taken; the next one has to be later
    uint32_t entries = 0;  ///< of all its tables
    std::vector<module_port> ports{};

    bool operator==(const module_node &) const = default;
};

/// Whether a sequence number is later than another; numbers go on at 0 behind the largest.
constexpr bool is_later(uint32_t sequence, uint32_t than) { return sequence != than && sequence - than < 0x80000000U; }

/// Which frames change their VSAN.
struct rewrite_key {
    uint32_t vsan = 0;
    uint32_t if_index = 0; ///< that they come in at; 0: any
    destination source{0, 0};
    destination to{0, 0};

    bool operator==(const rewrite_key &) const = default;
    bool operator<(const rewrite_key &other) const {
        return std::tie(vsan, if_index, source, to) < std::tie(other.vsan, other.if_index, other.source, other.to);
    }
};

/// What they are changed to.
struct rewrite_values {
    uint32_t vsan = 0;
    uint32_t source = 0; ///< S_ID; 0: it stays
    uint32_t to = 0;     ///< D_ID; 0: it stays

    bool operator==(const rewrite_values &) const = default;
};

} // namespace ribkit::model
