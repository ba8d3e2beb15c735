// What a module shall have of one table: destinations that changed, in the order in which they did, VSANs that it is
// given whole or that leave it, what is on its way, and what it had no room for; and whether it has all that.
#pragma once

#include "rib/modules/comparison_course.h"
#include "rib/modules/merge_course.h"
#include "rib/modules/module_update.h"
#include "rib/modules/pending_keys.h"
#include "rib/modules/refused_keys.h"
#include "rib/state.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace ribkit::rib {

template <class Kind> class module_lane {
  public:
    using key = typename Kind::key;

    /// What is referred to must last.
    module_lane(const state &routes, waiting &requests) : routes_(routes), requests_(requests) {}

    /// A route has changed.
    /// @param asker the request that wants to know of it, or 0
    void change(const key &where, waiting::id asker) noexcept;
    /// All routes of a VSAN come, or of all VSANs where it is 0.
    void send_whole(uint32_t vsan) noexcept;
    /// All routes of a VSAN go.
    void withdraw(uint32_t vsan) noexcept;
    /// What the module has is compared, of a VSAN or of all.
    /// @param asker the request that is told what is different
    void compare(uint32_t vsan, waiting::id asker) noexcept;
    /// The module is another one than before: nothing is on its way, and nothing is known of what it has.
    void restart() noexcept;
    /// What failed is tried again.
    void retry() noexcept;
    /// Whole tables wait, or do not any more.
    void set_held(bool held) noexcept { merges_.set_held(held); }
    [[nodiscard]] bool is_held() const { return merges_.is_held(); }

    /// Whether there is something to send.
    [[nodiscard]] bool has_work() const;
    /// Writes the next update. Throws std::bad_alloc, and nothing has changed then.
    /// @return whether there was something to say; what cannot be said has failed
    bool write(update_sink &to, uint32_t sequence);
    /// What has become of an update. @return whether it is sent again because its answer was damaged
    bool settle(uint32_t sequence, const verdict &said) noexcept;

    /// The module will not answer for now: whoever waits is told why, and nothing waits any more.
    void disappoint(uint32_t code) noexcept;
    /// A request waits no longer: for its routes that were not answered the module has not answered in time.
    void give_up(waiting::id asker) noexcept;

    /// Updates on their way.
    [[nodiscard]] size_t in_flight() const { return flights_.size(); }
    /// Whether the module has everything that it takes.
    [[nodiscard]] bool is_done() const { return !has_work() && flights_.empty() && !merges_.is_wanted(); }

  private:
    using entry = owed_key<Kind>;
    using route_record = typename table<Kind>::record;

    struct flight {
        uint32_t sequence;
        uint32_t oper;
        uint32_t vsan;
        uint32_t merge = 0;      ///< the number of the merge that begins or ends
        uint32_t comparison = 0; ///< ... of the comparison that it is part of
        bool is_question = false;
        std::vector<key> names{}; ///< that are compared
        std::vector<entry> keys{};
        std::vector<std::pair<key, waiting::id>> more{}; ///< further requests that wait for keys
    };
    enum class turn : uint8_t { changes, merge, comparison };

    [[nodiscard]] const route_record *wanted(const key &where) const;
    [[nodiscard]] bool may_tell_changes() const;
    [[nodiscard]] bool may_compare() const;
    [[nodiscard]] turn next_turn() const;

    void remember(const entry &one) noexcept;
    void remember_askers(const flight &lost) noexcept;
    void send_again(const flight &lost, uint32_t code) noexcept;
    void take(const flight &of, const verdict &said) noexcept;
    void tell(const flight &of, const entry &one, uint32_t code) noexcept;
    void fail(const entry &one, uint32_t sequence, uint32_t code) noexcept;
    void found_room(uint32_t vsan, size_t count) noexcept;

    void settle_comparison(const flight &of, const verdict &said) noexcept;
    void repeat_names(const flight &lost) noexcept;
    void take_findings(const verdict &said) noexcept;

    // What is written.
    void write_merge(update_sink &to, flight &made);
    void write_routes(update_sink &to, flight &made);
    void write_withdrawal(update_sink &to, flight &made);
    void write_changes(update_sink &to, flight &made);
    void write_comparison(update_sink &to, flight &made);
    void write_names(update_sink &to, flight &made);
    void write_lost_names(update_sink &to, flight &made);
    added put_name(update_sink &to, flight &made, const key &where, const route_record *route);
    template <class Take> std::optional<key> each_route(uint32_t vsan, const key &from, Take take) const;
    bool touch_all() noexcept;
    added put(update_sink &to, flight &made, uint32_t oper, const entry &one, const route_record *route);

    const state &routes_;
    waiting &requests_;
    pending_keys<Kind> pending_;
    refused_keys<Kind> refused_;
    vsan_set withdrawn_;
    merge_course<Kind> merges_;
    comparison_course<Kind> comparisons_;
    turn last_turn_ = turn::changes;
    std::vector<flight> flights_;
};

extern template class module_lane<unicast>;
extern template class module_lane<multicast>;
extern template class module_lane<label>;

} // namespace ribkit::rib
