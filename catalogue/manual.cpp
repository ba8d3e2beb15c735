// Rows as lines of tables, and counts in words; one chapter for all messages of one layout. It is written from the
// catalogue as others read it, which therefore says all that the manual says.
#include "catalogue/manual.h"

#include "ribkit_catalogue.h"

#include <algorithm>
#include <span>
#include <string_view>
#include <vector>

namespace ribkit::catalogue {

namespace {

/// "bits 31-12 `label`, 8 `bottom`"
std::string parts_of(const ribkit_row &r) {
    std::string text;
    for (const ribkit_part *p : std::span(r.parts, r.n_parts)) {
        text += text.empty() ? "bits " : ", ";
        text += p->bits == 1 ? "" : std::to_string(p->shift + p->bits - 1) + "-";
        text += std::to_string(p->shift) + " `" + p->name + "`";
        text += p->vocabulary == nullptr ? "" : std::string(" (texts `") + p->vocabulary->name + "`)";
    }
    return text;
}

std::string joined(std::initializer_list<std::string> phrases) {
    std::string text;
    for (const std::string &phrase : phrases) {
        text += text.empty() || phrase.empty() ? "" : "; ";
        text += phrase;
    }
    return text;
}

/// What a reader makes of the number.
std::string reading_of(const ribkit_row &r) {
    return joined({r.meaning_text, *r.unit == '\0' ? "" : std::string("in ") + r.unit,
                   r.shown_more == 0 ? "" : "shown counted from 1",
                   r.vocabulary == nullptr ? "" : std::string("texts `") + r.vocabulary->name + "`", parts_of(r)});
}

std::string hex(uint32_t value) {
    constexpr std::string_view digits = "0123456789abcdef";
    return {'0', 'x', digits[value >> 4 & 0xf], digits[value & 0xf]};
}

std::string count_note(const ribkit_row &r) {
    std::string note;
    if (r.count == RIBKIT_COUNT_CONSTANT) {
        note = std::to_string(r.count_at) + " entries";
    } else {
        note = "as many entries as the ";
        note += r.count == RIBKIT_COUNT_WORD ? "word" : "second byte of the word";
        note += " at " + std::to_string(r.count_at) + " says";
    }
    if (r.bound != 0 && r.count != RIBKIT_COUNT_CONSTANT) {
        note += "; room for " + std::to_string(r.bound) + ", the rest zero";
    }
    if (r.kind == RIBKIT_KIND_RECORDS) {
        note += "; each converted by itself";
    }
    return note;
}

std::string note_of(const ribkit_row &r) {
    switch (r.kind) {
    case RIBKIT_KIND_LIST:
    case RIBKIT_KIND_RECORDS:
        return count_note(r);
    case RIBKIT_KIND_MASKED:
        return "only the bits of " + hex(r.mask) + " are carried";
    case RIBKIT_KIND_ZERO:
        return "written as zero";
    case RIBKIT_KIND_GAP:
        return joined({"carried by nobody", reading_of(r)});
    case RIBKIT_KIND_NAME:
        return "at most " + std::to_string(r.longest) + " characters, zero-filled";
    case RIBKIT_KIND_BYTES:
        return joined({"as they stand", reading_of(r)});
    default:
        return reading_of(r);
    }
}

std::string size_of(const ribkit_row &r) {
    if (r.entry == nullptr) {
        return std::to_string(r.size);
    }
    return r.stride == 0 ? "own size each" : std::to_string(r.stride) + " each";
}

void print_rows(std::string &text, const ribkit_layout &l, const std::string &depth, const std::string &path) {
    for (const ribkit_row *r : std::span(l.rows, l.n_rows)) {
        const std::string cells[] = {depth + std::to_string(r->offset), size_of(*r), r->kind_name, path + r->name,
                                     note_of(*r)};
        for (const std::string &cell : cells) {
            text += "| ";
            text += cell;
            text += ' ';
        }
        text += "|\n";
        if (r->kind == RIBKIT_KIND_LIST) {
            print_rows(text, *r->entry, depth + "+", path + r->name + ".");
        }
    }
}

using chapter = std::vector<const ribkit_message *>;

/// Messages of one layout are one chapter, in the order of the catalogue.
std::vector<chapter> chapters(const ribkit_catalogue &all) {
    std::vector<chapter> found;
    for (const ribkit_message *m : std::span(all.messages, all.n_messages)) {
        const auto same =
            std::find_if(found.begin(), found.end(), [=](const chapter &c) { return c[0]->layout == m->layout; });
        if (same != found.end()) {
            same->push_back(m);
        } else {
            found.push_back({m});
        }
    }
    return found;
}

void print_layout(std::string &text, const ribkit_layout &l, const std::string &odd, bool open) {
    text += "\n\n" + std::to_string(l.size) + " bytes" + (open ? ", and what follows.\n" : ".\n");
    text += "\n| Offset | Bytes | Kind | Field | Meaning |\n| --- | --- | --- | --- | --- |\n";
    print_rows(text, l, "", "");
    if (!odd.empty()) {
        text += "\n" + odd + "\n";
    }
}

/// Whether its last row is a list without a bound.
bool is_open(const ribkit_layout &l) {
    const ribkit_row &last = *l.rows[l.n_rows - 1];
    return last.entry != nullptr && last.bound == 0;
}

void print_chapter(std::string &text, const chapter &c) {
    text += "\n##";
    for (const ribkit_message *m : c) {
        text += m == c[0] ? " " : ", ";
        text += m->name;
    }
    print_layout(text, *c[0]->layout, c[0]->odd, is_open(*c[0]->layout) || c[0]->odd[0] != '\0');
}

} // namespace

std::string wire_formats() {
    std::string text = R"(# Wire formats

Every message of the RIB's client protocol and of the RIB-to-FIB protocol, written by `./run golden` from the tables in
`codec/messages/` that also convert them.

Offsets and sizes are bytes, from the start of the message; an offset with a plus sign counts from the start of an entry of
the list above it, two plus signs from an entry of that entry's list. Words (32 bits) and halves (16 bits) are big-endian
on the wire; everything else travels as it stands. The second byte of a word holds its bits 23 to 16. `PREFIX_NAME` has the
converters `PREFIX_hton_NAME` and `PREFIX_ntoh_NAME`; the forms at the end have none of that name.

A field that nothing names is called by its kind and offset (`word_16`). Texts of a number are those of the function of that
name with `_to_str` behind it; `ribkit text NAME` lists them. Bits are counted from 0, the lowest; of bytes, in each byte.
)";
    const ribkit_catalogue &all = *ribkit_catalogue_get();
    for (const chapter &c : chapters(all)) {
        print_chapter(text, c);
    }
    for (const ribkit_message *f : std::span(all.forms, all.n_forms)) {
        text += std::string("\n## ") + f->name;
        print_layout(text, *f->layout, f->odd, false);
    }
    return text;
}

} // namespace ribkit::catalogue
