// What the checks keep of the layouts in memory: where rows end and what they are called, how lists are counted. Made
// when the program is compiled, without pointers, so that nothing is left to do when it is loaded.
#pragma once

#include "codec/engine.h"
#include "codec/messages/info.h"

#include <algorithm>
#include <array>

namespace ribkit::codec {

/// Demands that a layout cannot express: see check_odd.h.
enum class odd_check : uint8_t { none, ucast_route, registration, in_info, verf_info, fcmrt_info, fcurt_info };

struct check_row {
    uint16_t end;  // the next row begins there
    uint16_t name; // in the names
};

/// A list whose number of entries varies.
struct check_list {
    count_of count;
    uint16_t offset, stride, bound; // as in a layout's row
    uint16_t counted_by;            // the name of the word that holds the count
    uint8_t entry;                  // its plan; no_plan where nothing in it is counted
    static constexpr uint8_t no_plan = 0xff;
};

/// What is demanded of the bytes of one layout.
struct check_plan {
    uint16_t size;
    uint16_t first_row;
    uint8_t first_list, n_lists;
    odd_check odd;
    bool is_record; // a fixed part and one open list of words: many can be stepped over fast
};

struct check_tables {
    const check_plan *plans;
    const check_row *rows;
    const check_list *lists;
    const char *names;
    uint8_t hop; // the plan of a unicast route's hop, where its display steps from hop to hop
};

template <const layout &> inline constexpr odd_check odd_check_of = odd_check::none;
template <> inline constexpr odd_check odd_check_of<wire::ucast_route> = odd_check::ucast_route;
template <> inline constexpr odd_check odd_check_of<wire::registration> = odd_check::registration;
template <> inline constexpr odd_check odd_check_of<wire::in_info> = odd_check::in_info;
template <> inline constexpr odd_check odd_check_of<wire::verf_info> = odd_check::verf_info;
template <> inline constexpr odd_check odd_check_of<wire::fcmrt_info> = odd_check::fcmrt_info;
template <> inline constexpr odd_check odd_check_of<wire::fcurt_info> = odd_check::fcurt_info;

constexpr bool is_counted_list(const row &r) { return is_list(r) && r.count.where != count_in::constant; }

/// Whether a number says how much of the layout there is.
constexpr bool is_counted(const layout &l) {
    for (const row &r : l) {
        if (is_counted_list(r)) {
            return true;
        }
    }
    return false;
}

/// Whether a layout is a fixed part and one open list of words.
constexpr bool is_record_of_words(const layout &l) {
    size_t lists = 0;
    for (const row &r : l) {
        lists += is_list(r) ? 1 : 0;
    }
    const row &last = l.last();
    return lists == 1 && is_open(last) && last.stride != 0 && last.stride == last.entry->size &&
           is_words_only(*last.entry) && is_fixed(*last.entry);
}

/// What a report calls a row: its name, or the first and the last of a run ("uuid..vsan").
struct field_name {
    std::array<char, 64> text{};
    size_t size = 0;

    constexpr field_name(const row &r) {
        add(r.name);
        if (*r.until != '\0') {
            add("..");
            add(r.until);
        }
    }

  private:
    constexpr void add(std::string_view more) {
        for (const char c : more) {
            text[size++] = c;
        }
    }
};

// Not constexpr: the error messages.
void two_layouts_of_one_name();
void count_of_a_list_must_be_a_word_of_its_own();

/// The tables of some layouts, and of the entries in them whose own counts have to be looked at.
class check_table_maker {
  public:
    static constexpr size_t most = 160;

    constexpr void add(const layout &l, odd_check odd) {
        if (find(l) == n_plans) {
            layouts[n_plans] = &l;
            odds[n_plans++] = odd;
        }
        if (odd == odd_check::ucast_route) {
            add(wire::fclrt_intf, odd_check::none);
        }
    }

    /// Entries, once all that have something odd are there.
    constexpr void add_entries() {
        for (size_t i = 0; i < n_plans; ++i) {
            for (const row &r : *layouts[i]) {
                if (needs_plan(r)) {
                    add(*r.entry, odd_check::none);
                }
            }
        }
    }

    constexpr void count() {
        for (size_t i = 0; i < n_plans; ++i) {
            for (size_t run = 0; run < n_runs(*layouts[i]); ++run) {
                const row r = run_of(*layouts[i], run);
                n_rows += has_room(r) ? 1 : 0;
                n_lists += is_counted_list(r) ? 1 : 0;
            }
        }
    }

