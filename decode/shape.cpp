// Shapes are made from the rows of a layout, once, and kept.
#include "decode/shape.h"

#include "codec/messages/forms.h"
#include "codec/view.h"
#include "decode/images.h"

#include <algorithm>
#include <map>
#include <utility>

namespace ribkit::decode {

namespace {

using codec::is_list;
using codec::is_open;
using codec::layout;
using codec::meaning;
using codec::row;
using codec::row_kind;

bool is_single_word(const layout &l) { return l.rows.size() == 1 && l.size == 4; }

bool is_address(const row &r) { return r.size == 4 && (r.means == meaning::fc_id || r.means == meaning::fc_mask); }

bool is_number(const row &r) {
    return r.kind == row_kind::words || r.kind == row_kind::half || r.kind == row_kind::masked ||
           (r.kind == row_kind::bytes && r.size == 1);
}

bool is_unnamed_gap(const row &r) {
    return r.kind == row_kind::zero || (r.kind == row_kind::gap && (std::string_view(r.name) == "gap" || r.size != 4));
}

bool is_name(const row &r) {
    return r.kind == row_kind::name || (r.kind == row_kind::bytes && r.means == meaning::text);
}

field_kind kind_of(const row &r) {
    if (is_list(r)) {
        return is_single_word(*r.entry) ? field_kind::words : field_kind::entries;
    }
    return is_unnamed_gap(r)                         ? field_kind::gap
           : is_name(r)                              ? field_kind::name
           : is_address(r)                           ? field_kind::address
           : is_number(r) || r.kind == row_kind::gap ? field_kind::number
                                                     : field_kind::digits;
}

class maker {
  public:
    maker(const layout &l, oddity odd) {
        made_->wire = &l;
        made_->size = l.size;
        made_->odd = odd;
        for (const row &r : l) {
            if (!is_list(r) || odd != oddity::bud_image) {
                add(r);
            }
        }
        add_odd();
        mark_counts();
        name_slots();
    }

    std::unique_ptr<shape> take() { return std::move(made_); }

  private:
    static std::string key_of(const std::string &name, const char *suffix) { return name + suffix; }

    field &add(field_kind kind, uint16_t offset, uint16_t size, const char *name) {
        field &f = made_->fields.emplace_back();
        f.kind = kind;
        f.offset = offset;
        f.size = size;
        f.key = *name == '\0' ? json_key() : json_key(name);
        return f;
    }

    void add(const row &r) {
        const field_kind kind = kind_of(r);
        field &f = add(kind, r.offset, r.size, kind == field_kind::gap ? "" : r.name);
        f.row = &r;
        f.mask = r.kind == row_kind::masked ? r.mask : 0xff;
        if (kind == field_kind::number) {
            f.text = text_of(r);
            add_parts(f, r);
            add_use(f);
        } else if (is_list(r)) {
            add_entry(f, r);
        }
        const bool bitmap = kind == field_kind::digits && (r.means == meaning::domains || r.means == meaning::ports);
        if (f.text || kind == field_kind::name || bitmap) {
            f.text_key = json_key(key_of(r.name, "_text"));
        }
        add_rest(r);
    }

    static void add_parts(field &f, const row &r) {
        for (const codec::row_part &p : r.parts) {
            part_field part;
            const std::string name = key_of(r.name, "_") + p.name;
            part.key = json_key(name);
            part.text = text_of(p.vocabulary);
            part.text_key = part.text ? json_key(key_of(name, "_text")) : json_key();
            part.shift = p.shift;
            part.mask = codec::fields_of::mask_of(p);
            f.parts.push_back(std::move(part));
        }
    }

    void add_use(field &f) const {
        f.use = protocol::use_of(*made_->wire, f.name());
        if (f.use != nullptr) {
            f.use_key = json_key(std::string(f.name()) + "_use");
        }
    }

    static void add_entry(field &f, const row &r) {
        f.entry = &shape_of(*r.entry);
        const row &first = *r.entry->begin();
        f.labels = first.means == meaning::label;
        f.text = f.kind == field_kind::words ? text_of(first) : number_text();
    }

    void add_rest(const row &r) {
        if (r.kind == row_kind::masked) {
            add(field_kind::masked_off, r.offset, 1, "").mask = static_cast<uint8_t>(~r.mask);
        } else if (is_list(r) && !is_open(r) && r.count.where != codec::count_in::constant) {
            add(field_kind::unused, r.offset, r.size, "").row = &r;
        }
    }

