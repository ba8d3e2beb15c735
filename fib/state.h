// A module's FIB: three tables of entries, the VSANs and what changes them, what it is doing. The RIB's messages go in
// as values and answers come out; there is no bus, clock or file here, and with the same messages everything is the
// same everywhere.
#pragma once

#include "fib/condition.h"
#include "fib/rewrites.h"
#include "fib/space.h"
#include "fib/table.h"
#include "model/system.h"

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace ribkit::fib {

/// What an update of a table has led to.
template <class Kind> struct table_answer {
    model::fib_answer said;
    std::vector<model::fib_fault<typename Kind::key>> faults{}; ///< keys that did not take effect, or differ

    bool operator==(const table_answer &) const = default;
};

/// The differences that the last comparisons have found: of a table at most so many are kept.
inline constexpr size_t most_differences = 1U << 16;

class state {
  public:
    explicit state(const fib_sizes &sizes = {});
    state(const state &) = delete;
    state &operator=(const state &) = delete;

    /// Takes VSANs and their settings. @return result code
    uint32_t take_vsans(uint32_t sequence, std::span<const std::pair<uint32_t, model::vsan_attributes>> vsans);
    /// What is known of a VSAN: its own settings, and the latency of all.
    [[nodiscard]] model::vsan_attributes vsan(uint32_t id) const;
    [[nodiscard]] const std::map<uint32_t, model::vsan_attributes> &vsans() const { return vsans_; }

    /// Takes an update of what changes its VSAN.
    model::fib_answer take_rewrites(const model::fib_head &head, std::span<const rewrite> paths);
    [[nodiscard]] const rewrites &all_rewrites() const { return rewrites_; }

    /// By which way a flow leaves, as a control word and what follows it; empty where none leads there.
    [[nodiscard]] std::span<const uint32_t> way_of(const model::flow &flow) const;

    /// The table of a kind, to be read.
    /// @tparam Kind unicast, multicast or label
    template <class Kind> [[nodiscard]] const table<Kind> &entries() const;
    /// What the last comparison of a table has found.
    template <class Kind> [[nodiscard]] const std::map<typename Kind::key, uint32_t> &differences() const;
    [[nodiscard]] uint32_t count() const { return unicast_.count() + multicast_.count() + label_.count(); }

    /// The last number of the RIB's messages that was taken; 0 before the first.
    [[nodiscard]] uint32_t sequence() const { return sequence_.value_or(0); }

    [[nodiscard]] model::fib_state now() const;
    /// The RIB knows the module.
    void reach() { condition_.reach(); }
    /// The RIB cannot be reached, or has begun anew: what goes on is given up, and every entry stays.
    void lose();
    void set_upgrading(bool upgrading) { condition_.set_upgrading(upgrading); }
    void exit() { condition_.exit(); }

  private:
    template <class Kind> friend class update_work;
    template <class Kind> table<Kind> &table_of();
    template <class Kind> std::map<typename Kind::key, uint32_t> &differences_of();
    uint32_t admit(uint32_t sequence);
    [[nodiscard]] bool is_merging() const;

    vsan_shares shares_;
    table<unicast> unicast_;
    table<multicast> multicast_;
    table<label> label_;
    std::map<model::route_key, uint32_t> unicast_differences_;
    std::map<model::multicast_key, uint32_t> multicast_differences_;
    std::map<model::label_key, uint32_t> label_differences_;
    std::map<uint32_t, model::vsan_attributes> vsans_;
    uint32_t latency_of_all_ = 0;
    rewrites rewrites_;
    condition condition_;
    std::optional<uint32_t> sequence_;
};

} // namespace ribkit::fib