    [[nodiscard]] constexpr size_t find(const layout &wanted) const {
        size_t i = 0;
        while (i < n_plans && std::string_view(layouts[i]->name) != wanted.name) {
            ++i;
        }
        if (i < n_plans && (layouts[i]->size != wanted.size || layouts[i]->rows.size() != wanted.rows.size())) {
            two_layouts_of_one_name();
        }
        return i;
    }

    static constexpr bool has_room(const row &r) { return r.size != 0; }
    static constexpr bool needs_plan(const row &r) {
        return is_counted_list(r) && (r.stride == 0 || is_counted(*r.entry));
    }

    std::array<const layout *, most> layouts{};
    std::array<odd_check, most> odds{};
    size_t n_plans = 0, n_rows = 0, n_lists = 0;
};

template <const layout &...L> constexpr check_table_maker make_check_tables() {
    check_table_maker m;
    (m.add(L, odd_check_of<L>), ...);
    m.add_entries();
    m.count();
    return m;
}

template <const layout &...L> inline constexpr check_table_maker made_check_tables = make_check_tables<L...>();

/// The tables of what was made, with room for the characters of all names.
template <const check_table_maker &Made, size_t Chars> struct check_storage {
    std::array<check_plan, Made.n_plans> plans{};
    std::array<check_row, Made.n_rows> rows{};
    std::array<check_list, Made.n_lists> lists{};
    std::array<char, Chars> names{};
    size_t n_rows = 0, n_lists = 0, n_chars = 0;

    constexpr check_storage() {
        for (size_t i = 0; i < Made.n_plans; ++i) {
            add(*Made.layouts[i], plans[i], Made.odds[i]);
        }
    }

  private:
    constexpr void add(const layout &l, check_plan &plan, odd_check odd) {
        plan = {l.size, static_cast<uint16_t>(n_rows), static_cast<uint8_t>(n_lists), 0, odd, is_record_of_words(l)};
        for (size_t run = 0; run < n_runs(l); ++run) {
            const row r = run_of(l, run);
            if (check_table_maker::has_room(r)) {
                rows[n_rows++] = {static_cast<uint16_t>(r.end()), name_at(field_name(r))};
            }
            if (is_counted_list(r)) {
                const size_t entry =
                    check_table_maker::needs_plan(r) ? Made.find(*r.entry) : size_t{check_list::no_plan};
                lists[n_lists++] = {
                    r.count, r.offset, r.stride, r.bound, name_at(holder(l, r.count)), static_cast<uint8_t>(entry)};
                ++plan.n_lists;
            }
        }
    }

    static constexpr field_name holder(const layout &l, count_of count) {
        for (const row &r : l) {
            if (r.offset == count.at) {
                return field_name(r);
            }
        }
        count_of_a_list_must_be_a_word_of_its_own();
        return field_name(*l.begin());
    }

    /// In front of each name stands its length, so that few steps find whether it is there.
    constexpr uint16_t name_at(const field_name &name) {
        for (size_t at = 0; at < n_chars; at += static_cast<size_t>(names[at]) + 2) {
            if (static_cast<size_t>(names[at]) == name.size && names[at + 1] == name.text[0] &&
                stands_at(at + 1, name)) {
                return static_cast<uint16_t>(at + 1);
            }
        }
        names[n_chars++] = static_cast<char>(name.size);
        const size_t at = n_chars;
        for (size_t i = 0; i <= name.size; ++i) {
            names[n_chars++] = name.text[i];
        }
        return static_cast<uint16_t>(at);
    }

    [[nodiscard]] constexpr bool stands_at(size_t at, const field_name &name) const {
        size_t i = 0;
        while (i < name.size && names[at + i] == name.text[i]) {
            ++i;
        }
        return i == name.size;
    }
};

template <const layout &...L> class checked_layouts {
    static constexpr const check_table_maker &made = made_check_tables<L...>;
    static constexpr size_t enough = 8192;
    static constexpr size_t n_chars = check_storage<made_check_tables<L...>, enough>{}.n_chars;
    static constexpr check_storage<made_check_tables<L...>, n_chars> stored{};
    static_assert(made.n_plans < check_list::no_plan && made.n_lists <= UINT8_MAX);

  public:
    static constexpr check_tables tables{stored.plans.data(), stored.rows.data(), stored.lists.data(),
                                         stored.names.data(), static_cast<uint8_t>(made.find(wire::fclrt_intf))};

    template <const layout &Wanted> static constexpr uint8_t plan() {
        constexpr size_t found = made.find(Wanted);
        static_assert(found < made.n_plans);
        return static_cast<uint8_t>(found);
    }
};

} // namespace ribkit::codec
