// All that was said of an object's numbers is compared: counts with their lists, texts and parts with their words. A
// number that was left out is what its parts, its text or its list say.
#include "codec/messages/forms.h"
#include "codec/size.h"
#include "decode/decoder.h"
#include "decode/encoder_object.h"
#include "decode/numbers.h"

namespace ribkit::decode {

using codec::count_in;

void encoder::close(object &o) {
    for (const field &f : o.fields.fields) {
        close_field(o, f);
    }
    read_deferred(o);
    for (const field &f : o.fields.fields) {
        const uint32_t entries = o.entries(o.number_of(f));
        if (f.is_list() || f.kind == field_kind::keys || f.kind == field_kind::payload) {
            close_list(o, f, entries);
        }
    }
    for (const rest &r : o.rests()) {
        close_rest(o, r);
    }
    for (const note &n : o.notes()) {
        close_note(o, n);
    }
    close_tail(o);
}

void encoder::close_field(object &o, const field &f) {
    switch (f.kind) {
    case field_kind::number:
        return o.seen[f.slot] ? void() : close_number(o, f);
    case field_kind::name:
        return o.seen[f.slot] ? void() : close_name(o, f);
    case field_kind::gap:
    case field_kind::masked_off:
    case field_kind::unused:
    case field_kind::key_rest:
        return;
    case field_kind::body:
        if (body_layout(word_at(o.at + decider_at(o.fields.odd))) == nullptr) {
            return;
        }
        [[fallthrough]];
    default:
        if (!o.seen[f.slot]) {
            fail_at(f.name(), "is missing");
        }
    }
}

void encoder::close_number(object &o, const field &f) {
    uint32_t number = 0;
    bool by_parts = !f.parts.empty();
    for (const part_field &p : f.parts) {
        const note *part = o.noted(p.slot);
        by_parts = by_parts && (part != nullptr || p.counts);
        number |= (part == nullptr ? 0 : part->part) << p.shift;
    }
    const note *text = f.text_key ? o.noted(f.text_slot) : nullptr;
    if (!by_parts && text != nullptr) {
        const std::string said = texts_.substr(text->at, text->size);
        const auto found = f.text.number_of(said);
        if (!found) {
            fail_at(f.text_key.name(), quoted(said) + " names no number, or more than one");
        }
        number = *found;
    } else if (!by_parts && !f.counts) {
        fail_at(f.name(), "is missing");
    }
    put_number(f, o.at + f.offset, number);
}

/// A name may be said by its text alone.
void encoder::close_name(object &o, const field &f) {
    const note *text = o.noted(f.text_slot);
    if (text == nullptr) {
        fail_at(f.name(), "is missing");
    }
    const std::string said = texts_.substr(text->at, text->size);
    if (said.size() >= f.size || said.find('\0') != std::string::npos) {
        fail_at(f.text_key.name(), "has room for " + std::to_string(f.size - 1) + " bytes, none of them 0");
    }
    std::memcpy(bytes_.data() + o.at + f.offset, said.data(), said.size());
}

void encoder::read_deferred(object &o) {
    for (const later &kept : o.deferred) {
        json_reader from{std::string_view(kept.value)};
        json_reader *const outer = std::exchange(in_, &from);
        const slot &s = o.fields.slots[kept.slot];
        path_.push_back({s.key});
        odd_value(o, s);
        path_.pop_back();
        in_ = outer;
    }
}

void encoder::close_list(object &o, const field &f, uint32_t entries) {
    const codec::count_of count = f.kind == field_kind::keys      ? codec::in::word(wire::verf_info.at("n_key"))
                                  : f.kind == field_kind::payload ? codec::in::word(wire::cmi_envelope.at("length"))
                                                                  : f.row->count;
    if (count.where != count_in::constant) {
        agree_on_count(o, count, entries, f.name());
    } else if (entries != count.at) {
        fail_at(f.name(), "has " + std::to_string(entries) + " entries, not " + std::to_string(count.at));
    }
}

void encoder::agree_on_count(object &o, codec::count_of count, uint32_t entries, std::string_view list) {
    const field &f = o.fields.number_at(count.at);
    const bool is_word = count.where == count_in::word;
    const auto part = std::find_if(f.parts.begin(), f.parts.end(), [](const part_field &p) { return p.counts; });
    const bool said = o.seen[f.slot] || (!is_word && o.seen[part->slot]);
    const size_t at = o.at + count.at;
    if (!said && is_word) {
        store_word(bytes_.data() + at, entries);
    } else if (!said) {
        bytes_.data()[at + 1] = static_cast<uint8_t>(entries);
    } else if (const uint32_t number = is_word ? word_at(at) : bytes_.data()[at + 1]; number != entries) {
        const std::string_view key = is_word ? f.name() : part->key.name();
        const std::string what = list == "payload" ? " bytes" : " entries";
        fail_at(key, "is " + std::to_string(number) + ", but " + std::string(list) + " has " + std::to_string(entries) +
                         what);
    }
}

/// What is left of a room begins where that ends which has a name.
void encoder::close_rest(object &o, const rest &r) {
    const field &f = o.fields.fields[r.field];
    size_t used = 0;
    if (f.kind == field_kind::unused) {
        used = size_t{f.row->stride} * codec::read_count<std::endian::big>(f.row->count, bytes_.data() + o.at);
    } else if (f.kind == field_kind::key_rest) {
        used = key_layout(word_at(o.at + decider_at(o.fields.odd)), true).size;
    }
    if (r.from != f.offset + used) {
        fail_at("bytes_" + std::to_string(r.from),
                "is unknown here: the rest begins at " + std::to_string(f.offset + used));
    }
}

void encoder::close_tail(object &o) {
    if (!o.tail) {
        return;
    }
    const auto &[from, value] = *o.tail;
    path_.push_back({unknown_ = "bytes_" + std::to_string(from)});
    if (from != bytes_.size() - o.at) {
        fail("is unknown here: what is not carried begins at " + std::to_string(bytes_.size() - o.at));
    }
    json_reader kept{std::string_view(value)};
    json_reader *const outer = std::exchange(in_, &kept);
    appended_digits();
    in_ = outer;
    path_.pop_back();
}

void encoder::close_note(object &o, const note &n) {
    const slot &s = o.fields.slots[n.slot];
    path_.push_back({s.key});
    if (s.is == slot::role::part) {
        agree_on_part(o, s, n.part);
    } else {
        text_room room;
        agree_on_text(o, s, std::string_view(texts_).substr(n.at, n.size), expected_text(o, s, room));
    }
    path_.pop_back();
}

void encoder::agree_on_part(object &o, const slot &s, uint32_t said) {
    const field &f = o.fields.fields[s.field];
    if (const uint32_t is = f.parts[s.part].of(number_at(f, o.at + f.offset)); is != said) {
        fail("is " + std::to_string(said) + ", but in " + std::string(f.name()) + " it is " + std::to_string(is));
    }
}

void encoder::agree_on_text(object &o, const slot &s, std::string_view said, std::string_view expected) {
    if (said != expected) {
        const field &f = o.fields.fields[s.field];
        fail("is " + quoted(said) + ", but " + std::string(f.name()) + " is " + quoted(expected));
    }
}

std::string_view encoder::expected_text(object &o, const slot &s, text_room &room) {
    const field &f = o.fields.fields[s.field];
    const uint8_t *at = bytes_.data() + o.at + f.offset;
    char *const begin = room.data();
    char *end = begin;
    if (f.kind == field_kind::name) {
        end = put(begin, as_utf8(name_in({at, f.size})));
    } else if (f.kind == field_kind::digits) {
        end = put_positions(begin, {at, is_split_map(f) ? 2 * size_t{f.size} : f.size});
    } else if (s.is == slot::role::use) {
        end = put_use(begin, f, number_at(f, o.at + f.offset));
    } else if (s.is == slot::role::part_text) {
        end = f.parts[s.part].text.put(begin, f.parts[s.part].of(number_at(f, o.at + f.offset)));
    } else {
        end = f.text.put(begin, number_at(f, o.at + f.offset));
    }
    return {begin, static_cast<size_t>(end - begin)};
}

void encoder::put_number(const field &f, size_t at, uint32_t number) {
    uint8_t *to = bytes_.data() + at;
    store_number(to, f.size, f.size == 1 ? (*to & ~uint32_t{f.mask}) | number : number);
}

uint32_t encoder::number_at(const field &f, size_t at) {
    const uint32_t number = load_number(bytes_.data() + at, f.size);
    return f.size == 1 ? number & f.mask : number;
}

uint32_t encoder::word_at(size_t at) { return load_word(bytes_.data() + at); }

} // namespace ribkit::decode
