// Texts and displays as JSON. Keys keep the order in which they are written here.
#include "diag/catalogue.h"
#include "tools/displays.h"
#include "tools/text.h"

#include <cstdio>
#include <nlohmann/json.hpp>

namespace ribkit {

namespace {

using json = nlohmann::ordered_json;

void print(const json &document) { std::printf("%s\n", document.dump(2).c_str()); }

json entry(uint32_t value, const std::string &text) { return {{"value", value}, {"text", text}}; }

} // namespace

void print_json(const std::vector<value_text> &texts) {
    json entries = json::array();
    for (const value_text &t : texts) {
        entries.push_back(entry(t.value, t.text));
    }
    print(entries);
}

void print_json(const std::vector<const vocabulary *> &listed) {
    json document = json::array();
    for (const vocabulary *words : listed) {
        json entries = json::array();
        for (const text_row &row : words->rows) {
            entries.push_back(entry(row.value, row.text));
        }
        const json other = words->fallback == nullptr ? json(nullptr) : json(words->fallback);
        document.push_back({{"vocabulary", words->name}, {"texts", entries}, {"other", other}});
    }
    print(document);
}

void print_json(std::span<const display> listed) {
    json document = json::array();
    for (const display &kind : listed) {
        document.push_back({{"kind", kind.short_name()}, {"display", kind.name}, {"record", kind.what}});
    }
    print(document);
}

} // namespace ribkit
