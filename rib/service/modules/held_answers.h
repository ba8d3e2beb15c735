// Requests that are answered later: each is kept, and answered when its answer is known, in any order. Nobody else
// waits for that. Bounded, of each sender and of all.
#pragma once

#include "qip.h"
#include "rib/modules/waiting.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>

namespace ribkit::rib {

/// A request whose reference is kept.
struct held_answer {
    qip_ref ref;
    bool in_envelope;
    uint32_t opcode;
    uint32_t sender;
    uint64_t due;                       ///< in microseconds: it is answered then in any case
    std::optional<table_id> compares{}; ///< what is to be reported when it is answered
};

class held_answers {
  public:
    /// Requests of one sender, and of all, that may wait at a time.
    static constexpr size_t most_of_one = 64;
    static constexpr size_t most = 1024;

    /// Whether one more request of a sender may wait.
    [[nodiscard]] bool has_room(uint32_t sender) const;
    /// Throws std::bad_alloc.
    void hold(waiting::id request, const held_answer &one);
    /// None where it is not held.
    std::optional<held_answer> take(waiting::id request);
    /// Any that is held.
    std::optional<held_answer> take_any();
    /// One that is due.
    [[nodiscard]] std::optional<waiting::id> overdue(uint64_t now) const;
    /// When the first one is due.
    [[nodiscard]] std::optional<uint64_t> next_due() const;

    [[nodiscard]] size_t size() const { return all_.size(); }

  private:
    void count_off(uint32_t sender);

    std::map<waiting::id, held_answer> all_;
    std::map<uint32_t, size_t> of_sender_;
};

} // namespace ribkit::rib
