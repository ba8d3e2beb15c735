// The walk over a message in network form: every field in the order of the layout, each handed to whoever shows it. No
// byte behind the end that it is told is read, whatever the counts say: so it shows of a refused message what stands in
// front of the field that is wrong.
#pragma once

#include "codec/messages/forms.h"
#include "codec/size.h"
#include "decode/images.h"
#include "decode/numbers.h"
#include "decode/shape.h"

#include <span>

namespace ribkit::decode {

/// Bytes that entries further on show again, because they stand closer than they are long.
struct shown_again {
    size_t from, to;
    const shown_again *outer;

    [[nodiscard]] bool holds(size_t at) const {
        return (at >= from && at < to) || (outer != nullptr && outer->holds(at));
    }
};

template <class Out> class walk {
  public:
    /// @param end bytes from there on are not shown
    walk(Out &out, const uint8_t *bytes, size_t end, content carried = {})
        : out_(out), bytes_(bytes), end_(end), carried_(carried) {}

    /// @return whether all of it was there
    bool fields(const shape &s, size_t at, const shown_again *again = nullptr) {
        reached_ = at + s.size;
        for (const field &f : s.fields) {
            if (!show(s, f, at, again)) {
                return false;
            }
        }
        return true;
    }

  private:
    [[nodiscard]] bool there(size_t at, size_t size) const { return at <= end_ && size <= end_ - at; }
    [[nodiscard]] uint32_t word_at(size_t at) const { return load_word(bytes_ + at); }
    [[nodiscard]] uint32_t count_at(codec::count_of count, size_t at) const {
        return codec::read_count<std::endian::big>(count, bytes_ + at);
    }

    [[nodiscard]] uint32_t number_at(const field &f, size_t at) const {
        const uint32_t number = load_number(bytes_ + at, f.size);
        return f.size == 1 ? number & f.mask : number;
    }

    bool show(const shape &s, const field &f, size_t base, const shown_again *again) {
        const size_t at = base + f.offset;
        switch (f.kind) {
        case field_kind::number:
            return there(at, f.size) && (out_.number(f, at, number_at(f, at)), true);
        case field_kind::address:
            return there(at, 4) && (out_.address(f, at, word_at(at)), true);
        case field_kind::digits:
            return there(at, f.size) && (out_.digits(f, at, {bytes_ + at, f.size}, map_of(f, at)), true);
        case field_kind::name:
            return there(at, f.size) && (out_.name(f, at, {bytes_ + at, f.size}), true);
        case field_kind::words:
            return words(f, at, count_at(f.row->count, base));
        case field_kind::entries:
            return entries(f, at, count_at(f.row->count, base), again);
        case field_kind::gap:
            return there(at, f.size) && (rest(base, at, at + f.size, again), true);
        case field_kind::masked_off:
            return masked_off(f, at), true;
        case field_kind::unused:
            return unused(f, base, again);
        default:
            return odd(s, f, base);
        }
    }

    /// The bitmap of ports goes on behind its own field.
    [[nodiscard]] std::span<const uint8_t> map_of(const field &f, size_t at) const {
        const size_t whole = is_split_map(f) && there(at, 2 * size_t{f.size}) ? 2 * size_t{f.size} : f.size;
        return {bytes_ + at, whole};
    }

    bool words(const field &f, size_t at, size_t count) {
        out_.begin_words(f);
        size_t i = 0;
        for (; i < count && there(at + 4 * i, 4); ++i) {
            out_.item(f, i, at + 4 * i, word_at(at + 4 * i));
        }
        out_.end_words();
        reached_ = f.size == 0 ? at + 4 * i : reached_;
        return i == count;
    }

    bool entries(const field &f, size_t at, size_t count, const shown_again *again) {
        const size_t stride = f.row->stride;
        const size_t end = reached_;
        size_t furthest = 0;
        bool whole = true;
        out_.begin_entries(f);
        for (size_t i = 0; i < count && whole; ++i) {
            const shown_again later{at + stride, at + stride * (count - 1 - i) + f.entry->size, again};
            const bool overlaps = stride != 0 && stride < f.entry->wire->size + open_room(*f.entry) && i + 1 < count;
            whole = entry(f, i, at, overlaps ? &later : again);
            furthest = std::max(furthest, reached_);
            at = stride == 0 ? reached_ : at + stride;
        }
        out_.end_entries();
        reached_ = f.size == 0 ? std::max(at, furthest) : end;
        return whole;
    }

    /// Something where entries end in a list of their own: then they may reach into the next.
    static size_t open_room(const shape &s) { return codec::is_open(s.wire->last()) ? 1 : 0; }

    /// The size of the first field, without which there is nothing of an entry.
    static size_t first_size(const shape &s) {
        const field &f = s.fields.front();
        return f.kind == field_kind::entries ? first_size(*f.entry) : f.kind == field_kind::words ? 4 : f.size;
    }

    bool entry(const field &f, size_t i, size_t at, const shown_again *again) {
        if (!there(at, first_size(*f.entry))) {
            return false;
        }
        out_.begin_entry(f, i, at);
        const bool whole = fields(*f.entry, at, again);
        out_.end_entry();
        return whole;
    }

    /// What is not carried is shown where it is not zero.
    void rest(size_t base, size_t from, size_t to, const shown_again *again) {
        for (size_t at = from; at < to; ++at) {
            if (bytes_[at] != 0 && (again == nullptr || !again->holds(at))) {
                return out_.rest(from - base, from, {bytes_ + from, to - from});
            }
        }
    }

    void masked_off(const field &f, size_t at) {
        if (const auto bits = static_cast<uint8_t>(bytes_[at] & f.mask); bits != 0) {
            out_.rest(f.offset, at, {&bits, 1});
        }
    }

    bool unused(const field &f, size_t base, const shown_again *again) {
        const codec::row &list = *f.row;
        const size_t used = std::min<size_t>(size_t{list.stride} * count_at(list.count, base), list.size);
        const size_t to = base + list.end();
        return there(base, list.end()) && (rest(base, base + list.offset + used, to, again), true);
    }

    bool odd(const shape &s, const field &f, size_t base) {
        const size_t at = base + f.offset;
        switch (f.kind) {
        case field_kind::key:
            return there(at, f.size) && object(f, at, shape_of(key_of(s, base)));
        case field_kind::key_rest:
            return there(at, f.size) && (rest(base, at + key_of(s, base).size, at + f.size, nullptr), true);
        case field_kind::keys:
            return keys(f, at, word_at(base), shape_of(key_of(s, base)));
        case field_kind::body:
            return body(f, at, body_layout(word_at(base + decider_at(s.odd))));
        case field_kind::payload:
            return payload(f, at, base);
        case field_kind::blocks:
            return there(base, bud_image.size) && blocks(f, base);
        default:
            return tail(base), true;
        }
    }

    [[nodiscard]] const codec::layout &key_of(const shape &s, size_t base) const {
        return key_layout(word_at(base + decider_at(s.odd)), s.odd == oddity::verf_query);
    }

    bool object(const field &f, size_t at, const shape &s) {
        out_.begin_object(f, at);
        const bool whole = fields(s, at);
        out_.end_object();
        return whole;
    }

    bool keys(const field &f, size_t at, size_t count, const shape &key) {
        out_.begin_entries(f);
        bool whole = true;
        for (size_t i = 0; i < count && whole; ++i, at += key.size) {
            whole = there(at, first_size(key));
            if (whole) {
                out_.begin_entry(f, i, at);
                whole = fields(key, at);
                out_.end_entry();
            }
        }
        out_.end_entries();
        return whole;
    }

    bool body(const field &f, size_t at, const codec::layout *l) {
        return l == nullptr || (there(at, first_size(shape_of(*l))) && object(f, at, shape_of(*l)));
    }

    bool payload(const field &f, size_t at, size_t base) {
        const size_t end = base + wire::cmi_envelope.at("opcode") + word_at(base + wire::cmi_envelope.at("length"));
        if (carried_.fields == nullptr) {
            return there(at, end - at) && (out_.digits(f, at, {bytes_ + at, end - at}, {}), true);
        }
        out_.begin_carried(f, at, carried_.name);
        const bool whole = fields(*carried_.fields, at);
        out_.end_carried();
        return whole;
    }

    /// Sixteen lists, one for each size of block; those of used blocks follow those of free ones.
    bool blocks(const field &f, size_t base) {
        size_t at = reached_;
        bool whole = true;
        out_.begin_blocks(f);
        for (size_t k = 0; k < BUD_SIZES && whole; ++k) {
            const size_t count = word_at(base + f.offset + 4 * k);
            out_.begin_block(f, k);
            size_t i = 0;
            for (; i < count && there(at, 4); ++i, at += 4) {
                out_.block(f, k, i, at, word_at(at));
            }
            out_.end_block();
            whole = i == count;
        }
        out_.end_blocks();
        reached_ = at;
        return whole;
    }

    /// A display steps from hop to hop by the labels that each has, which may take it further than all hops reach.
    void tail(size_t base) {
        if (reached_ < end_) {
            out_.rest(reached_ - base, reached_, {bytes_ + reached_, end_ - reached_});
        }
    }

    Out &out_;
    const uint8_t *bytes_;
    size_t end_;
    content carried_;
    size_t reached_ = 0; ///< where the fields that were shown last end
};

} // namespace ribkit::decode
