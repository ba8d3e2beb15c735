// Texts and displays as JSON. Keys keep the order in which they are written here.
#include "cli/messages/displays.h"
#include "cli/messages/text.h"
#include "diag/catalogue.h"

#include <nlohmann/json.hpp>

using namespace ribkit::diag;

namespace ribkit::cli {

namespace {

using json = nlohmann::ordered_json;

std::string text_of(const json &document) {
    return document.dump(2, ' ', false, json::error_handler_t::replace) + "\n";
}

json entry(uint32_t value, const std::string &text) { return {{"value", value}, {"text", text}}; }

json entry(const value_text &t) {
    json one = entry(t.value, t.text);
    if (!t.errno_name.empty()) {
        one["errno"] = t.errno_name;
        one["errno_text"] = t.errno_text;
    }
    return one;
}

} // namespace

std::string json_of(const std::vector<value_text> &texts) {
    json entries = json::array();
    for (const value_text &t : texts) {
        entries.push_back(entry(t));
    }
    return text_of(entries);
}

std::string json_of(const std::vector<const vocabulary *> &listed) {
    json document = json::array();
    for (const vocabulary *words : listed) {
        json entries = json::array();
        for (const text_row &row : words->rows) {
            entries.push_back(entry(row.value, row.text));
        }
        const json other = words->fallback == nullptr ? json(nullptr) : json(words->fallback);
        document.push_back({{"vocabulary", words->name}, {"texts", entries}, {"other", other}});
    }
    return text_of(document);
}

std::string json_of(std::span<const display> listed) {
    json document = json::array();
    for (const display &kind : listed) {
        document.push_back({{"kind", kind.short_name()}, {"display", kind.name}, {"record", kind.what}});
    }
    return text_of(document);
}

} // namespace ribkit::cli
