// Members of a message or entry: numbers, digits and lists go to their places, what is said of them is compared with
// them at once, or kept until they are there.
#include "decode/decoder.h"
#include "decode/encoder.h"
#include "decode/encoder_object.h"
#include "decode/numbers.h"

#include <charconv>

namespace ribkit::decode {

namespace {

uint32_t most_of(const field &f) { return f.size == 4 ? UINT32_MAX : f.size == 2 ? UINT16_MAX : UINT8_MAX; }

/// How many entries a list may have.
uint32_t most_entries(const field &f) {
    return f.row->bound != 0                                    ? f.row->bound
           : f.row->count.where == codec::count_in::second_byte ? uint32_t{UINT8_MAX}
                                                                : UINT32_MAX;
}

} // namespace

/// The members of a message or entry, which is at `at`. @param in_place whether its room is there already
void encoder::fields(const shape &s, size_t at, bool in_place) {
    if (!in_place) {
        reserve(at, s.size);
    }
    object o(*this, s, at);
    in_->expect('{');
    for (bool first = true; in_->peek() != '}'; first = false) {
        if (!first) {
            in_->expect(',');
        }
        member(o);
    }
    in_->expect('}');
    close(o);
}

void encoder::member(object &o) {
    const std::vector<slot> &slots = o.fields.slots;
    size_t found = o.expected;
    if (found == slots.size() || !in_->take_string(slots[found].key)) {
        const std::string_view key = in_->string();
        found = o.fields.find(key, o.expected);
        unknown_ = found == shape::none ? key : "";
    }
    path_.push_back({found == shape::none ? unknown_ : slots[found].key});
    in_->expect(':');
    if (found == shape::none) {
        rest_member(o, unknown_);
    } else {
        if (o.seen[found]) {
            fail("stands twice");
        }
        o.seen[found] = true;
        o.expected = found + 1;
        value(o, static_cast<uint16_t>(found));
    }
    path_.pop_back();
}

void encoder::value(object &o, uint16_t slot_number) {
    const slot &s = o.fields.slots[slot_number];
    const field &f = o.fields.fields[s.field];
    if (s.is == slot::role::part) {
        part(o, slot_number);
    } else if (s.is != slot::role::value) {
        text(o, slot_number);
    } else if (f.kind == field_kind::words) {
        words(o, s.field);
    } else if (f.kind == field_kind::entries) {
        entries(o, s.field);
    } else if (f.kind >= field_kind::key) {
        waits(o, s) ? o.deferred.push_back({slot_number, in_->value()}) : odd_value(o, s);
    } else {
        simple_value(f, o.at + f.offset);
    }
}

/// Of a word that is there already; or noted until it is.
void encoder::part(object &o, uint16_t slot_number) {
    const slot &s = o.fields.slots[slot_number];
    const field &f = o.fields.fields[s.field];
    const uint32_t said = in_->number(f.parts[s.part].mask);
    if (o.seen[f.slot]) {
        agree_on_part(o, s, said);
    } else {
        notes_.push_back({slot_number, said, 0, 0});
    }
}

/// Likewise. A bitmap's second half comes later.
void encoder::text(object &o, uint16_t slot_number) {
    const slot &s = o.fields.slots[slot_number];
    const field &f = o.fields.fields[s.field];
    if (o.seen[f.slot] && !is_split_map(f)) {
        text_room room;
        const std::string_view expected = expected_text(o, s, room);
        if (!in_->take_string(expected)) {
            agree_on_text(o, s, in_->string(), expected);
        }
        return;
    }
    const size_t begin = texts_.size();
    texts_ += in_->string();
    notes_.push_back({slot_number, 0, begin, texts_.size() - begin});
}

void encoder::simple_value(const field &f, size_t at) {
    if (f.kind == field_kind::number) {
        const uint32_t number = in_->number(most_of(f));
        if (f.size == 1 && (number & ~uint32_t{f.mask}) != 0) {
            fail("has no bits outside of " + std::to_string(f.mask));
        }
        put_number(f, at, number);
    } else if (f.kind == field_kind::address) {
        put_number(f, at, address());
    } else {
        digits(at, f.size);
    }
}

uint32_t encoder::address() {
    const std::string_view text = in_->string();
    uint32_t number = 0;
    const std::string_view figures = text.substr(std::min(text.size(), size_t{2}));
    const auto [end, error] = std::from_chars(figures.data(), figures.data() + figures.size(), number, 16);
    if (!text.starts_with("0x") || figures.size() > 8 || figures.empty() || error != std::errc() ||
        end != figures.data() + figures.size()) {
        fail("takes \"0x\" and six or eight digits, not " + quoted(text));
    }
    return number;
}

/// So many bytes in digits, to where their room is.
void encoder::digits(size_t at, size_t size) {
    size_t read = 0;
    in_->digits([&](uint8_t byte) {
        if (read < size) {
            bytes_.data()[at + read] = byte;
        }
        return ++read <= size;
    });
    if (read != size) {
        fail("takes the digits of " + std::to_string(size) + " bytes");
    }
}

/// Room for an entry, all 0; what an entry in front has written there is gone, as on a switch.
void encoder::reserve(size_t at, size_t size) {
    if (at + size > largest_message) {
        fail("the message has more than " + std::to_string(largest_message) + " bytes");
    }
    const size_t there = bytes_.size();
    bytes_.extend(at + size);
    if (at < there) {
        std::memset(bytes_.data() + at, 0, std::min(size, there - at));
    }
}

void encoder::words(object &o, uint16_t field_number) {
    const field &f = o.fields.fields[field_number];
    uint32_t n = 0;
    in_->expect('[');
    path_.push_back({});
    for (; in_->peek() != ']'; ++n) {
        path_.back().index = n;
        if (n != 0) {
            in_->expect(',');
        }
        if (n == most_entries(f)) {
            fail("is one too many: " + std::to_string(n) + " are allowed");
        }
        const size_t at = o.at + f.offset + size_t{4} * n;
        if (f.size == 0) {
            reserve(at, 4);
        }
        store_word(bytes_.data() + at, in_->number(UINT32_MAX));
    }
    path_.pop_back();
    in_->expect(']');
    o.entries(field_number) = n;
}

void encoder::entries(object &o, uint16_t field_number) {
    const field &f = o.fields.fields[field_number];
    uint32_t n = 0;
    size_t at = o.at + f.offset;
    in_->expect('[');
    path_.push_back({});
    for (; in_->peek() != ']'; ++n) {
        path_.back().index = n;
        if (n != 0) {
            in_->expect(',');
        }
        if (n == most_entries(f)) {
            fail("is one too many: " + std::to_string(n) + " are allowed");
        }
        fields(*f.entry, at, f.size != 0);
        at = f.row->stride == 0 ? bytes_.size() : at + f.row->stride;
    }
    path_.pop_back();
    in_->expect(']');
    o.entries(field_number) = n;
}

} // namespace ribkit::decode
