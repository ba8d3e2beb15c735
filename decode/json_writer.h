// A walk's fields as JSON: indented, or each message on a line of its own.
#pragma once

#include "decode/field_text.h"
#include "decode/json_text.h"
#include "rib_check.h"

namespace ribkit::decode {

enum class json_form : uint8_t {
    array, ///< of messages, indented
    lines, ///< one message a line
    bare   ///< one message, indented, without what follows from the rest of it
};

class json_writer {
  public:
    /// @param offsets whether it is said of each message, too, where its fields stand
    json_writer(output &out, json_form form, bool offsets = false)
        : json_writer(json_text(out, form == json_form::lines), form, false) {
        offsets_ = offsets;
    }

    /// @param json where the messages stand in a larger document, which goes on once they are finished
    explicit json_writer(const json_text &json) : json_writer(json, json_form::array, true) {}

  private:
    json_writer(const json_text &json, json_form form, bool inside)
        : json_(json), out_(json.out()), form_(form), inside_(inside) {
        if (form == json_form::array) {
            json_.open('[');
        }
    }

  public:
    void begin_message(std::string_view name) {
        json_.element();
        json_.open('{');
        json_.member(message_key);
        json_.text(name);
        json_.member(fields_key);
        json_.open('{');
    }
    /// Where the offsets follow the fields: null if nobody wants them.
    json_text *begin_offsets() {
        if (!offsets_) {
            return nullptr;
        }
        json_.close('}');
        json_.member(offsets_key);
        json_.open('{');
        return &json_;
    }
    /// @param refused why the message is not whole, or null
    void end_message(const rib_check_report *refused) {
        json_.close('}');
        if (refused != nullptr) {
            report(*refused);
        }
        json_.close('}');
        if (form_ != json_form::array) {
            json_.end_line();
            json_.start_anew();
        }
    }
    /// Behind the last message.
    void finish() {
        if (form_ == json_form::array) {
            json_.close(']');
            if (!inside_) {
                json_.end_line();
            }
        }
    }

    void number(const field &f, size_t /*at*/, uint32_t number) {
        if (bare() && f.counts) {
            return;
        }
        json_.member(f.key);
        json_.number(number);
        if (bare()) {
            return;
        }
        if (f.text_key) {
            text(f.text_key, f.text, number);
        }
        if (f.use_key) {
            json_.member(f.use_key);
            json_.quoted([&](char *to) { return put_use(to, f, number); });
        }
        for (const part_field &p : f.parts) {
            json_.member(p.key);
            json_.number(p.of(number));
            if (p.text_key) {
                text(p.text_key, p.text, p.of(number));
            }
        }
    }

    void address(const field &f, size_t /*at*/, uint32_t number) {
        json_.member(f.key);
        json_.quoted([&](char *to) { return put_address(to, number); });
    }

    /// @param map the same, or more where a bitmap goes on behind its field
    void digits(const field &f, size_t /*at*/, std::span<const uint8_t> bytes, std::span<const uint8_t> map) {
        json_.member(f.key);
        digits_value(bytes);
        if (f.text_key && !bare()) {
            json_.member(f.text_key);
            json_.quoted([&](char *to) { return put_positions(to, map); });
        }
    }

    void name(const field &f, size_t /*at*/, std::span<const uint8_t> bytes) {
        if (!bare()) {
            json_.member(f.key);
            digits_value(bytes);
        }
        json_.member(f.text_key);
        json_.quoted([&](char *to) { return put_escaped(to, name_in(bytes)); });
    }

    void begin_words(const field &f) {
        json_.member(f.key);
        out_.append("[");
    }
    void item(const field & /*f*/, size_t i, size_t /*at*/, uint32_t word) {
        char *to = out_.room();
        to = i == 0 ? to : put(to, json_.is_tight() ? "," : ", ");
        out_.commit(std::to_chars(to, to + 10, word).ptr);
    }
    void end_words() { out_.append("]"); }

    void begin_entries(const field &f) {
        json_.member(f.key);
        json_.open('[');
    }
    void begin_entry(const field & /*f*/, size_t /*i*/, size_t /*at*/) {
        json_.element();
        json_.open('{');
    }
    void end_entry() { json_.close('}'); }
    void end_entries() { json_.close(']'); }

    void begin_object(const field &f, size_t /*at*/) {
        json_.member(f.key);
        json_.open('{');
    }
    void end_object() { json_.close('}'); }

    void begin_carried(const field &f, size_t at, const char *message) {
        begin_object(f, at);
        json_.member(message_key);
        json_.text(message);
        json_.member(fields_key);
        json_.open('{');
    }
    void end_carried() {
        json_.close('}');
        json_.close('}');
    }

    void begin_blocks(const field &f) { begin_entries(f); }
    void begin_block(const field & /*f*/, size_t /*k*/) {
        json_.element();
        out_.append("[");
    }
    void block(const field &f, size_t /*k*/, size_t i, size_t at, uint32_t index) { item(f, i, at, index); }
    void end_block() { end_words(); }
    void end_blocks() { end_entries(); }

    /// Bytes that the layout does not carry.
    void rest(size_t offset, size_t /*at*/, std::span<const uint8_t> bytes) {
        json_.element();
        char *to = put(out_.room(), "\"bytes_");
        to = put(std::to_chars(to, to + 10, offset).ptr, json_.is_tight() ? "\":" : "\": ");
        out_.commit(to);
        digits_value(bytes);
    }

  private:
    static inline const json_key message_key{"message"};
    static inline const json_key fields_key{"fields"};
    static inline const json_key offsets_key{"offsets"};
    static inline const json_key refused_key{"refused"}, field_key{"field"}, offset_key{"offset"}, found_key{"found"},
        allowed_key{"allowed"};

    [[nodiscard]] bool bare() const { return form_ == json_form::bare; }

    /// A text that the number may not have. Names of interfaces are the platform's: only they need to be looked at.
    void text(const json_key &key, const number_text &text, uint32_t number) {
        char room[number_text::room];
        const std::string_view found(room, static_cast<size_t>(text.put(room, number) - room));
        if (found.empty()) {
            return;
        }
        json_.member(key);
        json_.quoted([&](char *to) {
            return text.from == number_text::source::interface ? put_escaped(to, found) : put(to, found);
        });
    }

    void digits_value(std::span<const uint8_t> bytes) {
        out_.append("\"");
        while (!bytes.empty()) {
            const auto piece = bytes.first(std::min(bytes.size(), output::longest_piece / 2));
            out_.commit(put_digits(out_.room(), piece));
            bytes = bytes.subspan(piece.size());
        }
        out_.append("\"");
    }

    void report(const rib_check_report &refused) {
        json_.member(refused_key);
        json_.open('{');
        json_.member(field_key);
        json_.text(refused.field);
        for (const auto &[key, number] : {std::pair(&offset_key, refused.offset), std::pair(&found_key, refused.found),
                                          std::pair(&allowed_key, refused.allowed)}) {
            json_.member(*key);
            json_.number(number);
        }
        json_.close('}');
    }

    json_text json_;
    output &out_;
    json_form form_;
    bool inside_; ///< a larger document
    bool offsets_ = false;
};

} // namespace ribkit::decode
