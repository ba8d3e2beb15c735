// Lanes and their nodes move between lists of the standard library, which needs no memory.
#include "platform/local/fair_queue.h"

#include <algorithm>
#include <utility>

namespace ribkit::platform {

namespace {

template <typename Node> void move_first(std::list<Node> &from, std::list<Node> &to) {
    to.splice(to.end(), from, from.begin());
}

template <typename Node> void get_one(std::list<Node> &spare, std::list<Node> &wanted) {
    if (spare.empty()) {
        wanted.emplace_back();
    } else {
        move_first(spare, wanted);
    }
}

template <typename Node> void give_one(std::list<Node> &done, std::list<Node> &spare, size_t most) {
    if (spare.size() < most) {
        move_first(done, spare);
    } else {
        done.pop_front();
    }
}

template <typename Lanes> auto find_lane(Lanes &lanes, const door *way_in, uint32_t sender) {
    return std::find_if(lanes.begin(), lanes.end(),
                        [=](const lane &one) { return one.sender == sender && one.way_in == way_in; });
}

bool is_full(const lane &one) { return one.waiting.size() >= one.way_in->bound; }

} // namespace

bool fair_queue::has_room(const door &way_in, uint32_t sender) const {
    const auto found = find_lane(lanes_, &way_in, sender);
    return found == lanes_.end() ? lanes_.size() < most_lanes : !is_full(*found);
}

bool fair_queue::can_hold_back(const door &way_in, const message &letter) const {
    const auto found = find_lane(lanes_, &way_in, sender_of(letter));
    if (found == lanes_.end()) {
        return lanes_.size() < most_lanes;
    }
    return found->waiting.size() < most_held_back &&
           found->bytes + letter.size + bytes_around <= most_bytes_held_back / lanes_.size();
}

bool fair_queue::is_first_lost(const door &way_in, uint32_t sender) {
    const auto found = find_lane(lanes_, &way_in, sender);
    return found == lanes_.end() || !std::exchange(found->has_lost, true);
}

packet fair_queue::packed(door *way_in, message letter) {
    packet made;
    get_one(spare_.parcels, made.parcels);
    if (way_in != nullptr) {
        get_one(spare_.lanes, made.lanes);
    }
    made.parcels.front().letter = std::move(letter);
    made.parcels.front().way_in = way_in;
    return made;
}

void fair_queue::put(packet &one) noexcept {
    parcel &first = one.parcels.front();
    const uint32_t sender = sender_of(first.letter);
    first.number = ++arrived_;
    auto found = find_lane(lanes_, first.way_in, sender);
    if (found == lanes_.end()) {
        move_first(one.lanes, lanes_);
        found = std::prev(lanes_.end());
        found->sender = sender;
        found->way_in = first.way_in;
        found->bytes = 0;
        found->has_lost = false;
    } else { // the lanes of those behind it in the packet stay
        give_one(one.lanes, spare_.lanes, most_spare);
    }
    found->bytes += first.letter.size + bytes_around;
    move_first(one.parcels, found->waiting);
}

// A sender's messages to several addresses stay in order.
std::list<lane>::iterator fair_queue::oldest_of(uint32_t sender) {
    auto oldest = lanes_.begin();
    for (auto one = std::next(oldest); one != lanes_.end(); ++one) {
        if (one->sender == sender && one->waiting.front().number < oldest->waiting.front().number) {
            oldest = one;
        }
    }
    return oldest;
}

bool fair_queue::take(message &letter) noexcept {
    if (lanes_.empty()) {
        return false;
    }
    const auto turn = doors_.size() == 1 ? lanes_.begin() : oldest_of(lanes_.front().sender);
    const bool was_full = is_full(*turn);
    const bool was_crowded = lanes_.size() >= most_lanes;
    const uint32_t sender = turn->sender;
    letter = std::move(turn->waiting.front().letter);
    turn->bytes -= letter.size + bytes_around;
    give_one(turn->waiting, spare_.parcels, most_spare);
    end_turn(sender);
    if (was_crowded && lanes_.size() < most_lanes) {
        office_.room_made_for_all();
    } else if (was_full) {
        office_.room_made(sender);
    }
    return true;
}

// The sender's lanes go to the end, or away: at most one of them has become empty.
void fair_queue::end_turn(uint32_t sender) {
    std::list<lane> had_it;
    for (auto one = lanes_.begin(); one != lanes_.end();) {
        const auto next = doors_.size() == 1 ? lanes_.end() : std::next(one);
        if (one->sender == sender) {
            had_it.splice(had_it.end(), lanes_, one);
        }
        one = next;
    }
    const auto empty = std::find_if(had_it.begin(), had_it.end(), [](const lane &one) { return one.waiting.empty(); });
    if (empty != had_it.end()) {
        had_it.splice(had_it.begin(), had_it, empty);
        give_one(had_it, spare_.lanes, most_spare);
    }
    lanes_.splice(lanes_.end(), had_it);
}

void fair_queue::recycle(packet &one) noexcept {
    parcel &first = one.parcels.front();
    if (first.way_in != nullptr) { // an answer has no lane
        give_one(one.lanes, spare_.lanes, most_spare);
    }
    first.letter = {};
    give_one(one.parcels, spare_.parcels, most_spare);
}

packet fair_queue::emptied() noexcept {
    packet all;
    all.lanes.swap(lanes_);
    return all;
}

} // namespace ribkit::platform
