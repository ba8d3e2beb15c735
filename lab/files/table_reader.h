// One table of a TOML file, read key by key: every key is known and has its type, or its line is named. Only the
// readers of TOML files include this.
#pragma once

#include "base/input_error.h"
#include "base/text.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <toml++/toml.h>
#include <vector>

namespace ribkit::lab {

/// What may be said either way.
struct name_or_number {
    std::string name;
    std::optional<uint32_t> number;
};

class table_reader {
  public:
    using names = std::initializer_list<std::string_view>;

    static uint32_t line_of(const toml::source_region &source) { return source.begin.line; }

    /// The keys of the table are among the known ones; `what` is what errors call the table.
    table_reader(const toml::table &table, const std::string &what, names known) : table_(table), what_(what) {
        for (const auto &[key, value] : table) {
            if (std::find(known.begin(), known.end(), key.str()) == known.end()) {
                throw base::line_error(line_of(key.source()), base::joined("unknown key \"", key.str(), "\" in ", what,
                                                                           ", which knows ", listed(known)));
            }
        }
    }

    [[nodiscard]] uint32_t line() const { return std::max<uint32_t>(line_of(table_.source()), 1); }
    [[nodiscard]] uint32_t line(std::string_view key) const {
        const toml::node *node = table_.get(key);
        return node == nullptr ? line() : line_of(node->source());
    }

    [[nodiscard]] bool has(std::string_view key) const { return table_.get(key) != nullptr; }
    /// Throws a line_error where a key is there that means nothing `beside` another.
    void refuse_beside(std::string_view other, names keys) const {
        for (const std::string_view key : keys) {
            if (has(key)) {
                throw base::line_error(line(key), base::joined(key, " means nothing beside ", other));
            }
        }
    }

    [[nodiscard]] std::string text(std::string_view key) const { return text(required(key), key); }
    [[nodiscard]] std::string text(std::string_view key, const std::string &otherwise) const {
        const toml::node *node = table_.get(key);
        return node == nullptr ? otherwise : text(*node, key);
    }
    [[nodiscard]] uint32_t number(std::string_view key) const { return number(required(key), key); }
    [[nodiscard]] std::optional<uint32_t> optional_number(std::string_view key) const {
        const toml::node *node = table_.get(key);
        return node == nullptr ? std::nullopt : std::optional(number(*node, key));
    }

    [[nodiscard]] std::vector<uint32_t> optional_numbers(std::string_view key) const {
        std::vector<uint32_t> values;
        if (const toml::node *node = table_.get(key); node != nullptr) {
            for (const toml::node &element : list(*node, key)) {
                values.push_back(number(element, key));
            }
        }
        return values;
    }
    [[nodiscard]] std::vector<std::string> texts(std::string_view key) const {
        std::vector<std::string> values;
        for (const toml::node &element : list(required(key), key)) {
            values.push_back(text(element, key));
        }
        return values;
    }

    [[nodiscard]] name_or_number either(std::string_view key) const { return either(required(key), key); }
    [[nodiscard]] std::vector<name_or_number> eithers(std::string_view key) const {
        std::vector<name_or_number> values;
        for (const toml::node &element : list(required(key), key)) {
            values.push_back(either(element, key));
        }
        return values;
    }

    /// "up" or "down", as whether it is up.
    [[nodiscard]] std::optional<bool> state(std::string_view key) const {
        const std::string value = text(key, "");
        if (table_.get(key) != nullptr && value != "up" && value != "down") {
            throw base::line_error(line(key), base::joined(key, " is \"up\" or \"down\", not \"", value, '"'));
        }
        return value.empty() ? std::nullopt : std::optional(value == "up");
    }

    /// One of two texts.
    [[nodiscard]] std::string either_of(std::string_view key, const char *one, const char *other,
                                        const char *otherwise) const {
        const std::string value = text(key, otherwise);
        if (value != one && value != other) {
            throw base::line_error(line(key),
                                   base::joined(key, " is \"", one, "\" or \"", other, "\", not \"", value, '"'));
        }
        return value;
    }

    /// true or false; false where it is not there.
    [[nodiscard]] bool flag(std::string_view key) const {
        const toml::node *node = table_.get(key);
        const auto value = node == nullptr ? std::optional(false) : node->value_exact<bool>();
        if (!value) {
            throw base::line_error(line(key), base::joined(key, " is true or false"));
        }
        return *value;
    }

    /// Calls `read` for the [key] table, where there is one.
    void one(const std::string &key, names known, const std::function<void(const table_reader &)> &read) const {
        const toml::node *node = table_.get(key);
        if (node == nullptr) {
            return;
        }
        if (!node->is_table()) {
            throw base::line_error(line_of(node->source()), base::joined(key, " is written as a [", key, "] table"));
        }
        read(table_reader(*node->as_table(), base::joined('[', key, ']'), known));
    }

    /// Calls `read` for the table that is the value of a key, where there is one.
    void inside(const std::string &key, names known, const std::function<void(const table_reader &)> &read) const {
        const toml::node *node = table_.get(key);
        if (node == nullptr) {
            return;
        }
        if (!node->is_table()) {
            throw base::line_error(line_of(node->source()), base::joined(key, " takes a table in curly brackets"));
        }
        read(table_reader(*node->as_table(), key, known));
    }

    /// Calls `read` for every [[key]] table.
    void each(const std::string &key, names known, const std::function<void(const table_reader &)> &read) const {
        const toml::node *node = table_.get(key);
        if (node == nullptr) {
            return;
        }
        if (!node->is_array_of_tables()) {
            throw base::line_error(line_of(node->source()), base::joined(key, " is written as [[", key, "]] tables"));
        }
        for (const toml::node &entry : *node->as_array()) {
            read(table_reader(*entry.as_table(), base::joined("[[", key, "]]"), known));
        }
    }

  private:
    [[nodiscard]] const toml::node &required(std::string_view key) const {
        const toml::node *node = table_.get(key);
        if (node == nullptr) {
            throw base::line_error(line(), base::joined(what_, " needs a key \"", key, '"'));
        }
        return *node;
    }

    static std::string listed(names known) {
        std::string text;
        for (const std::string_view name : known) {
            text += base::joined(text.empty() ? "" : ", ", name);
        }
        return text;
    }

    static std::string text(const toml::node &node, std::string_view key) {
        const auto value = node.value_exact<std::string>();
        if (!value) {
            throw base::line_error(line_of(node.source()), base::joined(key, " takes a text in quotation marks"));
        }
        if (std::any_of(value->begin(), value->end(), base::is_control)) {
            throw base::line_error(line_of(node.source()), base::joined(key, " holds a control character"));
        }
        return *value;
    }

    static uint32_t number(const toml::node &node, std::string_view key) {
        const auto value = node.value_exact<int64_t>();
        if (!value || *value < 0 || *value > std::numeric_limits<uint32_t>::max()) {
            throw base::line_error(line_of(node.source()), base::joined(key, " takes a whole number from 0 to ",
                                                                        std::numeric_limits<uint32_t>::max()));
        }
        return static_cast<uint32_t>(*value);
    }

    static name_or_number either(const toml::node &node, std::string_view key) {
        return node.is_string() ? name_or_number{text(node, key), {}} : name_or_number{{}, number(node, key)};
    }

    static const toml::array &list(const toml::node &node, std::string_view key) {
        if (!node.is_array()) {
            throw base::line_error(line_of(node.source()), base::joined(key, " takes a list in square brackets"));
        }
        return *node.as_array();
    }

    const toml::table &table_;
    std::string what_;
};

} // namespace ribkit::lab
