// The generated offset manual against the hand-written transcription: both are read as text and unrolled into words and
// bytes, and have to be the same for every message.
#include "codec/message.h"
#include "codec/witness/naive.h"
#include "codec/witness/transcription.h"
#include "testing/golden.h"

#include <gtest/gtest.h>
#include <sstream>

namespace {

using namespace ribkit::witness;
using lines = std::vector<std::string>;

/// What is at a place, one entry a word or byte; entries of a list are one level deeper.
class unrolled {
  public:
    void add(size_t level, size_t offset, const std::string &what) {
        all.push_back(std::string(level, '+') + std::to_string(offset) + ' ' + what);
    }
    void add(size_t level, size_t offset, size_t size, const std::string &kind, const std::string &described) {
        const size_t unit = kind == "word" ? 4 : kind == "half" ? 2 : kind == "name" ? size : 1;
        for (size_t at = 0; at < size; at += unit) {
            add(level, offset + at, kind + described);
        }
    }
    lines all;
};

// --- The manual

struct manual_row {
    size_t level, offset;
    std::string bytes, kind, name, note;
};

struct chapter {
    size_t size = 0;
    std::vector<manual_row> rows;
};

std::vector<std::string> cells_of(const std::string &line) {
    std::vector<std::string> cells;
    std::istringstream text(line.substr(1));
    for (std::string cell; std::getline(text, cell, '|');) {
        const size_t first = cell.find_first_not_of(' ');
        cells.push_back(first == std::string::npos ? "" : cell.substr(first, cell.find_last_not_of(' ') + 1 - first));
    }
    return cells;
}

manual_row row_of(const std::vector<std::string> &cells) {
    const size_t level = cells[0].find_first_not_of('+');
    const std::string name = cells[3].substr(cells[3].rfind('.') + 1);
    return {level, std::stoul(cells[0].substr(level)), cells[1], cells[2], name, cells[4]};
}

/// "-" for a name that is a kind and an offset.
std::string name_of(const manual_row &row) {
    const bool numbered = row.name.ends_with('_' + std::to_string(row.offset));
    const bool of_kind = row.name.starts_with("word_") || row.name.starts_with("byte");
    return row.name == "zero" || row.name == "gap" || (numbered && of_kind) ? "-" : row.name;
}

/// The word between the next pair of backquotes behind a text, or nothing.
std::string quoted_behind(const std::string &note, const std::string &text) {
    const size_t at = note.find(text);
    return at == std::string::npos ? ""
                                   : note.substr(at + text.size(), note.find('`', at + text.size()) - at - text.size());
}

/// "bits 31-12 `label`, 4-0 `reason` (texts `fib_reason`)" as the transcription writes it.
std::string parts_of(const std::string &note) {
    std::string parts;
    const size_t begin = note.find("bits ");
    std::istringstream phrases(begin == std::string::npos ? "" : note.substr(begin + 5));
    for (std::string phrase; std::getline(phrases, phrase, ',');) {
        phrase = phrase.substr(phrase.find_first_not_of(' '));
        const std::string texts = quoted_behind(phrase, "(texts `");
        parts += (parts.empty() ? " parts=" : ",") + quoted_behind(phrase, "`") + ':' +
                 phrase.substr(0, phrase.find(' ')) + (texts.empty() ? "" : ":" + texts);
    }
    return parts;
}

/// What stands behind a kind: name, texts, parts.
std::string description(const manual_row &row) {
    const std::string texts = quoted_behind(row.note.substr(0, row.note.find("bits ")), "texts `");
    return ' ' + name_of(row) + (texts.empty() ? "" : " texts=" + texts) + parts_of(row.note);
}

std::map<std::string, chapter> manual() {
    std::map<std::string, chapter> all;
    std::vector<std::string> names;
    chapter current;
    std::istringstream text(ribkit::testing::file_content("docs/wire-formats.md"));
    for (std::string line; std::getline(text, line);) {
        if (line.starts_with("## ")) {
            names.clear();
            current = {};
            std::istringstream words(line.substr(3));
            for (std::string name; words >> name;) {
                names.push_back(name.substr(0, name.find(',')));
            }
        } else if (line.find(" bytes") != std::string::npos && current.size == 0 && !line.starts_with('|')) {
            current.size = std::strtoul(line.c_str(), nullptr, 10);
        } else if (line.starts_with("| ") && line.find_first_of("0123456789") < 6 && !names.empty()) {
            current.rows.push_back(row_of(cells_of(line)));
        }
        for (const std::string &name : names) {
            all[name] = current;
        }
    }
    return all;
}

size_t number_behind(const std::string &text, const std::string &words) {
    const size_t at = text.find(words);
    return at == std::string::npos ? 0 : std::stoul(text.substr(at + words.size()));
}

void unroll(std::span<const manual_row> rows, size_t level, size_t base, unrolled &to);

void unroll_list(const manual_row &row, std::span<const manual_row> entry, size_t level, size_t base, unrolled &to) {
    const std::string stride = row.bytes.starts_with("own") ? "own" : std::to_string(std::stoul(row.bytes));
    const std::string entries = row.note.find(" entries as ") != std::string::npos ? "" : row.note;
    if (!entries.empty()) { // always as many
        for (size_t i = 0; i < std::stoul(entries); ++i) {
            unroll(entry, level, base + row.offset + i * std::stoul(stride), to);
        }
        return;
    }
    const bool second_byte = row.note.find("second byte") != std::string::npos;
    to.add(level, base + row.offset,
           "list " + row.name + " count=" + std::to_string(number_behind(row.note, "word at ")) +
               (second_byte ? ".second_byte" : ".word") + " stride=" + stride +
               " bound=" + std::to_string(number_behind(row.note, "room for ")));
    if (entry.size() == 1 && entry[0].kind != "list") { // the list has its name
        to.add(level + 1, 0, std::stoul(entry[0].bytes), entry[0].kind, parts_of(entry[0].note));
    } else {
        unroll(entry, level + 1, 0, to);
    }
}

void unroll(std::span<const manual_row> rows, size_t level, size_t base, unrolled &to) {
    for (size_t i = 0; i < rows.size();) {
        size_t behind = i + 1;
        while (behind < rows.size() && rows[behind].level > rows[i].level) {
            ++behind;
        }
        const manual_row &row = rows[i];
        if (row.kind == "list") {
            unroll_list(row, rows.subspan(i + 1, behind - i - 1), level, base, to);
        } else if (row.kind == "masked") {
            to.add(level, base + row.offset,
                   "masked " + row.note.substr(row.note.find("0x") + 2, 2) + ' ' + name_of(row));
        } else if (row.kind == "name") {
            to.add(level, base + row.offset,
                   "name " + row.bytes + " most " + std::to_string(number_behind(row.note, "at most ")) +
                       description(row));
        } else if (row.kind != "records") { // each a message of its own
            to.add(level, base + row.offset, std::stoul(row.bytes), row.kind, description(row));
        }
        i = behind;
    }
}

// --- The transcription

const std::map<std::string, std::vector<transcribed>> &layouts() {
    static const auto all = load_transcription(RIBKIT_SOURCE_DIR "/codec/witness/transcription.txt");
    return all;
}

void unroll(const std::string &message, size_t level, size_t base, unrolled &to);

std::string detail(const transcribed &field, const std::string &name) {
    const auto found = field.details.find(name);
    return found == field.details.end() ? "" : ' ' + name + '=' + found->second;
}

std::string description(const transcribed &field) {
    return ' ' + field.name + detail(field, "texts") + detail(field, "parts");
}

void unroll_entry(const transcribed &field, size_t level, size_t base, unrolled &to) {
    const std::string &of = field.details.at("of");
    if (of == "word" || of == "bytes") {
        to.add(level, base, std::stoul(field.details.at("stride")), of, detail(field, "parts"));
    } else {
        unroll(of, level, base, to);
    }
}

void unroll_list(const transcribed &field, size_t level, size_t base, unrolled &to) {
    const std::string &count = field.details.at("count");
    const std::string &stride = field.details.at("stride");
    if (count.find('.') == std::string::npos) {
        for (size_t i = 0; i < std::stoul(count); ++i) {
            unroll_entry(field, level, base + field.offset + i * std::stoul(stride), to);
        }
        return;
    }
    const std::string &bound = field.details.at("bound");
    to.add(level, base + field.offset,
           "list " + field.name + " count=" + count + " stride=" + stride + " bound=" + (bound == "-" ? "0" : bound));
    unroll_entry(field, level + 1, 0, to);
}

void unroll(const std::string &message, size_t level, size_t base, unrolled &to) {
    for (const transcribed &field : layouts().at(message)) {
        const size_t offset = base + field.offset;
        if (field.kind == "list") {
            unroll_list(field, level, base, to);
        } else if (field.kind == "record") {
            unroll(field.details.at("of"), level, offset, to);
        } else if (field.kind == "masked") {
            to.add(level, offset, "masked " + field.details.at("mask") + description(field));
        } else if (field.kind == "name") {
            to.add(level, offset,
                   "name " + std::to_string(*field.width) + " most " + field.details.at("most") + description(field));
        } else if (field.kind == "choice") { // the manual has room for it, and says the rest in a sentence
            to.add(level, offset, field.width.value_or(0), "bytes", description(field));
        } else if (field.kind != "size") {
            to.add(level, offset, *field.width, field.kind == "translated" ? "word" : field.kind, description(field));
        }
    }
}

TEST(manual, says_what_the_transcription_says) {
    const std::map<std::string, chapter> chapters = manual();
    size_t compared = 0;
    for (const auto &[name, written_chapter] : chapters) {
        ASSERT_TRUE(layouts().contains(name)) << name;
        unrolled written;
        unrolled wanted;
        unroll(written_chapter.rows, 0, 0, written);
        unroll(name, 0, 0, wanted);
        if (name == "rib_verf_info") { // its keys are a sentence, too
            wanted.all.resize(4);
        }
        EXPECT_EQ(written.all, wanted.all) << name;
        EXPECT_EQ(written_chapter.size, layouts().at(name).front().width) << name;
        compared += written.all.size();
    }
    for (const pair &model : pairs()) {
        EXPECT_TRUE(chapters.contains(std::string(model.name))) << model.name;
    }
    EXPECT_EQ(chapters.size(), ribkit::codec::messages().size() + ribkit::codec::forms().size());
    EXPECT_GT(compared, 460U);
}

} // namespace
