// Messages written by name, straight into network order and into the caller's buffer. Counts are the writer's: an entry
// that was added is counted, one that found no room is not, so that what stands in the buffer is a whole message at any
// time.
//
//     writer<wire::fcurt_update> update(room, sizeof room);
//     update.set<"uuid">(RIB_CLIENT_FSPF).set<"vsan">(1);
//     auto route = update.add<"route">();
//     route.set<"mask">(0xff0000);
//     if (!route.add<"hop">()) {
//         update.take_back<"route">(route); // a route without its hop is none
//     }
//     send(room, update.size());
#pragma once

#include "codec/view.h"

namespace ribkit::codec {

namespace written {

/// Entries within entries: an update, its record, the record's interface, the interface's label.
inline constexpr size_t depths = 4;

/// The caller's buffer, and how far it is filled.
struct room {
    uint8_t *bytes;
    uint32_t capacity;
    uint32_t used = 0;
    bool lacks = false;                      // an entry has found no place since the last was taken back
    std::array<const void *, depths> last{}; // the entry at each depth that may still grow

    /// What was added at this depth may grow now, and nothing that was added below it before.
    void opens(size_t depth, const void *entry) {
        last[depth] = entry;
        for (size_t below = depth + 1; below < depths; ++below) {
            last[below] = nullptr;
        }
    }
};

constexpr bool counts_a_list(const layout &l, const row &r, count_in where) {
    for (const row &other : l) {
        if (is_list(other) && other.count.where == where && other.count.at == r.offset) {
            return true;
        }
    }
    return false;
}

} // namespace written

/// A message or an entry while it is written. One that found no place is false; what is written into it is dropped.
/// It is as large as two pointers or three, and is handed on by value; it must not outlive the writer that it is of.
template <const layout &L, size_t Depth> class written_entry {
    using bytes = writable_view<L>;

  public:
    /// Whether there was a place for it.
    explicit operator bool() const { return room_ != nullptr && at_.data() != nullptr; }

    /// To read what was written.
    [[nodiscard]] view<L> read() const { return view<L>(at_.data()); }

    /// As a view's set. Counts cannot be set; where a byte of the field is a count, that byte stays.
    template <field_called Field, class Number> const written_entry &set(Number value) const {
        constexpr row r = L.row_of(Field.str());
        static_assert(!written::counts_a_list(L, r, count_in::word), "the writer counts the entries");
        if (*this) {
            if constexpr (written::counts_a_list(L, r, count_in::second_byte)) {
                constexpr uint32_t count_bits = 0x00ff0000;
                at_.template set<Field>((at_.template get<Field>() & count_bits) |
                                        (static_cast<uint32_t>(value) & ~count_bits));
            } else {
                at_.template set<Field>(value);
            }
        }
        return *this;
    }

    /// As a view's set for a part; the part that is a count stays.
    template <field_called Field, field_called Part> const written_entry &set(uint32_t value) const {
        constexpr row r = L.row_of(Field.str());
        constexpr row_part p = fields_of::part_of(r, Part.str());
        static_assert(!written::counts_a_list(L, r, count_in::second_byte) || p.shift != 16,
                      "the writer counts the entries");
        if (*this) {
            at_.template set<Field, Part>(value);
        }
        return *this;
    }

    template <field_called Field> const written_entry &set_bytes(std::span<const uint8_t> value) const {
        if (*this) {
            at_.template set_bytes<Field>(value);
        }
        return *this;
    }
    template <field_called Field> const written_entry &set_text(std::string_view value) const {
        if (*this) {
            at_.template set_text<Field>(value);
        }
        return *this;
    }

    /// Adds an entry to a list, all zero. There is no place for it where the buffer or the list is full, where its
    /// count can hold no more, or where something was added behind this one's parent meanwhile.
    template <field_called Field> auto add() const {
        constexpr row r = L.row_of(Field.str());
        static_assert(is_list(r) && r.count.where != count_in::constant, "nothing is counted there");
        static_assert(Depth + 1 < written::depths);
        using entry = written_entry<*r.entry, Depth + 1>;
        if (!*this) {
            return entry();
        }
        const uint32_t count = read_count<std::endian::big>(r.count, at_.data());
        const uint32_t before = room_->used;
        const size_t at = r.stride == self_sized ? before : begin() + r.offset + size_t{count} * r.stride;
        if (!may_grow() || count >= most_of(r) || at > room_->capacity || r.entry->size > room_->capacity - at) {
            room_->lacks = true;
            return entry();
        }
        const size_t end = at + r.entry->size;
        std::memset(room_->bytes + at, 0, r.entry->size);
        room_->used = end > before ? static_cast<uint32_t>(end) : before;
        write_count<Field>(count + 1);
        room_->opens(Depth + 1, room_->bytes + at);
        return entry(room_, room_->bytes + at, before);
    }

    /// Takes back the entry that was added last to one of this one's lists, with all that is in it, and forgets that
    /// room was lacking. An entry that found no place leaves nothing to take back but that. Where entries overlap, what
    /// it has overwritten stays 0.
    template <field_called Field, class Entry> void take_back(const Entry &entry) const {
        constexpr row r = L.row_of(Field.str());
        static_assert(is_list(r) && Entry::is_of(*r.entry), "the entry is of another list");
        if (!*this) {
            return;
        }
        room_->lacks = false;
        if (entry && room_->last[Depth + 1] == entry.at_.data()) {
            std::memset(entry.at_.data(), 0, r.entry->size); // in a list with a bound its place stays
            write_count<Field>(read_count<std::endian::big>(r.count, at_.data()) - 1);
            room_->used = entry.before_;
            room_->opens(Depth + 1, nullptr);
        }
    }

  protected:
    written_entry() : at_(nullptr) {}
    written_entry(written::room *room, uint8_t *at, uint32_t before) : room_(room), at_(at), before_(before) {}

  private:
    template <const layout &, size_t> friend class written_entry;

    static constexpr uint32_t most_of(const row &r) {
        const uint32_t most = r.count.where == count_in::second_byte ? UINT8_MAX : UINT32_MAX;
        return r.bound != 0 && r.bound < most ? r.bound : most;
    }

    [[nodiscard]] size_t begin() const { return static_cast<size_t>(at_.data() - room_->bytes); }
    [[nodiscard]] bool may_grow() const { return room_->last[Depth] == at_.data(); }
    static constexpr bool is_of(const layout &other) { return std::string_view(other.name) == L.name; }

    template <field_called Field> void write_count(uint32_t count) const {
        constexpr count_of where = L.row_of(Field.str()).count;
        if constexpr (where.where == count_in::second_byte) {
            at_.data()[where.at + 1] = static_cast<uint8_t>(count);
        } else {
            store32<std::endian::big>(at_.data() + where.at, count);
        }
    }

    written::room *room_ = nullptr;
    bytes at_;
    uint32_t before_ = 0; // how far the room was filled without it
};

/// A message of layout L while it is written; it begins all zero.
template <const layout &L> class writer : public written_entry<L, 0> {
  public:
    /// @param buffer of `capacity` bytes, of any alignment; the caller keeps it. Where its fixed part does not fit, the
    ///        writer is false and writes nothing.
    writer(void *buffer, size_t capacity) : written_entry<L, 0>(&all_, bytes_of(buffer, capacity), 0) {
        all_.bytes = static_cast<uint8_t *>(buffer);
        all_.capacity = capacity < UINT32_MAX ? static_cast<uint32_t>(capacity) : UINT32_MAX;
        if (*this) {
            std::memset(buffer, 0, L.size);
            all_.used = L.size;
            all_.opens(0, buffer);
        }
    }
    explicit writer(std::span<uint8_t> buffer) : writer(buffer.data(), buffer.size()) {}
    writer(const writer &) = delete;
    writer &operator=(const writer &) = delete;

    /// Bytes of the message so far.
    [[nodiscard]] uint32_t size() const { return all_.used; }

    /// Whether every entry that was added has found its place.
    [[nodiscard]] bool is_whole() const { return static_cast<bool>(*this) && !all_.lacks; }

  private:
    static uint8_t *bytes_of(void *buffer, size_t capacity) {
        return capacity < L.size ? nullptr : static_cast<uint8_t *>(buffer);
    }

    written::room all_{};
};

} // namespace ribkit::codec
