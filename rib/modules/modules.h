// All modules that have told of themselves, and the requests that wait for them: one more reader of what the state
// tells. Each change goes to every module; a request is done when all of them have answered for what it changed.
#pragma once

#include "rib/effects.h"
#include "rib/modules/module_feed.h"

#include <array>
#include <cstdint>
#include <map>

namespace ribkit::rib {

class modules final : public effects {
  public:
    /// @param routes must last; it need not have been made yet
    explicit modules(const state &routes) : routes_(routes) {}

    /// A module has told of itself: a new one is given everything. Throws std::bad_alloc.
    /// @param sequence of the last message that it has taken
    module_feed &enter(uint32_t number, uint32_t sequence);
    /// By their numbers.
    [[nodiscard]] std::map<uint32_t, module_feed> &all() { return all_; }
    [[nodiscard]] const std::map<uint32_t, module_feed> &all() const { return all_; }

    /// Whole tables that waited may go now.
    void release() noexcept;

    /// What the state tells until end() is the doing of a request that wants to know what becomes of it. Throws
    /// std::bad_alloc.
    waiting::id begin() { return asker_ = requests_.open(); }
    /// @param answer of the RIB itself, which the modules' will add to
    void end(const update_answer &answer) noexcept;
    /// A request waits no longer.
    void give_up(waiting::id request) noexcept;
    std::optional<waiting::done> take_done() { return requests_.take_done(); }
    /// Updates on their way to modules, by table_id.
    [[nodiscard]] std::array<uint32_t, tables> in_flight() const;
    [[nodiscard]] const waiting &requests() const { return requests_; }

    void told(const route_event<unicast> &change) override;
    void told(const route_event<multicast> &change) override;
    void told(const route_event<label> &change) override;
    void vsan_changed(uint32_t vsan, bool suspended) override;
    /// The request that goes on is told what is different.
    void compare(table_id table, uint32_t vsan) override;

  private:
    template <class Kind> void tell(cause why, const typename Kind::key &where) noexcept;

    const state &routes_;
    waiting requests_;
    std::map<uint32_t, module_feed> all_;
    waiting::id asker_ = 0;
};

} // namespace ribkit::rib
