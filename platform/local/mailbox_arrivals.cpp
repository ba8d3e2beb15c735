// What a fault script does to a message between its arrival and the mailbox.
#include "platform/history.h"
#include "platform/local/mailbox.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace ribkit::platform {

namespace {

void record(const disturbance &done) noexcept {
    const auto tell = [](bool happened, const char *text) {
        if (happened) {
            record_event(text);
        }
    };
    tell(done.lost, "fault: message lost");
    tell(done.twice, "fault: message twice");
    tell(done.behind_the_next, "fault: message behind the next");
    tell(done.milliseconds_late != 0, "fault: message late");
    tell(done.most_bytes != UINT32_MAX, "fault: message truncated");
}

} // namespace

class mailbox::late_arrival final : public late_action {
  public:
    late_arrival(std::weak_ptr<mailbox> home, packet one) : home_(std::move(home)), one_(std::move(one)) {}

    void happen() noexcept override {
        if (const auto box = home_.lock()) {
            const std::scoped_lock lock{box->office_->lock};
            box->arrive_in_turn(one_);
        }
    }

  private:
    std::weak_ptr<mailbox> home_;
    packet one_;
};

void mailbox::put(door &way_in, message letter) {
    if (faults_->get() != nullptr) {
        arrival all = prepare(&way_in, std::move(letter));
        complete(all);
        return;
    }
    if (!closed_ && !hand_to_reader(letter)) {
        packet one = queue_.packed(&way_in, std::move(letter));
        queue_.put(one);
    }
}

void mailbox::put_answer(message letter) {
    if (faults_->get() != nullptr) {
        arrival all = prepare(nullptr, std::move(letter));
        complete(all);
        return;
    }
    take_in_answer(letter);
}

arrival mailbox::prepare(door *way_in, message letter) {
    arrival made;
    made.box = this;
    if (const auto script = faults_->get()) {
        made.done = script->next_message();
    }
    if (made.done.lost) {
        return made;
    }
    letter.size = std::min(letter.size, made.done.most_bytes);
    if (made.done.twice) {
        put_off(made, 0, queue_.packed(way_in, copy_of(letter)));
    }
    packet one = queue_.packed(way_in, std::move(letter));
    if (made.done.behind_the_next) {
        made.behind_the_next = std::move(one);
    } else {
        put_off(made, 1, std::move(one));
    }
    return made;
}

void mailbox::put_off(arrival &made, size_t place, packet one) {
    if (made.done.milliseconds_late == 0) {
        made.at_once.at(place) = std::move(one);
    } else {
        made.late.at(place) = std::make_unique<late_arrival>(weak_from_this(), std::move(one));
    }
}

void mailbox::complete(arrival &all) noexcept {
    record(all.done);
    for (packet &one : all.at_once) {
        if (!one.empty()) {
            all.box->arrive_in_turn(one);
        }
    }
    for (auto &one : all.late) {
        if (one != nullptr) {
            do_later(std::chrono::milliseconds{all.done.milliseconds_late}, std::move(one));
        }
    }
    packet &held_back = all.box->behind_the_next_;
    held_back.parcels.splice(held_back.parcels.end(), all.behind_the_next.parcels);
    held_back.lanes.splice(held_back.lanes.end(), all.behind_the_next.lanes);
}

void mailbox::arrive_in_turn(packet &one) noexcept {
    take_in(one);
    for (packet next = std::exchange(behind_the_next_, {}); !next.empty();) {
        take_in(next);
    }
}

} // namespace ribkit::platform
