// What a module shall have of all tables, and how it is: a reader of what the state tells, without bus or clock.
// Whoever has both sends what it writes, and says what has become of it.
#pragma once

#include "model/fib.h"
#include "rib/modules/module_lane.h"

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <tuple>
#include <vector>

namespace ribkit::rib {

/// How a module is, as far as it matters to those who wait for it.
enum class module_condition : uint8_t {
    serving,
    upgrading, ///< it takes nothing for now
    silent,    ///< it has not answered in time, and since then not at all
    garbled,   ///< its answers make no sense: it is sent nothing until it tells of itself again
    gone       ///< nobody is there
};

/// What a request is told that waits for such a module; RIB_OK: it has to wait.
constexpr uint32_t code_of(module_condition how) {
    switch (how) {
    case module_condition::upgrading:
        return RIB_LC_UPGRADING;
    case module_condition::silent:
        return RIB_TIMEOUT;
    case module_condition::garbled:
        return RIB_MISSING_RESPONSE;
    case module_condition::gone:
        return RIB_MISSING_DEVICE;
    default:
        return RIB_OK;
    }
}

class module_feed {
  public:
    /// What has a damaged answer and has to be sent again is sent so often.
    static constexpr uint32_t most_damaged = 8;

    /// A module that has been heard of, and is to be given everything. What is referred to must last.
    /// @param sequence of the last message that it has taken
    module_feed(const state &routes, waiting &requests, uint32_t sequence)
        : requests_(requests), lanes_{lane_of<label>(routes, requests), lane_of<multicast>(routes, requests),
                                      lane_of<unicast>(routes, requests)},
          sequence_(sequence) {
        restart(sequence);
    }

    template <class Kind> void change(const typename Kind::key &where, waiting::id asker) noexcept;
    void vsan_changed(uint32_t vsan, bool suspended) noexcept;
    /// What it has of a table and a VSAN, or of all VSANs where that is 0, is compared.
    void compare(table_id table, uint32_t vsan, waiting::id asker) noexcept;

    /// It is another one than before, with empty tables or older ones.
    void restart(uint32_t sequence) noexcept;
    /// Requests that it has not answered learn how it is, where it will not answer.
    void set_condition(module_condition now) noexcept;
    [[nodiscard]] module_condition condition() const { return condition_; }

    /// It has to be told how a VSAN is.
    void tell_vsan(uint32_t vsan) noexcept { vsans_.set(vsan); }
    /// Whether there are VSANs to tell of, while it takes anything.
    [[nodiscard]] bool has_vsans() const { return is_there() && vsans_.any(); }
    /// Those VSANs, so many at most. Throws std::bad_alloc.
    [[nodiscard]] std::vector<uint32_t> vsans(size_t most) const;
    /// They are told. @return the sequence of the message that tells them
    uint32_t take_vsans(const std::vector<uint32_t> &told) noexcept;

    /// Whether something can be sent to it.
    [[nodiscard]] bool has_work() const;
    /// Writes the next update. Throws std::bad_alloc, and then nothing was to be sent.
    /// @return its sequence; none where there was nothing to say
    std::optional<uint32_t> write(update_sink &to);
    void settle(uint32_t sequence, const verdict &said) noexcept;
    /// Something is sent again because its answer was damaged.
    void count_damaged() noexcept;
    /// A request waits no longer: what was not answered of it was not in time.
    void give_up(waiting::id asker) noexcept;
    /// Whole tables wait, or do not any more.
    void set_held(bool held) noexcept;
    [[nodiscard]] bool is_held() const { return std::get<0>(lanes_).is_held(); }

    /// The lane of a table.
    template <class Kind> [[nodiscard]] const module_lane<Kind> &lane() const {
        return std::get<static_cast<size_t>(Kind::id)>(lanes_);
    }
    /// Updates on their way.
    [[nodiscard]] size_t in_flight() const;
    /// Whether it has everything that it takes.
    [[nodiscard]] bool is_done() const;

  private:
    [[nodiscard]] bool is_there() const {
        return condition_ == module_condition::serving || condition_ == module_condition::silent;
    }
    template <class Kind> static module_lane<Kind> lane_of(const state &routes, waiting &requests) {
        return module_lane<Kind>(routes, requests);
    }
    template <class Call> void each_lane(Call call) noexcept {
        std::apply([&](auto &...lane) { (call(lane), ...); }, lanes_);
    }

    waiting &requests_;
    std::tuple<module_lane<label>, module_lane<multicast>, module_lane<unicast>> lanes_; ///< by table_id
    module_condition condition_ = module_condition::serving;
    std::bitset<RIB_LAST_VSAN + 1> vsans_;
    uint32_t sequence_;    ///< the last one used
    uint32_t damaged_ = 0; ///< answers for which something was sent again, since it told of itself
    size_t turn_ = 0;      ///< the lane that comes first next time
};

} // namespace ribkit::rib
