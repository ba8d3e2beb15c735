// Once an object is closed all that was said of its numbers is compared: counts with their lists, texts and parts with
// their words.
#include "decode/encoder.h"

#include "codec/messages/forms.h"
#include "decode/decoder.h"
#include "decode/encoder_object.h"
#include "decode/images.h"
#include "decode/numbers.h"

#include <algorithm>
#include <charconv>

namespace ribkit::decode {

namespace {

constexpr std::string_view message_key = "message";
constexpr std::string_view fields_key = "fields";
constexpr uint16_t envelope_content = wire::cmi_envelope.at("opcode");

uint32_t most_of(const field &f) { return f.size == 4 ? UINT32_MAX : f.size == 2 ? UINT16_MAX : UINT8_MAX; }

} // namespace

void encoder::fail(const std::string &what) const { throw encode_error(path() + ": " + what); }

void encoder::fail_at(std::string_view key, const std::string &what) {
    path_.push_back({key});
    fail(what);
}

std::string encoder::path() const {
    std::string text;
    for (const step &s : path_) {
        if (s.key.empty()) {
            text.append("[").append(std::to_string(s.index)).append("]");
        } else {
            const std::string key = quoted(s.key);
            text.append(".").append(key, 1, key.size() - 2);
        }
    }
    return text.empty() ? "the input" : text;
}

void encoder::read(json_reader &in) {
    in_ = &in;
    path_.clear();
    try {
        const bool array = in.take('[');
        const char end = array ? ']' : '\0';
        for (size_t i = 0; in.peek() != end; ++i) {
            if (array && i != 0) {
                in.expect(',');
            }
            path_.assign({{{}, i}});
            read_message();
        }
        path_.clear();
        if (array) {
            in.expect(']');
            if (in.peek() != '\0') {
                fail("is no JSON: something stands behind the array");
            }
        }
    } catch (const json_error &error) {
        fail(error.what());
    }
}

void encoder::read_message() {
    bytes_.clear();
    const kind &what = message_fields(false);
    rib_check_report report{};
    if (what.check(bytes_.data(), static_cast<uint32_t>(bytes_.size()), &report) != 0) {
        std::string line(static_cast<size_t>(rib_check_report_str(&report, nullptr, 0)) + 1, '\0');
        rib_check_report_str(&report, line.data(), static_cast<uint32_t>(line.size()));
        line.pop_back();
        fail(line);
    }
    take_(what, bytes_.bytes());
}

const kind &encoder::kind_named(std::string_view name, bool carried) {
    const kind *found = find_kind(name);
    if (found == nullptr) {
        fail("no message is called " + quoted(name));
    }
    if (carried && found->odd == oddity::envelope) {
        fail("an envelope carries no envelope");
    }
    return *found;
}

/// `{"message": ..., "fields": ...}`, appended to what there is. Fields in front of the message's name are kept.
const kind &encoder::message_fields(bool carried) {
    const kind *what = nullptr;
    bool read = false;
    std::string early;
    in_->expect('{');
    while (in_->peek() != '}') {
        if (what != nullptr || read || !early.empty()) {
            in_->expect(',');
        }
        unknown_ = in_->string();
        const std::string_view key = unknown_ == message_key  ? message_key
                                     : unknown_ == fields_key ? fields_key
                                                              : std::string_view(unknown_);
        path_.push_back({key});
        in_->expect(':');
        if ((key == message_key && what != nullptr) || (key == fields_key && (read || !early.empty()))) {
            fail("stands twice");
        }
        if (key == message_key) {
            what = &kind_named(in_->string(), carried);
        } else if (key == fields_key && what == nullptr) {
            early = in_->value();
        } else if (key == fields_key) {
            fields(what->fields(), bytes_.size(), false);
            read = true;
        } else {
            fail(key == "refused" ? "a refused message is not whole" : "is unknown here");
        }
        path_.pop_back();
    }
    in_->expect('}');
    if (what == nullptr) {
        fail_at(message_key, "is missing");
    }
    if (!early.empty()) {
        json_reader kept{std::string_view(early)};
        json_reader *const outer = std::exchange(in_, &kept);
        path_.push_back({fields_key});
        fields(what->fields(), bytes_.size(), false);
        path_.pop_back();
        in_ = outer;
    } else if (!read) {
        fail_at(fields_key, "is missing");
    }
    return *what;
}

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
        member(o, in_->string());
    }
    in_->expect('}');
    close(o);
}

void encoder::member(object &o, std::string_view key) {
    const size_t found = o.fields.find(key, o.expected);
    if (found == shape::none) {
        unknown_ = key;
        path_.push_back({unknown_});
        in_->expect(':');
        rest_member(o, unknown_);
    } else {
        path_.push_back({o.fields.slots[found].key});
        in_->expect(':');
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
        notes_.push_back({slot_number, in_->number(f.parts[s.part].mask), 0, 0});
    } else if (s.is != slot::role::value) {
        const size_t begin = texts_.size();
        texts_ += in_->string();
        notes_.push_back({slot_number, 0, begin, texts_.size() - begin});
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

void encoder::appended_digits() {
    in_->digits([&](uint8_t byte) {
        bytes_.append(&byte, 1);
        return bytes_.size() <= largest_message;
    });
    reserve(bytes_.size(), 0);
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

namespace {

/// How many entries a list may have.
uint32_t most_entries(const field &f) {
    return f.row->bound != 0                                    ? f.row->bound
           : f.row->count.where == codec::count_in::second_byte ? uint32_t{UINT8_MAX}
                                                                : UINT32_MAX;
}

} // namespace

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

/// Whether something that has not been read yet decides what a member is.
bool encoder::waits(const object &o, const slot &s) {
    const auto &all = o.fields.fields;
    const field &f = all[s.field];
    if (f.kind == field_kind::payload) {
        return false;
    }
    const field *decider = f.kind == field_kind::blocks && f.offset == bud_image.at("n_used") ? &all[s.field - 1U]
                           : f.kind == field_kind::blocks                                     ? &f
                                                          : o.fields.field_at(decider_at(o.fields.odd));
    return !o.seen[decider->slot];
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