    void add_odd() {
        switch (made_->odd) {
        case oddity::none:
            break;
        case oddity::verf_query: {
            const auto key = std::find_if(made_->fields.begin(), made_->fields.end(),
                                          [](const field &f) { return f.name() == "key"; });
            key->kind = field_kind::key;
            field rest = *key;
            rest.kind = field_kind::key_rest;
            rest.key = json_key();
            made_->fields.insert(key + 1, std::move(rest));
            break;
        }
        case oddity::verf_info:
            add(field_kind::keys, made_->size, 0, "key");
            break;
        case oddity::in_info:
            add(field_kind::body, made_->size, 0, "body");
            break;
        case oddity::envelope:
            add(field_kind::payload, made_->size, 0, "payload");
            break;
        case oddity::bud_image:
            add(field_kind::blocks, bud_image.at("n_free"), 0, "free");
            add(field_kind::blocks, bud_image.at("n_used"), 0, "used");
            break;
        case oddity::hops:
            add(field_kind::tail, made_->size, 0, "");
            break;
        }
    }

    void mark_counts() {
        for (const field &list : made_->fields) {
            const codec::count_of count = list.is_list()                  ? list.row->count
                                          : list.kind == field_kind::keys ? codec::in::word(wire::verf_info.at("n_key"))
                                          : list.kind == field_kind::payload
                                              ? codec::in::word(wire::cmi_envelope.at("length"))
                                              : codec::count_of{};
            for (field &f : made_->fields) {
                if (f.kind != field_kind::number || f.offset != count.at) {
                    continue;
                }
                f.counts |= count.where == codec::count_in::word;
                for (part_field &p : f.parts) {
                    p.counts |= count.where == codec::count_in::second_byte && p.shift == 16;
                }
            }
        }
    }

    void name_slots() {
        const auto n_fields = static_cast<uint16_t>(made_->fields.size());
        for (uint16_t i = 0; i < n_fields; ++i) {
            field &f = made_->fields[i];
            f.slot = name_slot(f.key, {{}, i, slot::role::value});
            f.text_slot = name_slot(f.text_key, {{}, i, slot::role::text});
            name_slot(f.use_key, {{}, i, slot::role::use});
            const auto n_parts = static_cast<uint16_t>(f.parts.size());
            for (uint16_t p = 0; p < n_parts; ++p) {
                f.parts[p].slot = name_slot(f.parts[p].key, {{}, i, slot::role::part, p});
                name_slot(f.parts[p].text_key, {{}, i, slot::role::part_text, p});
            }
        }
    }

    uint16_t name_slot(const json_key &key, slot s) {
        if (key) {
            s.key = key.name();
            made_->slots.push_back(s);
        }
        return static_cast<uint16_t>(made_->slots.size() - 1);
    }

    std::unique_ptr<shape> made_ = std::make_unique<shape>();
};

} // namespace

size_t shape::find(std::string_view key, size_t expected) const {
    for (size_t looked = 0; looked < slots.size(); ++looked) {
        const size_t i = expected + looked < slots.size() ? expected + looked : expected + looked - slots.size();
        if (slots[i].key == key) {
            return i;
        }
    }
    return none;
}

const field &shape::number_at(uint32_t offset) const {
    return *std::find_if(fields.begin(), fields.end(),
                         [&](const field &f) { return f.offset == offset && f.kind == field_kind::number; });
}

uint32_t decider_at(oddity odd) {
    switch (odd) {
    case oddity::verf_query:
        return wire::verf_query.at("type");
    case oddity::verf_info:
        return wire::verf_info.at("type");
    default:
        return wire::in_info.at("kind");
    }
}

const layout &key_layout(uint32_t type, bool in_query) {
    const layout &key = wire::key_of(type);
    return in_query && &key == &wire::verf_fcl ? wire::verf_fcl_query : key;
}

const layout *body_layout(uint32_t kind) { return kind == 1 ? &wire::in_ha : kind == 2 ? &wire::in_mem : nullptr; }

const shape &shape_of(const layout &l, oddity odd) {
    static std::map<std::pair<const layout *, oddity>, std::unique_ptr<shape>> made;
    auto &kept = made[{&l, odd}];
    if (!kept) {
        kept = maker(l, odd).take(); // which makes the shapes of entries, too
    }
    return *kept;
}

} // namespace ribkit::decode
