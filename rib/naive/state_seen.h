// The RIB's state as the naive model has it: requests put to it, and what it tells and holds, as rows of numbers.
#pragma once

#include "rib/change_logs.h"
#include "rib/naive/naive_state.h"
#include "rib/state.h"

#include <deque>
#include <map>
#include <vector>

namespace ribkit::rib {

/// Writes down what is told, as the model does.
class listener final : public effects {
  public:
    void told(const route_event<unicast> &event) override;
    void told(const route_event<multicast> &event) override;
    void told(const route_event<label> &event) override;
    /// What is told from now on happens at this time.
    void set_time(uint32_t now) { now_ = now; }
    /// As naive_state::log.
    [[nodiscard]] std::deque<words> log(size_t table) const;

    void vsan_changed(uint32_t vsan, bool suspended) override { told_since.push_back({vsan, suspended ? 1U : 0U}); }

    void compare(table_id table, uint32_t vsan) override {
        told_since.push_back({vsan, 2 + static_cast<uint32_t>(table)});
    }

    std::vector<words> told_since;

  private:
    template <class Kind> void hear(const route_event<Kind> &event);

    change_logs logs_;
    uint32_t now_ = 0;
};

// As the functions of naive_state.
words answer_of(state &asked, const naive_request &request);
std::vector<words> all_routes(const state &held);
std::map<uint32_t, words> vsans_of(const state &held);
std::map<uint32_t, words> clients_of(const state &held);
std::map<std::array<uint32_t, 2>, words> versions_of(const state &held);

} // namespace ribkit::rib
