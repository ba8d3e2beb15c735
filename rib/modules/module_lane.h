// What a module shall have of one table: destinations that changed, in the order in which they did, VSANs that it is
// given whole or that leave it, what is on its way, and what it had no room for.
//
// A merge gives a module everything of a VSAN, or of all (VSAN 0): it begins, names the routes in the order of their
// keys, and ends once all of them were answered; what the module has beside them is gone then. A destination that
// changes while a merge will still come to it is no news.
#pragma once

#include "rib/modules/module_update.h"
#include "rib/modules/pending_keys.h"
#include "rib/state.h"

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace ribkit::rib {

/// So many destinations at most are remembered as changed, and so many as failed, of a table. Where there are more, the
/// whole VSAN is sent.
inline constexpr size_t most_remembered = 65536;

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
    /// The module is another one than before: nothing is on its way, and nothing is known of what it has.
    void restart() noexcept;
    /// What failed is tried again.
    void retry() noexcept;

    /// Whether there is something to send.
    [[nodiscard]] bool has_work() const;
    /// Writes the next update. Throws std::bad_alloc, and nothing has changed then.
    /// @return whether there was something to say; what cannot be said has failed
    bool write(update_sink &to, uint32_t sequence);
    /// What has become of an update. @return whether it was one of this table
    bool settle(uint32_t sequence, const verdict &said) noexcept;

    /// The module will not answer for now: whoever waits is told why, and nothing waits any more.
    void disappoint(uint32_t code) noexcept;
    /// A request waits no longer: for its routes that were not answered the module has not answered in time.
    void tell_owed(waiting::id asker) const noexcept;

    /// Updates on their way.
    [[nodiscard]] size_t in_flight() const { return flights_.size(); }
    /// What the module did not take, and why.
    [[nodiscard]] const std::map<key, uint32_t> &failed() const { return failed_; }
    /// Whether the module has everything that it takes.
    [[nodiscard]] bool is_done() const { return !has_work() && flights_.empty() && !merge_; }

  private:
    using entry = owed_key<Kind>;

    struct flight {
        uint32_t sequence;
        uint32_t oper;
        uint32_t vsan;
        uint32_t merge = 0; ///< the number of the merge that begins or ends
        std::vector<entry> keys{};
        std::vector<std::pair<key, waiting::id>> more{}; ///< further requests that wait for keys
    };
    enum class stage : uint8_t { begin, beginning, routes, end, ending };
    struct merge {
        uint32_t vsan; ///< 0: all
        uint32_t number;
        stage now = stage::begin;
        key next;        ///< the first that has not been sent
        size_t owed = 0; ///< routes that were not answered
    };
    using vsan_set = std::bitset<RIB_LAST_VSAN + 1>;

    [[nodiscard]] const typename table<Kind>::record *wanted(const key &where) const;
    [[nodiscard]] bool comes_anyway(const key &where) const;
    [[nodiscard]] bool is_behind_merge(const key &where) const;
    [[nodiscard]] bool may_merge() const;
    [[nodiscard]] bool may_tell_changes() const;

    void remember(const entry &one) noexcept;
    void remember_askers(const flight &lost) noexcept;
    void send_again(const flight &lost, uint32_t code) noexcept;
    void take(const flight &of, const verdict &said) noexcept;
    void tell(const flight &of, const entry &one, uint32_t code) noexcept;
    void fail(const entry &one, uint32_t sequence, uint32_t code) noexcept;
    void end_in_merge(const entry &one) noexcept;
    void found_room(uint32_t vsan, size_t count) noexcept;

    void open_merge();
    void write_merge(update_sink &to, flight &made);
    void write_routes(update_sink &to, flight &made);
    void write_withdrawal(update_sink &to, flight &made);
    void write_changes(update_sink &to, flight &made);
    added put(update_sink &to, flight &made, uint32_t oper, const entry &one,
              const typename table<Kind>::record *route);
    added add(update_sink &to, const key &where, const typename table<Kind>::record *route) const;

    const state &routes_;
    waiting &requests_;
    pending_keys<Kind> pending_;
    std::map<key, uint32_t> failed_; ///< code by destination
    vsan_set crowded_;               ///< VSANs of which more failed than is remembered
    vsan_set withdrawn_;
    vsan_set whole_; ///< VSANs to be merged; 0: all of them
    std::optional<merge> merge_;
    uint32_t merges_ = 0;
    bool merges_next_ = false; ///< changes and merges take turns
    std::vector<flight> flights_;
};

extern template class module_lane<unicast>;
extern template class module_lane<multicast>;
extern template class module_lane<label>;

} // namespace ribkit::rib
