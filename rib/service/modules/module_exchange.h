// The modules on the bus: updates go to them as they come, several before the first is answered, and nobody waits. What
// is not answered in time is given up: its token is remembered all the same, so that a late answer is known for what it
// is, and a module that owes too many of them gets no more until it answers.
#pragma once

#include "rib/instance.h"
#include "rib/modules/modules.h"
#include "rib/service/modules/module_messages.h"
#include "rib_wrap.h"

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <vector>

namespace ribkit::rib {

class module_exchange {
  public:
    /// Updates on their way to a module at a time.
    static constexpr size_t most_in_flight = 8;
    /// Answers that a module may owe.
    static constexpr uint32_t most_owed = 64;
    /// An answer is waited for so long.
    static constexpr uint64_t patience = 5'000'000; // microseconds

    /// What is referred to must last. Throws std::bad_alloc.
    module_exchange(uint32_t handle, modules &followed, instance &rib)
        : handle_(handle), followed_(followed), rib_(rib) {}
    module_exchange(const module_exchange &) = delete;
    module_exchange &operator=(const module_exchange &) = delete;
    ~module_exchange();

    /// A module tells of itself. Throws std::bad_alloc.
    /// @param holds whether a new one that has entries keeps them for now: clients are still bringing their routes back
    void hear(const model::module_node &told, bool holds = false);

    /// Sends the next update to each module that can take one. Throws std::bad_alloc, and nothing is lost then.
    void send_some();
    /// Whether send_some() has something to do.
    [[nodiscard]] bool can_send() const;

    /// Takes an answer. Throws std::bad_alloc. @return whether it was to an update
    bool take_answer(uint32_t token, std::span<const uint8_t> payload);
    /// Some answers may not come any more: finds out which.
    void look_for_lost();
    /// Gives up what was not answered in time.
    void give_up_late(uint64_t now);
    /// Whether any answer may come.
    [[nodiscard]] bool awaits() const;
    /// When something is to be given up, or tried again.
    [[nodiscard]] std::optional<uint64_t> next_due() const;

  private:
    struct sent {
        uint32_t token = 0;
        uint32_t sequence = 0;
        table_id table = table_id::unicast;
        bool is_question = false;
        uint64_t due = 0;
        std::vector<uint32_t> vsans{}; ///< that it tells of, where it is about VSANs
    };
    struct ready {
        sent about{};
        uint32_t opcode = 0;
        bytes message{};
    };
    struct contact {
        qip_addr address;
        uint32_t instance;
        std::optional<uint32_t> former{}; ///< the instance before it
        rib_token owed{};
        std::vector<sent> in_flight{};
        std::optional<ready> unsent{}; ///< for which there was no room
        uint64_t rests_until = 0;
    };

    bool can_send_to(const contact &to, const module_feed &feed) const;
    void send_vsans(contact &to, module_feed &feed);
    void send(contact &to, module_feed &feed, sent about, uint32_t opcode, std::span<const uint8_t> message);
    void lose(contact &to, module_feed &feed);
    void lose_token(contact &of, module_feed &feed, uint32_t token);
    void settle(module_feed &feed, const sent &about, const verdict &said);
    void forget(uint32_t token) const;
    void forget_tokens(contact &of) const;
    void forget_given_up(contact &of) const;
    contact &enter(const model::module_node &told);
    bool is_over(const model::module_node &told) const;

    uint32_t handle_;
    modules &followed_;
    instance &rib_;
    module_message writer_;
    std::map<uint32_t, contact> contacts_; ///< by number
};

} // namespace ribkit::rib
