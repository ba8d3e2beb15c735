// Rows come from the vocabularies that the displays use; numbers and names are looked up among them.
#include "cli/messages/text.h"

#include "base/input_error.h"
#include "base/near_names.h"
#include "base/text.h"
#include "diag/catalogue.h"

#include <algorithm>
#include <iomanip>

using namespace ribkit::diag;

namespace ribkit::cli {

namespace {

constexpr size_t prefix_length = 4; // of "rib_" and "fib_"

std::string line(const std::string &value, const char *text) {
    return base::joined("  ", std::left, std::setw(10), value, "  ", text, '\n');
}

std::string listed_text(const vocabulary &listed) {
    std::string text = base::joined(listed.name, '\n');
    for (const text_row &row : listed.rows) {
        text += line(shown(row.value), row.text);
    }
    return text +
           line(listed.rows.empty() ? "every" : "other", listed.fallback == nullptr ? "(composed)" : listed.fallback);
}

void list(const std::vector<const vocabulary *> &listed, command_output &out) {
    for (const vocabulary *words : listed) {
        out.print(listed_text(*words));
    }
    print_json(out, listed);
}

void print(const std::vector<value_text> &texts, command_output &out) {
    for (const value_text &text : texts) {
        out.print_line(base::joined(text.written, "  ", text.text, text.errno_name.empty() ? "" : "  ", text.errno_name,
                                    text.errno_name.empty() ? "" : ": ", text.errno_text));
    }
    print_json(out, texts);
}

std::vector<const vocabulary *> all_vocabularies() {
    std::vector<const vocabulary *> all;
    for (const vocabulary &words : vocabularies) {
        all.push_back(&words);
    }
    return all;
}

std::string_view without_ending(std::string_view name, std::string_view ending) {
    return name.ends_with(ending) ? name.substr(0, name.size() - ending.size()) : name;
}

const vocabulary &vocabulary_named(const std::string &name) {
    if (const vocabulary *found = find_vocabulary(name)) {
        return *found;
    }
    std::vector<std::string_view> names;
    for (const vocabulary &words : vocabularies) {
        names.push_back(words.name);
    }
    throw base::input_error(base::no_such_name(name, "vocabulary", names, "ribkit text --list"));
}

} // namespace

const vocabulary *find_vocabulary(std::string_view name) {
    const auto all = all_vocabularies();
    name = without_ending(without_ending(name, "_str"), "_to");
    const auto is_meant = [name](const vocabulary *words) { return words->name.substr(prefix_length) == name; };
    const bool one = std::count_if(all.begin(), all.end(), is_meant) == 1;
    return one ? *std::find_if(all.begin(), all.end(), is_meant) : vocabulary_of(name);
}

int run_text(const text_options &options) {
    command_output out(options.output);
    if (options.vocabulary.empty()) {
        list(all_vocabularies(), out);
    } else if (const vocabulary &words = vocabulary_named(options.vocabulary); options.values.empty()) {
        list({&words}, out);
    } else {
        print(texts_of(words, options.values), out);
    }
    out.finish();
    return 0;
}

} // namespace ribkit::cli
