// Destinations whose routes a module does not have as they are: each stands here once, in the order in which they
// changed first, with the requests that wait for it. Only keys are kept; what they lead to is read when it is sent.
#pragma once

#include "rib/label.h"
#include "rib/multicast.h"
#include "rib/unicast.h"
#include "rib/waiting.h"

#include <cstddef>
#include <cstdint>
#include <deque>
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
        const auto [at, is_new] = places_.try_emplace(one.where, first_ + queue_.size());
        if (is_new) {
            append(at, one);
            return;
        }
        entry &known = queue_[at->second - first_];
        if (one.asker != 0 && known.asker != 0) {
            others_.emplace(one.where, one.asker);
        }
        known.asker = known.asker == 0 ? one.asker : known.asker;
        known.merge = one.merge != 0 ? one.merge : known.merge;
    }

    [[nodiscard]] bool contains(const key &where) const { return places_.contains(where); }
    [[nodiscard]] bool empty() const { return queue_.empty(); }
    [[nodiscard]] size_t size() const { return queue_.size(); }
    [[nodiscard]] const entry &front() const { return queue_.front(); }

    /// Takes the first one. @param more given the further requests that wait for it
    entry pop(std::vector<std::pair<key, waiting::id>> &more) {
        const entry taken = queue_.front();
        if (!others_.empty()) {
            const auto [from, to] = others_.equal_range(taken.where);
            more.insert(more.end(), from, to);
            others_.erase(from, to);
        }
        places_.erase(taken.where);
        queue_.pop_front();
        first_++;
        return taken;
    }

    /// Keeps those only for which somebody waits.
    void keep_asked() noexcept {
        std::erase_if(queue_, [](const entry &one) { return one.asker == 0; });
        first_ = 0;
        places_.clear();
        for (const entry &one : queue_) {
            places_.emplace(one.where, places_.size());
        }
    }

    /// Forgets who waits. @param told called with each
    template <class Told> void forget_askers(Told told) noexcept {
        each_asked(told);
        others_.clear();
        for (entry &one : queue_) {
            one.asker = 0;
        }
    }

    template <class Told> void each_asked(Told told) const {
        for (const entry &one : queue_) {
            if (one.asker != 0) {
                told(one.where, one.asker);
            }
        }
        for (const auto &[where, asker] : others_) {
            told(where, asker);
        }
    }

  private:
    using places = std::unordered_map<key, uint64_t, key_hash>;

    void append(typename places::iterator at, const entry &one) {
        try {
            queue_.push_back(one);
        } catch (...) {
            places_.erase(at);
            throw;
        }
    }

    std::deque<entry> queue_;
    uint64_t first_ = 0; ///< the number of the first in the queue
    places places_;
    std::unordered_multimap<key, waiting::id, key_hash> others_;
};

} // namespace ribkit::rib
