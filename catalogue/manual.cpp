// Rows as lines of tables, and kinds, meanings and counts in words; one chapter for all messages of one layout.
#include "catalogue/manual.h"

#include "codec/message.h"

#include <algorithm>
#include <string_view>
#include <vector>

using namespace ribkit::codec;

namespace ribkit::catalogue {

namespace {

const char *kind_of(row_kind kind) {
    switch (kind) {
    case row_kind::words:
        return "word";
    case row_kind::half:
        return "half";
    case row_kind::bytes:
        return "bytes";
    case row_kind::masked:
        return "masked";
    case row_kind::zero:
        return "zero";
    case row_kind::gap:
        return "gap";
    case row_kind::name:
        return "name";
    case row_kind::list:
        return "list";
    case row_kind::records:
        return "records";
    }
    return "";
}

const char *meaning_of(meaning means) {
    switch (means) {
    case meaning::plain:
        return "";
    case meaning::client:
        return "client identity";
    case meaning::operation:
        return "operation";
    case meaning::action:
        return "route action";
    case meaning::flags:
        return "route flags";
    case meaning::vsan:
        return "VSAN";
    case meaning::fc_id:
        return "FC ID";
    case meaning::fc_mask:
        return "FC ID mask";
    case meaning::interface:
        return "interface index";
    case meaning::label:
        return "label stack entry";
    case meaning::control:
        return "label control";
    case meaning::domain:
        return "domain";
    case meaning::cost:
        return "route cost";
    case meaning::count:
        return "count";
    case meaning::time:
        return "time";
    case meaning::domains:
        return "bitmap of domains 0 to 239";
    case meaning::ports:
        return "bitmap of ports; its second half is the gap behind it";
    case meaning::text:
        return "characters, to the first that is 0";
    }
    return "";
}

/// "bits 31-12 `label`, 8 `bottom`"
std::string parts_of(const row &r) {
    std::string text;
    for (const row_part &p : r.parts) {
        text += text.empty() ? "bits " : ", ";
        text += p.bits == 1 ? "" : std::to_string(p.shift + p.bits - 1) + "-";
        text += std::to_string(p.shift) + " `" + p.name + "`";
        text += *p.vocabulary == '\0' ? "" : std::string(" (texts `") + p.vocabulary + "`)";
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
std::string reading_of(const row &r) {
    return joined({meaning_of(r.means), *r.unit == '\0' ? "" : std::string("in ") + r.unit,
                   r.shown_more == 0 ? "" : "shown counted from 1",
                   *r.vocabulary == '\0' ? "" : std::string("texts `") + r.vocabulary + "`", parts_of(r)});
}

std::string hex(uint32_t value) {
    constexpr std::string_view digits = "0123456789abcdef";
    return {'0', 'x', digits[value >> 4 & 0xf], digits[value & 0xf]};
}

std::string count_note(const row &r) {
    std::string note;
    if (r.count.where == count_in::constant) {
        note = std::to_string(r.count.at) + " entries";
    } else {
        note = "as many entries as the ";
        note += r.count.where == count_in::word ? "word" : "second byte of the word";
        note += " at " + std::to_string(r.count.at) + " says";
    }
    if (r.bound != 0 && r.count.where != count_in::constant) {
        note += "; room for " + std::to_string(r.bound) + ", the rest zero";
    }
    if (r.kind == row_kind::records) {
        note += "; each converted by itself";
    }
    return note;
}

std::string note_of(const row &r) {
    switch (r.kind) {
    case row_kind::list:
    case row_kind::records:
        return count_note(r);
    case row_kind::masked:
        return "only the bits of " + hex(r.mask) + " are carried";
    case row_kind::zero:
        return "written as zero";
    case row_kind::gap:
        return joined({"carried by nobody", reading_of(r)});
    case row_kind::name:
        return "at most " + std::to_string(r.mask) + " characters, zero-filled";
    case row_kind::bytes:
        return joined({"as they stand", reading_of(r)});
    default:
        return reading_of(r);
    }
}

std::string size_of(const row &r) {
    if (!is_list(r)) {
        return std::to_string(r.size);
    }
    return r.stride == 0 ? "own size each" : std::to_string(r.stride) + " each";
}

void print_rows(std::string &text, const layout &l, const std::string &depth, const std::string &path) {
    for (const row &r : l) {
        const std::string cells[] = {depth + std::to_string(r.offset), size_of(r), kind_of(r.kind), path + r.name,
                                     note_of(r)};
        for (const std::string &cell : cells) {
            text += "| ";
            text += cell;
            text += ' ';
        }
        text += "|\n";
        if (r.kind == row_kind::list) {
            print_rows(text, *r.entry, depth + "+", path + r.name + ".");
        }
    }
}

/// Messages of one layout are one chapter, in the order of the catalogue.
std::vector<std::vector<const message *>> chapters() {
    std::vector<std::vector<const message *>> all;
    for (const message &m : messages()) {
        const auto same = std::find_if(all.begin(), all.end(), [&](const auto &c) { return c[0]->wire == m.wire; });
        if (same != all.end()) {
            same->push_back(&m);
        } else {
            all.push_back({&m});
        }
    }
    return all;
}

void print_layout(std::string &text, const layout &l, const char *odd, bool open) {
    text += "\n\n" + std::to_string(l.size) + " bytes" + (open ? ", and what follows.\n" : ".\n");
    text += "\n| Offset | Bytes | Kind | Field | Meaning |\n| --- | --- | --- | --- | --- |\n";
    print_rows(text, l, "", "");
    if (odd[0] != '\0') {
        text += std::string("\n") + odd + "\n";
    }
}

void print_chapter(std::string &text, const std::vector<const message *> &chapter) {
    text += "\n##";
    for (const message *m : chapter) {
        text += m == chapter[0] ? " " : ", ";
        text += m->name;
    }
    const layout &l = *chapter[0]->wire;
    print_layout(text, l, chapter[0]->odd, is_open(l.last()) || chapter[0]->odd[0] != '\0');
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
    for (const auto &chapter : chapters()) {
        print_chapter(text, chapter);
    }
    for (const message &f : forms()) {
        text += "\n## ";
        text += f.name;
        print_layout(text, *f.wire, f.odd, false);
    }
    return text;
}

} // namespace ribkit::catalogue
