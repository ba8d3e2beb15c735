// Texts and displays as JSON.
#include "cli/json_document.h"
#include "cli/messages/displays.h"
#include "cli/messages/text.h"
#include "diag/catalogue.h"

using namespace ribkit::diag;

namespace ribkit::cli {

namespace {

using decode::json_text;

void entry_members(json_text &json, uint32_t value, std::string_view text) {
    json.member("value").number(value);
    json.member("text").text(text);
}

/// A document that is an array of objects.
template <typename Range, typename Print>
void print_array(command_output &out, const Range &all, const Print &members_of) {
    json_document document(out);
    json_text &json = document.text();
    json.list(all, [&](const auto &one) { json.object([&] { members_of(json, one); }); });
    document.finish();
}

} // namespace

void print_json(command_output &out, const std::vector<value_text> &texts) {
    print_array(out, texts, [](json_text &json, const value_text &t) {
        entry_members(json, t.value, t.text);
        if (!t.errno_name.empty()) {
            json.member("errno").text(t.errno_name);
            json.member("errno_text").text(t.errno_text);
        }
    });
}

void print_json(command_output &out, const std::vector<const vocabulary *> &listed) {
    print_array(out, listed, [](json_text &json, const vocabulary *words) {
        json.member("vocabulary").text(words->name);
        json.member("texts").list(
            words->rows, [&](const text_row &row) { json.object([&] { entry_members(json, row.value, row.text); }); });
        json.member("other");
        words->fallback == nullptr ? json.null() : json.text(words->fallback);
    });
}

void print_json(command_output &out, std::span<const display> listed) {
    print_array(out, listed, [](json_text &json, const display &kind) {
        json.member("kind").text(kind.short_name());
        json.member("display").text(kind.name);
        json.member("record").text(kind.what);
    });
}

} // namespace ribkit::cli
