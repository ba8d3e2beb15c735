// What is shown of a run of messages, and where it ends.
#include "decode/decoder.h"

#include "codec/messages/forms.h"
#include "codec/view.h"
#include "decode/numbers.h"
#include "decode/offset_writer.h"
#include "decode/walk.h"

#include <algorithm>

namespace ribkit::decode {

namespace {

/// Where what is understood of a refused message ends.
size_t understood(const rib_check_report &report) {
    return report.rule == RIB_CHECK_COUNT ? report.offset : report.allowed;
}

/// What a check says of the content, seen from the envelope.
void move_report(rib_check_report &report, uint32_t by) {
    report.offset += by;
    if (report.rule != RIB_CHECK_COUNT) {
        report.found += by;
        report.allowed += by;
    }
}

const kind *kind_inside(const kind &envelope, std::span<const uint8_t> bytes) {
    return envelope.wire == &wire::cmi_envelope
               ? kind_of_opcode(codec::view<wire::cmi_envelope>(bytes.data()).get<"opcode">())
               : nullptr;
}

} // namespace

/// As message_size; also of what an envelope carries, where the user said what it is.
uint32_t decoder::size_of(std::span<const uint8_t> bytes, rib_check_report &report, content &inside) const {
    const uint32_t size = message_size(what_, bytes, report);
    if (size == 0 || what_.odd != oddity::envelope) {
        return size;
    }
    const uint32_t head = what_.wire->size;
    const kind *carried = carried_ != nullptr ? carried_ : kind_inside(what_, bytes);
    if (carried == nullptr) {
        return size;
    }
    inside = {carried->name, &carried->fields()};
    if (carried->check(bytes.data() + head, size - head, &report) == 0) {
        return size;
    }
    if (carried_ == nullptr) {
        inside = {};
        return size;
    }
    move_report(report, head);
    return 0;
}

size_t decoder::take(std::span<const uint8_t> bytes, bool more) {
    size_t taken = 0;
    while (taken != bytes.size() && !refused_) {
        const std::span<const uint8_t> rest = bytes.subspan(taken);
        content inside;
        rib_check_report report{};
        const uint32_t size = size_of(rest, report, inside);
        if (size == 0) {
            if (more && rest.size() <= largest_message) {
                break;
            }
            show(rest.first(std::min(rest.size(), understood(report))), inside, &report);
            refused_ = refusal{number_, offset_, report};
            break;
        }
        show(rest.first(size), inside, nullptr);
        taken += size;
        offset_ += size;
        ++number_;
    }
    return taken;
}

void decoder::show(std::span<const uint8_t> bytes, const content &inside, const rib_check_report *report) {
    if (text_ != nullptr) {
        text_->begin_message(what_.name);
        walk(*text_, bytes.data(), bytes.size(), inside).fields(what_.fields(), 0);
        text_->end_message();
    }
    if (json_ != nullptr) {
        json_->begin_message(what_.name);
        walk(*json_, bytes.data(), bytes.size(), inside).fields(what_.fields(), 0);
        if (json_text *json = json_->begin_offsets()) {
            offset_writer offsets(*json);
            walk(offsets, bytes.data(), bytes.size(), inside).fields(what_.fields(), 0);
        }
        json_->end_message(report);
    }
}

std::vector<guess> guesses(std::span<const uint8_t> bytes) {
    std::vector<guess> found;
    for (const kind &k : kinds()) {
        rib_check_report report{};
        size_t messages = 0;
        size_t at = 0;
        uint32_t size = 0;
        while (at != bytes.size() && (size = message_size(k, bytes.subspan(at), report)) != 0) {
            at += size;
            ++messages;
        }
        if (at == bytes.size() && messages != 0) {
            found.push_back({&k, messages});
        }
    }
    return found;
}

namespace {

void put_word(std::vector<uint8_t> &bytes, size_t at, uint32_t word) { store_word(bytes.data() + at, word); }

void append_entry(std::vector<uint8_t> &bytes, const shape &s);

/// Counts one entry of a list, and appends it where it is an open one.
void add_entry(std::vector<uint8_t> &bytes, size_t base, const field &list) {
    const codec::count_of count = list.row->count;
    if (count.where == codec::count_in::word) {
        put_word(bytes, base + count.at, 1);
    } else if (count.where == codec::count_in::second_byte) {
        bytes[base + count.at + 1] = 1;
    }
    if (list.size == 0) {
        append_entry(bytes, *list.entry);
    } else if (list.kind == field_kind::entries) {
        for (const field &f : list.entry->fields) {
            if (f.is_list()) {
                add_entry(bytes, base + list.offset, f);
            }
        }
    }
}

void append_entry(std::vector<uint8_t> &bytes, const shape &s) {
    const size_t base = bytes.size();
    bytes.resize(base + s.size);
    for (const field &f : s.fields) {
        if (f.is_list()) {
            add_entry(bytes, base, f);
        }
    }
}

} // namespace

std::vector<uint8_t> empty_message(const kind &what) {
    std::vector<uint8_t> bytes;
    append_entry(bytes, what.fields());
    if (what.odd == oddity::verf_info) {
        put_word(bytes, wire::verf_info.at("n_key"), 1);
        bytes.resize(bytes.size() + key_layout(0, false).size);
    } else if (what.odd == oddity::in_info) {
        put_word(bytes, wire::in_info.at("kind"), 1);
        bytes.resize(bytes.size() + wire::size_of_body(1));
    } else if (what.odd == oddity::envelope) {
        constexpr uint16_t content_at = wire::cmi_envelope.at("opcode");
        put_word(bytes, wire::cmi_envelope.at("length"), static_cast<uint32_t>(bytes.size()) - content_at);
    }
    return bytes;
}

std::string template_of(const kind &what) {
    const std::vector<uint8_t> bytes = empty_message(what);
    std::string text;
    output out([&](std::string_view piece) { text += piece; });
    json_writer json(out, json_form::bare);
    json.begin_message(what.name);
    walk(json, bytes.data(), bytes.size()).fields(what.fields(), 0);
    json.end_message(nullptr);
    out.flush();
    return text;
}

} // namespace ribkit::decode
