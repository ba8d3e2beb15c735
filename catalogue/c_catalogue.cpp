// The catalogue in C: the rows of catalogue/messages.h and the layouts that they name, as structs that point to one
// another. All of it is made by the compiler; nothing is left to do when the library is loaded.
#include "ribkit_catalogue.h"

#include "catalogue/tables.h"
#include "codec/fingerprint.h"

#include <cstring>

namespace ribkit::catalogue {

namespace {

using codec::count_in;
using codec::meaning;
using codec::row_kind;

// --- Numbers of the header

struct kind_row {
    row_kind kind;
    ribkit_kind number;
    const char *name;
};
constexpr kind_row kinds[] = {
    {row_kind::words, RIBKIT_KIND_WORD, "word"},         {row_kind::half, RIBKIT_KIND_HALF, "half"},
    {row_kind::bytes, RIBKIT_KIND_BYTES, "bytes"},       {row_kind::masked, RIBKIT_KIND_MASKED, "masked"},
    {row_kind::zero, RIBKIT_KIND_ZERO, "zero"},          {row_kind::gap, RIBKIT_KIND_GAP, "gap"},
    {row_kind::name, RIBKIT_KIND_NAME, "name"},          {row_kind::list, RIBKIT_KIND_LIST, "list"},
    {row_kind::records, RIBKIT_KIND_RECORDS, "records"},
};

struct meaning_row {
    meaning means;
    ribkit_meaning number;
    const char *text;
};
constexpr meaning_row meanings[] = {
    {meaning::plain, RIBKIT_MEANING_PLAIN, ""},
    {meaning::client, RIBKIT_MEANING_CLIENT, "client identity"},
    {meaning::operation, RIBKIT_MEANING_OPERATION, "operation"},
    {meaning::action, RIBKIT_MEANING_ACTION, "route action"},
    {meaning::flags, RIBKIT_MEANING_FLAGS, "route flags"},
    {meaning::vsan, RIBKIT_MEANING_VSAN, "VSAN"},
    {meaning::fc_id, RIBKIT_MEANING_FC_ID, "FC ID"},
    {meaning::fc_mask, RIBKIT_MEANING_FC_MASK, "FC ID mask"},
    {meaning::interface, RIBKIT_MEANING_INTERFACE, "interface index"},
    {meaning::label, RIBKIT_MEANING_LABEL, "label stack entry"},
    {meaning::control, RIBKIT_MEANING_CONTROL, "label control"},
    {meaning::domain, RIBKIT_MEANING_DOMAIN, "domain"},
    {meaning::cost, RIBKIT_MEANING_COST, "route cost"},
    {meaning::count, RIBKIT_MEANING_COUNT, "count"},
    {meaning::time, RIBKIT_MEANING_TIME, "time"},
    {meaning::domains, RIBKIT_MEANING_DOMAINS, "bitmap of domains 0 to 239"},
    {meaning::ports, RIBKIT_MEANING_PORTS, "bitmap of ports; its second half is the gap behind it"},
    {meaning::text, RIBKIT_MEANING_TEXT, "characters, to the first that is 0"},
};

consteval const kind_row &kind_of(row_kind kind) {
    return *std::find_if(std::begin(kinds), std::end(kinds), [=](const kind_row &k) { return k.kind == kind; });
}
consteval const meaning_row &meaning_of(meaning means) {
    return *std::find_if(std::begin(meanings), std::end(meanings),
                         [=](const meaning_row &m) { return m.means == means; });
}
consteval ribkit_count count_of(count_in where) {
    switch (where) {
    case count_in::word:
        return RIBKIT_COUNT_WORD;
    case count_in::second_byte:
        return RIBKIT_COUNT_SECOND_BYTE;
    case count_in::constant:
        return RIBKIT_COUNT_CONSTANT;
    default:
        return RIBKIT_COUNT_NONE;
    }
}

/// A pointer to each: what C readers go through, so that structs may grow.
template <typename T, size_t N> consteval std::array<const T *, N> pointers_to(const std::array<T, N> &all) {
    std::array<const T *, N> pointers{};
    for (size_t i = 0; i < N; ++i) {
        pointers[i] = all.data() + i;
    }
    return pointers;
}

// --- Vocabularies

template <size_t I> void to_text(uint32_t value, char *text) { diag::vocabularies[I].converter(value, text); }

/// The converter takes the record's first bytes as they travel.
void control_to_text(uint32_t value, char *text) {
    uint8_t record[wire::fclrt_intf.size];
    codec::writable_view<wire::fclrt_intf>(record).set<"ctrl">(value);
    rib_fclrt_ctrl_to_str(record, text);
}

consteval size_t count_texts() {
    size_t n = 0;
    for (const diag::vocabulary &v : diag::vocabularies) {
        n += v.rows.size();
    }
    return n;
}

consteval auto make_texts() {
    std::array<ribkit_text, count_texts()> all{};
    size_t n = 0;
    for (const diag::vocabulary &v : diag::vocabularies) {
        for (const diag::text_row &r : v.rows) {
            all[n++] = {r.value, r.text};
        }
    }
    return all;
}

constexpr auto texts = make_texts();

template <size_t... I> consteval auto make_vocabularies(std::index_sequence<I...> /*numbers*/) {
    std::array<ribkit_vocabulary, n_vocabularies> all{
        {{diag::vocabularies[I].name.data(), to_text<I>, diag::vocabularies[I].fallback,
          static_cast<uint32_t>(diag::vocabularies[I].rows.size()), nullptr}...,
         {control_texts.data(), control_to_text, nullptr, 0, nullptr}}};
    const ribkit_text *next = texts.data();
    for (ribkit_vocabulary &v : all) {
        v.texts = next;
        next += v.n_texts;
    }
    return all;
}

constexpr auto all_vocabularies = make_vocabularies(std::make_index_sequence<std::size(diag::vocabularies)>());
constexpr auto vocabulary_pointers = pointers_to(all_vocabularies);

consteval const ribkit_vocabulary *vocabulary_of(std::string_view name) {
    return name.empty() ? nullptr : all_vocabularies.data() + vocabulary_number(name);
}

// --- Layouts

consteval auto make_parts() {
    std::array<ribkit_part, layouts.n_parts> all{};
    size_t n = 0;
    for (size_t i = 0; i < layouts.size; ++i) {
        for (const codec::row &r : *layouts.all[i]) {
            for (const codec::row_part &p : r.parts) {
                all[n++] = {p.name, p.shift, p.bits, vocabulary_of(p.vocabulary)};
            }
        }
    }
    return all;
}

constexpr auto all_parts = make_parts();
constexpr auto part_pointers = pointers_to(all_parts);

/// Whether a name says more than kind and offset do.
consteval bool is_named(const codec::row &r) {
    const std::string_view name = r.name;
    const bool plain = name.starts_with("word_") || name.starts_with("half_") || name.starts_with("byte_") ||
                       name.starts_with("bytes_");
    const bool numbered = plain && name.substr(name.find('_') + 1).find_first_not_of("0123456789") == name.npos;
    return !numbered && r.kind != row_kind::zero && name != "gap";
}

extern const std::array<ribkit_layout, layouts.size> all_layouts; // rows refer to them, and they to rows

consteval ribkit_row row_from(const codec::row &r, const ribkit_part *const *parts, const ribkit_layout *of) {
    const bool is_name = r.kind == row_kind::name;
    return {.name = r.name,
            .named = is_named(r),
            .kind = kind_of(r.kind).number,
            .kind_name = kind_of(r.kind).name,
            .offset = r.offset,
            .size = r.size,
            .mask = is_name ? 0U : r.mask,
            .longest = is_name ? r.mask : 0U,
            .in_run = r.continues,
            .meaning = meaning_of(r.means).number,
            .meaning_text = meaning_of(r.means).text,
            .vocabulary = vocabulary_of(r.vocabulary),
            .unit = r.unit,
            .shown_more = r.shown_more,
            .n_parts = static_cast<uint32_t>(r.parts.size()),
            .parts = parts,
            .count = count_of(r.count.where),
            .count_at = r.count.at,
            .stride = r.stride,
            .bound = r.bound,
            .entry = codec::is_list(r) ? of + layouts.number_of(*r.entry) : nullptr};
}

consteval auto make_rows() {
    std::array<ribkit_row, layouts.n_rows> all{};
    size_t n = 0;
    const ribkit_part *const *parts = part_pointers.data();
    for (size_t i = 0; i < layouts.size; ++i) {
        for (const codec::row &r : *layouts.all[i]) {
            all[n++] = row_from(r, parts, all_layouts.data());
            parts += r.parts.size();
        }
    }
    return all;
}

constexpr auto all_rows = make_rows();
constexpr auto row_pointers = pointers_to(all_rows);

consteval auto make_layouts() {
    std::array<ribkit_layout, layouts.size> all{};
    const ribkit_row *const *rows = row_pointers.data();
    for (size_t i = 0; i < layouts.size; ++i) {
        const codec::layout &l = *layouts.all[i];
        const auto n_rows = static_cast<uint32_t>(l.rows.size());
        all[i] = {l.name, l.size, n_rows, rows, codec::wire_fingerprint(l), codec::description_fingerprint(l)};
        rows += n_rows;
    }
    return all;
}

constinit const std::array<ribkit_layout, layouts.size> all_layouts = make_layouts();
constexpr auto layout_pointers = pointers_to(all_layouts);

consteval const ribkit_layout *layout_from(const codec::layout &l) { return all_layouts.data() + layouts.number_of(l); }

// --- Choices

consteval ribkit_condition condition_of(codec::condition when) {
    switch (when) {
    case codec::condition::any_bit:
        return RIBKIT_IF_ANY_BIT;
    case codec::condition::equal:
        return RIBKIT_IF_EQUAL;
    default:
        return RIBKIT_OTHERWISE;
    }
}

template <const auto &Cases> consteval auto make_cases() {
    std::array<ribkit_case, std::size(Cases)> all{};
    for (size_t i = 0; i < all.size(); ++i) {
        all[i] = {condition_of(Cases[i].when), Cases[i].operand, layout_from(*Cases[i].chosen)};
    }
    return all;
}

constexpr auto query_key_cases = make_cases<codec::query_key_cases>();
constexpr auto key_cases = make_cases<codec::key_cases>();
constexpr auto body_cases = make_cases<codec::body_cases>();
constexpr auto query_key_pointers = pointers_to(query_key_cases);
constexpr auto key_pointers = pointers_to(key_cases);
constexpr auto body_pointers = pointers_to(body_cases);

template <size_t N>
consteval ribkit_choice choice_from(const codec::choice &c, const std::array<const ribkit_case *, N> &cases) {
    return {c.name, c.offset, c.by, count_of(c.count.where), c.count.at, N, cases.data()};
}

constexpr std::array all_choices{choice_from(codec::verf_query_key, query_key_pointers),
                                 choice_from(codec::verf_info_keys, key_pointers),
                                 choice_from(codec::in_info_body, body_pointers)};

consteval const ribkit_choice *choice_of(std::span<const codec::choice> wanted) {
    return wanted.empty() ? nullptr : std::find_if(all_choices.begin(), all_choices.end(), [=](const ribkit_choice &c) {
        return c.offset == wanted[0].offset && c.by == wanted[0].by;
    });
}

// --- Messages

template <size_t N> consteval auto make_messages(const row (&rows)[N]) {
    std::array<ribkit_message, N> all{};
    for (size_t i = 0; i < N; ++i) {
        const row &m = rows[i];
        all[i] = {m.name.data(), layout_from(*m.wire), m.to_network, m.to_host, m.check, m.size, m.trace,
                  m.show,        choice_of(m.chosen),  m.odd};
    }
    return all;
}

constexpr auto all_messages = make_messages(messages);
constexpr auto all_forms = make_messages(forms);
constexpr auto message_pointers = pointers_to(all_messages);
constexpr auto form_pointers = pointers_to(all_forms);

constexpr ribkit_catalogue everything{RIBKIT_CATALOGUE_VERSION, message_pointers.size(),    message_pointers.data(),
                                      form_pointers.size(),     form_pointers.data(),       layout_pointers.size(),
                                      layout_pointers.data(),   vocabulary_pointers.size(), vocabulary_pointers.data()};

template <typename T, size_t N> const T *named(const char *name, const std::array<T, N> &all) {
    for (const T &one : all) {
        if (std::strcmp(one.name, name) == 0) {
            return &one;
        }
    }
    return nullptr;
}

} // namespace

} // namespace ribkit::catalogue

using namespace ribkit::catalogue;

const ribkit_catalogue *ribkit_catalogue_get(void) { return &everything; }

const ribkit_message *ribkit_catalogue_message(const char *name) {
    const ribkit_message *found = named(name, all_messages);
    return found != nullptr ? found : named(name, all_forms);
}

const ribkit_vocabulary *ribkit_catalogue_vocabulary(const char *name) { return named(name, all_vocabularies); }
