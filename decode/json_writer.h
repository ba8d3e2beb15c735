// A walk's fields as JSON: indented, or each message on a line of its own.
#pragma once

#include "decode/escape.h"
#include "decode/field_text.h"
#include "decode/output.h"
#include "rib_check.h"

#include <charconv>

namespace ribkit::decode {

enum class json_form : uint8_t {
    array, ///< of messages, indented
    lines, ///< one message a line
    bare   ///< one message, indented, without what follows from the rest of it
};

class json_writer {
  public:
    json_writer(output &out, json_form form) : out_(out), form_(form) {
        if (form == json_form::array) {
            open('[');
        }
    }

    void begin_message(std::string_view name) {
        begin_value();
        open('{');
        member(message_key);
        text_value(name);
        member(fields_key);
        open('{');
    }
    /// @param refused why the message is not whole, or null
    void end_message(const rib_check_report *refused) {
        close('}');
        if (refused != nullptr) {
            report(*refused);
        }
        close('}');
        if (form_ != json_form::array) {
            out_.append("\n");
        }
        first_ = form_ != json_form::array;
    }
    /// Behind the last message.
    void finish() {
        if (form_ == json_form::array) {
            close(']');
            out_.append("\n");
        }
    }

    void number(const field &f, size_t /*at*/, uint32_t number) {
        if (bare() && f.counts) {
            return;
        }
        member(f.key);
        value(number);
        if (bare()) {
            return;
        }
        if (f.text_key) {
            text(f.text_key, f.text, number);
        }
        if (f.use_key) {
            member(f.use_key);
            quoted([&](char *to) { return put_use(to, f, number); });
        }
        for (const part_field &p : f.parts) {
            member(p.key);
            value(p.of(number));
            if (p.text_key) {
                text(p.text_key, p.text, p.of(number));
            }
        }
    }

    void address(const field &f, size_t /*at*/, uint32_t number) {
        member(f.key);
        quoted([&](char *to) { return put_address(to, number); });
    }

    /// @param map the same, or more where a bitmap goes on behind its field
    void digits(const field &f, size_t /*at*/, std::span<const uint8_t> bytes, std::span<const uint8_t> map) {
        member(f.key);
        digits_value(bytes);
        if (f.text_key && !bare()) {
            member(f.text_key);
            quoted([&](char *to) { return put_positions(to, map); });
        }
    }

    void name(const field &f, size_t /*at*/, std::span<const uint8_t> bytes) {
        if (!bare()) {
            member(f.key);
            digits_value(bytes);
        }
        member(f.text_key);
        quoted([&](char *to) { return put_escaped(to, name_in(bytes)); });
    }

    void begin_words(const field &f) {
        member(f.key);
        out_.append("[");
    }
    void item(const field & /*f*/, size_t i, size_t /*at*/, uint32_t word) {
        char *to = out_.room();
        to = i == 0 ? to : put(to, form_ == json_form::lines ? "," : ", ");
        out_.commit(std::to_chars(to, to + 10, word).ptr);
    }
    void end_words() { out_.append("]"); }

    void begin_entries(const field &f) {
        member(f.key);
        open('[');
    }
    void begin_entry(const field & /*f*/, size_t /*i*/, size_t /*at*/) {
        begin_value();
        open('{');
    }
    void end_entry() { close('}'); }
    void end_entries() { close(']'); }

    void begin_object(const field &f, size_t /*at*/) {
        member(f.key);
        open('{');
    }
    void end_object() { close('}'); }

    void begin_carried(const field &f, size_t at, const char *message) {
        begin_object(f, at);
        member(message_key);
        text_value(message);
        member(fields_key);
        open('{');
    }
    void end_carried() {
        close('}');
        close('}');
    }

    void begin_blocks(const field &f) { begin_entries(f); }
    void begin_block(const field & /*f*/, size_t /*k*/) {
        begin_value();
        out_.append("[");
    }
    void block(const field &f, size_t /*k*/, size_t i, size_t at, uint32_t index) { item(f, i, at, index); }
    void end_block() { end_words(); }
    void end_blocks() { end_entries(); }

    /// Bytes that the layout does not carry.
    void rest(size_t offset, size_t /*at*/, std::span<const uint8_t> bytes) {
        begin_value();
        char *to = put(out_.room(), "\"bytes_");
        to = put(std::to_chars(to, to + 10, offset).ptr, form_ == json_form::lines ? "\":" : "\": ");
        out_.commit(to);
        digits_value(bytes);
    }

  private:
    static inline const json_key message_key{"message"};
    static inline const json_key fields_key{"fields"};

    [[nodiscard]] bool bare() const { return form_ == json_form::bare; }

    char *put_line(char *to) const {
        constexpr std::string_view blanks = "                                        ";
        *to++ = '\n';
        return put(to, blanks.substr(0, 2 * depth_));
    }

    char *put_separator(char *to) {
        if (!first_) {
            *to++ = ',';
        }
        first_ = false;
        return form_ == json_form::lines || depth_ == 0 ? to : put_line(to);
    }

    void begin_value() { out_.commit(put_separator(out_.room())); }

    void member(const json_key &key) {
        out_.commit(put(put_separator(out_.room()), form_ == json_form::lines ? key.tight() : key.spaced()));
    }

    void value(uint32_t number) {
        char *to = out_.room();
        out_.commit(std::to_chars(to, to + 10, number).ptr);
    }

    template <class Put> void quoted(const Put &put_text) {
        char *to = out_.room();
        *to++ = '"';
        to = put_text(to);
        *to++ = '"';
        out_.commit(to);
    }
    void text_value(std::string_view text) {
        quoted([&](char *to) { return put_escaped(to, text); });
    }

    /// A text that the number may not have. Names of interfaces are the platform's: only they need to be looked at.
    void text(const json_key &key, const number_text &text, uint32_t number) {
        char room[number_text::room];
        const std::string_view found(room, static_cast<size_t>(text.put(room, number) - room));
        if (found.empty()) {
            return;
        }
        member(key);
        quoted([&](char *to) {
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

    void open(char bracket) {
        out_.append({&bracket, 1});
        ++depth_;
        first_ = true;
    }
    void close(char bracket) {
        --depth_;
        char *to = out_.room();
        to = first_ || form_ == json_form::lines ? to : put_line(to);
        *to++ = bracket;
        out_.commit(to);
        first_ = false;
    }

    void report(const rib_check_report &refused) {
        static const json_key refused_key("refused"), field_key("field"), offset_key("offset"), found_key("found"),
            allowed_key("allowed");
        member(refused_key);
        open('{');
        member(field_key);
        text_value(refused.field);
        for (const auto &[key, number] : {std::pair(&offset_key, refused.offset), std::pair(&found_key, refused.found),
                                          std::pair(&allowed_key, refused.allowed)}) {
            member(*key);
            value(number);
        }
        close('}');
    }

    output &out_;
    json_form form_;
    size_t depth_ = 0;
    bool first_ = true; ///< nothing stands yet between the brackets that are open
};

} // namespace ribkit::decode
