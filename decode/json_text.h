// JSON as it is written: brackets, keys and values, indented or without a blank. What is between two of them is found
// out here, so that whoever writes a document only says what is in it.
#pragma once

#include "decode/escape.h"
#include "decode/output.h"

#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>

namespace ribkit::decode {

/// A key as JSON writes it: "\"uuid\": ".
class json_key {
  public:
    json_key() = default;
    explicit json_key(const std::string &name) : quoted_("\"" + name + "\": ") {}

    [[nodiscard]] std::string_view name() const { return quoted_.empty() ? "" : between(1, 3); }
    [[nodiscard]] std::string_view spaced() const { return quoted_; }
    [[nodiscard]] std::string_view tight() const { return between(0, 1); }
    explicit operator bool() const { return !quoted_.empty(); }

  private:
    [[nodiscard]] std::string_view between(size_t first, size_t left) const {
        return std::string_view(quoted_).substr(first, quoted_.size() - first - left);
    }
    std::string quoted_;
};

/// A copy goes on where it was made: what it writes has to be whole before the original is used again.
class json_text {
  public:
    /// @param tight all in one line
    json_text(output &out, bool tight) : out_(&out), tight_(tight) {}

    [[nodiscard]] output &out() const { return *out_; }
    [[nodiscard]] bool is_tight() const { return tight_; }

    void open(char bracket) {
        out_->append({&bracket, 1});
        ++depth_;
        first_ = true;
    }
    void close(char bracket) {
        --depth_;
        char *to = out_->room();
        to = first_ || tight_ ? to : put_line(to);
        *to++ = bracket;
        out_->commit(to);
        first_ = false;
    }

    /// The key of the value that follows.
    void member(const json_key &key) {
        out_->commit(put(put_separator(out_->room()), tight_ ? key.tight() : key.spaced()));
    }
    json_text &member(const char *name) {
        member(json_key(name));
        return *this;
    }
    /// The next value of an array.
    void element() { out_->commit(put_separator(out_->room())); }

    void number(uint64_t number) {
        char *to = out_->room();
        out_->commit(std::to_chars(to, to + 20, number).ptr);
    }
    /// With as many digits as tell it from its neighbours.
    void real(double number) {
        char *to = out_->room();
        char *end = std::to_chars(to, to + 32, number).ptr;
        const bool whole = std::string_view(to, static_cast<size_t>(end - to)).find_first_of(".e") == std::string::npos;
        out_->commit(whole ? put(end, ".0") : end);
    }
    void text(std::string_view text) {
        out_->append("\"");
        while (!text.empty()) {
            const std::string_view piece = text.substr(0, piece_of(text));
            out_->commit(put_escaped(out_->room(), piece));
            text.remove_prefix(piece.size());
        }
        out_->append("\"");
    }
    void truth(bool is_so) { out_->append(is_so ? "true" : "false"); }
    void null() { out_->append("null"); }
    /// @param put_text writes what stands between the quotes, at most `output::longest_piece` bytes, and returns its
    /// end
    template <class Put> void quoted(const Put &put_text) {
        char *to = out_->room();
        *to++ = '"';
        to = put_text(to);
        *to++ = '"';
        out_->commit(to);
    }

    /// An array of what `print` prints of each.
    template <class Range, class Print> void list(const Range &all, const Print &print) {
        open('[');
        for (const auto &one : all) {
            element();
            print(one);
        }
        close(']');
    }
    /// An object with the members that `print` prints.
    template <class Print> void object(const Print &print) {
        open('{');
        print();
        close('}');
    }

    /// A document of its own, or a line of them, ends with its line.
    void end_line() { out_->append("\n"); }
    /// What follows is another document.
    void start_anew() { first_ = true; }

  private:
    /// So much is written at once: where the text goes on, up to a character's first byte.
    static size_t piece_of(std::string_view text) {
        constexpr size_t most = output::longest_piece / 6;
        size_t size = std::min(text.size(), most);
        const auto goes_on = [&](size_t at) { return (static_cast<uint8_t>(text[at]) & 0xc0) == 0x80; };
        for (size_t back = 0; back < 3 && size < text.size() && goes_on(size); ++back) {
            --size;
        }
        return size;
    }

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
        return tight_ || depth_ == 0 ? to : put_line(to);
    }

    output *out_;
    bool tight_;
    bool first_ = true; ///< nothing stands yet between the brackets that are open
    size_t depth_ = 0;
};

} // namespace ribkit::decode
