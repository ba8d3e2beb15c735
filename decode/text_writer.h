// A walk's fields as text: one a line, with what its number is called.
#pragma once

#include "decode/escape.h"
#include "decode/field_text.h"
#include "decode/output.h"

#include <charconv>

namespace ribkit::decode {

class text_writer {
  public:
    /// @param offsets whether each line begins with where its field stands in the message
    text_writer(output &out, bool offsets) : out_(out), offsets_(offsets) {}

    void begin_message(std::string_view name) {
        if (!first_) {
            out_.append("\n");
        }
        first_ = false;
        line(0, name);
        end_line();
        ++depth_;
    }
    void end_message() { depth_ = 0; }

    void number(const field &f, size_t at, uint32_t number) {
        begin(at, f.name());
        value(number);
        texts([&](char *to) { return f.text.put(to, number); });
        if (f.use != nullptr) {
            texts([&](char *to) { return put_use(to, f, number); });
        }
        end_line();
        for (const part_field &p : f.parts) {
            begin(at, p.key.name());
            value(p.of(number));
            texts([&](char *to) { return p.text.put(to, p.of(number)); });
            end_line();
        }
    }

    void address(const field &f, size_t at, uint32_t number) {
        begin(at, f.name());
        out_.commit(put_address(out_.room(), number));
        end_line();
    }

    void digits(const field &f, size_t at, std::span<const uint8_t> bytes, std::span<const uint8_t> map) {
        begin(at, f.name());
        all_digits(bytes);
        if (f.text_key) {
            texts([&](char *to) { return put_positions(to, map); });
        }
        end_line();
    }

    void name(const field &f, size_t at, std::span<const uint8_t> bytes) {
        begin(at, f.name());
        const std::string_view text = name_in(bytes);
        out_.commit(put_printable(out_.room(), text));
        if (std::any_of(bytes.begin() + static_cast<ptrdiff_t>(text.size()), bytes.end(),
                        [](uint8_t b) { return b != 0; })) {
            out_.append("  ");
            all_digits(bytes);
        }
        end_line();
    }

    void begin_words(const field & /*f*/) {}
    void item(const field &f, size_t i, size_t at, uint32_t word) {
        begin(at, f.name(), &i);
        value(word);
        texts([&](char *to) { return f.labels ? put_label_text(to, word) : f.text.put(to, word); });
        end_line();
    }
    void end_words() {}

    void begin_entries(const field & /*f*/) {}
    void begin_entry(const field &f, size_t i, size_t at) {
        line(at, f.name(), &i);
        end_line();
        ++depth_;
    }
    void end_entry() { --depth_; }
    void end_entries() {}

    void begin_object(const field &f, size_t at) {
        line(at, f.name());
        end_line();
        ++depth_;
    }
    void end_object() { --depth_; }

    void begin_carried(const field &f, size_t at, const char *message) {
        begin(at, f.name());
        out_.append(message);
        end_line();
        ++depth_;
    }
    void end_carried() { --depth_; }

    void begin_blocks(const field & /*f*/) {}
    void begin_block(const field & /*f*/, size_t /*k*/) {}
    /// Blocks of k + 1 units are called by their size.
    void block(const field &f, size_t k, size_t i, size_t at, uint32_t index) {
        line(at, f.name(), &k);
        put_index(i);
        blanks(f.name().size() + 6);
        value(index);
        end_line();
    }
    void end_block() {}
    void end_blocks() {}

    void rest(size_t offset, size_t at, std::span<const uint8_t> bytes) {
        char name[24];
        char *to = put(name, "bytes_");
        to = std::to_chars(to, name + sizeof name, offset).ptr;
        begin(at, {name, static_cast<size_t>(to - name)});
        all_digits(bytes);
        end_line();
    }

  private:
    static constexpr size_t column = 20; ///< where values stand behind names that are shorter

    void line(size_t at, std::string_view name, const size_t *index = nullptr) {
        char *to = out_.room();
        if (offsets_) {
            char digits[20];
            const auto size = static_cast<size_t>(std::to_chars(digits, digits + sizeof digits, at).ptr - digits);
            to = put(std::fill_n(to, std::max(size, size_t{8}) - size, ' '), {digits, size});
            to = put(to, "  ");
        }
        to = std::fill_n(to, 2 * depth_, ' ');
        out_.commit(put(to, name));
        if (index != nullptr) {
            put_index(*index);
        }
    }

    void begin(size_t at, std::string_view name, const size_t *index = nullptr) {
        line(at, name, index);
        blanks(name.size() + (index == nullptr ? 0 : index_size(*index)));
    }

    static size_t index_size(size_t index) {
        size_t digits = 1;
        for (; index >= 10; index /= 10) {
            ++digits;
        }
        return digits + 2;
    }

    void put_index(size_t index) {
        char *to = out_.room();
        *to++ = '[';
        to = std::to_chars(to, to + 20, index).ptr;
        *to++ = ']';
        out_.commit(to);
    }

    void blanks(size_t taken) {
        char *to = out_.room();
        out_.commit(std::fill_n(to, taken < column ? column - taken : 1, ' '));
    }

    void value(uint32_t number) {
        char *to = out_.room();
        out_.commit(std::to_chars(to, to + 10, number).ptr);
    }

    /// What stands behind a value, two blanks away, where there is something.
    template <class Put> void texts(const Put &put_text) {
        char *const begin = out_.room();
        char *const end = put_text(put(begin, "  "));
        out_.commit(end == begin + 2 ? begin : end);
    }

    void all_digits(std::span<const uint8_t> bytes) {
        while (!bytes.empty()) {
            const auto piece = bytes.first(std::min(bytes.size(), output::longest_piece / 2));
            out_.commit(put_digits(out_.room(), piece));
            bytes = bytes.subspan(piece.size());
        }
    }

    void end_line() { out_.append("\n"); }

    output &out_;
    bool offsets_;
    bool first_ = true;
    size_t depth_ = 0;
};

} // namespace ribkit::decode
