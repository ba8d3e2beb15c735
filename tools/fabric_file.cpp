// From TOML to a fabric: every key is known and has its type, or its line is named. The rules of the fabric itself are
// those of the model.
#include "tools/fabric_file.h"

#include "tools/duration.h"
#include "tools/input_error.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <limits>
#include <memory>
#include <toml++/toml.h>

namespace ribkit {

namespace {

uint32_t line_of(const toml::source_region &source) { return source.begin.line; }
uint32_t line_of(const toml::node &node) { return line_of(node.source()); }

using names = std::initializer_list<std::string_view>;

std::string listed(names known) {
    std::string text;
    for (const std::string_view name : known) {
        text += (text.empty() ? "" : ", ") + std::string(name);
    }
    return text;
}

/// One table of the file, read key by key.
class table_reader {
  public:
    table_reader(const toml::table &table, const std::string &what, names known) : table_(table), what_(what) {
        for (const auto &[key, value] : table) {
            if (std::find(known.begin(), known.end(), key.str()) == known.end()) {
                throw line_error(line_of(key.source()),
                                 joined("unknown key \"", key.str(), "\" in ", what, ", which knows ", listed(known)));
            }
        }
    }

    [[nodiscard]] uint32_t line() const { return std::max<uint32_t>(line_of(table_), 1); }
    [[nodiscard]] uint32_t line(std::string_view key) const {
        const toml::node *node = table_.get(key);
        return node == nullptr ? line() : line_of(*node);
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

    /// "up" or "down", as whether it is up.
    [[nodiscard]] std::optional<bool> state(std::string_view key) const {
        const std::string value = text(key, "");
        if (table_.get(key) != nullptr && value != "up" && value != "down") {
            throw line_error(line(key), joined(key, " is \"up\" or \"down\", not \"", value, '"'));
        }
        return value.empty() ? std::nullopt : std::optional(value == "up");
    }

    /// Calls `read` for every [[key]] table.
    void each(const std::string &key, names known, const std::function<void(const table_reader &)> &read) const {
        const toml::node *node = table_.get(key);
        if (node == nullptr) {
            return;
        }
        if (!node->is_array_of_tables()) {
            throw line_error(line_of(*node), joined(key, " is written as [[", key, "]] tables"));
        }
        for (const toml::node &entry : *node->as_array()) {
            read(table_reader(*entry.as_table(), "[[" + key + "]]", known));
        }
    }

  private:
    [[nodiscard]] const toml::node &required(std::string_view key) const {
        const toml::node *node = table_.get(key);
        if (node == nullptr) {
            throw line_error(line(), joined(what_, " needs a key \"", key, '"'));
        }
        return *node;
    }

    static std::string text(const toml::node &node, std::string_view key) {
        const auto value = node.value_exact<std::string>();
        if (!value) {
            throw line_error(line_of(node), joined(key, " takes a text in quotation marks"));
        }
        return *value;
    }

    static uint32_t number(const toml::node &node, std::string_view key) {
        const auto value = node.value_exact<int64_t>();
        if (!value || *value < 0 || *value > std::numeric_limits<uint32_t>::max()) {
            throw line_error(line_of(node), joined(key, " takes a whole number"));
        }
        return static_cast<uint32_t>(*value);
    }

    static const toml::array &list(const toml::node &node, std::string_view key) {
        if (!node.is_array()) {
            throw line_error(line_of(node), joined(key, " takes a list in square brackets"));
        }
        return *node.as_array();
    }

    const toml::table &table_;
    std::string what_;
};

void read_link(fabric &result, const table_reader &table) {
    const std::vector<std::string> ends = table.texts("ends");
    if (ends.size() != 2) {
        throw line_error(table.line("ends"), "a link has two ends: [\"edge-1 fc1/1\", \"core-1 fc1/1\"]");
    }
    link_text link;
    link.ends = {ends[0], ends[1]};
    link.cost = table.optional_number("cost").value_or(default_cost);
    link.up = table.state("state").value_or(true);
    link.vsans = table.optional_numbers("vsans");
    result.add_link(link, table.line());
}

void read_event(fabric &result, const table_reader &table) {
    const std::string at = table.text("at");
    const auto moment = parse_duration(at);
    if (!moment) {
        throw line_error(table.line("at"), joined('"', at, "\" is no time: \"3s\", \"250ms\" and \"1.5m\" are"));
    }
    result.add_event(*moment, table.text("link"), table.state("state"), table.optional_number("cost"), table.line());
}

fabric read_fabric(const toml::table &document) {
    const table_reader top(document, "the file", {"name", "local", "vsan", "switch", "link", "event"});
    fabric result;
    result.name = top.text("name", "");
    top.each("vsan", {"id", "name"}, [&](const table_reader &table) {
        result.add_vsan({table.number("id"), table.text("name", "")}, table.line("id"));
    });
    top.each("switch", {"name", "domain"}, [&](const table_reader &table) {
        result.add_switch(table.text("name"), table.number("domain"), table.line());
    });
    if (result.vsans().empty() || result.switches().empty()) {
        throw line_error(1, "a fabric needs a [[vsan]] and a [[switch]] at least");
    }
    top.each("link", {"ends", "cost", "state", "vsans"}, [&](const table_reader &table) { read_link(result, table); });
    result.set_local(top.text("local"), top.line("local"));
    top.each("event", {"at", "link", "state", "cost"}, [&](const table_reader &table) { read_event(result, table); });
    return result;
}

void close_file(std::FILE *file) { std::fclose(file); }

std::string read_text(const std::string &path) {
    const bool named = path != "-";
    const std::unique_ptr<std::FILE, void (*)(std::FILE *)> file(
        named ? std::fopen(path.c_str(), "rb") : stdin, named ? close_file : [](std::FILE *) {});
    std::string text;
    std::array<char, 65536> part{};
    size_t read = 0;
    while (file && (read = std::fread(part.data(), 1, part.size(), file.get())) > 0) {
        text.append(part.data(), read);
    }
    if (!file || std::ferror(file.get()) != 0) {
        throw input_error(joined(path, ": cannot be read: ", std::strerror(errno)));
    }
    return text;
}

} // namespace

fabric parse_fabric(std::string_view text, const std::string &file) {
    try {
        return read_fabric(toml::parse(text));
    } catch (const toml::parse_error &error) {
        throw input_error(joined(file, ':', line_of(error.source()), ": ", error.description()));
    } catch (const line_error &error) {
        throw input_error(joined(file, ':', error.line, ": ", error.what()));
    }
}

fabric read_fabric_file(const std::string &path) {
    return parse_fabric(read_text(path), path == "-" ? "standard input" : path);
}

} // namespace ribkit
