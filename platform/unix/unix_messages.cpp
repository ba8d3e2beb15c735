// Messages made of the pieces that arrive, until they are read or thrown away. What waits for a reader, or for the rest
// of its message, is bounded; a sender is told of the room that its messages leave.
#include "platform/unix/unix_endpoint.h"

#include "platform/history.h"

#include <new>

namespace ribkit::platform {

namespace {

constexpr uint64_t most_unread = 1 << 20; // bytes beyond which a connection is not read
constexpr uint64_t most_held = 256 << 20; // bytes that wait for a reader, or for the rest of their message

class way_home final : public return_path {
  public:
    way_home(std::weak_ptr<unix_endpoint> end, std::shared_ptr<unix_waker> waker, unix_endpoint::connection_ptr from,
             const message &letter)
        : end_(std::move(end)), waker_(std::move(waker)), from_(std::move(from)), token_(letter.token),
          size_(letter.size) {
        ++from_->arrived.unread;
        from_->arrived.bytes += size_;
        waker_->unread_bytes += size_;
    }
    way_home(const way_home &) = delete;
    way_home &operator=(const way_home &) = delete;
    ~way_home() override {
        was_read(); // or thrown away
        if (from_->arrived.room_owed != 0) {
            waker_->wake(); // its sender has to be told, whom no answer has
        }
    }

    /// Whether that is news.
    bool was_read() {
        const bool first = read_.exchange(1) == 0;
        if (first) {
            --from_->arrived.unread;
            from_->arrived.bytes -= size_;
            waker_->unread_bytes -= size_;
            ++from_->arrived.room_owed;
        }
        return first;
    }

    [[nodiscard]] const unix_endpoint::connection_ptr &from() const { return from_; }

    int answer(message letter) override {
        if (token_ == 0) {
            return 0;
        }
        letter.token = token_;
        const auto end = end_.lock();
        return end == nullptr ? ECANCELED : end->send_answer(from_, std::move(letter));
    }

  private:
    std::weak_ptr<unix_endpoint> end_;
    std::shared_ptr<unix_waker> waker_;
    unix_endpoint::connection_ptr from_;
    std::atomic<uint32_t> read_{0}; // a word: riscv64 exchanges bytes with libatomic only
    uint32_t token_;
    uint32_t size_;
};

} // namespace

bool unix_endpoint::has_full_queue(const unix_connection &from) const {
    const uint32_t unread = from.arrived.unread;
    const bool has_much = from.arrived.bytes >= most_unread || waker_->unread_bytes >= most_held / 2;
    return from.listener != nullptr && (unread >= from.listener->bound || (unread != 0 && has_much));
}

bool unix_endpoint::take_piece(const connection_ptr &from, const packet_head &head, std::span<const uint8_t> piece) {
    message_builder &incoming = from->incoming;
    if (!incoming.add(head, piece)) {
        return false;
    }
    from->last_fed = ++pieces_;
    held_pieces_ += piece.size();
    if (!incoming.is_whole()) {
        make_room_for_pieces();
    } else {
        held_pieces_ -= incoming.arrived();
        message whole = incoming.take();
        if (from->listener != nullptr) {
            take_message(from, std::move(whole));
        } else {
            take_answer(*from, std::move(whole));
        }
    }
    return true;
}

// Those that stopped in the middle of a message, if there are any, have waited longest for their next piece.
void unix_endpoint::make_room_for_pieces() {
    while (held_pieces_ + waker_->unread_bytes > most_held) {
        connection_ptr oldest;
        for (const auto &[number, one] : connections_) {
            if (one->incoming.is_begun() && (oldest == nullptr || one->last_fed < oldest->last_fed)) {
                oldest = one;
            }
        }
        if (oldest == nullptr) {
            return;
        }
        record_quietly("unix: a connection was closed, since too many large messages arrive at once");
        drop(oldest, ENOBUFS);
    }
}

void unix_endpoint::take_message(const connection_ptr &from, message letter) {
    letter.from = from->from;
    letter.reply = std::make_shared<way_home>(weak_from_this(), waker_, from, letter);
    box_->put(*from->listener->way_in, std::move(letter));
}

void unix_endpoint::take_answer(unix_connection &from, message letter) {
    if (from.asked.erase(letter.token) != 0) {
        box_->put_answer(std::move(letter));
    }
}

int unix_endpoint::receive(const selector &selected, message &letter) {
    {
        const std::scoped_lock lock{office_->lock};
        for (const connection_ptr &one : std::exchange(owing_, {})) {
            settle(one);
        }
        look_for_arrivals();
    }
    const int error = box_->receive(selected, letter);
    if (error == 0 && letter.reply != nullptr) {
        was_read(letter);
    }
    return error;
}

// Who waits for an answer learns with it that there is room again, or at our next look for messages.
void unix_endpoint::was_read(message &letter) {
    auto &way = static_cast<way_home &>(*letter.reply);
    if (!way.was_read()) {
        return;
    }
    const std::scoped_lock lock{office_->lock};
    if (letter.token != 0) {
        try {
            owing_.push_back(way.from());
            watch(*way.from());
            return;
        } catch (const std::bad_alloc &) { // then it is said at once
        }
    }
    settle(way.from());
}

} // namespace ribkit::platform
