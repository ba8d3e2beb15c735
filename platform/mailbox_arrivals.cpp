// What a fault script does to a message between its arrival and the mailbox.
#include "platform/faults.h"
#include "platform/history.h"
#include "platform/mailbox.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace ribkit::platform {

namespace {

void record(const disturbance &done) {
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

void mailbox::put(door &way_in, message letter) { arrive({std::move(letter), &way_in}); }

void mailbox::put_answer(message letter) { arrive({std::move(letter), nullptr}); }

void mailbox::arrive(parcel one) {
    const auto script = faults();
    if (script == nullptr) {
        take_in(std::move(one));
        return;
    }
    const disturbance done = script->next_message();
    record(done);
    if (done.lost) {
        return;
    }
    one.letter.size = std::min(one.letter.size, done.most_bytes);
    if (done.twice) {
        parcel second{copy_of(one.letter), one.way_in};
        arrive_later(std::move(second), done.milliseconds_late);
    }
    if (done.behind_the_next) {
        behind_the_next_.push_back(std::move(one));
    } else {
        arrive_later(std::move(one), done.milliseconds_late);
    }
}

void mailbox::arrive_later(parcel one, uint32_t milliseconds) {
    if (milliseconds == 0) {
        arrive_in_turn(std::move(one));
        return;
    }
    do_later(std::chrono::milliseconds{milliseconds},
             [home = weak_from_this(), late = std::make_shared<parcel>(std::move(one))] {
                 if (const auto box = home.lock()) {
                     const std::scoped_lock lock{box->office_->lock};
                     box->arrive_in_turn(std::move(*late));
                 }
             });
}

void mailbox::arrive_in_turn(parcel one) {
    take_in(std::move(one));
    for (parcel &next : std::exchange(behind_the_next_, {})) {
        take_in(std::move(next));
    }
}

} // namespace ribkit::platform
