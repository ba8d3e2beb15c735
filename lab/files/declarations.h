// What a fabric file declares beside its links: static routes, multicast groups, label routes, and how near the clients
// are that bring them to the RIB. What is added is checked against the fabric and what is declared already.
#pragma once

#include "model/label.h"
#include "rib_snmp.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace ribkit::lab {

class fabric;
struct fabric_event;

/// An interface of a switch.
struct fabric_port {
    size_t owner; ///< index of the switch
    std::string name;
    uint32_t if_index;
};

/// What every declared route has.
struct declared_route {
    std::string name; ///< by which events find it; may be empty
    uint32_t vsan = 1;
    bool up = true; ///< or it is withdrawn
    uint32_t line = 0;
};

/// A static route is a row of the route table, of the switch whose interface it leaves through.
struct declared_static : declared_route {
    fcRouteEntry row{};
    fabric_port via{};
};

/// Frames to a group reach all members, each at an interface of a switch.
struct declared_group : declared_route {
    uint32_t fcid = 0;
    std::vector<fabric_port> members{};
};

/// What comes in at one interface leaves the fabric at another, with a label on its way between their switches.
struct label_tunnel {
    fabric_port from, to;
    uint32_t label;
};

/// One route: what is matched, and what becomes of it. It is of the switch whose interface frames leave through.
struct label_rule {
    model::label_key key;       ///< without its VSAN
    std::vector<uint32_t> push; ///< the top one first
    fabric_port via;
};

struct declared_label : declared_route {
    std::variant<label_rule, label_tunnel> what{};
};

/// Routes as they are written down; numbers that are left out are nothing.
struct static_text {
    declared_route head;
    uint32_t fcid = 0;
    std::optional<uint32_t> mask, domain, cost;
    std::string via;
};
struct group_text {
    declared_route head;
    uint32_t fcid = 0;
    std::vector<std::string> members;
};
struct tunnel_text {
    std::vector<std::string> ends; ///< two of them
    uint32_t label = 0;
};
struct rule_text {
    std::string from;                    ///< may be empty
    std::vector<uint32_t> match, push{}; ///< labels
    std::optional<uint32_t> fcid, mask;
    std::string via;
};
struct label_text {
    declared_route head;
    std::variant<rule_text, tunnel_text> what;
};

inline constexpr uint32_t last_label = 0xfffff;
inline constexpr size_t most_pushed = 3; ///< labels on one frame
inline constexpr uint32_t most_distance = 255;

/// Every add_ throws a line_error that says what is wrong with its argument.
class declarations {
  public:
    void add(const fabric &f, const static_text &text);
    void add(const fabric &f, const group_text &text);
    void add(const fabric &f, const label_text &text);
    void set_distance(uint32_t client, uint32_t distance, uint32_t line);

    /// The event's subject is among what was declared, and what happens can happen to it.
    void check(const fabric &f, const fabric_event &event, uint32_t line) const;
    /// All is as it is after the event.
    void apply(const fabric_event &event);

    [[nodiscard]] size_t static_named(std::string_view name, uint32_t line) const;
    [[nodiscard]] size_t group_named(std::string_view name, uint32_t line) const;
    [[nodiscard]] size_t label_named(std::string_view name, uint32_t line) const;

    [[nodiscard]] const std::vector<declared_static> &statics() const { return statics_; }
    [[nodiscard]] const std::vector<declared_group> &groups() const { return groups_; }
    [[nodiscard]] const std::vector<declared_label> &labels() const { return labels_; }
    /// With what distance a client registers; none: with its default.
    [[nodiscard]] std::optional<uint32_t> distance_of(uint32_t client) const;

  private:
    std::vector<declared_static> statics_;
    std::vector<declared_group> groups_;
    std::vector<declared_label> labels_;
    std::map<uint32_t, uint32_t> distances_; ///< by client
};

} // namespace ribkit::lab
