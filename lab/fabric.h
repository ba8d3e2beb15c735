// A fabric as the lab sees it: switches with their domains, VSANs, links between interfaces, and what happens to the
// links while the lab runs. What is added is checked against what is there already.
#pragma once

#include "lab/fabric_module.h"
#include "lab/files/declarations.h"
#include "model/system.h"
#include "rib/hardware/rib_spaces.h"
#include "rib/service/rib_policy.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ribkit::lab {

inline constexpr uint32_t largest_cost = 65535;
inline constexpr uint32_t default_cost = 500;
inline constexpr uint32_t largest_latency = 60'000; ///< milliseconds

struct fabric_vsan {
    uint32_t id;
    std::string name;            ///< may be empty
    model::vsan_attributes is{}; ///< as its RIB begins with it
};

struct fabric_switch {
    std::string name;
    uint32_t domain;
    uint32_t line;
};

struct fabric_link {
    std::array<fabric_port, 2> ends;
    uint32_t cost;
    bool up;
    std::vector<uint32_t> vsans; ///< ids, ascending
    uint32_t line;

    [[nodiscard]] bool carries(uint32_t vsan) const;
};

/// A link as it is written down: its ends are "SWITCH INTERFACE"; no VSANs means all.
struct link_text {
    std::array<std::string, 2> ends;
    uint32_t cost = default_cost;
    bool up = true;
    std::vector<uint32_t> vsans;
};

/// What an event happens to.
enum class event_subject : uint8_t { link, static_route, group, label, distance, module };

/// At a moment of the run a link goes down, comes up, or costs something else; a declared route is added, changed or
/// withdrawn; a client's distance becomes another one; a module leaves, returns, upgrades, restarts.
struct fabric_event {
    std::chrono::milliseconds at;
    size_t index; ///< of the link, the declared route or the module; of a distance, the client
    std::optional<bool> up;
    std::optional<uint32_t> cost; ///< of a link or a static route; the distance
    event_subject subject = event_subject::link;
    std::optional<fabric_port> joins{}, leaves{}; ///< of a group
    std::optional<fabric_port> to{};              ///< where a tunnel ends from now on
    module_turn turn{};                           ///< of a module
    module_room room{};                           ///< of a module that restarts
};

/// Every add_ takes the line where its argument stands, and throws a line_error that says what is wrong with it.
class fabric {
  public:
    std::string name;
    rib::rib_policy policy;             ///< of its RIB
    declarations declared;              ///< routes beside those of the shortest paths
    std::vector<std::string> roles{};   ///< of its clients, by name; none: those that it needs
    std::vector<fabric_module> modules; ///< of the local switch

    void add_vsan(fabric_vsan vsan, uint32_t line);
    void add_switch(const std::string &switch_name, uint32_t domain, uint32_t line);
    void add_link(const link_text &text, uint32_t line); ///< after the VSANs and switches
    void add_event(std::chrono::milliseconds at, std::string_view link_end, std::optional<bool> up,
                   std::optional<uint32_t> cost, uint32_t line); ///< after the links; kept in the order of time
    /// Another event, whose subject is declared.
    void add_event(const fabric_event &event, uint32_t line);
    /// One of a module, by its name or number. @return its index
    [[nodiscard]] size_t module_named(std::string_view module_name, uint32_t number, uint32_t line) const;
    void set_local(const std::string &switch_name, uint32_t line);

    /// After the VSANs; what is not given is what they can need at most.
    void set_spaces(std::optional<uint32_t> positions, std::optional<uint32_t> path_units, uint32_t line);

    [[nodiscard]] bool has_vsan(uint32_t id) const;

    /// Forgets what happens to modules, for whoever has none.
    void forget_modules();

    /// Forgets all other VSANs.
    void keep_vsans(const std::vector<uint32_t> &ids);

    [[nodiscard]] rib::rib_spaces spaces() const;
    [[nodiscard]] const std::vector<fabric_vsan> &vsans() const { return vsans_; }
    [[nodiscard]] std::vector<uint32_t> vsan_ids() const;
    /// The VSANs as its RIB begins with them.
    [[nodiscard]] std::map<uint32_t, model::vsan_attributes> vsan_records() const;
    [[nodiscard]] const std::vector<fabric_switch> &switches() const { return switches_; }
    [[nodiscard]] const std::vector<fabric_link> &links() const { return links_; }
    [[nodiscard]] const std::vector<fabric_event> &events() const { return events_; }
    [[nodiscard]] const fabric_switch &local() const { return switches_[local_]; }
    [[nodiscard]] size_t local_index() const { return local_; }

    /// The fabric as it is after the event.
    void apply(const fabric_event &event);

    /// An interface of a switch, written "SWITCH INTERFACE". Throws a line_error.
    /// @param what it is for, as the error calls it
    [[nodiscard]] fabric_port parse_port(std::string_view text, const char *what, uint32_t line) const;
    /// The link of an interface; none where it has none.
    [[nodiscard]] std::optional<size_t> link_at(const fabric_port &port) const;

    [[nodiscard]] std::string port_text(const fabric_port &port) const; ///< "edge-1 fc1/1"
    [[nodiscard]] std::string link_name(const fabric_link &link) const; ///< "edge-1 fc1/1 - core-1 fc1/2"

  private:
    [[nodiscard]] std::vector<uint32_t> checked_vsans(const std::vector<uint32_t> &ids, uint32_t line) const;
    [[nodiscard]] size_t find_link(std::string_view end, uint32_t line) const;
    void insert(const fabric_event &event);

    std::vector<fabric_vsan> vsans_;
    std::vector<fabric_switch> switches_;
    std::vector<fabric_link> links_;
    std::vector<fabric_event> events_;
    size_t local_ = 0;
    std::optional<uint32_t> positions_, path_units_;
    std::map<std::string, size_t, std::less<>> switch_by_name_;
    std::map<uint32_t, size_t> switch_by_domain_;
    std::map<std::pair<size_t, uint32_t>, size_t> link_by_port_; ///< switch and interface index
};

} // namespace ribkit::lab
