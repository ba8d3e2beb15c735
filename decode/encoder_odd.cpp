// Members that mean what another member says: keys, bodies, what an envelope carries, saved lists of blocks, and bytes
// that the layout does not carry.
#include "codec/messages/forms.h"
#include "decode/decoder.h"
#include "decode/encoder.h"
#include "decode/encoder_object.h"
#include "decode/images.h"
#include "decode/numbers.h"

#include <algorithm>
#include <charconv>

namespace ribkit::decode {

namespace {

constexpr uint16_t envelope_content = wire::cmi_envelope.at("opcode");

} // namespace

void encoder::appended_digits() {
    in_->digits([&](uint8_t byte) {
        bytes_.append(&byte, 1);
        return bytes_.size() <= largest_message;
    });
    reserve(bytes_.size(), 0);
}

/// Whether something that has not been read yet decides what a member is.
bool encoder::waits(const object &o, const slot &s) {
    const auto &all = o.fields.fields;
    const field &f = all[s.field];
    if (f.kind == field_kind::payload) {
        return false;
    }
    const field &decider = f.kind == field_kind::blocks && f.offset == bud_image.at("n_used") ? all[s.field - 1U]
                           : f.kind == field_kind::blocks                                     ? f
                                                          : o.fields.number_at(decider_at(o.fields.odd));
    return !o.seen[decider.slot];
}

void encoder::odd_value(object &o, const slot &s) {
    const field &f = o.fields.fields[s.field];
    switch (f.kind) {
    case field_kind::key:
        return fields(shape_of(key_layout(word_at(o.at + decider_at(o.fields.odd)), true)), o.at + f.offset, true);
    case field_kind::keys:
        return keys(o, s.field);
    case field_kind::body:
        if (const codec::layout *body = body_layout(word_at(o.at + decider_at(o.fields.odd)))) {
            return fields(shape_of(*body), bytes_.size(), false);
        }
        fail("no body follows a message of this kind");
    case field_kind::payload:
        return payload(o, f);
    default:
        return blocks(o, f);
    }
}

void encoder::keys(object &o, uint16_t field_number) {
    const shape &key = shape_of(key_layout(word_at(o.at + decider_at(o.fields.odd)), false));
    uint32_t n = 0;
    in_->expect('[');
    path_.push_back({});
    for (; in_->peek() != ']'; ++n) {
        path_.back().index = n;
        if (n != 0) {
            in_->expect(',');
        }
        fields(key, bytes_.size(), false);
    }
    path_.pop_back();
    in_->expect(']');
    o.entries(field_number) = n;
}

void encoder::payload(object &o, const field &f) {
    if (in_->peek() == '{') {
        message_fields(true);
    } else {
        appended_digits();
    }
    o.entries(static_cast<size_t>(&f - o.fields.fields.data())) =
        static_cast<uint32_t>(bytes_.size() - o.at - envelope_content);
}

void encoder::blocks(object &o, const field &f) {
    in_->expect('[');
    path_.push_back({});
    for (uint32_t k = 0; k < BUD_SIZES; ++k) {
        path_.back().index = k;
        if (k != 0) {
            in_->expect(',');
        }
        uint32_t n = 0;
        in_->expect('[');
        for (; in_->peek() != ']'; ++n) {
            if (n != 0) {
                in_->expect(',');
            }
            const uint32_t index = in_->number(UINT32_MAX);
            reserve(bytes_.size(), 4);
            store_word(bytes_.data() + bytes_.size() - 4, index);
        }
        in_->expect(']');
        store_word(bytes_.data() + o.at + f.offset + size_t{4} * k, n);
    }
    path_.pop_back();
    in_->expect(']');
}

/// `bytes_OFFSET`, where the layout has bytes there that it does not carry.
void encoder::rest_member(object &o, std::string_view key) {
    constexpr std::string_view prefix = "bytes_";
    const std::string_view figures = key.substr(std::min(key.size(), prefix.size()));
    uint32_t from = 0;
    const auto [end, error] = std::from_chars(figures.data(), figures.data() + figures.size(), from);
    const bool is_rest = key.starts_with(prefix) && error == std::errc() && end == figures.data() + figures.size() &&
                         figures == std::to_string(from);
    const auto &all = o.fields.fields;
    const auto f = std::find_if(all.begin(), all.end(), [&](const field &candidate) {
        const bool uncarried = candidate.kind == field_kind::gap || candidate.kind == field_kind::masked_off ||
                               candidate.kind == field_kind::unused || candidate.kind == field_kind::key_rest;
        return uncarried && from >= candidate.offset && from < candidate.offset + uint32_t{candidate.size};
    });
    if (is_rest && f == all.end() && o.fields.odd == oddity::hops && from >= o.fields.size && !o.tail) {
        o.tail = {from, in_->value()};
        return;
    }
    if (!is_rest || f == all.end()) {
        fail("is unknown here");
    }
    const auto number = static_cast<uint16_t>(f - all.begin());
    const auto before = o.rests();
    if (std::any_of(before.begin(), before.end(), [&](const rest &r) { return r.field == number; })) {
        fail("stands twice");
    }
    const uint32_t size = f->offset + uint32_t{f->size} - from;
    if (f->kind == field_kind::masked_off) {
        const uint8_t carried = bytes_.data()[o.at + from];
        digits(o.at + from, 1);
        if ((bytes_.data()[o.at + from] & ~f->mask) != 0) {
            fail("has bits that the message carries");
        }
        bytes_.data()[o.at + from] |= carried;
    } else {
        digits(o.at + from, size);
    }
    rests_.push_back({number, from, size});
}

} // namespace ribkit::decode
