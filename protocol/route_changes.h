// The records of an update as the changes that they ask for, read from the message one at a time: nothing is copied but
// what one record says. The message must have passed its check.
#pragma once

#include "codec/messages/route.h"
#include "codec/view.h"
#include "model/label.h"
#include "model/multicast.h"
#include "protocol/route_messages.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace ribkit::protocol {

/// A range of changes. What an element refers to lasts until the next is read.
/// @tparam Update the layout of the message
/// @tparam Reader makes a change of a record's view, and keeps what the change refers to
template <const codec::layout &Update, class Reader> class changes_of {
    using message = codec::view<Update>;
    using records = decltype(std::declval<message>().template list<"route">());

  public:
    class iterator {
      public:
        iterator(typename records::iterator at, Reader *reader) : at_(at), reader_(reader) {}
        auto operator*() const { return (*reader_)(*at_); }
        iterator &operator++() {
            ++at_;
            return *this;
        }
        friend bool operator!=(const iterator &a, const iterator &b) { return a.at_ != b.at_; }

      private:
        typename records::iterator at_;
        Reader *reader_;
    };

    /// Throws std::bad_alloc where records may be of any length.
    explicit changes_of(message update) : records_(update.template list<"route">()), reader_(records_) {}

    [[nodiscard]] iterator begin() const { return {records_.begin(), &reader_}; }
    [[nodiscard]] iterator end() const { return {records_.end(), &reader_}; }

  private:
    records records_;
    mutable Reader reader_;
};

/// Of more hops than a route can have it reads one too many, so that whoever stores it sees that.
class unicast_reader {
  public:
    template <class Records> explicit unicast_reader(const Records & /*records*/) {}

    model::unicast_change operator()(record_view record) {
        size_t count = 0;
        for (const auto hop : record.list<"hop">()) {
            hops_[count++] = {hop.get<"intf">(), hop.get<"domain">()};
            if (count == hops_.size()) {
                break;
            }
        }
        const std::span<const model::next_hop> hops = std::span(hops_).first(count);
        return {record.get<"action">(),
                destination_in(record),
                {record.get<"metric">(), record.get<"flag">(), hops, carried_by(record)}};
    }

  private:
    std::array<model::next_hop, RIBKIT_MOST_HOPS + 1> hops_;
};

class multicast_reader {
  public:
    /// Throws std::bad_alloc.
    template <class Records> explicit multicast_reader(const Records &records) {
        uint32_t most = 0;
        for (const auto record : records) {
            most = std::max(most, record.template get<"n_intf">());
        }
        members_.resize(most);
    }

    model::multicast_change operator()(codec::view<wire::fcmrt> record) {
        size_t count = 0;
        for (const auto member : record.list<"intf">()) {
            members_[count++] = member.get<"intf">();
        }
        const uint32_t mask = record.get<"mask">();
        return {record.get<"action">(),
                {record.get<"fcid">() & mask, mask},
                std::span<const uint32_t>(members_).first(count)};
    }

  private:
    std::vector<uint32_t> members_;
};

/// Hops as unicast_reader.
class label_reader {
  public:
    template <class Records> explicit label_reader(const Records & /*records*/) {}

    model::label_change operator()(codec::view<wire::fclrt> record);

  private:
    static constexpr size_t most_words = 2 + UINT8_MAX; ///< of a hop

    std::array<uint32_t, model::most_sources> sources_;
    std::array<uint32_t, (RIBKIT_MOST_HOPS + 1) * most_words> hops_;
};

using unicast_changes = changes_of<wire::fcurt_update, unicast_reader>;
using multicast_changes = changes_of<wire::fcmrt_update, multicast_reader>;
using label_changes = changes_of<wire::fclrt_update, label_reader>;

} // namespace ribkit::protocol
