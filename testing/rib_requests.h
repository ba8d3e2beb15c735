// Requests to the RIB's state that own what they say, and what the state tells, as text: for tests.
#pragma once

#include "rib/state.h"

#include <cstdint>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace ribkit::testing {

/// Records of an update; they may be temporaries.
struct owned_multicast {
    uint32_t action;
    model::destination to;
    model::multicast_route what;

    operator model::multicast_change() const { return {action, to, what}; } // NOLINT(google-explicit-constructor)
};
struct owned_label {
    uint32_t action;
    model::label_key key;
    model::label_route what;

    operator model::label_change() const { return {action, key, what}; } // NOLINT(google-explicit-constructor)
};

using unicast_records = std::vector<model::route_change>;
using multicast_records = std::vector<owned_multicast>;
using label_records = std::vector<owned_label>;

inline rib::update_answer send(rib::state &to, const rib::update_head &head, const unicast_records &records) {
    return to.update<rib::unicast>(head, records);
}
inline rib::update_answer send(rib::state &to, const rib::update_head &head, const multicast_records &records) {
    return to.update<rib::multicast>(head, records);
}
inline rib::update_answer send(rib::state &to, const rib::update_head &head, const label_records &records) {
    return to.update<rib::label>(head, records);
}

/// What was told, one line a call, in hexadecimal.
class told_lines final : public rib::effects {
  public:
    void told(const rib::route_event<rib::unicast> &event) override {
        std::ostringstream line = head("ucast", event);
        line << event.key.vsan << ' ' << event.key.to.fcid << '/' << event.key.to.mask << " metric "
             << event.what.metric << " flag " << event.what.flag;
        for (const model::next_hop &hop : event.what.hops) {
            line << ' ' << hop.if_index << ':' << hop.domain;
        }
        lines.push_back(line.str());
    }
    void told(const rib::route_event<rib::multicast> &event) override {
        std::ostringstream line = head("mcast", event);
        line << event.key.vsan << ' ' << event.key.to.fcid << '/' << event.key.to.mask;
        add(line, event.what.members);
        lines.push_back(line.str());
    }
    void told(const rib::route_event<rib::label> &event) override {
        std::ostringstream line = head("label", event);
        line << event.key.vsan << " type " << event.key.type << ' ' << event.key.source << ' ' << event.key.to.fcid
             << '/' << event.key.to.mask;
        add(line << " match", std::span(event.key.match).first(event.key.match_count));
        add(line << " from", event.what.sources);
        add(line << " to", event.what.hops);
        lines.push_back(line.str());
    }
    void vsan_changed(uint32_t vsan, bool suspended) override {
        lines.push_back("vsan " + std::to_string(vsan) + (suspended ? " suspended" : " resumed"));
    }
    void compare(rib::table_id /*table*/, uint32_t vsan) override {
        lines.push_back("vsan " + std::to_string(vsan) + " compared");
    }

    /// What was told since the last time.
    std::vector<std::string> take() { return std::exchange(lines, {}); }

    std::vector<std::string> lines;

  private:
    template <class Kind> static std::ostringstream head(const char *kind, const rib::route_event<Kind> &event) {
        constexpr const char *causes[] = {"", "restored ", "replayed "};
        std::ostringstream line;
        line << std::hex << causes[static_cast<size_t>(event.why)] << kind << " oper " << event.oper << " action "
             << event.action << " of " << std::dec << event.uuid << std::hex << " vsan ";
        return line;
    }
    static void add(std::ostream &line, std::span<const uint32_t> words) {
        for (const uint32_t word : words) {
            line << ' ' << word;
        }
    }
};

} // namespace ribkit::testing
