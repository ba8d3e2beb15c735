// What listeners are told of the routes that change: update messages, in the order of the changes, each of one client
// and VSAN. Nothing waits: what cannot be sent now is kept for later, and where too much is kept, listeners are told
// that something is missing.
#pragma once

#include "protocol/table_messages.h"
#include "rib/effects.h"
#include "rib/service/reply.h"
#include "rib/table.h"
#include "ribkit_rib.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <span>
#include <utility>
#include <variant>

namespace ribkit::rib {

class notices {
  public:
    /// Sends a notification. @return false where there is no room for it now
    using sender = std::function<bool(uint32_t opcode, std::span<const uint8_t> message)>;

    /// Messages that are kept until they can be sent.
    static constexpr size_t most_kept = 64;

    /// Throws std::bad_alloc.
    explicit notices(sender send) : send_(std::move(send)), room_(RIBKIT_ANSWER_LIMIT) {}

    /// From now on changes are told, or are not since nobody listens.
    void listen(bool anybody) { heard_ = anybody; }

    /// Adds a change to what will be told.
    template <class Kind> void tell(const route_event<Kind> &change);

    /// Sends all that was told, and what was kept, as far as there is room.
    void flush();
    /// Messages that wait for room.
    [[nodiscard]] size_t kept() const { return kept_.size(); }
    /// Whether something waits for room.
    [[nodiscard]] bool waits() const { return !kept_.empty() || misses_; }

  private:
    struct note {
        uint32_t opcode;
        bytes message;
    };
    /// What all routes of a message have in common.
    struct head {
        table_id table{};
        uint32_t uuid = 0;
        uint32_t vsan = 0;
        uint32_t oper = 0;

        bool operator==(const head &) const = default;
    };
    /// The message that grows, by table_id.
    using open_message = std::variant<codec::writer<wire::fclrt_update>, codec::writer<wire::fcmrt_update>,
                                      codec::writer<wire::fcurt_update>>;

    template <class Kind> bool add(const route_event<Kind> &change);
    template <class Kind> void begin(const head &now);
    void close();
    void keep(uint32_t opcode, std::span<const uint8_t> message);

    sender send_;
    bool heard_ = false;
    bool misses_ = false; ///< something could not be kept
    bytes room_;
    head head_;
    std::optional<open_message> open_;
    std::deque<note> kept_;
};

} // namespace ribkit::rib
