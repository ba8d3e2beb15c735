// Updates on their way to the RIB, several before the first is answered: a client that waits for each is three times as
// long about it. Answers may come in any order; one that is lost or refused says nothing of the others.
#pragma once

#include "bus/rib_link.h"
#include "clients/known_routes.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <span>

namespace ribkit::clients {

/// What one update is about.
template <class Table> struct update_content {
    uint32_t vsan = 0;
    shared_difference<Table> of{}; ///< keeps the changes
    std::span<const change_of<Table>> changes{};
};

template <class Table> class update_pipeline {
  public:
    /// Updates that may be unanswered at a time.
    static constexpr size_t most_unanswered = 8;

    /// What becomes of updates.
    struct listener {
        std::function<void(const update_content<Table> &, const protocol::fcurt_response &)> answered;
        std::function<void(const update_content<Table> &)> lost; ///< nobody knows what the RIB did
    };

    /// The link has to last.
    /// @param traces print what is sent, and send nothing more before it is answered
    update_pipeline(bus::rib_link &link, bool traces, listener told)
        : link_(link), traces_(traces), told_(std::move(told)) {}

    /// Sends an update. Where as many as may be are unanswered, answers are awaited first. Throws no_answer, of
    /// whichever update it was, and link_closed.
    /// @param update may be overwritten when this returns
    void send(const update_content<Table> &content, std::span<uint8_t> update);

    /// Awaits the answers about a VSAN. Throws as `send`.
    void finish(uint32_t vsan);
    /// Awaits all answers. Throws as `send`.
    void finish();
    /// Awaits what is left when something was lost, whatever else is. Throws link_closed.
    void give_up();

    /// Sends an update that stands alone, and awaits the answer. Throws no_answer and link_closed.
    protocol::fcurt_response exchange(std::span<uint8_t> update);

  private:
    struct flight {
        bus::sent_request sent;
        update_content<Table> content;
    };

    [[nodiscard]] size_t most() const { return is_careful_ || traces_ ? 1 : most_unanswered; }
    void take_first();
    template <class Answer> void take(const update_content<Table> &content, const Answer &answer);
    protocol::fcurt_response result_of(std::span<const uint8_t> answer);

    bus::rib_link &link_;
    bool traces_;
    listener told_;
    std::deque<flight> flights_;
    bool is_careful_ = true; ///< one at a time, until one is taken: a RIB that is not well does not get eight
};

extern template class update_pipeline<unicast_table>;
extern template class update_pipeline<multicast_table>;
extern template class update_pipeline<label_table>;

} // namespace ribkit::clients
