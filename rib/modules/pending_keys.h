// Destinations whose routes a module does not have as they are: each stands here once, in the order in which they
// changed first, with the requests that wait for it. Only keys are kept; what they lead to is read when it is sent.
#pragma once

#include "rib/label.h"
#include "rib/modules/waiting.h"
#include "rib/multicast.h"
#include "rib/unicast.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <utility>
#include <vector>

namespace ribkit::rib {

struct key_hash {
    size_t operator()(const model::route_key &key) const {
        return spread(uint64_t{key.vsan} << 48 ^ uint64_t{key.to.mask} << 24 ^ key.to.fcid);
    }
    size_t operator()(const model::label_key &key) const {
        uint64_t all = operator()(model::route_key{key.vsan, key.to});
        for (const uint32_t word : {key.type, key.source, key.match_count, key.match[0], key.match[1]}) {
            all = spread(all ^ word);
        }
        return static_cast<size_t>(all);
    }

  private:
    static uint64_t spread(uint64_t bits) {
        bits *= 0x9e3779b97f4a7c15;
        return bits ^ bits >> 32;
    }
};

/// A destination that is to be sent, or was.
template <class Kind> struct owed_key {
    typename Kind::key where;
    waiting::id asker = 0; ///< that waits for it, the first where several do
    uint32_t merge = 0;    ///< the number of the merge that is not over without it
};

template <class Kind> class pending_keys {
  public:
    using key = typename Kind::key;
    using entry = owed_key<Kind>;

    /// Adds a destination, or what is new about one that stands here. Throws std::bad_alloc, and nothing has changed.
    void add(const entry &one) {
        make_room();
        uint32_t &place = slot_of(one.where);
        if (place == none) {
            queue_.push_back(one);
            place = static_cast<uint32_t>(queue_.size());
            return;
        }
        entry &known = queue_[place - 1];
        if (one.asker != 0 && known.asker != 0) {
            others_.emplace(one.where, one.asker);
        }
        known.asker = known.asker == 0 ? one.asker : known.asker;
        known.merge = std::max(known.merge, one.merge); // the later one: what was lost may be of a merge that is over
    }

    [[nodiscard]] bool contains(const key &where) const { return size() != 0 && places_[find(where)] != none; }
    [[nodiscard]] bool empty() const { return size() == 0; }
    [[nodiscard]] size_t size() const { return queue_.size() - gone_; }
    [[nodiscard]] const entry &front() const { return queue_[gone_]; }

    /// Takes the first one. Throws std::bad_alloc, and nothing has changed.
    /// @param more given the further requests that wait for it
    entry pop(std::vector<std::pair<key, waiting::id>> &more) {
        const entry taken = front();
        if (!others_.empty()) {
            const auto [from, to] = others_.equal_range(taken.where);
            more.insert(more.end(), from, to);
            others_.erase(from, to);
        }
        close_slot(find(taken.where));
        gone_++;
        if (gone_ == queue_.size()) {
            queue_.clear();
            gone_ = 0;
        }
        return taken;
    }

    /// Keeps those only for which somebody waits.
    void keep_asked() noexcept {
        queue_.erase(queue_.begin(), queue_.begin() + static_cast<std::ptrdiff_t>(gone_));
        std::erase_if(queue_, [](const entry &one) { return one.asker == 0; });
        gone_ = 0;
        index_again();
    }

    /// Forgets who waits. @param told called with each
    template <class Told> void forget_askers(Told told) noexcept {
        each_asked(told);
        others_.clear();
        for (entry &one : queue_) {
            one.asker = 0;
        }
    }

    template <class Told> void each(Told told) const {
        for (size_t at = gone_; at < queue_.size(); at++) {
            told(queue_[at].where);
        }
    }

    template <class Told> void each_asked(Told told) const {
        for (size_t at = gone_; at < queue_.size(); at++) {
            if (queue_[at].asker != 0) {
                told(queue_[at].where, queue_[at].asker);
            }
        }
        for (const auto &[where, asker] : others_) {
            told(where, asker);
        }
    }

  private:
    static constexpr uint32_t none = 0; ///< else a place counted from 1
    static constexpr size_t fewest_slots = 16;

    /// The slot of a destination, or the empty one where it would be.
    [[nodiscard]] size_t find(const key &where) const {
        size_t slot = key_hash()(where) & (places_.size() - 1);
        while (places_[slot] != none && !(queue_[places_[slot] - 1].where == where)) {
            slot = (slot + 1) & (places_.size() - 1);
        }
        return slot;
    }
    uint32_t &slot_of(const key &where) { return places_[find(where)]; }

    /// What follows moves up, so that nothing is looked for behind an empty slot.
    void close_slot(size_t empty) {
        const size_t last = places_.size() - 1;
        for (size_t at = (empty + 1) & last; places_[at] != none; at = (at + 1) & last) {
            const size_t home = key_hash()(queue_[places_[at] - 1].where) & last;
            if (((at - home) & last) >= ((at - empty) & last)) {
                places_[empty] = places_[at];
                empty = at;
            }
        }
        places_[empty] = none;
    }

    /// For one more: a slot in two is empty, and what has gone gives its room back.
    void make_room() {
        if (queue_.size() == queue_.capacity() && gone_ >= queue_.size() / 2 && gone_ != 0) {
            queue_.erase(queue_.begin(), queue_.begin() + static_cast<std::ptrdiff_t>(gone_));
            gone_ = 0;
            index_again();
        }
        queue_.reserve(queue_.size() < queue_.capacity() ? 0 : 2 * queue_.size() + fewest_slots / 2);
        if (places_.size() < 2 * queue_.capacity()) {
            places_.assign(std::bit_ceil(2 * queue_.capacity() + fewest_slots), none);
            index_again();
        }
    }

    void index_again() noexcept {
        std::fill(places_.begin(), places_.end(), none);
        for (size_t at = gone_; at < queue_.size(); at++) {
            slot_of(queue_[at].where) = static_cast<uint32_t>(at + 1);
        }
    }

    std::vector<entry> queue_;
    size_t gone_ = 0;              ///< entries in front that were taken
    std::vector<uint32_t> places_; ///< in the queue, by hash; always some are empty
    std::unordered_multimap<key, waiting::id, key_hash> others_;
};

} // namespace ribkit::rib
